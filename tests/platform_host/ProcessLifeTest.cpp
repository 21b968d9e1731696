#include "platform/host/ProcessLife.h"
#include "platform/base/Ptr.h"
#include "platform/host/Host.h"

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <thread>
#include <vector>

using cutroom::Host;
using cutroom::HostServices;
using cutroom::OncePerProcess;
using cutroom::ProcessLife;
using cutroom::ProcessSingleton;
using testing::ElementsAre;

namespace {

std::vector<std::string> story;

struct Below {
    Below() { story.push_back("+below"); }
    ~Below() { story.push_back("-below"); }
};

// Asks for another single object while it is made, and for itself while it is destroyed.
class Above {
public:
    Below& below() { return *below_; }

private:
    friend class ProcessSingleton<Above>;
    Above() : below_(&ProcessSingleton<Below>::get()) { story.push_back("+above"); }
    ~Above() {
        story.push_back(&ProcessSingleton<Above>::get() == this ? "-above" : "another above");
    }

    Below* below_;
};

struct Counted : Kv::InternalRefCount {
    ~Counted() override { story.push_back("-counted"); }
};

// Is destroyed last, and then asks for an object that is gone.
struct Foundation {
    Foundation() { story.push_back("+foundation"); }
    ~Foundation() {
        ProcessSingleton<Below>::get();
        story.push_back("-foundation");
    }
};

class ProcessLifeTest : public testing::Test {
protected:
    void SetUp() override {
        Host::install(HostServices());
        story.clear();
    }
    void TearDown() override { Host::uninstall(); }
};

} // namespace

TEST_F(ProcessLifeTest, SinglesGoInTheReverseOrderOfTheirMaking) {
    ProcessSingleton<Above>::get();
    ProcessLife::atEnd([] { story.push_back("task"); });
    EXPECT_EQ(&ProcessSingleton<Above>::get().below(), ProcessSingleton<Below>::find());
    Host::uninstall();
    EXPECT_THAT(story, ElementsAre("+below", "+above", "task", "-above", "-below"));
    EXPECT_EQ(ProcessSingleton<Above>::find(), nullptr);
}

TEST_F(ProcessLifeTest, EachLifeMakesItsOwnAlsoTheOneBeforeAHost) {
    ProcessSingleton<Below>::get();
    Host::uninstall();
    EXPECT_EQ(ProcessSingleton<Below>::find(), nullptr);
    ProcessSingleton<Below>::get();
    Host::install(HostServices());
    EXPECT_EQ(ProcessSingleton<Below>::find(), nullptr);
    EXPECT_THAT(story, ElementsAre("+below", "-below", "+below", "-below"));
}

TEST_F(ProcessLifeTest, ASingleAskedForTooLateIsMadeAndDestroyedOnceMore) {
    ProcessSingleton<Foundation>::get();
    ProcessSingleton<Below>::get();
    Host::uninstall();
    EXPECT_THAT(story,
                ElementsAre("+foundation", "+below", "-below", "+below", "-foundation", "-below"));
}

TEST_F(ProcessLifeTest, ACountedSingleLivesAsLongAsItIsShared) {
    {
        Kv::Ptr<Counted> kept(&ProcessSingleton<Counted>::get());
        Host::uninstall();
        EXPECT_THAT(story, ElementsAre());
        EXPECT_EQ(ProcessSingleton<Counted>::find(), nullptr);
    }
    EXPECT_THAT(story, ElementsAre("-counted"));
}

TEST_F(ProcessLifeTest, AValueIsReadOnceInEachLifeAndDestroyedWithIt) {
    auto shared = std::make_shared<int>(5);
    int reads = 0;
    const auto read = [&] { return ++reads, shared; };
    const OncePerProcess<std::shared_ptr<int>> kept(read);
    {
        const OncePerProcess<std::shared_ptr<int>> brief(read);
        EXPECT_EQ(*brief.get() + *brief.get(), 10);
        EXPECT_EQ(reads, 1);
    }
    EXPECT_EQ(shared.use_count(), 1) << "gone before its life";
    EXPECT_EQ(*kept.get(), 5);
    Host::uninstall();
    EXPECT_EQ(shared.use_count(), 1);
    Host::install(HostServices());
    EXPECT_EQ(*kept.get(), 5);
    EXPECT_EQ(reads, 3);
}

TEST_F(ProcessLifeTest, ManyThreadsGetOneObject) {
    std::vector<std::thread> threads;
    std::vector<Above*> seen(8);
    for (Above*& slot : seen)
        threads.emplace_back([&slot] { slot = &ProcessSingleton<Above>::get(); });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_THAT(seen, testing::Each(seen.front()));
    EXPECT_THAT(story, ElementsAre("+below", "+above"));
}
