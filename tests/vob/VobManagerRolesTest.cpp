#include "platform/prefs/ShutdownState.h"
#include "platform/project/CurrentProject.h"
#include "platform/project/PermissionsManager.h"
#include "tests/support/TempFolder.h"
#include "tests/vob/VobFixture.h"
#include "vob/VobModificationBatch.h"

using namespace cutroom::test;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr unsigned kBoth = VobManager::kTellOld | VobManager::kTellNew;

// Three Vobs, each with a client of its name, and the messages of the roles.
class VobManagerRoles : public VobFixture {
protected:
    VobManagerRoles() {
        for (const auto& [type, role] : {std::pair(manager_.sourceChangedMsgType(), "source"),
                                         std::pair(manager_.recordChangedMsgType(), "record"),
                                         std::pair(manager_.focusChangedMsgType(), "play")})
            guards_.push_back(manager_.registerNotification(
                makeCallback<NotifyMsg>([this, role = std::string(role)](const NotifyMsg& m) {
                    calls_.push_back(role + ": " + nameOf(m));
                }),
                type));
        calls_.clear();
    }
    // "a", or "-" for nobody.
    std::string nameOf(const NotifyMsg& message) const {
        const auto* const vob = message.getObjectAs<Vob>();
        EXPECT_EQ(message.getText(), (vob ? vob->getCookie() : Cookie()).asString());
        return !vob ? "-" : vob == a_.get() ? "a" : vob == b_.get() ? "b" : "c";
    }
    Calls told() { return std::exchange(calls_, {}); }
    // Without a sound.
    void setUp(Vob* source, Vob* record, Vob* play) {
        manager_.setPlayMachineRaw(play);
        manager_.setRecordMachineRaw(record);
        manager_.setSourceMachineRaw(source);
        calls_.clear();
    }

    VobManager& manager_ = VobManager::instance();
    Kv::Ptr<Vob> a_ = open(makeEdit()), b_ = open(makeEdit()), c_ = open(makeEdit());
    RecorderClient clientA_{a_.get(), calls_, "a"};
    RecorderClient clientB_{b_.get(), calls_, "b"};
    RecorderClient clientC_{c_.get(), calls_, "c"};
    std::vector<Kv::Ptr<Guard>> guards_;
};

struct FlagsRow {
    const char* name;
    unsigned flags;
    bool tellsOld, tellsNew;
};
class VobManagerRoleFlags : public VobManagerRoles, public testing::WithParamInterface<FlagsRow> {
protected:
    Calls expected(const std::string& first, const std::string& old,
                   const std::string& fresh) const {
        Calls calls{first};
        if (GetParam().tellsOld)
            calls.push_back(old);
        if (GetParam().tellsNew)
            calls.push_back(fresh);
        return calls;
    }
};

} // namespace

// --- the source ----------------------------------------------------------------------------------

TEST_P(VobManagerRoleFlags, DecideWhoIsTold) {
    manager_.setSourceMachine(a_.get(), kBoth);
    EXPECT_THAT(told(), ElementsAre("source: a", "a: change 512 time 0"));
    manager_.setSourceMachine(b_.get(), GetParam().flags);
    EXPECT_EQ(told(), expected("source: b", "a: change 4096 time 0", "b: change 512 time 0"));
    EXPECT_EQ(manager_.getPreviousSourceMachine(), a_);
    EXPECT_FALSE(a_->hasStatus(Vob::kStatusSource));
    EXPECT_TRUE(b_->hasStatus(Vob::kStatusSource));
    manager_.setSourceMachine(b_.get(), kBoth);
    EXPECT_THAT(told(), IsEmpty());

    setUp(nullptr, a_.get(), nullptr);
    manager_.setRecordMachine(b_.get(), GetParam().flags);
    Calls calls = expected("record: b", "a: change 8192 time 0", "b: change 1024 time 0");
    calls.push_back("b: focus");
    EXPECT_EQ(told(), calls);
}

INSTANTIATE_TEST_SUITE_P(Rows, VobManagerRoleFlags,
                         testing::Values(FlagsRow{"nobody", 0, false, false},
                                         FlagsRow{"old", VobManager::kTellOld, true, false},
                                         FlagsRow{"fresh", VobManager::kTellNew, false, true},
                                         FlagsRow{"both", kBoth, true, true}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_F(VobManagerRoles, WhatIsNotToldIsForgottenWithAllThatWasPending) {
    const VobModificationBatch batch(b_);
    b_->addModification(kVobCuts);
    manager_.setSourceMachine(b_.get(), VobManager::kTellOld);
    b_->addModification(kVobMarks);
    EXPECT_THAT(told(), ElementsAre("source: b"));
    b_->endModifications();
    EXPECT_THAT(told(), ElementsAre("b: change 4 time 0"));
    b_->beginModifications();
}

TEST_F(VobManagerRoles, TheRecordMachineAsSourceLosesItsRoleInOneTelling) {
    setUp(nullptr, a_.get(), nullptr);
    manager_.setSourceMachine(a_.get(), kBoth);
    EXPECT_THAT(told(), ElementsAre("source: a", "record: -", "a: change 8704 time 0"));
    EXPECT_EQ(manager_.getRecordMachine(), nullptr);
    EXPECT_EQ(a_->getStatus(), 1u);
}

TEST_F(VobManagerRoles, ClearingTheSourceTellsTheOldOne) {
    setUp(a_.get(), nullptr, nullptr);
    manager_.setSourceMachine(nullptr, kBoth);
    EXPECT_THAT(told(), ElementsAre("source: -", "a: change 4096 time 0"));
    EXPECT_EQ(manager_.getPreviousSourceMachine(), a_);
}

TEST_F(VobManagerRoles, TheConsoleFollowsTheSourceWhenAThirdPlays) {
    setUp(nullptr, b_.get(), c_.get());
    manager_.setSourceMachine(a_.get(), kBoth);
    EXPECT_THAT(told(), ElementsAre("source: a", "a: focus", "a: change 512 time 0"));
    setUp(nullptr, c_.get(), c_.get());
    manager_.setSourceMachine(b_.get(), kBoth); // the record machine plays
    EXPECT_THAT(told(), ElementsAre("source: b", "b: change 512 time 0"));
}

TEST_F(VobManagerRoles, WhoIsToldOfALossMayGiveTheRoleAway) {
    setUp(a_.get(), nullptr, nullptr);
    clientA_.onChange = [&](const VobModification& m) {
        if (m.includes(kVobLostSource))
            manager_.setSourceMachine(c_.get(), VobManager::kTellNew);
    };
    manager_.setSourceMachine(b_.get(), kBoth);
    EXPECT_THAT(told(), ElementsAre("source: b", "a: change 4096 time 0", "source: c",
                                    "c: change 512 time 0"));
    EXPECT_EQ(manager_.getSourceMachine(), c_);
}

// --- the record machine --------------------------------------------------------------------------

TEST_F(VobManagerRoles, WithoutAnyOtherTheOldRecordMachineBecomesTheSource) {
    setUp(nullptr, a_.get(), nullptr);
    manager_.setRecordMachine(nullptr, kBoth);
    EXPECT_THAT(told(), ElementsAre("record: -", "source: a", "a: change 8704 time 0"));
    EXPECT_EQ(manager_.getSourceMachine(), a_);

    setUp(b_.get(), a_.get(), nullptr);
    manager_.setSourceMachineRaw(nullptr); // b is the previous source
    told();
    manager_.setRecordMachine(nullptr, kBoth);
    EXPECT_THAT(told(), ElementsAre("record: -", "a: change 8192 time 0"));
}

TEST_F(VobManagerRoles, TheSourceThatRecordsGivesItsRoleBackToThePreviousOne) {
    manager_.setSourceMachine(a_.get(), 0);
    manager_.setSourceMachine(b_.get(), 0);
    told();
    manager_.setRecordMachine(b_.get(), kBoth);
    EXPECT_THAT(told(), ElementsAre("record: b", "source: a", "a: change 512 time 0",
                                    "b: change 5120 time 0", "b: focus"));
    EXPECT_EQ(manager_.getSourceMachine(), a_);
    EXPECT_EQ(b_->getStatus(), 2u);
}

TEST_F(VobManagerRoles, NobodyIsSourceAndRecordMachineAtOnce) {
    setUp(a_.get(), nullptr, nullptr); // without a previous source
    manager_.setRecordMachine(a_.get(), kBoth);
    EXPECT_THAT(told(), ElementsAre("record: a", "source: -", "a: change 5120 time 0", "a: focus"));
    EXPECT_EQ(a_->getStatus(), 2u);

    setUp(b_.get(), nullptr, nullptr);
    manager_.setSourceMachineRaw(c_.get());
    b_->setStatusEligibility(Vob::kStatusRecord); // the previous source cannot take it back
    told();
    manager_.setRecordMachine(c_.get(), kBoth);
    EXPECT_THAT(told(), ElementsAre("record: c", "source: -", "c: change 5120 time 0",
                                    "a: no focus", "c: focus"));
}

TEST_F(VobManagerRoles, TheRedrawIsHeldBackWhileTheRecordRoleMoves) {
    std::vector<bool> held;
    clientB_.onChange = [&](const VobModification&) { held.push_back(host_.redraw().deferred()); };
    manager_.setRecordMachine(b_.get(), kBoth);
    manager_.setSourceMachine(b_.get(), kBoth);
    EXPECT_THAT(held, ElementsAre(true, false));
}

struct AutoRow {
    const char* name;
    eLogType type;
    const char* holder; // of a lock on the edit
    bool records;
    const char* holderAfter;
};
class VobManagerAutoRecord : public VobManagerRoles, public testing::WithParamInterface<AutoRow> {};

TEST_P(VobManagerAutoRecord, IsForEditsAndTakesALockOver) {
    const TempFolder folder;
    ASSERT_TRUE(CurrentProject::open(folder / "p", CurrentProject::Access::readWrite,
                                     CurrentProject::IfMissing::create));
    auto& permissions = PermissionsManager::instance();
    const Cookie edit = a_->getCookie();
    a_->getEdit()->setLogType(GetParam().type);
    if (const std::string holder = GetParam().holder; !holder.empty()) {
        permissions.setCurrentUser(holder);
        ASSERT_TRUE(permissions.lock(edit));
    }
    permissions.setCurrentUser("me");
    manager_.autoEnableRecordStatus(a_.get());
    EXPECT_EQ(a_->hasStatus(Vob::kStatusRecord), GetParam().records);
    EXPECT_EQ(permissions.getLockHolder(edit), GetParam().holderAfter);
    manager_.autoEnableRecordStatus(nullptr);
    for (VobClient* const client : {&clientA_, &clientB_, &clientC_})
        manager_.closeInternal(client); // the project's exit would delete them
    EXPECT_TRUE(CurrentProject::close());
}

INSTANTIATE_TEST_SUITE_P(Rows, VobManagerAutoRecord,
                         testing::Values(AutoRow{"free", kLogTypeEdit, "", true, ""},
                                         AutoRow{"others", kLogTypeEdit, "you", true, "me"},
                                         AutoRow{"mine", kLogTypeEdit, "me", true, "me"},
                                         AutoRow{"log", kLogTypeSource, "you", false, "you"}),
                         [](const auto& row) { return std::string(row.param.name); });

// --- the play machine ----------------------------------------------------------------------------

TEST_F(VobManagerRoles, ThePlayMachineIsWhatTheTransportMoves) {
    EXPECT_FALSE(host_.transport().play());
    manager_.setPlayMachine(a_.get(), false);
    manager_.setPlayMachine(b_.get(), false);
    EXPECT_THAT(told(), ElementsAre("play: a", "a: change 2048 time 0", "play: b",
                                    "a: change 16384 time 0", "b: change 2048 time 0"));
    ASSERT_TRUE(host_.transport().play());
    EXPECT_TRUE(b_->isPlaying());
    EXPECT_FALSE(a_->isPlaying());
    host_.loop().runFor(1);
    manager_.setPlayMachine(nullptr, false);
    host_.loop().pump();
    EXPECT_FALSE(b_->isPlaying());
    EXPECT_FALSE(host_.transport().play());
}

struct PlayRow {
    const char* name;
    char source, record, play; // '-': nobody
    bool makeSource;
    std::vector<std::string> told;
};
class VobManagerPlay : public VobManagerRoles, public testing::WithParamInterface<PlayRow> {
protected:
    Vob* at(char name) const {
        return name == 'a' ? a_.get() : name == 'b' ? b_.get() : name == 'c' ? c_.get() : nullptr;
    }
};

TEST_P(VobManagerPlay, MayMakeItsHolderTheSource) {
    const PlayRow& row = GetParam();
    setUp(at(row.source), at(row.record), at(row.play));
    manager_.setPlayMachine(c_.get(), row.makeSource);
    EXPECT_EQ(told(), row.told);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, VobManagerPlay,
    testing::Values(
        PlayRow{"fromTheSource",
                'a',
                '-',
                'a',
                true,
                {"source: c", "play: c", "a: change 20480 time 0", "c: change 2560 time 0"}},
        PlayRow{"besideTheSource",
                'a',
                '-',
                'b',
                true,
                {"source: c", "play: c", "b: change 16384 time 0", "c: change 2560 time 0"}},
        PlayRow{"notAsked",
                'a',
                '-',
                'a',
                false,
                {"play: c", "a: change 16384 time 0", "c: change 2048 time 0"}},
        PlayRow{"theRecordMachine", 'a', 'c', '-', true, {"play: c", "c: change 2048 time 0"}},
        PlayRow{"theSourceItself", 'c', '-', '-', true, {"play: c", "c: change 2048 time 0"}},
        PlayRow{"again", 'a', '-', 'c', true, {}}),
    [](const auto& row) { return std::string(row.param.name); });

// --- when roles are not given --------------------------------------------------------------------

namespace {

enum class When { inTransit, exiting, notEligible };
struct RefusalRow {
    const char* name;
    VobManager::eSignificantViewType role;
    When when;
};
class VobManagerRefusal : public VobManagerRoles, public testing::WithParamInterface<RefusalRow> {
protected:
    void give(Vob* vob) {
        switch (GetParam().role) {
        case VobManager::kViewRecord:
            return manager_.setRecordMachine(vob, kBoth);
        case VobManager::kViewSource:
            return manager_.setSourceMachine(vob, kBoth);
        case VobManager::kViewPlay:
            return manager_.setPlayMachine(vob, false);
        }
    }
    void arrange() {
        switch (GetParam().when) {
        case When::inTransit:
            host_.transport().setPreroll(1);
            a_->registerWithPlayServer(true);
            host_.transport().play();
            break;
        case When::exiting:
            ShutdownState::setExiting();
            break;
        case When::notEligible:
            b_->setStatusEligibility(0);
        }
        calls_.clear();
    }
};

} // namespace

TEST_P(VobManagerRefusal, LeavesTheRoleWhereItIsAndOnlyClearsIt) {
    give(a_.get());
    arrange();
    const bool held = GetParam().when != When::notEligible;
    EXPECT_EQ(manager_.isPlayMachineAssignmentValid(), !held);
    give(b_.get());
    EXPECT_EQ(manager_.getVob(GetParam().role), a_);
    EXPECT_THAT(calls_, IsEmpty());
    if (!held)
        return;
    give(nullptr); // without telling the clients of the role
    EXPECT_EQ(manager_.getVob(GetParam().role), nullptr);
    ASSERT_FALSE(calls_.empty());
    EXPECT_THAT(calls_.front(), testing::EndsWith(": -"));
    EXPECT_THAT(calls_, testing::Each(testing::Not(testing::HasSubstr("change"))));
    calls_.clear();
    give(nullptr);
    EXPECT_THAT(calls_, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Rows, VobManagerRefusal,
    testing::Values(RefusalRow{"sourceInTransit", VobManager::kViewSource, When::inTransit},
                    RefusalRow{"recordInTransit", VobManager::kViewRecord, When::inTransit},
                    RefusalRow{"playInTransit", VobManager::kViewPlay, When::inTransit},
                    RefusalRow{"sourceAtExit", VobManager::kViewSource, When::exiting},
                    RefusalRow{"recordAtExit", VobManager::kViewRecord, When::exiting},
                    RefusalRow{"playAtExit", VobManager::kViewPlay, When::exiting},
                    RefusalRow{"sourceIneligible", VobManager::kViewSource, When::notEligible},
                    RefusalRow{"recordIneligible", VobManager::kViewRecord, When::notEligible},
                    RefusalRow{"playIneligible", VobManager::kViewPlay, When::notEligible}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_F(VobManagerRoles, AClosedVobHasNoRoleLeft) {
    const auto d = open(makeEdit());
    manager_.setSourceMachine(d.get(), 0);
    manager_.setSourceMachine(a_.get(), 0);
    manager_.setRecordMachine(d.get(), 0);
    manager_.setPlayMachine(d.get(), false);
    ASSERT_EQ(manager_.getPreviousSourceMachine(), d);
    manager_.closeVob(d, false);
    EXPECT_EQ(d->getStatus(), 0u);
    EXPECT_EQ(manager_.getPreviousSourceMachine(), nullptr);
    EXPECT_EQ(manager_.getRecordMachine(), nullptr);
    EXPECT_EQ(manager_.getPlayMachine(), nullptr);
    EXPECT_FALSE(d->hasConsoleFocus());
    EXPECT_FALSE(host_.transport().play());
}
