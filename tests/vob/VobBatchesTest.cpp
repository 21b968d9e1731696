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

TEST_F(VobBatches, AreToldOnceWithTheTimeOfTheirEnd) {
    {
        const VobModificationBatch batch(vob_);
        vob_->setCurrentTime(3);
        {
            const VobModificationBatch inner(vob_);
            vob_->setCurrentTime(4);
        }
        vob_->storeCurrentTime(5);
        EXPECT_THAT(calls_, IsEmpty());
    }
    EXPECT_THAT(calls_, ElementsAre("a: change 2 time 5"));
}

TEST_F(VobBatches, KeepTheFirstMarkTimeAndEveryTrack) {
    std::size_t tracks = 0;
    client_.onChange = [&](const VobModification& m) { tracks = m.getModifiedTracks().size(); };
    {
        const VobModificationBatch batch(vob_);
        vob_->setMarkTime(0, 5, In);
        vob_->setMarkTime(1, 7, In);
        vob_->setMarkTime(1, 8, In);
    }
    EXPECT_THAT(calls_, ElementsAre("a: change 4 time 0 mark 5"));
    EXPECT_EQ(tracks, 3u);
}

TEST_F(VobBatches, WithNothingInThemTellNobody) {
    vob_->beginModifications();
    vob_->setCurrentTime(3);
    vob_->clearModifications();
    vob_->endModifications();
    EXPECT_THAT(calls_, IsEmpty());
}

TEST_F(VobBatches, AnEndWithoutBeginningHoldsEverythingBack) {
    vob_->endModifications();
    vob_->setCurrentTime(3);
    EXPECT_THAT(calls_, IsEmpty());
    vob_->beginModifications(); // made up for
    vob_->setMarkTime(0, 1, In);
    EXPECT_THAT(calls_, ElementsAre("a: change 6 time 3 mark 1"));
}

TEST_F(VobBatches, AClientMayOpenOneWhileItIsTold) {
    client_.onChange = [&](const VobModification& m) {
        if (!m.includes(kVobTime))
            return;
        const VobModificationBatch batch(vob_);
        vob_->setMarkTime(0, 1, In);
        vob_->setMarkTime(1, 1, In);
    };
    vob_->setCurrentTime(2);
    EXPECT_THAT(calls_, ElementsAre("a: change 2 time 2", "a: change 4 time 2 mark 1"));
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

TEST_F(VobBatches, EventsThatAreNotTheVobsOwnAreLeftAlone) {
    Event event;
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

TEST_F(VobBatches, ManyThreadsAddWithoutLosingAKind) {
    vob_->beginModifications();
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < 8; ++i)
        threads.emplace_back([&, i] {
            for (int n = 0; n < 2000; ++n) {
                vob_->beginModifications();
                vob_->addModification(1u << (10 + i));
                vob_->endModifications();
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    vob_->endModifications();
    EXPECT_THAT(calls_, ElementsAre("a: change " + std::to_string(0xFFu << 10) + " time 0"));
}

TEST_F(VobBatches, TellPlainKindsAndThoseWithTracksAsOneChange) {
    IdStamp track;
    client_.onChange = [&](const VobModification& m) { track = m.getModifiedTracks().front(); };
    VobModification marks(kVobMarks);
    marks.addModifiedTrack(IdStamp(1, 2, 3));
    {
        const VobModificationBatch batch(vob_);
        vob_->addModification(kVobCuts);
        vob_->addModification(marks);
        vob_->addModification(kVobTime);
    }
    EXPECT_THAT(calls_, ElementsAre("a: change 14 time 0"));
    EXPECT_EQ(track, IdStamp(1, 2, 3));
}

TEST_F(VobBatches, TheLastShareDroppedElsewhereDestroysOnTheUiThread) {
    std::thread::id destroyedOn;
    struct Watcher final : RecorderClient {
        using RecorderClient::RecorderClient;
        std::thread::id* on = nullptr;
        void setVob(Vob* vob) override {
            if (!vob && on)
                *on = std::this_thread::get_id();
            RecorderClient::setVob(vob);
        }
    };
    auto vob = Kv::makePtr<Vob>(makeEdit());
    Watcher watcher(vob.get(), calls_, "w");
    watcher.on = &destroyedOn;
    vob->informClientsAsync(kVobCuts);
    onWorker([&] { vob.reset(); });
    EXPECT_EQ(destroyedOn, std::thread::id());
    host_.loop().pump();
    EXPECT_EQ(destroyedOn, std::this_thread::get_id());
    EXPECT_EQ(watcher.getVob(), nullptr);
}
