// Projects opened, worked on and closed one after the other in one program: nothing of one is left
// when the next begins.
#include "bins/BinManager.h"
#include "bins/DocumentManager.h"
#include "tests/crash/CrashFixture.h"
#include "tests/support/Allocations.h"
#include "tests/support/Scale.h"
#include "vob/VobManager.h"

#include <malloc.h>

#include <filesystem>

using namespace cutroom;
using namespace cutroom::test;

namespace {

struct Held {
    long blocks = liveBlocks();
    std::size_t bytes = mallinfo2().uordblks; // nothing under the address sanitizer
    std::ptrdiff_t files = std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
};

class ProjectsTest : public CrashFixture {
protected:
    void SetUp() override {}

    void work() {
        const Cookie cookie = makeNewEditCookie();
        { // which the manager gives away
            const EditModifier made = EditManager::instance().makeNewEdit(cookie, 2, 2, 10.0, {});
            ASSERT_TRUE(made);
        }
        const auto vob = VobManager::instance().createVob(cookie);
        VobClient client(vob.get(), kClientPriorityViewer, kClientUnmanaged);
        VobManager::instance().setRecordMachine(vob.get(),
                                                VobManager::kTellOld | VobManager::kTellNew);
        vob->setCurrentTime(2.5);
        vob->setMarkTime(0, 1.0, Kv::MarkTypes::In);
        EditManager::instance().makeBackup(vob->getEdit(), "a cue");
        EXPECT_TRUE(vob->addCue(Cue(1.0, L"here")));
        EXPECT_TRUE(EditManager::instance().undo(vob->getEdit()));
        const auto bin = BinManager::instance().newBin();
        bin->setName(L"a bin");
        bin->add(cookie);
        DocumentManager::instance().createDocument(L"/outside/x.pdf", 'D');
        host_->loop().pump();
        EXPECT_TRUE(EditManager::instance().save(vob->getEdit()).ok());
        EXPECT_TRUE(BinManager::instance().saveAll().ok());
    }
    // Made, then opened again with what was saved.
    void oneLife() {
        for (const bool made : {true, false}) {
            begin(Access::readWrite, made ? IfMissing::create : IfMissing::fail);
            ASSERT_EQ(EditManager::instance().getAllEdits().size(), made ? 0u : 1u);
            work();
            end();
        }
        std::filesystem::remove_all(folder_);
    }
};

TEST_F(ProjectsTest, leaveNothingBehind) {
    for (int i = 0; i < 5; ++i) // what lives as long as the program is made
        oneLife();
    const Held before;
    const long count = rounds(25, 10'000);
    for (long i = 0; i < count && !HasFailure(); ++i)
        oneLife();
    const Held after;
    EXPECT_EQ(after.blocks, before.blocks);
    EXPECT_EQ(after.files, before.files);
    EXPECT_LE(after.bytes, before.bytes + 65536);
    EXPECT_THAT(log_.lines, testing::IsEmpty());
    RecordProperty("projects", static_cast<int>(count));
}

} // namespace
