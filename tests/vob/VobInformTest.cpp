// Clients that come and go while they are told are played through in ClientModelTest.cpp.
#include "platform/host/TransitStatus.h"
#include "platform/prefs/TimedTask.h"
#include "platform/store/CelEventPair.h"
#include "tests/vob/VobFixture.h"

#include <stdexcept>

using namespace cutroom::test;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

class VobInform : public VobFixture {
protected:
    VobInform() : vob_(open(makeEdit())) {}
    std::unique_ptr<RecorderClient> attach(const std::string& name, int priority = 0) {
        return std::make_unique<RecorderClient>(vob_.get(), calls_, name, priority);
    }
    // The clients that were told of a change, in order.
    std::string told() {
        std::string names;
        for (const std::string& call : calls_)
            if (call.find(": change") != std::string::npos)
                names += call.substr(0, call.find(':'));
        calls_.clear();
        return names;
    }

    Kv::Ptr<Vob> vob_;
};

struct CountedVob final : Vob {
    CountedVob(const EditPtr& edit, int& ended) : Vob(edit), ends(ended) {}
    ~CountedVob() override { ++ends; }
    int& ends;
};

} // namespace

TEST_F(VobInform, GoesByPriorityThenByAge) {
    const auto a = attach("a", 1), b = attach("b", 3), c = attach("c", 1), d = attach("d", 3);
    vob_->informClients(kVobCuts);
    EXPECT_EQ(told(), "bdac");
    c->setPriority(static_cast<eClientPriority>(9));
    vob_->informClients(kVobCuts);
    EXPECT_EQ(told(), "cbda");
}

TEST_F(VobInform, AnotherClientAtTheSameAddressIsToldToo) {
    alignas(RecorderClient) std::byte storage[sizeof(RecorderClient)];
    auto* first = new (storage) RecorderClient(vob_.get(), calls_, "first", 5);
    const auto last = attach("last");
    first->onChange = [&](const VobModification&) {
        first->~RecorderClient();
        first = new (storage) RecorderClient(vob_.get(), calls_, "second", 5);
    };
    vob_->informClients(kVobCuts);
    EXPECT_EQ(told(), "firstlastsecond");
    first->~RecorderClient();
}

TEST_F(VobInform, ATellingInsideATellingKeepsItsOwnRecord) {
    const auto a = attach("a"), b = attach("b"), c = attach("c");
    std::unique_ptr<RecorderClient> n;
    b->onChange = [&](const VobModification& m) {
        if (!m.includes(kVobTime))
            return;
        vob_->informClients(kVobMarks);
        n = attach("n");
        vob_->informClients(kVobSegments);
    };
    vob_->informClients(kVobTime);
    EXPECT_EQ(told(), "ab"
                      "abc"
                      "abcn"
                      "cn");
}

TEST_F(VobInform, AClientThatFailsDoesNotSilenceTheOthers) {
    const auto a = attach("a"), b = attach("b"), c = attach("c");
    a->onChange = [](const VobModification&) { throw std::runtime_error("no picture"); };
    b->onChange = [](const VobModification&) { throw 5; };
    vob_->informClients(kVobCuts);
    EXPECT_EQ(told(), "abc");
    EXPECT_THAT(log_.lines, Contains(HasSubstr("no picture")));
    struct Deaf final : VobClient {
        Deaf(Vob* vob) : VobClient(vob, kClientPriorityLowest, kClientUnmanaged) {}
        void handleMessage(const LightweightString<char>&) override {
            throw std::runtime_error("no ears");
        }
    };
    const Deaf deaf(vob_.get());
    vob_->sendMessageToClient("VobClient", "hello");
    EXPECT_THAT(log_.lines, Contains(HasSubstr("no ears")));
}

TEST_F(VobInform, ARunawayIsCutOff) {
    struct Breeder final : VobClient {
        Breeder(Vob* vob, std::vector<std::unique_ptr<Breeder>>& family)
            : VobClient(vob, kClientPriorityLowest, kClientManaged), all(family) {}
        void handleModifications(const EditModifications&, const VobModification&) override {
            all.push_back(std::make_unique<Breeder>(getVob(), all));
        }
        std::vector<std::unique_ptr<Breeder>>& all;
    };
    const auto anchor = attach("anchor");
    std::vector<std::unique_ptr<Breeder>> all;
    all.push_back(std::make_unique<Breeder>(vob_.get(), all));
    vob_->informClients(kVobCuts);
    EXPECT_EQ(all.size(), 10'000u); // telling the anchor made no new ones
    EXPECT_THAT(log_.lines, Contains(HasSubstr("too many clients")));
}

TEST_F(VobInform, AClientMayCloseTheVobItIsToldBy) {
    auto a = attach("a", 1), b = attach("b");
    ValClient<unsigned> stops;
    stops.registerWith(&vob_->getConsoleTabStopsServer());
    a->onChange = [&](const VobModification&) {
        b.reset();
        VobManager::instance().close(a.get(), false);
        EXPECT_TRUE(stops.isRegistered()); // it stays until it has told
    };
    Vob* const raw = vob_.get();
    vob_.reset(); // the manager's is the last share
    raw->informClients(kVobCuts);
    EXPECT_EQ(told(), "a");
    EXPECT_FALSE(stops.isRegistered());
}

TEST_F(VobInform, AVobDroppedMeanwhileGoesOnceAndUntoldUnlessItIsTakenUpAgain) {
    int ends = 0;
    for (const bool takenUp : {false, true}) {
        Kv::Ptr<Vob> vob(new CountedVob(makeEdit(), ends));
        RecorderClient a(vob.get(), calls_, "a", 1), b(vob.get(), calls_, "b");
        vob->registerWithPlayServer(true);
        ASSERT_TRUE(host_.transport().play());
        a.onChange = [&](const VobModification&) { vob.reset(); };
        b.onChange = [&](const VobModification&) {
            if (takenUp)
                VobManager::instance().setRecordMachineRaw(b.getVob());
        };
        calls_.clear();
        vob.get()->informClients(kVobCuts);
        EXPECT_EQ(ends, 1);
        EXPECT_EQ(b.getVob() != nullptr, takenUp);
        VobManager::instance().setRecordMachineRaw(nullptr);
        EXPECT_THAT(calls_, ElementsAre("a: change 8", "b: change 8"));
    }
    EXPECT_EQ(ends, 2);
}

TEST_F(VobInform, AVobClosedMeanwhileEndsWhatItIsDoing) {
    const struct {
        std::function<void(Vob&)> act;
        Calls told;
    } rows[] = {
        {[](Vob& vob) { vob.addCue(Cue(1, L"")); },
         {"a: edit 1 4 change 262144", "a: change 4 time 0"}},
        {[](Vob& vob) {
             vob.toggleSegmentSelection({vob.getEdit(), 0, 1.5});
         },
         Calls(2, "a: change 262144 time 0")},
        {[](Vob& vob) { vob.setTimeToLastEvent(); }, {"a: change 2 time 10"}},
        {[](Vob& vob) { vob.exchangeCurrentAndMark(0); }, {"a: change 6 time 3 mark 0"}},
    };
    Vob::setStopAtTransitionMidPoints(true); // sets a tab stop
    for (const auto& row : rows) {
        const EditPtr edit = makeEdit();
        Kv::Ptr<Vob> vob = open(edit);
        layClip(edit, edit->getId(0), 4, 6);
        vob->selectSegment({edit, 0, 5.0});
        layClip(edit, edit->getId(0), 1, 2, 8); // renumbers what is selected
        vob->storeMarkTime(IdStamp(), 3, Kv::MarkTypes::In);
        VobManager::instance().setPlayMachine(vob.get(), false);
        ASSERT_TRUE(host_.transport().play(2));
        RecorderClient a(vob.get(), calls_, "a");
        const auto close = [&](const auto&) {
            VobManager::instance().closeVob(vob, true);
            vob.reset();
        };
        a.onChange = close;
        const auto steps = vob->getConsoleTabStopsServer().registerNotification(
            makeCallback<NotifierEvent<unsigned>>(close), ValServerBase::valChangedMsgType);
        const auto stops = TransitStatus::manager().notices().registerNotification(
            makeCallback<NotifyMsg>(close), TransitStatus::playStoppedMsgType());
        calls_.clear();
        row.act(*vob);
        std::erase(calls_, "a: play state 2"); // it stops as well
        EXPECT_EQ(calls_, row.told);
        EXPECT_EQ(a.getVob(), nullptr);
    }
}

TEST_F(VobInform, ClientsThatAnswerEachTellingWithAnotherAreStopped) {
    const auto a = attach("a"), b = attach("b");
    a->onChange = b->onChange = [&](const VobModification&) { vob_->informClients(kVobMarks); };
    vob_->informClients(kVobCuts);
    EXPECT_EQ(told(), std::string(500, 'a') + std::string(500, 'b'));
    EXPECT_THAT(log_.lines, ElementsAre(HasSubstr("too many clients told inside one another")));
    a->onChange = b->onChange = nullptr;
    vob_->informClients(kVobCuts);
    EXPECT_EQ(told(), "ab"); // that is over
}

TEST_F(VobInform, TheTimeSpentIsKeptByClient) {
    const auto a = attach("alpha"), b = attach("beta");
    vob_->informClients(kVobCuts);
    const auto records = TimedTaskManager::createTimedTask("Vob2")->records();
    ASSERT_EQ(records.size(), 2u);
    EXPECT_EQ(records[0].label, "alpha");
    EXPECT_EQ(records[1].runs, 1u);
    EXPECT_EQ(TimedTaskManager::createTimedTask("Vob1")->records().at(0).label, "inform");
}
