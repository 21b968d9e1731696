#include "tests/vob/MeddlingClient.h"
#include "tests/vob/VobFixture.h"

using namespace cutroom::test;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

class VobManagerTest : public VobFixture {
protected:
    bool isListed(const Kv::Ptr<Vob>& vob) const {
        const auto& all = manager_.getAllVobs();
        return std::find(all.begin(), all.end(), vob) != all.end();
    }
    // Not attached to anything yet.
    std::unique_ptr<MeddlingClient> client(const std::string& name,
                                           eClientManagementDetails details = kClientUnmanaged) {
        return std::make_unique<MeddlingClient>(nullptr, calls_, name, 0, details);
    }

    VobManager& manager_ = VobManager::instance();
};

} // namespace

// --- making and finding --------------------------------------------------------------------------

TEST_F(VobManagerTest, FindsVobsByEditGroupAndLegacyId) {
    const EditPtr edit = makeEdit(), other = makeEdit();
    const auto a = manager_.createVob(edit, "one");
    const auto b = manager_.createVob(EditModule(other), "two");
    const auto c = manager_.createVob(edit.getCookie(), "one");
    c->setGroupId(7u);
    EXPECT_THAT(manager_.getAllVobs(), ElementsAre(a, b, c));
    EXPECT_THAT(manager_.getAllVobs(edit.getCookie()), ElementsAre(a, c));
    EXPECT_EQ(manager_.getAllVobs(Cookie()).size(), 3u);
    EXPECT_EQ(manager_.numRefs(edit.getCookie()), 2u);
    EXPECT_EQ(manager_.getVobWithCookie(other.getCookie()), b);
    EXPECT_EQ(manager_.getVobWithCookie(Cookie()), nullptr);
    EXPECT_EQ(manager_.getVobWithId("one"), a);
    EXPECT_EQ(manager_.getVobWithId("none"), nullptr);
    EXPECT_EQ(manager_.getVobWithId(7), c);
    EXPECT_EQ(manager_.getVobWithId(-1), nullptr); // that is no id, though most have it
    EXPECT_EQ(manager_.getVobIdForLegacyId(7), "one");
    EXPECT_EQ(manager_.getVobIdForLegacyId(8), "");
}

TEST_F(VobManagerTest, GroupsAreVobsOfOneIdAndGoByTheHighestRate) {
    const auto rated = [](int num, int den) {
        return EditManager::instance().makeNewEdit(makeNewEditCookie(), 1, 0, 1, {num, den});
    };
    const auto a = manager_.createVob(rated(24000, 1001), "g");
    const auto alone = manager_.createVob(rated(60, 1), "");
    const auto b = manager_.createVob(rated(25, 1), "g");
    b->setStatusEligibility(Vob::kStatusSource);
    EXPECT_THAT(manager_.getVobGroup(b), ElementsAre(a, b));
    EXPECT_THAT(manager_.getPlaybackGroup(b), ElementsAre(a));
    EXPECT_THAT(manager_.getVobGroup(alone), ElementsAre(alone));
    EXPECT_THAT(manager_.getVobGroup(nullptr), IsEmpty());
    EXPECT_TRUE(manager_.isGrouped(a));
    EXPECT_FALSE(manager_.isGrouped(alone));
    EXPECT_EQ(manager_.getGroupFrameRate(a), Kv::FrameRate(25, 1));
    EXPECT_EQ(manager_.getGroupFrameRate(openNothing()), Kv::FrameRate());
}

TEST_F(VobManagerTest, CreateSharesAVobOrMakesOne) {
    const EditPtr edit = makeEdit();
    const auto first = manager_.createVob(edit, "one");
    const auto a = client("a"), b = client("b"), c = client("c"), d = client("d");
    EXPECT_EQ(manager_.create(a.get(), edit.getCookie()), first);
    const auto second = manager_.create(b.get(), edit.getCookie(), "two");
    EXPECT_NE(second, first);
    EXPECT_EQ(second->getGroupId(), "two");
    EXPECT_EQ(manager_.create(c.get(), edit.getCookie(), "two"), second);
    const auto fresh = manager_.create(d.get(), Kv::Ptr<Vob>());
    EXPECT_TRUE(fresh->hasEdit());
    EXPECT_EQ(manager_.getAllVobs().size(), 3u);
    // Nothing is made for a client that has a Vob, nor for none.
    EXPECT_EQ(manager_.create(d.get(), edit.getCookie()), fresh);
    EXPECT_EQ(manager_.create(nullptr, edit.getCookie()), nullptr);
    EXPECT_EQ(manager_.getAllVobs().size(), 3u);
}

// --- attaching and detaching ---------------------------------------------------------------------

TEST_F(VobManagerTest, ManagedClientsComeAndGoWithTheirManager) {
    const auto vob = open(makeEdit());
    const auto keeper = client("keeper"), manager = client("manager"),
               m = client("m", kClientManaged);
    manager->managed = {m.get()};
    manager_.open(keeper.get(), vob);
    manager_.open(manager.get(), vob->getGroupId());
    EXPECT_EQ(m->getVob(), vob.get());
    manager_.open(manager.get(), open(makeEdit())); // has a Vob
    manager_.closeInternal(manager.get());
    EXPECT_EQ(m->getVob(), nullptr);
    EXPECT_EQ(vob->getNumClients(), 1u);
    // The managed one leaves first, and silently.
    EXPECT_THAT(calls_, ElementsAre("keeper: added manager", "keeper: added m", "manager: added m",
                                    "keeper: removed manager"));
    manager->managed.clear();
}

TEST_F(VobManagerTest, TheLastUnmanagedClientClosesItsVob) {
    const auto vob = open(makeEdit());
    auto a = client("a"), b = client("b");
    const auto m = client("m", kClientManaged), n = client("n", eClientManagementDetails(2));
    for (VobClient* each : {static_cast<VobClient*>(a.get()), static_cast<VobClient*>(m.get()),
                            static_cast<VobClient*>(b.get()), static_cast<VobClient*>(n.get())})
        manager_.open(each, vob);
    calls_.clear();
    manager_.close(a.get(), false);
    EXPECT_TRUE(isListed(vob));
    manager_.close(m.get(), false);
    EXPECT_TRUE(isListed(vob));
    manager_.close(b.get(), false);
    EXPECT_FALSE(isListed(vob));
    EXPECT_EQ(n->getVob(), nullptr);
    EXPECT_THAT(calls_,
                ElementsAre("m: removed a", "b: removed a", "n: removed a", "n: removed b"));
}

TEST_F(VobManagerTest, CloseDestroysOnRequest) {
    const auto vob = open(makeEdit());
    bool gone = false;
    MeddlingClient* const owned = client("a").release();
    owned->onEnd = [&] { gone = true; };
    manager_.open(owned, vob);
    manager_.close(owned, true);
    EXPECT_TRUE(gone);
    manager_.close(nullptr, true);
    manager_.close(client("never attached").release(), true);
}

TEST_F(VobManagerTest, VobsWithClientsCloseOnlyByForce) {
    const auto keep = open(makeEdit());
    auto vob = open(makeEdit());
    const auto a = client("a");
    manager_.open(a.get(), vob);
    EXPECT_FALSE(manager_.closeVob(vob, false));
    EXPECT_FALSE(manager_.closeVob(nullptr, true));
    EXPECT_TRUE(manager_.closeVob(vob, true));
    EXPECT_FALSE(manager_.closeVob(vob, true)); // it is closed
    EXPECT_EQ(a->getVob(), vob.get());
    vob.reset();
    EXPECT_EQ(a->getVob(), nullptr);
    EXPECT_THAT(manager_.getAllVobs(), ElementsAre(keep));
}

TEST_F(VobManagerTest, TheLastVobOfAnEditLeavesItsViewInIt) {
    const EditPtr edit = makeEdit();
    auto first = open(edit), last = open(edit);
    first->setCurrentTime(3);
    last->setCurrentTime(5);
    last->setMarkTime(IdStamp(), 2, Kv::MarkTypes::In);
    last->setViewRegion({2, 6}, false);
    manager_.closeVob(first, false);
    EXPECT_FALSE(edit->getConfig("BACKUP_CURRENT")); // the other shows it still
    manager_.closeVob(last, false);
    const auto again = open(edit);
    EXPECT_EQ(again->getCurrentTime(), 5.0);
    EXPECT_EQ(again->getMarkTime(0), 2.0);
    EXPECT_EQ(again->getViewRegion(), TimeRange(2, 6));
}

TEST_F(VobManagerTest, DestroysManagedClientsOnly) {
    const auto vob = open(makeEdit());
    const auto a = client("a");
    manager_.open(a.get(), vob);
    for (const char* name : {"m", "n"})
        manager_.open(client(name, kClientManaged).release(), vob);
    EXPECT_FALSE(manager_.destroyManagedClients(vob));
    EXPECT_EQ(vob->getNumClients(), 1u);
    a->setManagementDetails(kClientManaged);
    manager_.closeInternal(a.get());
    EXPECT_TRUE(manager_.destroyManagedClients(vob));
}

// --- what those who are told may do --------------------------------------------------------------

TEST_F(VobManagerTest, ANewcomerMayBeDestroyedByWhoeverIsToldOfIt) {
    const auto vob = open(makeEdit());
    const auto a = client("a");
    manager_.open(a.get(), vob);
    auto newcomer = client("n"), managed = client("m", kClientManaged);
    newcomer->managed = {managed.get()};
    a->onAdded = [&](VobClient*) { newcomer.reset(); };
    manager_.open(newcomer.get(), vob);
    EXPECT_EQ(managed->getVob(), nullptr);
    EXPECT_EQ(vob->getNumClients(), 1u);
    EXPECT_THAT(calls_, ElementsAre("a: added n", "a: removed VobClient"));
}

TEST_F(VobManagerTest, AClientThatAddsOneForEachItHearsOfIsStopped) {
    const auto vob = open(makeEdit());
    std::vector<std::unique_ptr<VobClient>> bred;
    const auto breeder = client("b");
    breeder->onAdded = [&](VobClient*) {
        bred.push_back(std::make_unique<VobClient>());
        manager_.open(bred.back().get(), vob);
    };
    manager_.open(breeder.get(), vob);
    VobClient first(vob.get(), kClientPriorityLowest, kClientUnmanaged);
    EXPECT_EQ(bred.size(), 500u);
    EXPECT_EQ(vob->getNumClients(), 502u); // whoever was not told of is there all the same
    EXPECT_FALSE(Vob::isAddingClient());
    EXPECT_THAT(log_.lines, testing::Contains(HasSubstr("too many clients")));
}

TEST_F(VobManagerTest, AClientThatLeavesMayBeDestroyedOrOpenedAnew) {
    const auto vob = open(makeEdit()), other = open(makeEdit());
    const auto a = client("a");
    auto b = client("b"), c = client("c");
    for (VobClient* each : {a.get(), b.get(), c.get()})
        manager_.open(each, vob);
    a->onRemoved = [&](VobClient* leaving) {
        if (leaving == b.get()) {
            b.reset();
        } else {
            manager_.closeInternal(leaving);
            manager_.open(leaving, other);
        }
    };
    manager_.close(b.get(), true);
    manager_.close(c.get(), false);
    EXPECT_EQ(c->getVob(), other.get());
    EXPECT_TRUE(other->isClient(c.get()));
    EXPECT_TRUE(isListed(vob));
    EXPECT_EQ(vob->getNumClients(), 1u);
}

TEST_F(VobManagerTest, ClientsMoveWithThoseTheyManage) {
    const auto vob = manager_.createVob(makeEdit(), "g");
    vob->setCurrentTime(4);
    const auto a = client("a"), m = client("m", kClientManaged), stays = client("stays");
    a->managed = {m.get()};
    manager_.open(stays.get(), vob);
    manager_.open(a.get(), vob);
    const auto second = manager_.moveToNewVob(a.get(), true, true);
    EXPECT_EQ(a->getVob(), second.get());
    EXPECT_EQ(m->getVob(), second.get());
    EXPECT_EQ(second->getEdit(), vob->getEdit());
    EXPECT_EQ(second->getCurrentTime(), 4.0);
    EXPECT_TRUE(manager_.isGrouped(second));
    const auto third = manager_.moveToNewVob(a.get(), false, false);
    EXPECT_EQ(third->getCurrentTime(), 0.0);
    EXPECT_FALSE(manager_.isGrouped(third));
    EXPECT_FALSE(isListed(second)); // nobody was left
    manager_.moveToVob(a.get(), vob);
    manager_.moveToVob(a.get(), vob);
    EXPECT_EQ(vob->getNumClients(), 3u);
    EXPECT_EQ(manager_.moveToNewVob(client("loose").get(), true, true), nullptr);
    a->managed.clear();
}

TEST_F(VobManagerTest, DebugWritesEveryVob) {
    const auto a = open(makeEdit()), b = open(makeEdit());
    log_.lines.clear();
    manager_.debugVobs();
    ASSERT_EQ(log_.lines.size(), 10u);
    EXPECT_EQ(log_.lines.front(), "VOB DEBUG IS GO: 2 vobs to debug\n");
    EXPECT_EQ(log_.lines[1], "Vob::debug() : NULL     \n");
    EXPECT_THAT(log_.lines[6], HasSubstr(b->getCookie().asString()));
    EXPECT_EQ(log_.lines.back(), "END VOB DEBUG\n");
}
