// The clips of a sync group viewed together with the sequence that cuts between them.
#include "platform/prefs/Configuration.h"
#include "sync/MulticamSynchroniser.h"
#include "tests/support/Edits.h"
#include "tests/vob/VobFixture.h"

#include <memory>

using namespace cutroom;
using namespace cutroom::test;
using testing::ElementsAre;

namespace {

// Two cameras of which the second started 5 s earlier, and a sequence that cuts from one to the
// other: camera 1 from 10 s for 4 s, camera 2 from 19 s for 4 s; then a second of something else.
class MulticamTest : public VobFixture {
protected:
    MulticamTest() {
        for (const auto& [name, start] : {std::pair(L"one", 10.0), std::pair(L"two", 15.0)})
            clips_.push_back(view(cameraOf(name), start));
        const EditPtr cut = makeEdit(1, 0);
        layPieces(cut, cut->getFirstChan(kChanVideo),
                  {{L"one", 100, 250}, {L"two", 100, 475}, {L"else", 25, 0}});
        record_ = view(cut, 0);
        group_ = SyncGroupData::make(L"Scene 1");
        for (const auto& clip : clips_)
            group_->add(clip->getCookie());
    }
    static EditPtr cameraOf(const std::wstring& name) {
        const EditPtr log = makeEdit(1, 0, k25, name);
        layPieces(log, log->getFirstChan(kChanVideo), {{name, 1000, 0}});
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
    std::vector<Kv::Ptr<Vob>> clips_;
    Kv::Ptr<Vob> record_;
    Kv::Ptr<SyncGroupData> group_;
    std::unique_ptr<MulticamSynchroniser> multicam_;
};

TEST_F(MulticamTest, aSequenceThatAnotherSynchroniserMovesIsNotFollowed) {
    link();
    record_->setTimeChangeFlags(Vob::kTimeBySynchroniser);
    record_->setCurrentTime(3);
    EXPECT_EQ(times(), (std::vector<double>{10, 15, 3}));
}

TEST_F(MulticamTest, theSequenceIsReadAnewWhenItChanges) {
    MulticamSynchroniser& multicam = link();
    EXPECT_EQ(multicam.findSyncPosForEdit(), 0);
    const EditPtr cut = record_->getEdit();
    ASSERT_TRUE(cut->get_edit_cel_p(0)->insertGap(0, toFlicks(1)).ok());
    EXPECT_EQ(multicam.findSyncPosForEdit(), 1);
    ASSERT_TRUE(cut->get_edit_cel_p(0)->lift({0, 20}).ok());
    EXPECT_EQ(multicam.findSyncPosForEdit(), kNoTime);
    EXPECT_FALSE(multicam.findClipReference().valid());
    layClip(cut, cut->getId(0), 2, 12, clips_[1]->getCookie().id()); // the clip itself is cut in
    EXPECT_EQ(multicam.findClipReference().clip, clips_[1]->getCookie());
    record_->setCurrentTime(5);
    EXPECT_EQ(times(), (std::vector<double>{-2, 3, 5}));
}

TEST_F(MulticamTest, theSequenceIsNotPlayedWhereConfiguredSo) {
    Configuration::instance().set("multicam_sequence_playback_sync", "0");
    EXPECT_EQ(link().getSynchronisedVobs(iVobSynchroniser::kVobsToPlay), clips_);
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
}

TEST_F(MulticamTest, theGroupKeepsWhereTheClipsAreViewed) {
    link(false);
    clips_[0]->setCurrentTime(12);
    clips_[1]->setMarkTime(kChanAllSelected, 3, Kv::MarkTypes::In);
    EXPECT_EQ(group_->getItem(0).time, 12);
    EXPECT_EQ(group_->getItem(1).time, 17);
    EXPECT_EQ(group_->getItem(1).markIn, 3);
    clips_[1]->setMarkTime(kChanAllSelected, 6, Kv::MarkTypes::Out);
    EXPECT_EQ(group_->getItem(1).markOut, 6);
}

TEST_F(MulticamTest, theNextClipBecomesTheReferenceOfThoseThatStay) {
    link();
    EXPECT_EQ(multicam_->offsetOf(clips_[1].get()), 5.0);
    VobManager::instance().close(clips_[0]->findClient(VobSynchroniserLink::kName), true);
    EXPECT_EQ(multicam_->offsetOf(clips_[1].get()), 0.0);
}

TEST_F(MulticamTest, aClipThatPlaysFastOnlySharesItsMarkers) {
    link();
    clips_[0]->addCue(Cue(1, L"before they are shared"));
    MulticamSynchroniser::setSharedMarkers(true);
    VobManager::instance().setPlayMachine(clips_[0].get(), false);
    ASSERT_TRUE(host_.transport().play(5));
    host_.loop().runFor(0.2);
    Cue cue(1, L"fast");
    cue.setChannel(clips_[0]->getEdit()->getId(0));
    clips_[0]->addCue(cue);
    host_.loop().pump();
    EXPECT_GT(clips_[0]->getCurrentTime(), 10);
    EXPECT_EQ(group_->getItem(0).time, 10) << "where it stood before";
    EXPECT_EQ(record_->getCurrentTime(), 0);
    const CueList shared = clips_[1]->getEdit()->getCues();
    ASSERT_EQ(shared.getNumCuePoints(), 1u);
    EXPECT_FALSE(shared.getCuePoint(0).getChannel().valid()) << "that clip has no such channel";
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
    link(); // also when a link that had suspended it is deleted
    clips_[0]->setTimeChangeFlags(Vob::kTimeSuspendsSync);
    clips_[0]->setCurrentTime(1);
    ASSERT_FALSE(multicam_->getSyncEnabled());
    keepers_[1]->onChange = [&](const VobModification& change) {
        if (change.includes(kVobSyncOn))
            multicam_.reset();
    };
    VobManager::instance().close(clips_[0]->findClient(VobSynchroniserLink::kName), true);
    EXPECT_FALSE(multicam_);
    EXPECT_EQ(clips_[0]->getNumClients(), 1u);
}

} // namespace
