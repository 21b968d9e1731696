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
    // Runs once, when `vob` is told of its next change, before its link.
    void whenTold(const Kv::Ptr<Vob>& vob, std::function<void()> act) {
        auto& client =
            *keepers_.emplace_back(std::make_unique<RecorderClient>(vob.get(), calls_, "acts", 9));
        client.onChange = [&client, act](const VobModification&) {
            client.onChange = nullptr;
            act();
        };
    }

    std::vector<std::unique_ptr<RecorderClient>> keepers_;
    std::vector<Kv::Ptr<Vob>> vobs_;
};

TEST_F(VobSynchroniserTest, offsetsAreSetForThoseThatFollow) {
    const auto a = vobAt(10), b = vobAt(25), c = vobAt(3);
    VobSynchroniser links;
    links.setItemsToSync({b, c, b, nullptr});
    EXPECT_EQ(links.clients().size(), 2u);
    EXPECT_TRUE(links.setOffset(c.get(), 4));
    EXPECT_FALSE(links.setOffset(b.get(), 4) || links.setOffset(a.get(), 4) ||
                 links.setOffset(c.get(), kNoTime));
    b->setCurrentTime(26);
    links.informTimeChanged(links.clients().front(), kNoTime); // moves nobody
    EXPECT_THAT(times(), ElementsAre(10, 26, 30));
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

TEST_F(VobSynchroniserTest, unlinkingTheOneThatSuspendsEndsTheSuspension) {
    const auto a = vobAt(0), b = vobAt(0);
    VobSynchroniser links;
    links.setItemsToSync({a, b});
    b->setTimeChangeFlags(Vob::kTimeSuspendsSync);
    b->setCurrentTime(4);
    EXPECT_FALSE(links.getSyncEnabled());
    links.setItemsToSync({a});
    EXPECT_TRUE(links.getSyncEnabled());
}

TEST_F(VobSynchroniserTest, aSuspensionEndsWithTheNextPlainMove) {
    const auto a = vobAt(0), b = vobAt(0);
    VobSynchroniser links;
    links.setItemsToSync({a, b});
    constexpr unsigned kEach[] = {Vob::kTimeSuspendsSync, Vob::kTimeSuspendsSync, 0};
    for (const unsigned flags : kEach) {
        b->setTimeChangeFlags(flags);
        b->setCurrentTime(b->getCurrentTime() + 4);
        EXPECT_EQ(links.getSyncEnabled(), flags == 0);
        EXPECT_EQ(a->getCurrentTime(), 0);
    }
    links.setSyncEnabled(false);
    b->setCurrentTime(20);
    EXPECT_FALSE(links.getSyncEnabled()) << "switched off by others, it stays so";
}

TEST_F(VobSynchroniserTest, aSuspensionOutlastsSwitchingByHand) {
    const auto a = vobAt(0), b = vobAt(0);
    VobSynchroniser links;
    links.setItemsToSync({a, b});
    b->setCurrentTime(1, Vob::kTimeSuspendsSync);
    for (const bool on : {true, false}) {
        links.setSyncEnabled(on);
        b->setCurrentTime(b->getCurrentTime() + 1);
        EXPECT_TRUE(links.getSyncEnabled()) << on;
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
    EXPECT_EQ(links.clients().back().offset, 0) << "what has no time stands nowhere";
    a->setTimeChangeFlags(Vob::kTimeSuspendsSync);
    a->setCurrentTime(1);
    for (auto& keeper : keepers_)
        VobManager::instance().close(keeper.get(), false);
    EXPECT_TRUE(EditManager::instance().handleProjectExit().ok());
    host_.loop().pump();
    EXPECT_THAT(links.clients(), IsEmpty());
    EXPECT_TRUE(links.getSyncEnabled());
}

struct Crowd {
    std::size_t vobs;
    long moves;
    unsigned relinked; // every how many moves others are linked; 0: never
};

class LinksModel : public VobSynchroniserTest, public testing::WithParamInterface<Crowd> {
protected:
    std::size_t number(std::size_t below) { return random_() % below; }
    double anyTime() { return static_cast<double>(number(1'000'000)) / 1024; }
    // Links some of them, or all, where they stand.
    void link() {
        LightweightVector<Kv::Ptr<Vob>> some;
        for (std::size_t k = 0; k < vobs_.size(); ++k) {
            linked_[k] = GetParam().relinked == 0 || number(3) > 0;
            if (linked_[k])
                some.push_back(vobs_[k]);
        }
        links_.setItemsToSync(some);
    }
    // Moves one of them; those that are told are told once.
    void move() {
        const std::size_t moved = number(vobs_.size());
        double to = anyTime();
        if (to == times_[moved])
            to += 1;
        const double by = to - times_[moved];
        std::size_t told = 0;
        for (std::size_t k = 0; k < vobs_.size(); ++k)
            if (k == moved || (linked_[k] && linked_[moved])) {
                times_[k] += by;
                ++told;
            }
        calls_.clear();
        vobs_[moved]->setCurrentTime(to);
        ASSERT_EQ(calls_.size(), told);
        ASSERT_EQ(times(), times_);
    }

    std::mt19937 random_{7};
    VobSynchroniser links_;
    std::vector<bool> linked_;
    std::vector<double> times_;
};

INSTANTIATE_TEST_SUITE_P(Crowds, LinksModel,
                         testing::Values(Crowd{64, rounds(2'000, 100'000), 0},
                                         Crowd{9, rounds(10'000, 1'000'000), 16}),
                         [](const auto& test) { return std::to_string(test.param.vobs); });

TEST_P(LinksModel, neitherLoopNorDrift) {
    for (std::size_t i = 0; i < GetParam().vobs; ++i)
        times_.push_back(vobAt(anyTime())->getCurrentTime());
    linked_.resize(vobs_.size());
    link();
    for (long i = 0; i < GetParam().moves && !HasFatalFailure(); ++i) {
        if (GetParam().relinked && i % GetParam().relinked == 0)
            link();
        move();
    }
    EXPECT_EQ(times(), times_);
    if (GetParam().relinked)
        RecordProperty("steps", std::to_string(GetParam().moves));
}

} // namespace
