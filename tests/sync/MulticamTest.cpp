// The clips of a sync group viewed together with the sequence that cuts between them.
#include "platform/messaging/NotifyMsgTypeDictionary.h"
#include "platform/prefs/Configuration.h"
#include "platform/prefs/EditorPreferences.h"
#include "sync/MulticamSynchroniser.h"
#include "tests/support/Edits.h"
#include "tests/vob/VobFixture.h"

#include <memory>

using namespace cutroom;
using namespace cutroom::test;
using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::Not;

namespace {

using VobList = std::vector<Kv::Ptr<Vob>>;

// Two cameras of which the second started 5 s earlier, and a sequence that cuts from one to the
// other: camera 1 from 10 s for 4 s, camera 2 from 19 s for 4 s; on V2 camera 1 again, at half
// speed; then a second of something else.
class MulticamTest : public VobFixture {
protected:
    MulticamTest() {
        for (const auto& [name, start] : {std::pair(L"one", 10.0), std::pair(L"two", 15.0)})
            clips_.push_back(view(cameraOf(name), start));
        const EditPtr cut = makeEdit(2, 0);
        const auto chans = cut->getChans(kChanVideo);
        layPieces(cut, chans[0], {{L"one", 100, 250}, {L"two", 100, 475}, {L"else", 25, 0}});
        CelSegment slow;
        slow.start = toFlicks(20);
        slow.end = toFlicks(24);
        slow.stripStart = toFlicks(25);
        slow.material = materialOf(L"one");
        slow.speed = 0.5;
        EXPECT_TRUE(cut->get_edit_cel_p(chans[1])->overwrite(slow).ok());
        record_ = view(cut, 0);
        group_ = SyncGroupData::make(L"Scene 1");
        for (const auto& clip : clips_)
            group_->add(clip->getCookie());
    }
    static EditPtr cameraOf(const std::wstring& name) {
        const EditPtr log = makeEdit(1, 0, k25, name);
        layPieces(log, log->getChans(kChanVideo)[0], {{name, 1000, 0}});
        return log;
    }
    Kv::Ptr<Vob> view(const EditPtr& edit, double seconds) {
        const Kv::Ptr<Vob> vob = open(edit);
        vob->setCurrentTime(seconds);
        keepers_.push_back(std::make_unique<RecorderClient>(vob.get(), calls_, "keeper"));
        return vob;
    }
    MulticamSynchroniser& link(bool follow = true) {
        VobManager::instance().setRecordMachine(record_.get(), 3);
        multicam_ = std::make_unique<MulticamSynchroniser>(group_, follow);
        multicam_->setItemsToSync(clips_);
        calls_.clear();
        return *multicam_;
    }
    std::vector<double> times() const {
        return {clips_[0]->getCurrentTime(), clips_[1]->getCurrentTime(),
                record_->getCurrentTime()};
    }

    std::vector<std::unique_ptr<RecorderClient>> keepers_;
    VobList clips_;
    Kv::Ptr<Vob> record_;
    Kv::Ptr<SyncGroupData> group_;
    std::unique_ptr<MulticamSynchroniser> multicam_;
};

TEST_F(MulticamTest, clipsAndSequenceFollowEachOther) {
    MulticamSynchroniser& multicam = link();
    EXPECT_TRUE(multicam.canSyncWithEdit());
    const struct {
        const char* what;
        Kv::Ptr<Vob> moved;
        double to;
        std::vector<double> expected; // camera 1, camera 2, sequence
    } rows[] = {
        {"camera 1 is seen", clips_[0], 12, {12, 17, 2}},
        {"camera 2 is seen", clips_[0], 15, {15, 20, 5}},
        {"by camera 2", clips_[1], 16.04, {11.04, 16.04, 1.04}},
        {"the end counts", clips_[0], 18, {18, 23, 8}},
        {"not on the sequence", clips_[0], 20, {20, 25, 8}},
        {"at half speed", clips_[0], 25.5, {25.5, 30.5, 21}},
        {"the sequence is moved", record_, 3, {13, 18, 3}},
        {"… to camera 2", record_, 6, {16, 21, 6}},
        {"… to something else", record_, 8.5, {16, 21, 8.5}},
        {"… to the slow one", record_, 23, {26.5, 31.5, 23}},
    };
    for (const auto& row : rows) {
        row.moved->setCurrentTime(row.to);
        EXPECT_EQ(times(), row.expected) << row.what;
    }
    record_->setTimeChangeFlags(Vob::kTimeBySynchroniser);
    record_->setCurrentTime(0); // by somebody else's hand: not fed back
    EXPECT_EQ(times(), (std::vector<double>{26.5, 31.5, 0}));
    multicam.setCurrentTimeUnsynced(clips_[1], 15);
    EXPECT_EQ(times(), (std::vector<double>{10, 15, 0}));
    EXPECT_TRUE(multicam.getEditFollowing());
    multicam.setEditFollowing(false);
    clips_[0]->setCurrentTime(12);
    EXPECT_EQ(record_->getCurrentTime(), 0);
    EXPECT_EQ(multicam.findSyncPosForEdit(), 2);
    EXPECT_FALSE(multicam.canSyncWithEdit());
}

TEST_F(MulticamTest, theSequenceIsReadAnewWhenItChanges) {
    MulticamSynchroniser& multicam = link();
    EXPECT_EQ(multicam.findSyncPosForEdit(), 0);
    const EditPtr cut = record_->getEdit();
    ASSERT_TRUE(cut->get_edit_cel_p(0)->insertGap(0, toFlicks(1)).ok());
    EXPECT_EQ(multicam.findSyncPosForEdit(), 1);
    ASSERT_TRUE(cut->get_edit_cel_p(0)->lift({0, 20}).ok());
    ASSERT_TRUE(cut->get_edit_cel_p(1)->lift({0, 30}).ok());
    EXPECT_EQ(multicam.findSyncPosForEdit(), kNoTime);
    EXPECT_FALSE(multicam.findClipReference().valid());
    layClip(cut, cut->getId(0), 2, 12, clips_[1]->getCookie().id()); // the clip itself is cut in
    EXPECT_EQ(multicam.findClipReference().clip, clips_[1]->getCookie());
    record_->setCurrentTime(5);
    EXPECT_EQ(times(), (std::vector<double>{-2, 3, 5}));
}

TEST_F(MulticamTest, playersGoByTheLimitAndTheRecordViewer) {
    for (const wchar_t* name : {L"three", L"four"})
        clips_.push_back(view(cameraOf(name), 0));
    MulticamSynchroniser& multicam = link(false);
    const auto players = [&] { return multicam.getSynchronisedVobs(1); };
    const auto first = [&](std::size_t count, bool andRecord) {
        VobList vobs(clips_.begin(), clips_.begin() + static_cast<std::ptrdiff_t>(count));
        if (andRecord)
            vobs.push_back(record_);
        return vobs;
    };
    const struct {
        std::uint16_t limit;
        std::size_t alone, beside; // clips without and with the sequence
    } rows[] = {{0, 4, 4}, {1, 1, 4}, {2, 2, 1}, {4, 4, 3}, {9, 4, 4}};
    for (const auto& row : rows) {
        MulticamSynchroniser::setMaxConcurrentPlayers(row.limit);
        multicam.setEditFollowing(false);
        EXPECT_THAT(players(), ElementsAreArray(first(row.alone, false))) << row.limit;
        multicam.setEditFollowing(true);
        EXPECT_THAT(players(), ElementsAreArray(first(row.beside, true))) << row.limit;
        EXPECT_THAT(multicam.getSynchronisedVobs(0), ElementsAreArray(clips_));
    }
    multicam.setSyncEnabled(false);
    EXPECT_THAT(players(), testing::IsEmpty());
    VobManager::instance().setSourceMachine(clips_[2].get(), 3);
    EXPECT_THAT(players(), ElementsAre(clips_[2]));
    EXPECT_EQ(multicam.getCaps(), 1u);
}

TEST_F(MulticamTest, theSequenceIsNotPlayedWhereConfiguredSo) {
    Configuration::instance().set("multicam_sequence_playback_sync", "0");
    EXPECT_THAT(link().getSynchronisedVobs(1), ElementsAreArray(clips_));
}

TEST_F(MulticamTest, switchingOnBringsTheClipsIntoLineStoresAndTells) {
    MulticamSynchroniser& multicam = link(false);
    keepers_[0]->onChange = [&](const VobModification& change) {
        if (change.includes(kVobSyncOn))
            multicam.setSyncEnabled(true); // once more, while told: no round of its own
    };
    multicam.setSyncEnabled(true); // as it is
    EXPECT_THAT(calls_, ElementsAre("keeper: change 2 time 15", "keeper: change 1048576",
                                    "keeper: change 1048576"));
    group_->storeRelationships({});
    calls_.clear();
    multicam.setSyncEnabled(false);
    EXPECT_THAT(calls_, ElementsAre("keeper: change 524288", "keeper: change 524288"));
    clips_[0]->setCurrentTime(0);
    clips_[1]->setCurrentTime(30); // moved last: the others go by it
    EXPECT_TRUE(group_->relationships().empty());
    calls_.clear();
    multicam.setSyncEnabled(true);
    EXPECT_EQ(times(), (std::vector<double>{25, 30, 0}));
    EXPECT_THAT(calls_, ElementsAre("keeper: change 2 time 25", "keeper: change 1048576",
                                    "keeper: change 1048576"));
    const Cookie one = clips_[0]->getCookie(), two = clips_[1]->getCookie();
    EXPECT_THAT(group_->relationships(), ElementsAre(std::pair(one, 0.0), std::pair(two, 5.0)));
    // and back: as it was stored, wherever the clips stand
    clips_[0]->storeCurrentTime(0);
    multicam.setItemsToSync(clips_);
    EXPECT_EQ(multicam.offsetOf(clips_[1].get()), 30);
    EXPECT_EQ(multicam.restoreClipSyncRelationships(), 1u);
    multicam.resync();
    EXPECT_EQ(times(), (std::vector<double>{25, 30, 0}));
}

TEST_F(MulticamTest, theGroupKeepsWhereTheClipsAreViewed) {
    MulticamSynchroniser& multicam = link(false);
    std::vector<unsigned> told;
    const auto guard = group_->registerNotification(
        makeCallback<NotifyMsg>([&](const NotifyMsg& message) {
            told.push_back(message.getObjectAs<ContainerBase::Modifications>()->getTypes());
        }),
        NotifyMsgTypeDictionary::kGeneralChange);
    clips_[0]->setCurrentTime(12);
    clips_[1]->setMarkTime(kChanAllSelected, 3, Kv::MarkTypes::In);
    multicam.setSyncEnabled(false);
    clips_[0]->setCurrentTime(1);
    clips_[0]->setTransientTimeChange(true);
    clips_[0]->setCurrentTime(2);
    clips_[1]->setTimeChangeFlags(Vob::kTimeBySynchroniser);
    clips_[1]->setCurrentTime(4); // not looked at
    EXPECT_THAT(told, ElementsAre(128, 128, 128 | SyncGroupData::kModClipMovedAlone, 128));
    EXPECT_EQ(group_->getItem(0).time, 2);
    EXPECT_EQ(group_->getItem(1).time, 17);
    EXPECT_EQ(group_->getItem(1).markIn, 3);
}

TEST_F(MulticamTest, markersAreRepeatedOnTheOtherClips) {
    link(false);
    const EditPtr one = clips_[0]->getEdit(), two = clips_[1]->getEdit();
    one->addCue(Cue(1, L"not shared"));
    host_.loop().pump();
    MulticamSynchroniser::setSharedMarkers(true);
    Cue cue({11, 12}, L"slate");
    const auto timesOf = [&](const EditPtr& edit) {
        host_.loop().pump();
        std::vector<double> times;
        const CueList cues = edit->getCues();
        for (const Cue& each : cues.cues())
            times.push_back(each.getTime());
        return times;
    };
    one->addCue(cue);
    EXPECT_THAT(timesOf(two), ElementsAre(16));
    EXPECT_EQ(two->getCues().getCuePoint(0).getEndTime(), 17);
    cue.setTime(20);
    cue.setEndTime(kNoTime);
    EXPECT_TRUE(two->changeCue(cue)); // on the other clip
    EXPECT_THAT(timesOf(one), ElementsAre(1, 15));
    EXPECT_THAT(timesOf(two), ElementsAre(20));
    two->addCue(Cue(30, L"own"), MulticamSynchroniser::kName);
    EXPECT_THAT(timesOf(one), ElementsAre(1, 15));
    EditManager::instance().makeBackup(one, "Clear");
    one->removeCue(cue.getExtID());
    EXPECT_THAT(timesOf(two), ElementsAre(30));
    EditManager::instance().undo(one); // what changed is not named
    EXPECT_THAT(timesOf(two), ElementsAre(20, 30));
    one->setCues(CueList());
    EXPECT_THAT(timesOf(two), ElementsAre(30));
}

TEST_F(MulticamTest, aClipThatPlaysFastOnlySharesItsMarkers) {
    link();
    MulticamSynchroniser::setSharedMarkers(true);
    VobManager::instance().setPlayMachine(clips_[0].get(), false);
    ASSERT_TRUE(host_.transport().play(5));
    host_.loop().runFor(0.2);
    clips_[0]->addCue(Cue(1, L"fast"));
    host_.loop().pump();
    EXPECT_GT(clips_[0]->getCurrentTime(), 10);
    EXPECT_EQ(group_->getItem(0).time, 0);
    EXPECT_EQ(record_->getCurrentTime(), 0);
    EXPECT_EQ(clips_[1]->getEdit()->getCues().getNumCuePoints(), 1u);
}

TEST_F(MulticamTest, itMayGoWheneverSomebodyIsTold) {
    for (const auto& where : {clips_[0], clips_[1], record_}) {
        clips_[0]->setCurrentTime(10);
        clips_[1]->setCurrentTime(15);
        link();
        RecorderClient destroyer(where.get(), calls_, "destroys", 9);
        destroyer.onChange = [&](const VobModification&) { multicam_.reset(); };
        clips_[0]->setCurrentTime(12);
        EXPECT_FALSE(multicam_);
        EXPECT_FALSE(VobSynchroniser::isSynced(clips_[1].get()));
    }
}

} // namespace
