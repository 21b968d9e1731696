// Linked Vobs follow one another, whatever those who are told of it do.
#include "sync/VobSynchroniser.h"
#include "tests/support/Scale.h"
#include "tests/vob/VobFixture.h"

#include <memory>
#include <random>

using namespace cutroom;
using namespace cutroom::test;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class VobSynchroniserTest : public VobFixture {
protected:
    // A Vob that stands at `seconds`, kept open by a client.
    Kv::Ptr<Vob> vobAt(double seconds) {
        const Kv::Ptr<Vob> vob = open(makeEdit(100));
        vob->setCurrentTime(seconds);
        keepers_.push_back(std::make_unique<RecorderClient>(vob.get(), calls_, "keeper"));
        vobs_.push_back(vob);
        return vob;
    }
    std::vector<double> times() const {
        std::vector<double> times;
        for (const auto& vob : vobs_)
            times.push_back(vob->getCurrentTime());
        return times;
    }
    // Runs once, when `vob` is told of its next change, before (9) or after (0) its link.
    void whenTold(const Kv::Ptr<Vob>& vob, std::function<void()> act, int priority = 9) {
        auto& client = *keepers_.emplace_back(
            std::make_unique<RecorderClient>(vob.get(), calls_, "acts", priority));
        client.onChange = [&client, act](const VobModification&) {
            client.onChange = nullptr;
            act();
        };
    }

    std::vector<std::unique_ptr<RecorderClient>> keepers_;
    std::vector<Kv::Ptr<Vob>> vobs_;
};

TEST_F(VobSynchroniserTest, movesKeepTheOffsetsOfTheLinking) {
    const auto a = vobAt(10), b = vobAt(25), c = vobAt(3);
    VobSynchroniser links;
    links.setItemsToSync({a, b, c, b, nullptr});
    const struct {
        Kv::Ptr<Vob> moved;
        double to;
        std::vector<double> expected;
    } rows[] = {{a, 12, {12, 27, 5}}, {b, 30, {15, 30, 8}}, {c, 0, {7, 22, 0}}};
    for (const auto& row : rows) {
        row.moved->setCurrentTime(row.to);
        EXPECT_EQ(times(), row.expected);
    }
    links.setSyncEnabled(false);
    a->setCurrentTime(50);
    EXPECT_THAT(times(), ElementsAre(50, 22, 0));
    links.setItemsToSync({c, b}); // b keeps its place before c
    EXPECT_THAT(links.getSynchronisedVobs(iVobSynchroniser::kVobsLinked), ElementsAre(b, c));
    EXPECT_EQ(links.offsetOf(c.get()), -22);
    EXPECT_FALSE(links.setOffset(b.get(), 4) || links.setOffset(a.get(), 4) ||
                 links.setOffset(c.get(), kNoTime));
    EXPECT_FALSE(VobSynchroniser::isSynced(a.get()));
}

TEST_F(VobSynchroniserTest, othersSeeTheFlagsOfTheMovedVobAndKeepTheirOwn) {
    const auto a = vobAt(0), b = vobAt(0);
    VobSynchroniser links;
    links.setItemsToSync({a, b});
    a->setTimeChangeFlags(Vob::kTimeTransient);
    b->setTimeChangeFlags(Vob::kTimePreviewing);
    unsigned seen = 0;
    whenTold(b, [&] { seen = b->getTimeChangeFlags(); });
    a->setCurrentTime(1);
    EXPECT_EQ(seen, Vob::kTimeTransient | Vob::kTimeBySynchroniser);
    EXPECT_EQ(b->getTimeChangeFlags(), Vob::kTimePreviewing);
}

TEST_F(VobSynchroniserTest, flag128SuspendsUntilAfterTheFirstChangeWithoutIt) {
    const auto a = vobAt(0), b = vobAt(0);
    VobSynchroniser links;
    links.setItemsToSync({a, b});
    a->setTimeChangeFlags(Vob::kTimeSuspendsSync);
    a->setCurrentTime(1);
    EXPECT_FALSE(links.getSyncEnabled());
    a->setTimeChangeFlags(0);
    a->setMarkTime(kChanAllSelected, 1, Kv::MarkTypes::In); // no change of time
    EXPECT_FALSE(links.getSyncEnabled());
    a->setCurrentTime(2);
    EXPECT_TRUE(links.getSyncEnabled());
    EXPECT_EQ(b->getCurrentTime(), 0);
    a->setCurrentTime(3);
    EXPECT_EQ(b->getCurrentTime(), 3);
    // unlinking the one that suspends ends the suspension
    b->setTimeChangeFlags(Vob::kTimeSuspendsSync);
    b->setCurrentTime(4);
    links.setItemsToSync({a});
    EXPECT_TRUE(links.getSyncEnabled());
}

TEST_F(VobSynchroniserTest, fastPlayingIsNotHandedOn) {
    const auto a = vobAt(50), b = vobAt(50);
    VobSynchroniser links;
    links.setItemsToSync({a, b});
    EXPECT_FALSE(VobSynchroniserBase::updateAllowed(nullptr));
    VobManager::instance().setPlayMachine(a.get(), false);
    for (const double speed : {4.9, 5.0, -4.9, -5.0, 16.0}) {
        ASSERT_TRUE(host_.transport().play(speed));
        const bool allowed = std::abs(speed) < 5;
        EXPECT_EQ(VobSynchroniserBase::updateAllowed(a.get()), allowed) << speed;
        EXPECT_TRUE(VobSynchroniserBase::updateAllowed(b.get())) << speed; // it does not play
        const double before = b->getCurrentTime();
        host_.loop().runFor(0.5);
        EXPECT_EQ(b->getCurrentTime() != before, allowed) << speed;
        host_.transport().stop();
    }
}

// --- what those who are told may do --------------------------------------------------------------

TEST_F(VobSynchroniserTest, aClientThatMovesTimesWhileToldLeavesTheLinkedOnesInLine) {
    const auto a = vobAt(10), b = vobAt(25), c = vobAt(3);
    VobSynchroniser links;
    links.setItemsToSync({a, b, c});
    whenTold(a, [&] {
        a->setCurrentTime(99); // it is being moved: ignored
        b->setCurrentTime(50); // handed on, then overtaken by the move of a
    });
    a->setCurrentTime(12);
    EXPECT_THAT(times(), ElementsAre(12, 27, 5));
    whenTold(b, [&] { c->setCurrentTime(77); }); // in the midst of handing on
    a->setCurrentTime(13);
    EXPECT_THAT(times(), ElementsAre(13, 28, 6));
}

TEST_F(VobSynchroniserTest, aLinkThatGoesWhileToldLeavesTheOthersTheirDistances) {
    for (const std::size_t closing : {std::size_t{0}, std::size_t{1}}) {
        vobs_.clear();
        const auto a = vobAt(10), b = vobAt(25), c = vobAt(3), d = vobAt(40);
        VobSynchroniser links;
        links.setItemsToSync(vobs_);
        const Kv::Ptr<Vob> going = vobs_[closing];
        whenTold(going, [&] { delete links.findClient(going.get())->listener; });
        d->setCurrentTime(41);
        EXPECT_EQ(c->getCurrentTime(), 4);
        EXPECT_EQ(links.clients().size(), 3u);
        const auto e = vobAt(100);
        links.createClient(e);
        c->setCurrentTime(5);
        EXPECT_EQ(d->getCurrentTime(), 42);
        EXPECT_EQ(e->getCurrentTime(), 101);
    }
}

TEST_F(VobSynchroniserTest, aSynchroniserMayGoOrLinkAnewWhileItHandsOn) {
    const auto a = vobAt(0), b = vobAt(0), c = vobAt(0);
    for (const auto& where : {a, b, c}) {
        for (const bool destroys : {false, true}) {
            for (const auto& vob : vobs_)
                vob->setCurrentTime(0);
            auto links = std::make_unique<VobSynchroniser>();
            links->setItemsToSync({a, b, c});
            whenTold(where, [&] {
                if (destroys)
                    links.reset();
                else
                    links->setItemsToSync({b, c});
            });
            a->setCurrentTime(1);
            const double stands = c->getCurrentTime(), later = stands - b->getCurrentTime();
            EXPECT_EQ(stands, where == c ? 1 : 0); // told before the set changed
            b->setCurrentTime(9);
            EXPECT_EQ(c->getCurrentTime(), destroys ? stands : 9 + later);
        }
    }
}

TEST_F(VobSynchroniserTest, linksThatTheManagerDeletesAreForgotten) {
    const auto a = vobAt(0), b = vobAt(0);
    VobSynchroniser links;
    links.setItemsToSync({a, b, openNothing()});
    a->setTimeChangeFlags(Vob::kTimeSuspendsSync);
    a->setCurrentTime(1);
    for (auto& keeper : keepers_)
        VobManager::instance().close(keeper.get(), false);
    EXPECT_TRUE(EditManager::instance().handleProjectExit().ok());
    host_.loop().pump();
    EXPECT_THAT(links.clients(), IsEmpty());
    EXPECT_TRUE(links.getSyncEnabled());
}

TEST_F(VobSynchroniserTest, manyLinkedVobsNeitherLoopNorDrift) {
    constexpr std::size_t kVobs = 64;
    std::mt19937 random(7);
    const auto number = [&](unsigned below) { return static_cast<int>(random() % below); };
    std::vector<double> offsets;
    for (std::size_t i = 0; i < kVobs; ++i)
        offsets.push_back(vobAt(number(100'000) / 1024.0)->getCurrentTime());
    VobSynchroniser links;
    links.setItemsToSync(vobs_);
    calls_.clear();
    keepers_.clear();
    std::vector<std::unique_ptr<RecorderClient>> counters;
    for (const auto& vob : vobs_)
        counters.push_back(std::make_unique<RecorderClient>(vob.get(), calls_, "told"));
    const long moves = rounds(2'000, 100'000);
    for (long i = 0; i < moves; ++i) {
        calls_.clear();
        const std::size_t moved = static_cast<std::size_t>(number(kVobs));
        const double to = number(1'000'000) / 1024.0;
        vobs_[moved]->setCurrentTime(to);
        ASSERT_EQ(calls_.size(), kVobs); // each told once
        for (std::size_t k = 0; k < kVobs; ++k)
            ASSERT_EQ(vobs_[k]->getCurrentTime(), to - offsets[moved] + offsets[k]);
    }
}

} // namespace
