#include "platform/host/ConsoleFocus.h"
#include "platform/prefs/TimedTask.h"
#include "tests/vob/VobFixture.h"

#include <algorithm>
#include <random>
#include <set>
#include <stdexcept>

using namespace cutroom::test;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

class VobInform : public VobFixture {
protected:
    VobInform() : vob_(open(makeEdit())) {}
    std::unique_ptr<RecorderClient> attach(const std::string& name, int priority = 0) {
        return std::make_unique<RecorderClient>(vob_.get(), calls_, name, priority);
    }
    // Who was told of a change, in order.
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

} // namespace

TEST_F(VobInform, GoesByPriorityThenByAge) {
    const auto a = attach("a", 1), b = attach("b", 3), c = attach("c", 1), d = attach("d", 3);
    vob_->informClients(kVobCuts);
    EXPECT_EQ(told(), "bdac");
    c->setPriority(static_cast<eClientPriority>(9));
    vob_->informClients(kVobCuts);
    EXPECT_EQ(told(), "cbda");
}

TEST_F(VobInform, AThousandClientsAreToldOnceEachInOrder) {
    struct Counting final : VobClient {
        Counting(Vob* vob, int priority, std::vector<const Counting*>& list)
            : VobClient(vob, static_cast<eClientPriority>(priority), kClientUnmanaged),
              order(list) {}
        void handleModifications(const EditModifications& edit,
                                 const VobModification& change) override {
            EXPECT_TRUE(edit.empty() && change.getType() == kVobTime && change.getTime() == 2.5);
            order.push_back(this);
        }
        std::vector<const Counting*>& order;
    };
    std::vector<const Counting*> order, expected;
    std::vector<std::unique_ptr<Counting>> clients;
    std::mt19937 random(1);
    for (int i = 0; i < 1000; ++i) {
        const int priority = static_cast<int>(random() % 9) - 4;
        clients.push_back(std::make_unique<Counting>(vob_.get(), priority, order));
        expected.push_back(clients.back().get());
    }
    std::stable_sort(expected.begin(), expected.end(), [](const auto* a, const auto* b) {
        return a->getPriority() > b->getPriority();
    });
    vob_->setCurrentTime(2.5);
    EXPECT_EQ(order, expected);
}

TEST_F(VobInform, EveryKindReachesEveryClient) {
    const auto a = attach("a");
    const Cookie other('E', 5);
    calls_.clear();
    vob_->informOtherEditAltered(other, EditModifications(kModName));
    vob_->informPlayStateChange(kPlayStateStopped);
    setConsoleFocus(vob_.get());
    setConsoleFocus(nullptr);
    vob_->sendMessageToClient("a", "hello");
    vob_->sendMessageToClient("b", "lost");
    EXPECT_THAT(calls_, ElementsAre("a: other " + other.asString() + " 3", "a: play state 2",
                                    "a: focus", "a: no focus", "a: message hello"));
}

TEST_F(VobInform, AClientAddedMeanwhileIsToldOnceWhateverItsPriority) {
    std::unique_ptr<RecorderClient> added;
    const auto a = attach("a", 5), b = attach("b", 1);
    a->onChange = [&](const VobModification&) {
        if (!added)
            added = attach("n", 9);
    };
    vob_->informClients(kVobCuts);
    // The newcomer pushed a onto b's place, so a is seen again (and passed over) before b; the
    // newcomer is found by the second walk.
    EXPECT_EQ(told(), "abn");
}

TEST_F(VobInform, ClientsThatGoAreNotToldAndSkipNobody) {
    auto a = attach("a"), b = attach("b"), c = attach("c"), d = attach("d");
    a->onChange = [&](const VobModification&) {
        a.reset();
        c.reset();
    };
    vob_->informClients(kVobCuts);
    EXPECT_EQ(told(), "adb"); // b moved into a's place and is found by the second walk
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
    EXPECT_THAT(log_.lines, testing::Contains(HasSubstr("no picture")));
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
    EXPECT_EQ(all.size(), 10'000u); // the anchor's telling bred nothing
    EXPECT_THAT(log_.lines, testing::Contains(HasSubstr("too many clients")));
}

TEST_F(VobInform, AClientMayCloseTheVobItIsToldBy) {
    auto a = attach("a", 1), b = attach("b");
    a->onChange = [&](const VobModification&) {
        b.reset();
        VobManager::instance().close(a.get(), false);
    };
    Vob* const raw = vob_.get();
    vob_.reset(); // the manager's is the last share
    raw->setCurrentTime(2);
    EXPECT_EQ(told(), "a");
    EXPECT_TRUE(VobManager::instance().getAllVobs().empty());
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

// --- against a simple model ----------------------------------------------------------------------

namespace {

// Clients that, when told, add, remove, re-order and tell again at random. Each telling has a
// number, carried as its mark time.
class Chaos {
public:
    explicit Chaos(Vob& vob, unsigned seed) : vob_(vob), random_(seed) {}

    void tell() {
        const int number = ++tellings_;
        ++depth_;
        std::vector<Client*> before;
        for (const auto& client : clients_)
            before.push_back(client.get());
        VobModification change(kVobCuts);
        change.setMarkTime(number);
        vob_.informClients(change);
        for (Client* client : before)
            failures += isAlive(client) && client->toldBy.count(number) == 0;
        --depth_;
        if (depth_ == 0)
            graveyard_.clear();
    }
    void step() {
        const unsigned what = random_() % 8;
        if (what < 3 && clients_.size() < 40)
            clients_.push_back(std::make_unique<Client>(*this, random_() % 5));
        else if (what < 5 && !clients_.empty())
            destroy(random_() % clients_.size());
        else if (what < 7 && !clients_.empty())
            any().setPriority(static_cast<eClientPriority>(random_() % 5));
        else if (depth_ < 3)
            tell();
    }
    int failures = 0; // told twice, missed, or told after the end

private:
    struct Client final : VobClient {
        Client(Chaos& owner, unsigned priority)
            : VobClient(&owner.vob_, static_cast<eClientPriority>(priority), kClientManaged),
              chaos(owner) {}
        void handleModifications(const EditModifications&, const VobModification& m) override {
            if (!toldBy.insert(static_cast<int>(m.getMarkTime())).second || dead)
                ++chaos.failures;
            if (chaos.random_() % 3 == 0)
                chaos.step();
        }
        Chaos& chaos;
        bool dead = false;
        std::set<int> toldBy;
    };

    Client& any() { return *clients_[random_() % clients_.size()]; }
    bool isAlive(Client* client) const {
        return std::any_of(clients_.begin(), clients_.end(),
                           [&](const auto& each) { return each.get() == client; });
    }
    void destroy(std::size_t index) {
        std::unique_ptr<Client> gone = std::move(clients_[index]);
        clients_.erase(clients_.begin() + static_cast<std::ptrdiff_t>(index));
        VobManager::instance().closeInternal(gone.get());
        gone->dead = true;
        graveyard_.push_back(std::move(gone)); // it may be among its own callers
    }

    Vob& vob_;
    std::mt19937 random_;
    int tellings_ = 0;
    int depth_ = 0;
    std::vector<std::unique_ptr<Client>> clients_;
    std::vector<std::unique_ptr<Client>> graveyard_;
};

} // namespace

TEST_F(VobInform, ChangesOfTheListDuringTellingsLoseAndRepeatNobody) {
    const auto anchor = attach("anchor");
    for (unsigned seed = 1; seed <= 20; ++seed) {
        Chaos chaos(*vob_, seed);
        for (int i = 0; i < 300; ++i)
            chaos.step();
        chaos.tell();
        ASSERT_EQ(chaos.failures, 0) << "seed " << seed;
    }
}
