#include "platform/prefs/Configuration.h"
#include "platform/prefs/EditorPreferences.h"
#include "platform/project/CurrentProject.h"
#include "tests/support/TempFolder.h"
#include "tests/vob/VobFixture.h"

using namespace cutroom::test;
using Kv::MarkTypes::In;
using Kv::MarkTypes::Out;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

class VobEdit : public VobFixture {
protected:
    EditPtr edit_ = makeEdit(10, 2, 1);
    Kv::Ptr<Vob> vob_ = open(edit_);
    RecorderClient client_{vob_.get(), calls_, "a"};
};

} // namespace

TEST_F(VobEdit, IsMadeEmptyWhenNoneIsGiven) {
    const auto vob = VobManager::instance().createVob(EditPtr());
    ASSERT_TRUE(vob->hasEdit());
    EXPECT_EQ(vob->getCookie(), vob->getEdit().getCookie());
    EXPECT_EQ(vob->getEdit()->getNumChans(), 1 + 4);
    EXPECT_FALSE(vob->getGroupId().empty());
    const Cookie wanted = makeNewEditCookie();
    EXPECT_EQ(VobManager::instance().createVob(wanted)->getCookie(), wanted);
}

TEST_F(VobEdit, ReplacedKeepsOrDropsTheModule) {
    const EditPtr other = makeEdit(20);
    vob_->storeCurrentTime(4);
    vob_->storeMarkTime(IdStamp(), 2, In);
    vob_->setSelectedRaw(edit_->getId(0), false);
    vob_->setPreviewTrackID(edit_->getId(0));
    vob_->setEdit(other, true);
    EXPECT_EQ(vob_->getPreviewTrackID(), IdStamp()); // of the other edit
    EXPECT_EQ(vob_->getCurrentTime(), 4.0);
    EXPECT_EQ(vob_->getEditModule().getMark(other->getId(0), In), 2.0);
    EXPECT_TRUE(vob_->getSelected(0)); // selections do not travel between edits
    EXPECT_EQ(vob_->getEditExtents(), TimeRange(0, 20));
    vob_->setEdit(edit_, false);
    EXPECT_EQ(vob_->getCurrentTime(), 0.0);
    EXPECT_FALSE(vob_->isMarkValid());
    EXPECT_THAT(calls_, ElementsAre("a: change 32 time 4", "a: change 32 time 0"));
}

TEST_F(VobEdit, ReplacedLosesTheSelectedSegmentsAndSaysSo) {
    const IdStamp levels = edit_->addLevelsChan(edit_->getId(2));
    ASSERT_TRUE(edit_->setLevelNodes(levels, {{cutroom::toFlicks(1), 0.5F}}));
    vob_->selectSegment({edit_, 0, 3.0});
    vob_->selectLevelNode(levels, 1, true);
    calls_.clear();
    vob_->setEdit(edit_, true);
    EXPECT_FALSE(vob_->anySelectedSegments());
    EXPECT_TRUE(vob_->isLevelNodeSelected(levels, 1)); // of the same edit
    vob_->setEdit(makeEdit(), true);
    EXPECT_FALSE(vob_->anySelectedLevelNodes());
    EXPECT_THAT(calls_, ElementsAre("a: change 262144 time 0", "a: change 32 time 0",
                                    "a: change 32 time 0"));
}

TEST_F(VobEdit, IsReplacedByAViewEditThatThoseWhoAreToldTakeAway) {
    const EditPtr view = makeEdit();
    vob_->setViewEdits({view});
    vob_->selectSegment({edit_, 0, 3.0});
    client_.onChange = [&](const VobModification&) { vob_->setViewEdits({}); };
    vob_->setEdit(vob_->getViewEdits().front(), false);
    EXPECT_EQ(vob_->getEdit(), view);
}

TEST_F(VobEdit, SetUpAnewTakesMarksAndCueEventsAsStored) {
    edit_->setConfig("BACKUP_MARK1", 2.0);
    vob_->storeMarkTime(IdStamp(), 5, Out);
    vob_->storeCurrentTime(3);
    vob_->cel_cues_on();
    vob_->setupFromEdit();
    EXPECT_EQ(vob_->getMarkTime(0), 2.0);
    EXPECT_EQ(vob_->getEditModule().getMark(Out), kNoTime);
    EXPECT_EQ(vob_->getCurrentTime(), 0.0);
    EXPECT_TRUE(open(edit_)->get_cel_cues_loaded());
    vob_->cel_cues_off();
    EXPECT_FALSE(open(edit_)->get_cel_cues_loaded());
}

TEST_F(VobEdit, ModulesAreToldWithTheTimeOnlyWhenItMoved) {
    EditModule module = vob_->getEditModule();
    module.selectChan(edit_->getId(0), false);
    vob_->setEditModule(module, true);
    EXPECT_FALSE(vob_->getSelected(0));
    module.setCurrentTime(3);
    vob_->setEditModule(module, true);
    vob_->setEditModule(module, false);
    EXPECT_THAT(calls_, ElementsAre("a: change 20 time 0", "a: change 22 time 3"));
}

TEST_F(VobEdit, CopiesViewTheSameEditWithoutClientsAndRoles) {
    vob_->setCurrentTime(3);
    vob_->setViewRegion({2, 4}, false);
    vob_->setStatus(Vob::kStatusAll);
    const auto same = Kv::makePtr<Vob>(*vob_);
    const auto fresh = Kv::makePtr<Vob>(vob_.get());
    for (const auto& copy : {same, fresh}) {
        EXPECT_EQ(copy->getEdit(), edit_);
        EXPECT_EQ(copy->getCurrentTime(), 3.0);
        EXPECT_EQ(copy->getNumClients(), 0u);
        EXPECT_EQ(copy->getStatus(), 0u);
    }
    EXPECT_EQ(same->getViewRegion(), TimeRange(2, 4));
    EXPECT_EQ(same->getGroupId(), vob_->getGroupId());
    EXPECT_NE(fresh->getGroupId(), vob_->getGroupId());
    vob_->setStatus(0);
}

TEST_F(VobEdit, ValuesAreToldWhenTheyDiffer) {
    const EditPtr other = makeEdit();
    int tabStops = 0;
    const auto guard = vob_->getConsoleTabStopsServer().registerNotification(
        makeCallback<NotifierEvent<unsigned>>([&](const auto&) { ++tabStops; }),
        ValServerBase::valChangedMsgType);
    for (int twice = 0; twice < 2; ++twice) {
        vob_->setViewEdits({other});
        vob_->setVisibleCuesFilter(CueFilter(4, -1));
        vob_->setCustomStillsProviders({});
        vob_->setConsoleTabStops(1);
    }
    EXPECT_THAT(calls_, ElementsAre("a: change 128 time 0", "a: change 2097152 time 0"));
    EXPECT_EQ(tabStops, 1);
    EXPECT_EQ(vob_->getMasterViewCookie(), other.getCookie());
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
    const auto other = open(edit_);
    RecorderClient b(other.get(), calls_, "b");
    VobModification change(kVobTime | kVobMarks);
    change.setTime(3);
    change.setMarkTime(2);
    vob_->setChangeDescription(EditModifications(kModName), change);
    EXPECT_EQ(vob_->getCurrentTime(), 3.0);
    EXPECT_EQ(vob_->getMarkTime(kChanAllSelected), 2.0);
    edit_->addModification(kModName, true);
    EXPECT_THAT(std::exchange(calls_, {}),
                ElementsAre("a: edit 3 change 6 time 3 mark 2", "b: edit 3 change 0",
                            "a: edit 3 change 0", "b: edit 3 change 0"));
    vob_->setChangeDescription(EditModifications(), kVobCuts); // goes to everybody on the edit
    vob_->setChangeDescription(EditModifications(), 0);
    EXPECT_THAT(calls_, ElementsAre("a: change 8", "b: change 8"));
}

TEST_F(VobEdit, AnEditChangeMayInsistOnTheDescription) {
    for (const bool keeps : {true, false}) {
        EditModifications changes(kModName);
        changes.setKeepsChangeDescription(keeps);
        vob_->informClients(changes, kVobCuts);
    }
    vob_->informClients(kVobTime); // takes the current time when it brings none
    EXPECT_THAT(calls_,
                ElementsAre("a: edit 3 change 0", "a: edit 3 change 8", "a: change 2 time 0"));
}

TEST_F(VobEdit, NewChannelsTakeTheMarksAndGoneOnesLoseTheirSelections) {
    vob_->storeMarkTime(IdStamp(), 2, In);
    const IdStamp gone = edit_->getId(1);
    ASSERT_NE(vob_->getTrackSelections(gone), nullptr);
    vob_->selectSegment({edit_, 0, 3.0});
    const IdStamp added = edit_->addChan(kChanAudio);
    ASSERT_TRUE(edit_->removeChan(gone, false));
    edit_->addModification(kModGeneral, true);
    EXPECT_EQ(vob_->getEditModule().getMark(added, In), 2.0);
    EXPECT_EQ(vob_->findTrackSelections(gone), nullptr);
    EXPECT_EQ(vob_->getTrackSelections(gone), nullptr);
    EXPECT_FALSE(vob_->anySelectedSegments()); // of any channel
    EXPECT_THAT(calls_.back(), HasSubstr("change 262144"));
}

TEST_F(VobEdit, WhatWasSelectedOnAChannelThatGoesIsTold) {
    const IdStamp gone = edit_->getId(2), levels = edit_->addLevelsChan(gone);
    edit_->setLevelNodes(levels, {{0, 0.5F}});
    edit_->addModification(kModGeneral, true);
    vob_->selectSegment({edit_, 2, 3.0});
    vob_->unjoinCut(gone, edit_->get_edit_cel_p(gone)->getHandle(0));
    vob_->selectLevelNode(levels, 0, true);
    ASSERT_TRUE(edit_->removeChan(gone, true));
    EXPECT_THAT(calls_.back(), testing::EndsWith("change 393224")); // segments, nodes and cuts
}

TEST_F(VobEdit, TheClipboardIsShownFromItsStartWithItsEndMarked) {
    const EditPtr clipboard = EditManager::instance().getClipboard();
    const auto vob = open(clipboard);
    vob->storeCurrentTime(3);
    layClip(clipboard, clipboard->addChan(kChanVideo), 0, 6);
    vob->setSelectedRaw(clipboard->getId(0), true);
    clipboard->addModification(kModName, true);
    EXPECT_EQ(vob->getCurrentTime(), 3.0); // its contents stay
    clipboard->addModification(kModRestored, true);
    EXPECT_EQ(vob->getCurrentTime(), 0.0);
    EXPECT_EQ(vob->getEditModule().getMark(clipboard->getId(0), In), 6.0);
}

TEST_F(VobEdit, TheProjectMayCloseWhileTheFirstPartOfAChangeIsTold) {
    const TempFolder folder;
    ASSERT_TRUE(CurrentProject::open(folder / "p", CurrentProject::Access::readWrite,
                                     CurrentProject::IfMissing::create));
    client_.onChange = [&](const VobModification&) {
        VobManager::instance().closeInternal(&client_);
        EXPECT_TRUE(CurrentProject::close());
    };
    vob_->setPreviewing(true, true);
    layClip(edit_, edit_->getId(0), 12, 14);
    EditModifications changes(kModLength); // moves the region
    changes.add(kModRestored);
    vob_->preNotifyClients(changes, 0);
    EXPECT_FALSE(vob_->hasEdit());
    EXPECT_EQ(vob_->getOriginalTime(), kNoTime);
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
    vob_->restoreBackupDetails(); // there is nothing to come back
    EXPECT_EQ(vob_->getMarkTime(0), 1.25);
    vob_->setStatus(Vob::kStatusRecord);
    vob_->storeBackupDetails();
    const std::string video = edit_->getId(0).asString();
    for (const auto& [key, value] :
         std::map<std::string, std::string>{{"BACKUP_CURRENT", "3.5"},
                                            {"BACKUP_MARK1", "1.25"},
                                            {"BACKUP_MARK2", "8"},
                                            {"BACKUP_CHAN_SEL", "1"},
                                            {"BACKUP_CUTS_" + video, "2"},
                                            {"BACKUP_SEGS_" + video, "2"},
                                            {"BACKUP_MARK_IN_" + video, "1.25"},
                                            {"BACKUP_MARK_OUT_" + video, "-"},
                                            {"BACKUP_RANGE_START", "1"},
                                            {"BACKUP_RANGE_END", "5"}})
        EXPECT_EQ(config(key), value) << key;

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
