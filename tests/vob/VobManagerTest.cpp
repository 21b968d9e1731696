#include "platform/host/ProcessLife.h"
#include "tests/vob/MeddlingClient.h"
#include "tests/vob/VobFixture.h"

#include <optional>

using namespace cutroom::test;
using testing::ElementsAre;
using testing::HasSubstr;

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

TEST_F(VobManagerTest, FindsVobsByEditGroupAndLegacyIdOrMakesThem) {
    const EditPtr edit = makeEdit(), other = makeEdit();
    const auto a = manager_.createVob(edit, "one");
    const auto b = manager_.createVob(EditModule(other), "two");
    const auto c = manager_.createVob(edit.getCookie(), "one");
    c->setGroupId(7u);
    EXPECT_THAT(manager_.getAllVobs(edit.getCookie()), ElementsAre(a, c));
    EXPECT_EQ(manager_.numRefs(edit.getCookie()), 2u);
    EXPECT_EQ(manager_.getVobWithCookie(other.getCookie()), b);
    EXPECT_EQ(manager_.getVobWithCookie(Cookie()), nullptr);
    EXPECT_EQ(manager_.getVobWithId("one"), a);
    EXPECT_EQ(manager_.getVobWithId("none"), nullptr);
    EXPECT_EQ(manager_.getVobWithId(7), c);
    EXPECT_EQ(manager_.getVobWithId(-1), nullptr); // stands for no id; most Vobs have it
    EXPECT_EQ(manager_.getVobIdForLegacyId(7), "one");
    EXPECT_EQ(manager_.getVobIdForLegacyId(8), "");
    const auto first = client("first"), second = client("second"), third = client("third");
    EXPECT_EQ(manager_.create(first.get(), edit.getCookie()), a);
    const auto fresh = manager_.create(second.get(), edit.getCookie(), "two");
    EXPECT_EQ(manager_.create(third.get(), edit.getCookie(), "two"), fresh);
    EXPECT_EQ(manager_.create(third.get(), other.getCookie()), fresh); // it has a Vob
    EXPECT_EQ(manager_.create(nullptr, edit.getCookie()), nullptr);
    EXPECT_THAT(manager_.getAllVobs(Cookie()), ElementsAre(a, b, c, fresh));
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
    const auto a = client("a"), b = client("b");
    const auto m = client("m", kClientManaged), n = client("n", eClientManagementDetails(2));
    for (const auto* each : {&a, &m, &b, &n})
        manager_.open(each->get(), vob);
    calls_.clear();
    for (const auto* each : {&a, &m, &b}) {
        EXPECT_TRUE(isListed(vob));
        manager_.close(each->get(), false);
    }
    EXPECT_FALSE(isListed(vob));
    EXPECT_EQ(n->getVob(), nullptr);
    EXPECT_THAT(calls_,
                ElementsAre("m: removed a", "b: removed a", "n: removed a", "n: removed b"));
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
    const auto first = open(edit), last = open(edit);
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
    EXPECT_THAT(calls_, ElementsAre("a: added n", "a: removed VobClient"));
}

TEST_F(VobManagerTest, ClientsThatAddOrRemoveOneForEachTheyHearOfAreStopped) {
    const auto vob = open(makeEdit());
    std::vector<std::unique_ptr<VobClient>> bred;
    const auto b = client("b"), c = client("c");
    manager_.open(b.get(), vob);
    manager_.open(c.get(), vob);
    b->onAdded = c->onAdded = [&](VobClient*) {
        bred.push_back(std::make_unique<VobClient>());
        manager_.open(bred.back().get(), vob);
    };
    VobClient first(vob.get(), kClientPriorityLowest, kClientUnmanaged);
    EXPECT_EQ(bred.size(), 1000u);          // by each at 500 depths
    EXPECT_EQ(vob->getNumClients(), 1003u); // those that were not told of are there all the same
    EXPECT_FALSE(Vob::isAddingClient());
    b->onAdded = c->onAdded = nullptr;
    bred.clear();
    int goings = 0;
    b->onRemoved = [&](VobClient*) {
        ++goings;
        const VobClient brief(vob.get(), kClientPriorityLowest, kClientUnmanaged);
    };
    manager_.closeInternal(&first);
    EXPECT_EQ(goings, 500);
    EXPECT_EQ(log_.lines, Calls(2, "Vob : too many clients told inside one another, stopped\n"));
}

TEST_F(VobManagerTest, AClientToBeDestroyedMayGoWhileItsLeavingIsTold) {
    const auto vob = open(makeEdit());
    const auto a = client("a");
    auto b = client("b");
    manager_.open(a.get(), vob);
    manager_.open(b.get(), vob);
    a->onRemoved = [&](VobClient*) { b.reset(); };
    manager_.close(b.get(), true);
    EXPECT_EQ(vob->getNumClients(), 1u);
    EXPECT_TRUE(isListed(vob));
}

TEST_F(VobManagerTest, AVobWhoseClientsKeepComingBackStaysOpen) {
    struct Returning : VobClient {
        explicit Returning(Kv::Ptr<Vob> vob)
            : VobClient(vob.get(), kClientPriorityLowest, kClientManaged), home(std::move(vob)) {}
        void setVob(Vob* vob) override {
            VobClient::setVob(vob);
            if (!vob)
                VobManager::instance().open(this, home);
        }
        const Kv::Ptr<Vob> home;
    };
    const auto vob = open(makeEdit());
    const auto a = client("a");
    manager_.open(a.get(), vob);
    const Returning client(vob);
    manager_.close(a.get(), false);
    EXPECT_EQ(client.getVob(), vob.get());
    EXPECT_TRUE(isListed(vob));
}

TEST_F(VobManagerTest, ANewVobSharesModuleAndGroupWhenAsked) {
    const auto vob = manager_.createVob(makeEdit(), "g");
    const auto a = client("a"), stays = client("stays");
    vob->setCurrentTime(4);
    manager_.open(stays.get(), vob);
    manager_.open(a.get(), vob);
    const auto second = manager_.moveToNewVob(a.get(), true, true);
    EXPECT_EQ(second->getCurrentTime(), 4.0);
    EXPECT_THAT(manager_.getVobGroup(second), ElementsAre(vob, second));
    const auto third = manager_.moveToNewVob(a.get(), false, false);
    EXPECT_EQ(third->getEdit(), vob->getEdit());
    EXPECT_EQ(third->getCurrentTime(), 0.0);
    EXPECT_FALSE(manager_.isGrouped(third));
    EXPECT_THAT(manager_.getAllVobs(), ElementsAre(vob, third)); // the second had no client left
    EXPECT_EQ(manager_.moveToNewVob(client("loose").get(), true, true), nullptr);
}

TEST(VobManagerEnd, WhoeverIsToldOfItMayCloseVobs) {
    struct Closer : VobClient {
        using VobClient::VobClient;
        void notifyPlayStateChange(PlayStateNotifyType) override {
            if (cutroom::ProcessLife::ending())
                VobManager::instance().closeVob(getVob(), true);
        }
    };
    std::optional<cutroom::EmbeddedHost> host(cutroom::EmbeddedHost::repeatable());
    cutroom::Transport& transport = host->transport();
    for (int i = 0; i < 2; ++i)
        VobManager::instance().createVob(makeEdit())->registerWithPlayServer(true);
    Closer closer(VobManager::instance().getAllVobs().front().get(), kClientPriorityViewer,
                  kClientUnmanaged);
    const auto again = transport.notices().registerNotification(
        makeCallback<NotifyMsg>([&](const NotifyMsg&) { transport.play(); }),
        TransitStatus::playStoppedMsgType());
    ASSERT_TRUE(transport.play());
    host.reset();
    EXPECT_EQ(closer.getVob(), nullptr);
}

TEST_F(VobManagerTest, DebugWritesEveryVob) {
    const auto a = open(makeEdit()), b = open(makeEdit());
    const RecorderClient client(b.get(), calls_, "c", 3);
    log_.lines.clear();
    manager_.debugVobs();
    ASSERT_EQ(log_.lines.size(), 12u);
    EXPECT_THAT(log_.lines[8], HasSubstr("] : c (pri : 3) { "));
    EXPECT_THAT(calls_, ElementsAre("c: debug"));
    EXPECT_EQ(log_.lines.front(), "VOB DEBUG IS GO: 2 vobs to debug\n");
    EXPECT_EQ(log_.lines[1], "Vob::debug() : NULL     \n");
    EXPECT_THAT(log_.lines[6], HasSubstr(b->getCookie().asString()));
    EXPECT_EQ(log_.lines.back(), "END VOB DEBUG\n");
}
