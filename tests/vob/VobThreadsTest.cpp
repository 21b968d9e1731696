#include "tests/vob/VobFixture.h"
#include "vob/VobModificationBatch.h"

#include <atomic>
#include <bit>
#include <functional>
#include <latch>
#include <set>
#include <thread>

using namespace cutroom::test;

namespace {

constexpr unsigned kThreads = 8;

class VobThreads : public VobFixture {
protected:
    VobThreads() : vob_(open(makeEdit())), client_(vob_.get(), calls_, "a") {
        client_.onChange = [this](const VobModification& change) { told_.push_back(change); };
    }
    // Runs `work` on each of the threads while this one pumps the loop (and does `meanwhile`).
    void onThreads(
        const std::function<void(unsigned)>& work, const std::function<void()>& meanwhile = [] {}) {
        std::latch start(kThreads);
        std::atomic<unsigned> ended{0};
        std::vector<std::thread> threads;
        for (unsigned i = 0; i < kThreads; ++i)
            threads.emplace_back([&, i] {
                start.arrive_and_wait();
                work(i);
                ++ended;
            });
        meanwhile();
        while (ended < kThreads) {
            host_.loop().pump();
            std::this_thread::yield();
        }
        for (std::thread& thread : threads)
            thread.join();
        host_.loop().pump();
    }

    Kv::Ptr<Vob> vob_;
    RecorderClient client_;
    std::vector<VobModification> told_;
};

// Keeps what is posted, for the test to run.
struct PostedWork final : cutroom::iUiThread {
    PostedWork() : before(cutroom::installUiThread(this)) {}
    ~PostedWork() override { cutroom::installUiThread(before); }
    bool isUiThread() const noexcept override { return before->isUiThread(); }
    void post(std::function<void()> work) override { all.push_back(std::move(work)); }

    iUiThread* const before;
    std::vector<std::function<void()>> all;
};

} // namespace

// Every thread makes one change of a kind of its own, with or without batches around it; this one
// moves the time. However they are merged, each kind is told exactly once.
TEST_F(VobThreads, ChangesInBatchesAreToldOnceEach) {
    const auto kindOf = [](unsigned thread) { return 1u << (10 + thread); };
    const unsigned all = kVobTime | 0xFFu << 10;
    for (unsigned round = 1; round <= 150; ++round) {
        told_.clear();
        onThreads(
            [&](unsigned thread) {
                const unsigned depth = (thread + round) % 3;
                for (unsigned i = 0; i < depth; ++i)
                    vob_->beginModifications();
                vob_->addModification(kindOf(thread));
                for (unsigned i = 0; i < depth; ++i)
                    vob_->endModifications();
            },
            [&] {
                const VobModificationBatch batch(vob_);
                vob_->setCurrentTime(round);
            });
        unsigned kinds = 0;
        int count = 0;
        for (const VobModification& change : told_) {
            ASSERT_TRUE(change.valid()) << "an empty change, round " << round;
            EXPECT_EQ(change.getTime(), static_cast<double>(round));
            kinds |= change.getType();
            count += std::popcount(change.getType());
        }
        ASSERT_EQ(kinds, all) << "round " << round;
        ASSERT_EQ(count, std::popcount(all)) << "round " << round;
    }
}

TEST_F(VobThreads, ChangesOutsideOfBatchesArriveOneByOneAndNoneIsHeldBack) {
    constexpr unsigned kEach = 1000;
    for (const bool batches : {false, true}) {
        told_.clear();
        onThreads([&](unsigned thread) {
            for (unsigned n = 0; n < kEach; ++n) {
                VobModification change(kVobMarks);
                change.setMarkTime(thread * kEach + n);
                const VobModificationBatch batch(batches && n % 2 == 0 ? vob_ : Kv::Ptr<Vob>());
                vob_->addModification(change);
            }
        });
        std::set<double> marks;
        for (const VobModification& change : told_) {
            ASSERT_EQ(change.getType(), unsigned{kVobMarks});
            marks.insert(change.getMarkTime());
        }
        ASSERT_EQ(marks.size(), told_.size());
        ASSERT_TRUE(batches || marks.size() == kThreads * kEach);
    }
    told_.clear();
    vob_->setCurrentTime(1); // no other change is left to be told with it
    ASSERT_EQ(told_.size(), 1u);
    EXPECT_EQ(told_.front().getType(), unsigned{kVobTime});
}

TEST_F(VobThreads, OneThatAnotherThreadDropsGoesOnceThoughTheLoopRunsItsPostTwice) {
    const EditPtr edit = makeEdit();
    const int before = edit.get()->refCount();
    Kv::Ptr<Vob> vob = open(edit);
    VobManager::instance().closeVob(vob, false);
    PostedWork posted;
    std::thread([last = std::move(vob)]() mutable { last = {}; }).join();
    ASSERT_GT(edit.get()->refCount(), before) << "still waiting";
    for (int run = 0; run < 2; ++run)
        for (const auto& work : posted.all)
            work();
    EXPECT_EQ(edit.get()->refCount(), before);
}
