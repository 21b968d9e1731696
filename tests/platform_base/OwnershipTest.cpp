#include "platform/base/Guard.h"
#include "platform/base/Log.h"
#include "platform/base/NumRange.h"
#include "platform/base/Ptr.h"
#include "platform/base/Status.h"
#include "tests/support/LogLines.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace {

// Counts how many of it there are.
class Alive {
public:
    explicit Alive(int& count) : count_(&count) { ++*count_; }
    Alive(const Alive& other) : count_(other.count_) { ++*count_; }
    Alive& operator=(const Alive&) = delete;
    ~Alive() { --*count_; }

private:
    int* count_;
};

struct Other : public virtual Kv::InternalRefCount, public virtual iVirtual {};

struct Counted : public iObject, public Other {
    explicit Counted(int& count) : alive(count) {}
    Alive alive;
};

TEST(PtrTest, TheLastShareDeletes) {
    int alive = 0;
    Kv::Ptr<Counted> first = Kv::makePtr<Counted>(alive);
    Kv::Ptr<iObject> base = first;
    EXPECT_EQ(first->refCount(), 2);
    Kv::Ptr<iObject> moved = std::move(base);
    EXPECT_FALSE(base); // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(first->refCount(), 2);
    EXPECT_EQ(Kv::dynamicCast<Other>(moved)->refCount(), 3);
    first.reset();
    EXPECT_EQ(alive, 1);
    moved = nullptr;
    EXPECT_EQ(alive, 0);
}

TEST(PtrTest, ACopiedObjectStartsItsOwnCount) {
    int alive = 0;
    const Kv::Ptr<Counted> first = Kv::makePtr<Counted>(alive);
    Kv::makePtr<Counted>(*first).reset();
    EXPECT_EQ(alive, 1);
}

TEST(PtrTest, AnHeirDecidesWhatItsLastReleaseDoes) {
    struct Kept : Kv::InternalRefCount {
        mutable int releases = 0;
        void onLastRelease() const noexcept override { ++releases; }
    } kept;
    Kv::Ptr<Kept>(&kept).reset();
    EXPECT_EQ(kept.releases, 1);
}

TEST(GuardTest, ItsActionRunsOnceWhenTheLastShareGoes) {
    int runs = 0;
    Kv::Ptr<Guard> guard = Kv::makePtr<Kv::ActionGuard>([&] { ++runs; });
    Kv::Ptr<Guard> share = guard;
    guard.reset();
    EXPECT_EQ(runs, 0);
    share.reset();
    EXPECT_EQ(runs, 1);
}

TEST(GuardTest, AnActionThatThrowsIsLogged) {
    const cutroom::test::LogLines log;
    Kv::makePtr<Kv::ActionGuard>([] { throw std::runtime_error("no"); }).reset();
    EXPECT_THAT(log.lines, testing::ElementsAre("Guard: its action failed: no\n"));
}

TEST(LogTest, MessagesArriveAsFormattedWhateverTheirLength) {
    const cutroom::test::LogLines log;
    LogBoth("Edit extents: %.1f to %.1f\n", 0.0, 12.25);
    const std::string justTooLong(1024, 'a');
    const std::string longText(9000, 'b');
    LogBoth("%s", justTooLong.c_str());
    LogBoth("%s", longText.c_str());
    EXPECT_THAT(log.lines,
                testing::ElementsAre("Edit extents: 0.0 to 12.2\n", justTooLong, longText));
}

TEST(StatusTest, TextIsOneLineWithThePlaceThatIsKnown) {
    using cutroom::Status;
    using cutroom::StatusCode;
    EXPECT_EQ(Status().text(), "ok");
    EXPECT_EQ(Status(StatusCode::damaged, "a.edl", "no events", 7).text(), "a.edl:7: no events");
    EXPECT_EQ(Status(StatusCode::notFound, "a", "not\nthere").text(), "a: not there");
    EXPECT_EQ(Status(StatusCode::failed, "", "no").text(), "no");
    const cutroom::Result<int> good(5);
    const cutroom::Result<int> bad(Status(StatusCode::failed, "f", "no"));
    EXPECT_TRUE(good.ok() && *good == 5 && !bad.ok());
    EXPECT_EQ(bad.status().code(), StatusCode::failed);
}

TEST(NumRangeTest, EndsAreOrderedAndBelongToIt) {
    const TimeRange range(5.0, 2.0);
    EXPECT_EQ(range, TimeRange(2.0, 5.0));
    EXPECT_EQ(range.size(), 3.0);
    EXPECT_TRUE(range.contains(2.0) && range.contains(5.0) && range.contains(5.5, 0.5));
    EXPECT_FALSE(range.contains(1.9) || range.contains(5.1));
    EXPECT_TRUE(range.overlaps({4.0, 9.0}) && range.overlaps({1.0, 2.5}));
    EXPECT_FALSE(range.overlaps({5.0, 9.0}) || range.overlaps({1.0, 2.0})) << "they only touch";
    EXPECT_EQ(range.shifted(-2.0), TimeRange(0.0, 3.0));
}

} // namespace
