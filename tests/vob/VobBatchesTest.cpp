#include "platform/messaging/EventQueue.h"
#include "tests/vob/VobFixture.h"
#include "vob/VobModificationBatch.h"

#include <thread>

using namespace cutroom::test;
using Kv::MarkTypes::In;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class VobBatches : public VobFixture {
protected:
    VobBatches() : vob_(open(makeEdit())), client_(vob_.get(), calls_, "a") {}
    void onWorker(std::function<void()> work) { std::thread(std::move(work)).join(); }

    Kv::Ptr<Vob> vob_;
    RecorderClient client_;
};

} // namespace

TEST(VobModification, FromTextSaysNothingAtTimeZero) {
    const VobModification read(LightweightString<char>("2 1.5 0.0.1"));
    EXPECT_FALSE(read.valid());
    EXPECT_EQ(read.getTime(), 0.0);
    EXPECT_EQ(read.getMarkTime(), 0.0);
    EXPECT_EQ(VobModification(6).getTime(), kNoTime);
    EXPECT_EQ(VobModification(6).asString(), "");
}

TEST_F(VobBatches, OfTracksKnowTheTypesThatTheEditHas) {
    const EditPtr edit = vob_->getEdit();
    VobModification change(kVobMarks);
    EXPECT_EQ(change.getModifiedTrackTypes(edit), 0u);
    for (const IdStamp& track : {edit->getId(0), edit->getId(1), IdStamp(9, 9, 9)})
        change.addModifiedTrack(track);
    EXPECT_EQ(change.getModifiedTrackTypes(edit), unsigned{kChanVideo | kChanAudio});
    EXPECT_EQ(change.getModifiedTrackTypes(EditPtr()), 0u);
    EXPECT_TRUE(change.affectsTrack(edit->getId(1)));
    EXPECT_FALSE(change.affectsTrack(edit->getId(2)));
}

TEST_F(VobBatches, TellAllKindsAndTracksWithTheFirstMarkTimeAsOneChange) {
    std::list<IdStamp> tracks;
    client_.onChange = [&](const VobModification& m) { tracks = m.getModifiedTracks(); };
    {
        const VobModificationBatch batch(vob_);
        vob_->addModification(kVobCuts);
        VobModification nothing(0);
        nothing.setMarkTime(9);
        vob_->addModification(nothing);
        vob_->setMarkTime(0, 5, In);
        vob_->setMarkTime(1, 7, In);
        vob_->setCurrentTime(3);
        vob_->setMarkTime(1, 8, In);
        vob_->storeCurrentTime(4);
    }
    const EditPtr edit = vob_->getEdit();
    EXPECT_THAT(calls_, ElementsAre("a: change 14 time 4 mark 5"));
    EXPECT_THAT(tracks, ElementsAre(edit->getId(0), edit->getId(1), edit->getId(1)));
}

TEST_F(VobBatches, AnEndWithoutBeginningHoldsEverythingBack) {
    vob_->endModifications();
    vob_->setCurrentTime(3);
    EXPECT_THAT(calls_, IsEmpty());
    vob_->beginModifications(); // made up for
    vob_->setMarkTime(0, 1, In);
    EXPECT_THAT(calls_, ElementsAre("a: change 6 time 3 mark 1"));
}

// --- from other threads --------------------------------------------------------------------------

TEST_F(VobBatches, FromAnotherThreadArriveWithTheTimeOfTheirArrival) {
    IdStamp track;
    client_.onChange = [&](const VobModification& m) { track = m.getModifiedTracks().front(); };
    const IdStamp wanted = vob_->getEdit()->getId(1);
    onWorker([&] {
        VobModification change(kVobTime | kVobMarks);
        change.setTime(77);
        change.setMarkTime(2.25);
        change.addModifiedTrack(wanted);
        vob_->addModification(change);
        vob_->addModification(change); // waits already
    });
    EXPECT_THAT(calls_, IsEmpty());
    vob_->storeCurrentTime(6);
    host_.loop().pump();
    EXPECT_THAT(calls_, ElementsAre("a: change 6 time 6 mark 2.25"));
    EXPECT_EQ(track, wanted);
}

TEST_F(VobBatches, FromAnotherThreadCarryTheEditsChangesWithoutTheDescription) {
    onWorker([&] { vob_->informClients(EditModifications(kModName), VobModification(kVobCuts)); });
    host_.loop().pump();
    EXPECT_THAT(calls_, ElementsAre("a: edit 3 change 0"));
}

TEST_F(VobBatches, TellingsOfOtherKindsFromAnotherThreadArriveAsGiven) {
    const Cookie other = makeEdit().getCookie();
    vob_->beginModifications();
    vob_->setSelected(2, false);
    onWorker([&] {
        vob_->informFocusChanged(true);
        vob_->informPlayStateChange(kPlayStateStopped);
        vob_->informOtherEditAltered(other, EditModifications(kModName));
        vob_->endModifications(); // the mix follows
    });
    EXPECT_THAT(calls_, IsEmpty());
    host_.loop().pump();
    EXPECT_THAT(calls_,
                ElementsAre("a: focus", "a: play state 2", "a: other " + other.asString() + " 3",
                            "a: change 16 time 0", "a: edit 27 change 0"));
}

TEST_F(VobBatches, EventsThatAreNotTheVobsOwnAreLeftAlone) {
    Event event;
    EXPECT_FALSE(event_send(event)); // to nobody
    event.type = Event::kChangeType;
    event.keyCode = 1;
    event.text = "0 0 0.0.0";
    event.value = 2;
    EXPECT_EQ(vob_->handleEvent(event), EventHandler::kNotConsumed);
    event.handler = vob_.get();
    for (const auto& [type, key, text] :
         {std::tuple(5, 1, "0 0 0.0.0"), std::tuple(Event::kChangeType, 2, "0 0 0.0.0"),
          std::tuple(Event::kChangeType, 1, "nonsense"), std::tuple(Event::kChangeType, 0, "")}) {
        event.type = type;
        event.keyCode = key;
        event.text = text;
        EXPECT_EQ(vob_->handleEvent(event), EventHandler::kConsumed);
    }
    EXPECT_THAT(calls_, IsEmpty());
}

TEST_F(VobBatches, TheLastShareDroppedElsewhereDestroysOnTheUiThread) {
    auto vob = Kv::makePtr<Vob>(makeEdit());
    const RecorderClient last(vob.get(), calls_, "last");
    vob->informClientsAsync(kVobCuts);
    onWorker([&] { vob.reset(); });
    EXPECT_NE(last.getVob(), nullptr);
    host_.loop().pump();
    EXPECT_EQ(last.getVob(), nullptr);
}
