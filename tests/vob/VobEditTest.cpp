#include "platform/host/Host.h"
#include "platform/prefs/Configuration.h"
#include "platform/prefs/EditorPreferences.h"
#include "platform/project/PermissionsManager.h"
#include "tests/vob/VobFixture.h"

using namespace cutroom::test;
using Kv::MarkTypes::In;
using Kv::MarkTypes::Out;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

class VobEdit : public VobFixture {};

} // namespace

TEST_F(VobEdit, IsMadeEmptyWhenNoneIsGiven) {
    const auto vob = VobManager::instance().createVob(EditPtr());
    ASSERT_TRUE(vob->hasEdit());
    EXPECT_EQ(vob->getCookie(), vob->getEdit().getCookie());
    EXPECT_EQ(vob->getEdit()->getNumChans(kChanVideo), 1);
    EXPECT_EQ(vob->getEdit()->getNumChans(kChanAudio), 4);
    EXPECT_EQ(vob->getViewRegion(), vob->getEditExtents());
    EXPECT_FALSE(vob->getGroupId().empty());
    EXPECT_EQ(vob->getLegacyGroupId(), -1);
    const Cookie wanted = makeNewEditCookie();
    EXPECT_EQ(VobManager::instance().createVob(wanted)->getCookie(), wanted);
}

TEST_F(VobEdit, ReplacedKeepsOrDropsTheModule) {
    const EditPtr first = makeEdit(10), second = makeEdit(20);
    const auto vob = open(first);
    vob->setCurrentTime(4);
    vob->setMarkTime(IdStamp(), 2, In);
    vob->setSelected(0, false);
    RecorderClient client(vob.get(), calls_, "a");
    vob->setEdit(second, true);
    EXPECT_EQ(vob->getCurrentTime(), 4.0);
    EXPECT_EQ(vob->getEditModule().getMark(second->getId(0), In), 2.0);
    EXPECT_TRUE(vob->getSelected(0)); // selections do not travel between edits
    EXPECT_EQ(vob->getEditExtents(), TimeRange(0, 20));
    vob->setEdit(first, false);
    EXPECT_EQ(vob->getCurrentTime(), 0.0);
    EXPECT_FALSE(vob->isMarkValid());
    EXPECT_THAT(calls_, ElementsAre("a: change 32 time 4", "a: change 32 time 0"));
}

TEST_F(VobEdit, ReplacedLosesTheSelectedSegmentsAndSaysSo) {
    const EditPtr edit = makeEdit();
    layClip(edit, edit->getId(0), 2, 4);
    const IdStamp levels = edit->addLevelsChan(edit->getId(1));
    ASSERT_TRUE(edit->setLevelNodes(levels, {{cutroom::toFlicks(1), 0.5F}}));
    const auto vob = open(edit);
    vob->selectSegment({edit, 0, 3.0});
    vob->selectLevelNode(levels, 1, true);
    RecorderClient client(vob.get(), calls_, "a");
    vob->setEdit(edit, true);
    EXPECT_FALSE(vob->anySelectedSegments());
    EXPECT_TRUE(vob->isLevelNodeSelected(levels, 1)); // of the same edit
    vob->setEdit(makeEdit(), true);
    EXPECT_FALSE(vob->anySelectedLevelNodes());
    EXPECT_THAT(calls_, ElementsAre("a: change 262144 time 0", "a: change 32 time 0",
                                    "a: change 32 time 0"));
}

TEST_F(VobEdit, SetUpAnewTakesTheMarksAsStoredAlsoWhenThereAreNone) {
    const EditPtr edit = makeEdit();
    edit->setConfig("BACKUP_MARK1", 2.0);
    const auto vob = open(edit);
    EXPECT_EQ(vob->getMarkTime(0), 2.0);
    vob->setMarkTime(IdStamp(), 5, Out);
    vob->setCurrentTime(3);
    vob->setupFromEdit();
    EXPECT_EQ(vob->getMarkTime(0), 2.0);
    EXPECT_EQ(vob->getEditModule().getMark(Out), kNoTime);
    EXPECT_EQ(vob->getCurrentTime(), 0.0);
}

TEST_F(VobEdit, ModulesAreToldWithTheTimeOnlyWhenItMoved) {
    const EditPtr edit = makeEdit();
    const auto vob = open(edit);
    RecorderClient client(vob.get(), calls_, "a");
    EditModule module = vob->getEditModule();
    module.selectChan(edit->getId(0), false);
    vob->setEditModule(module, true);
    EXPECT_FALSE(vob->getSelected(0));
    module.setCurrentTime(3);
    vob->setEditModule(module, true);
    vob->setEditModule(module, false);
    EXPECT_THAT(calls_, ElementsAre("a: change 20 time 0", "a: change 22 time 3"));
}

TEST_F(VobEdit, CopiesViewTheSameEditWithoutClientsAndRoles) {
    const auto vob = open(makeEdit());
    RecorderClient client(vob.get(), calls_, "a");
    vob->setCurrentTime(3);
    vob->setStatus(Vob::kStatusAll);
    const auto same = Kv::makePtr<Vob>(*vob);
    const auto fresh = Kv::makePtr<Vob>(vob.get());
    for (const auto& copy : {same, fresh}) {
        EXPECT_EQ(copy->getEdit(), vob->getEdit());
        EXPECT_EQ(copy->getCurrentTime(), 3.0);
        EXPECT_EQ(copy->getNumClients(), 0u);
        EXPECT_EQ(copy->getStatus(), 0u);
    }
    EXPECT_EQ(same->getGroupId(), vob->getGroupId());
    EXPECT_NE(fresh->getGroupId(), vob->getGroupId());
}

TEST_F(VobEdit, EditableNeedsTheRecordStatusAndPermission) {
    const EditPtr edit = makeEdit();
    const auto vob = open(edit);
    EXPECT_FALSE(vob->isEditable());
    vob->setStatus(Vob::kStatusRecord);
    EXPECT_TRUE(vob->isEditable());
    edit->setReadOnly(true);
    EXPECT_FALSE(vob->isEditable());
    EXPECT_TRUE(vob->isReadOnly());
}

TEST_F(VobEdit, ValuesAreToldWhenTheyDiffer) {
    const auto vob = open(makeEdit());
    RecorderClient client(vob.get(), calls_, "a");
    const EditPtr other = makeEdit();
    int tabStops = 0;
    const auto guard = vob->getConsoleTabStopsServer().registerNotification(
        makeCallback<NotifierEvent<unsigned>>([&](const auto&) { ++tabStops; }),
        ValServerBase::valChangedMsgType);
    for (int twice = 0; twice < 2; ++twice) {
        vob->setViewEdits({other});
        vob->setVisibleCuesFilter(CueFilter(4, -1));
        vob->setCustomStillsProviders({});
        vob->setConsoleTabStops(1);
    }
    EXPECT_THAT(calls_, ElementsAre("a: change 128 time 0", "a: change 2097152 time 0"));
    EXPECT_EQ(tabStops, 1);
    EXPECT_EQ(vob->getMasterViewCookie(), other.getCookie());
    vob->informImpendingRevision();
    EXPECT_EQ(calls_.back(), "a: change 32768 time 0");
}

struct TrimViewRow {
    const char* name;
    int arrangement, preference, byDefault; // preference -1: unset
    Vob::eTrimViewType type;
};

class VobTrimView : public VobFixture, public testing::WithParamInterface<TrimViewRow> {};

TEST_P(VobTrimView, ComesFromPreferenceConfigurationOrArrangement) {
    const TrimViewRow& row = GetParam();
    EditorPreferences::setPreference("Window arrangement", row.arrangement);
    if (row.preference >= 0)
        Vob::setDefaultTrimViewType(static_cast<Vob::eTrimViewType>(row.preference));
    cutroom::Configuration::instance().set("trimview_default", std::to_string(row.byDefault));
    EXPECT_EQ(open(makeEdit())->getTrimViewType(), row.type);
    cutroom::Configuration::instance().set("trimview_default", "7"); // was read once
    EXPECT_EQ(open(makeEdit())->getTrimViewType(), row.type);
}

INSTANTIATE_TEST_SUITE_P(Rows, VobTrimView,
                         testing::Values(TrimViewRow{"byDefault", 0, -1, 1, Vob::kTrimViewSplit},
                                         TrimViewRow{"configured", 0, -1, 0, Vob::kTrimViewOff},
                                         TrimViewRow{"preferred", 0, 2, 0, Vob::kTrimViewFull},
                                         TrimViewRow{"otherArrangement", 1, 0, 0,
                                                     Vob::kTrimViewFull}),
                         [](const auto& row) { return std::string(row.param.name); });

// --- changes of the edit -------------------------------------------------------------------------

TEST_F(VobEdit, TheDescriptionGivenBeforehandIsReportedOnce) {
    const EditPtr edit = makeEdit();
    const auto vob = open(edit);
    RecorderClient client(vob.get(), calls_, "a");
    VobModification change(kVobTime | kVobMarks);
    change.setTime(3);
    change.setMarkTime(2);
    vob->setChangeDescription(EditModifications(kModName), change);
    EXPECT_EQ(vob->getCurrentTime(), 3.0);
    EXPECT_EQ(vob->getMarkTime(kChanAllSelected), 2.0);
    edit->addModification(kModName, true);
    EXPECT_THAT(calls_, ElementsAre("a: edit 3 change 6 time 3 mark 2", "a: edit 3 change 0"));
}

TEST_F(VobEdit, ADescriptionWithoutEditChangesGoesToEverybodyOnTheEdit) {
    const EditPtr edit = makeEdit();
    const auto vob = open(edit), other = open(edit);
    RecorderClient a(vob.get(), calls_, "a"), b(other.get(), calls_, "b");
    vob->setChangeDescription(EditModifications(), kVobCuts);
    vob->setChangeDescription(EditModifications(), 0);
    EXPECT_THAT(calls_, ElementsAre("a: change 8", "b: change 8"));
}

TEST_F(VobEdit, AnEditChangeMayInsistOnTheDescription) {
    const auto vob = open(makeEdit());
    RecorderClient client(vob.get(), calls_, "a");
    for (const bool keeps : {true, false}) {
        EditModifications changes(kModName);
        changes.setKeepsChangeDescription(keeps);
        vob->informClients(changes, kVobCuts);
    }
    vob->informClients(kVobTime); // takes the current time when it brings none
    EXPECT_THAT(calls_,
                ElementsAre("a: edit 3 change 0", "a: edit 3 change 8", "a: change 2 time 0"));
}

TEST_F(VobEdit, NewChannelsTakeTheMarksAndGoneOnesLoseTheirSelections) {
    const EditPtr edit = makeEdit(10, 2, 0);
    const auto vob = open(edit);
    vob->setMarkTime(IdStamp(), 2, In);
    const IdStamp gone = edit->getId(1);
    ASSERT_NE(vob->getTrackSelections(gone), nullptr);
    const IdStamp added = edit->addChan(kChanAudio);
    ASSERT_TRUE(edit->removeChan(gone, false));
    edit->addModification(kModGeneral, true);
    EXPECT_EQ(vob->getEditModule().getMark(added, In), 2.0);
    EXPECT_EQ(vob->findTrackSelections(gone), nullptr);
    EXPECT_EQ(vob->getTrackSelections(gone), nullptr);
}

TEST_F(VobEdit, TheClipboardIsShownFromItsStartWithItsEndMarked) {
    const EditPtr clipboard = EditManager::instance().getClipboard();
    const auto vob = open(clipboard);
    vob->storeCurrentTime(3);
    layClip(clipboard, clipboard->addChan(kChanVideo), 0, 6);
    vob->setSelectedRaw(clipboard->getId(0), true);
    clipboard->addModification(kModRestored, true);
    EXPECT_EQ(vob->getCurrentTime(), 0.0);
    EXPECT_EQ(vob->getEditModule().getMark(clipboard->getId(0), In), 6.0);
}

TEST_F(VobEdit, CuesAreAddedToldAndShown) {
    const EditPtr edit = makeEdit();
    const auto vob = open(edit);
    RecorderClient client(vob.get(), calls_, "a");
    EXPECT_TRUE(vob->addCue(Cue(2, L"here")));
    EXPECT_FALSE(vob->addCue(Cue(kNoTime, L"nowhere")));
    EXPECT_THAT(calls_, Contains("a: change 4 time 0"));
    vob->cel_cues_on();
    EXPECT_TRUE(open(edit)->get_cel_cues_loaded());
    vob->cel_cues_off();
    EXPECT_FALSE(open(edit)->get_cel_cues_loaded());
}

// --- backup --------------------------------------------------------------------------------------

namespace {

class VobBackup : public VobFixture {
protected:
    VobBackup() : edit_(makeEdit(10, 1, 1)), vob_(open(edit_)) {
        layClip(edit_, edit_->getId(0), 2, 4);
        edit_->addModification(kModEventsAdded, true);
        vob_->setCurrentTime(3.5);
        vob_->setMarkTime(edit_->getId(0), 1.25, In);
        vob_->setMarkTime(edit_->getId(1), 8, Out);
        vob_->setSelected(1, false);
        vob_->unjoinCut(edit_->getId(0), edit_->get_edit_cel_p(0)->find_ceh(2, 0));
        vob_->selectSegment({edit_, 0, 3.0});
        vob_->setViewRegion({1, 5}, false);
    }
    std::string config(const std::string& key) const { return edit_->getConfig(key).value_or("-"); }

    EditPtr edit_;
    Kv::Ptr<Vob> vob_;
};

} // namespace

TEST_F(VobBackup, OfAnEditHoldsEverythingAndComesBack) {
    vob_->setStatus(Vob::kStatusRecord);
    vob_->storeBackupDetails();
    const std::string video = edit_->getId(0).asString();
    EXPECT_EQ(config("BACKUP_CURRENT"), "3.5");
    EXPECT_EQ(config("BACKUP_CHAN_SEL"), "1");
    EXPECT_EQ(config("BACKUP_CUTS_" + video), "2");
    EXPECT_EQ(config("BACKUP_SEGS_" + video), "2");
    EXPECT_EQ(config("BACKUP_MARK_IN_" + video), "1.25");
    EXPECT_EQ(config("BACKUP_MARK_OUT_" + video), "-");
    EXPECT_EQ(config("BACKUP_RANGE_END"), "5");

    const auto other = open(edit_);
    other->setSelectedRaw(edit_->getId(1), true);
    other->restoreBackupDetails();
    EXPECT_EQ(other->getEditModule(), vob_->getEditModule());
    EXPECT_EQ(other->getNumUnjoinedCuts(), 1u);
    EXPECT_TRUE(other->isSegmentSelected({edit_, 0, 3.0}));
    EXPECT_EQ(other->getViewRegion(), TimeRange(1, 5));

    vob_->rejoinCuts();
    vob_->invalidateMark(0);
    vob_->storeBackupDetails();
    EXPECT_EQ(config("BACKUP_CUTS_" + video), "-");
    EXPECT_EQ(config("BACKUP_MARK_IN_" + video), "-");
}

TEST_F(VobBackup, OfALogIsShortAndTheSourcesAffair) {
    edit_->setLogType(kLogTypeSource);
    vob_->setStatus(Vob::kStatusRecord);
    vob_->storeBackupDetails();
    EXPECT_EQ(config("BACKUP_CURRENT"), "-");
    vob_->setStatus(Vob::kStatusSource);
    vob_->storeBackupDetails();
    EXPECT_EQ(config("BACKUP_CURRENT"), "3.5");
    EXPECT_EQ(config("BACKUP_RANGE_START"), "-");
    const auto other = open(edit_);
    other->restoreBackupDetails();
    EXPECT_EQ(other->getEditModule().getMark(edit_->getId(1), In), 1.25);
}

TEST_F(VobBackup, MalformedValuesArePassedOver) {
    const std::string video = edit_->getId(0).asString();
    edit_->setConfig("BACKUP_CURRENT", "soon");
    edit_->setConfig("BACKUP_CHAN_SEL", "-1");
    edit_->setConfig("BACKUP_MARK_IN_" + video, "nan");
    edit_->setConfig("BACKUP_CUTS_" + video, "999,x");
    edit_->setConfig("BACKUP_SEGS_" + video, "1,77,4294967296");
    edit_->setConfig("BACKUP_RANGE_START", "1e300");
    edit_->setConfig("BACKUP_RANGE_END", "2");
    vob_->restoreBackupDetails();
    EXPECT_EQ(vob_->getCurrentTime(), 3.5);
    EXPECT_FALSE(vob_->getSelected(1));
    EXPECT_FALSE(vob_->isMarkValid(0));
    EXPECT_FALSE(vob_->anySelectedSegments());
    EXPECT_LE(vob_->getNumUnjoinedCuts(), 1u); // "x" reads as the first event
    EXPECT_EQ(vob_->getViewRegion(), TimeRange(1, 5));
}

TEST_F(VobBackup, UndoAndRedoGoThroughTheEditsHistory) {
    vob_->makeBackup();
    edit_->setName(L"after");
    EXPECT_TRUE(vob_->undoRequest());
    EXPECT_NE(edit_->getName(), L"after");
    EXPECT_TRUE(vob_->redoRequest());
    EXPECT_EQ(edit_->getName(), L"after");
    EXPECT_TRUE(vob_->redoRequest()); // nothing left to redo
}

// --- playing -------------------------------------------------------------------------------------

TEST_F(VobEdit, TheTransportMovesWhatIsRegistered) {
    const auto vob = open(makeEdit());
    RecorderClient client(vob.get(), calls_, "a");
    vob->registerWithPlayServer(true);
    host_.transport().play(1);
    EXPECT_TRUE(vob->isPlaying());
    host_.loop().runFor(2);
    host_.transport().stop();
    host_.loop().pump();
    EXPECT_FALSE(vob->isPlaying());
    EXPECT_NEAR(vob->getCurrentTime(), 2, 0.1);
    EXPECT_EQ(calls_.front(), "a: play state 1");
    EXPECT_EQ(calls_.back(), "a: play state 2");
}
