#include "platform/prefs/ShutdownState.h"
#include "platform/project/CurrentProject.h"
#include "platform/project/PermissionsManager.h"
#include "tests/support/TempFolder.h"
#include "tests/vob/VobFixture.h"
#include "vob/VobModificationBatch.h"

using namespace cutroom::test;
using testing::ElementsAre;

namespace {

constexpr unsigned kOld = VobManager::kTellOld, kNew = VobManager::kTellNew, kBoth = kOld | kNew;
using Role = VobManager::eSignificantViewType;
constexpr Role kSource = VobManager::kViewSource, kRecord = VobManager::kViewRecord,
               kPlay = VobManager::kViewPlay;

// Three Vobs, each with a client of its name, and the messages of the roles.
class VobManagerRoles : public VobFixture {
protected:
    VobManagerRoles() {
        for (const auto& [type, role] : {std::pair(manager_.sourceChangedMsgType(), "source"),
                                         std::pair(manager_.recordChangedMsgType(), "record"),
                                         std::pair(manager_.focusChangedMsgType(), "play")})
            guards_.push_back(manager_.registerNotification(
                makeCallback<NotifyMsg>([this, role = std::string(role)](const NotifyMsg& m) {
                    const auto* const vob = m.getObjectAs<Vob>();
                    EXPECT_EQ(m.getText(), (vob ? vob->getCookie() : Cookie()).asString());
                    calls_.push_back(role + ": " + nameOf(vob));
                }),
                type));
        told();
    }
    Vob* at(char name) const {
        return name == 'a' ? a_.get() : name == 'b' ? b_.get() : name == 'c' ? c_.get() : nullptr;
    }
    std::string nameOf(const Vob* vob) const {
        return !vob ? "-" : vob == a_ ? "a" : vob == b_ ? "b" : "c";
    }
    // "source: b, a: 4096": messages, and the kinds that clients were told.
    std::string told() {
        std::string text;
        for (const std::string& call : std::exchange(calls_, {}))
            text += (text.empty() ? "" : ", ") + call;
        for (const std::string_view noise : {"change ", " time 0"})
            for (std::size_t found; (found = text.find(noise)) != text.npos;)
                text.erase(found, noise.size());
        return text;
    }
    // Source, previous source, record and play machine: "a--c".
    std::string roles() const {
        return nameOf(manager_.getSourceMachine().get()) +
               nameOf(manager_.getPreviousSourceMachine().get()) +
               nameOf(manager_.getRecordMachine().get()) + nameOf(manager_.getPlayMachine().get());
    }
    void setUp(std::string_view roles) {
        setConsoleFocus(nullptr);
        for (const char source : {roles[1], roles[0]})
            manager_.setSourceMachineRaw(at(source));
        manager_.setRecordMachineRaw(at(roles[2]));
        manager_.setPlayMachineRaw(at(roles[3]));
        told();
    }
    // `flags` of the play machine: it is to be the source.
    void give(Role role, Vob* vob, unsigned flags = kBoth) {
        switch (role) {
        case kRecord:
            return manager_.setRecordMachine(vob, flags);
        case kSource:
            return manager_.setSourceMachine(vob, flags);
        case kPlay:
            return manager_.setPlayMachine(vob, flags != 0);
        }
    }

    VobManager& manager_ = VobManager::instance();
    Kv::Ptr<Vob> a_ = open(makeEdit()), b_ = open(makeEdit()), c_ = open(makeEdit());
    RecorderClient clientA_{a_.get(), calls_, "a"};
    RecorderClient clientB_{b_.get(), calls_, "b"};
    RecorderClient clientC_{c_.get(), calls_, "c"};
    std::vector<Kv::Ptr<Guard>> guards_;
};

} // namespace

TEST_F(VobManagerRoles, MoveWithAllThatFollowsForTheOthers) {
    const struct {
        const char* before;
        Role role;
        char to;
        unsigned flags;
        const char *told, *after;
    } rows[] = {
        // who is told of a source and of a record machine
        {"a---", kSource, 'b', 0, "source: b", "ba--"},
        {"a---", kSource, 'b', kOld, "source: b, a: 4096", "ba--"},
        {"a---", kSource, 'b', kNew, "source: b, b: 512", "ba--"},
        {"a---", kSource, 'b', kBoth, "source: b, a: 4096, b: 512", "ba--"},
        {"--a-", kRecord, 'b', 0, "record: b, b: focus", "--b-"},
        {"--a-", kRecord, 'b', kOld, "record: b, a: 8192, b: focus", "--b-"},
        {"--a-", kRecord, 'b', kNew, "record: b, b: 1024, b: focus", "--b-"},
        {"--a-", kRecord, 'b', kBoth, "record: b, a: 8192, b: 1024, b: focus", "--b-"},
        // again, and away
        {"b---", kSource, 'b', kBoth, "", "b---"},
        {"a---", kSource, '-', kBoth, "source: -, a: 4096", "-a--"},
        {"-ba-", kRecord, '-', kBoth, "record: -, a: 8192", "-b--"},
        // the record machine becomes the source, also when there is no other
        {"--a-", kSource, 'a', kBoth, "source: a, record: -, a: 8704", "a---"},
        {"--a-", kRecord, '-', kBoth, "record: -, source: a, a: 8704", "a---"},
        // the source that records gives its role back
        {"ba--", kRecord, 'b', kBoth, "record: b, source: a, a: 512, b: 5120, b: focus", "abb-"},
        {"a---", kRecord, 'a', kBoth, "record: a, source: -, a: 5120, a: focus", "-aa-"},
        // the console follows the source when a third plays
        {"--bc", kSource, 'a', kBoth, "source: a, a: focus, a: 512", "a-bc"},
        {"--cc", kSource, 'b', kBoth, "source: b, b: 512", "b-cc"},
        // the play machine may become the source as well
        {"a--a", kPlay, 'c', 1, "source: c, play: c, a: 20480, c: 2560", "ca-c"},
        {"a--b", kPlay, 'c', 1, "source: c, play: c, b: 16384, c: 2560", "ca-c"},
        {"a--a", kPlay, 'c', 0, "play: c, a: 16384, c: 2048", "a--c"},
        {"a-c-", kPlay, 'c', 1, "play: c, c: 2048", "a-cc"},
        {"c---", kPlay, 'c', 1, "play: c, c: 2048", "c--c"},
        {"a--c", kPlay, 'c', 1, "", "a--c"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.before << " " << row.role << row.to << row.flags);
        setUp(row.before);
        give(row.role, at(row.to), row.flags);
        EXPECT_EQ(told(), row.told);
        EXPECT_EQ(roles(), row.after);
        for (const char name : {'a', 'b', 'c'})
            EXPECT_EQ(at(name)->getStatus(), (row.after[0] == name ? 1u : 0u) |
                                                 (row.after[2] == name ? 2u : 0u) |
                                                 (row.after[3] == name ? 4u : 0u));
    }
}

TEST_F(VobManagerRoles, WhatIsNotToldIsForgottenWithAllThatWasPending) {
    const VobModificationBatch batch(b_);
    b_->addModification(kVobCuts);
    manager_.setSourceMachine(b_.get(), kOld);
    b_->addModification(kVobMarks);
    EXPECT_EQ(told(), "source: b");
    b_->endModifications();
    EXPECT_EQ(told(), "b: 4");
    b_->beginModifications();
}

TEST_F(VobManagerRoles, WhoIsToldOfALossMayGiveTheRoleAway) {
    setUp("a---");
    clientA_.onChange = [&](const VobModification& m) {
        if (m.includes(kVobLostSource))
            manager_.setSourceMachine(c_.get(), kNew);
    };
    manager_.setSourceMachine(b_.get(), kBoth);
    EXPECT_EQ(told(), "source: b, a: 4096, source: c, c: 512");
    EXPECT_EQ(roles(), "cb--");
}

TEST_F(VobManagerRoles, APreviousSourceThatCannotTakeItsRoleBackLeavesItToNobody) {
    setUp("cb--");
    b_->setStatusEligibility(Vob::kStatusRecord);
    manager_.setRecordMachine(c_.get(), kBoth);
    EXPECT_EQ(told(), "record: c, source: -, c: 5120, c: focus");
}

TEST_F(VobManagerRoles, TheRedrawIsHeldBackWhileTheRecordRoleMoves) {
    std::vector<bool> held;
    clientB_.onChange = [&](const VobModification&) { held.push_back(host_.redraw().deferred()); };
    manager_.setRecordMachine(b_.get(), kBoth);
    manager_.setSourceMachine(b_.get(), kBoth);
    EXPECT_THAT(held, ElementsAre(true, false));
}

TEST_F(VobManagerRoles, AnEditRecordsByItselfAndALockOnItIsTakenOver) {
    const TempFolder folder;
    ASSERT_TRUE(CurrentProject::open(folder / "p", CurrentProject::Access::readWrite,
                                     CurrentProject::IfMissing::create));
    auto& permissions = PermissionsManager::instance();
    permissions.setCurrentUser("you");
    ASSERT_TRUE(permissions.lock(a_->getCookie()));
    permissions.setCurrentUser("me");
    a_->getEdit()->setLogType(kLogTypeSource);
    manager_.autoEnableRecordStatus(a_.get());
    manager_.autoEnableRecordStatus(nullptr);
    EXPECT_EQ(roles(), "----") << "no log does";
    EXPECT_EQ(permissions.getLockHolder(a_->getCookie()), "you");
    a_->getEdit()->setLogType(kLogTypeEdit);
    manager_.autoEnableRecordStatus(a_.get());
    EXPECT_EQ(roles(), "--a-");
    EXPECT_EQ(permissions.getLockHolder(a_->getCookie()), "me");
    manager_.autoEnableRecordStatus(b_.get());
    EXPECT_EQ(roles(), "--b-");
    EXPECT_EQ(permissions.getLockHolder(b_->getCookie()), "") << "it was free";
    for (VobClient* const client : {&clientA_, &clientB_, &clientC_})
        manager_.closeInternal(client); // the project's exit would delete them
    EXPECT_TRUE(CurrentProject::close());
}

TEST_F(VobManagerRoles, AClosedVobHasNoRoleLeftAndIsNotPlayedAnyMore) {
    const auto d = open(makeEdit());
    manager_.setSourceMachine(d.get(), 0);
    manager_.setSourceMachine(a_.get(), 0);
    manager_.setRecordMachine(d.get(), 0);
    manager_.setPlayMachine(a_.get(), false);
    manager_.setPlayMachine(d.get(), false);
    ASSERT_TRUE(host_.transport().play());
    EXPECT_TRUE(d->isPlaying());
    EXPECT_FALSE(a_->isPlaying());
    ASSERT_EQ(manager_.getPreviousSourceMachine(), d);
    manager_.closeVob(d, false);
    EXPECT_EQ(roles(), "a---");
    EXPECT_EQ(d->getStatus(), 0u);
    EXPECT_FALSE(d->hasConsoleFocus());
    host_.loop().pump();
    EXPECT_FALSE(d->isPlaying());
    EXPECT_FALSE(host_.transport().play());
}

TEST_F(VobManagerRoles, AVobThatClosesGetsNoRoleBackFromWhoIsToldOfIt) {
    setUp("a---");
    guards_.push_back(manager_.registerNotification(
        makeCallback<NotifyMsg>([&](const NotifyMsg& message) {
            if (!message.getObject())
                manager_.setSourceMachine(manager_.getAllVobs().front().get(), 0);
        }),
        manager_.sourceChangedMsgType()));
    manager_.closeVob(a_, true);
    EXPECT_EQ(roles(), "b---");
    EXPECT_EQ(a_->getStatus(), 0u);
}

// --- when roles are not given --------------------------------------------------------------------

namespace {

enum When { kInTransit, kExiting, kNotEligible };
class VobManagerRefusal : public VobManagerRoles,
                          public testing::WithParamInterface<std::tuple<Role, When>> {
protected:
    void arrange(When when) {
        if (when == kInTransit) {
            host_.transport().setPreroll(1);
            a_->registerWithPlayServer(true);
            host_.transport().play();
        } else if (when == kExiting) {
            ShutdownState::setExiting();
        } else {
            b_->setStatusEligibility(0);
        }
        told();
    }
};

} // namespace

TEST_P(VobManagerRefusal, LeavesTheRoleWhereItIsAndOnlyClearsIt) {
    const auto [role, when] = GetParam();
    give(role, a_.get());
    arrange(when);
    EXPECT_EQ(manager_.isPlayMachineAssignmentValid(), when == kNotEligible);
    give(role, b_.get());
    EXPECT_EQ(manager_.getVob(role), a_);
    EXPECT_EQ(told(), "");
    if (when == kNotEligible)
        return;
    give(role, nullptr); // without telling the clients of the role
    EXPECT_EQ(manager_.getVob(role), nullptr);
    EXPECT_THAT(told(), testing::MatchesRegex("[a-z]+: -(, a: play state 2)?"));
    give(role, nullptr);
    EXPECT_EQ(told(), "");
}

INSTANTIATE_TEST_SUITE_P(RolesAndTimes, VobManagerRefusal,
                         testing::Combine(testing::Values(kRecord, kSource, kPlay),
                                          testing::Values(kInTransit, kExiting, kNotEligible)));
