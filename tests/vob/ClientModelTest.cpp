// Clients that come, go, die, change places and tell again while they are told, against a simple
// model of who is attached where.
#include "tests/support/Scale.h"
#include "tests/vob/VobFixture.h"

#include <list>
#include <random>
#include <set>

using namespace cutroom::test;

#ifdef CUTROOM_SANITIZED
constexpr long kSteps = 10'000;
#else
constexpr long kSteps = 100'000;
#endif

namespace {

class World;

class ModelClient final : public VobClient {
public:
    ModelClient(World& world, int number) : world_(world), number_(number) {}
    void handleModifications(const EditModifications&, const VobModification& change) override;
    void notifyClientAdded(VobClient*) override;
    void notifyClientRemoved(VobClient*) override;
    int number() const { return number_; }

private:
    World& world_;
    const int number_;
};

// One client as the model sees it.
struct Entry {
    std::unique_ptr<ModelClient> client;
    Vob* holds = nullptr; // what it says it shows; kept while its leaving is told
    bool dying = false;
};

// One telling.
struct Round {
    int serial;
    Vob* vob;
    std::vector<int> atStart;
    std::vector<int> told;
    std::set<int> left;
    bool changed = false; // the list, meanwhile
};

class World {
public:
    explicit World(unsigned seed) : random_(seed), edit_(makeEdit(1, 1, 0)) {}

    void step() {
        switch (below(12)) {
        case 0:
        case 1:
            return add();
        case 2:
            return destroy();
        case 3:
            return close();
        case 4:
            return closeInternal();
        case 5:
            return reopen();
        case 6:
        case 7:
            return setPriority();
        case 8:
            return setDetails();
        default:
            return inform();
        }
    }
    void check();
    void end();

    // Called by the clients.
    void told(const ModelClient& client, int serial) {
        Round& round = *std::find_if(rounds_.begin(), rounds_.end(),
                                     [&](const Round& r) { return r.serial == serial; });
        EXPECT_TRUE(isIn(round.vob, client.number()));
        round.told.push_back(client.number());
        meddle();
    }
    void noticed(const ModelClient& client) {
        EXPECT_EQ(entries_.count(client.number()), 1u);
        meddle();
    }
    std::size_t longest() const { return longest_; }
    long nested() const { return nested_; }

private:
    using List = std::vector<int>; // numbers of clients in their order

    int below(int limit) { return std::uniform_int_distribution<int>(0, limit - 1)(random_); }
    void meddle() {
        if (depth_ >= 3 || below(100) >= 15)
            return;
        ++depth_;
        ++nested_;
        step();
        --depth_;
    }
    bool isIn(Vob* vob, int number) const {
        const auto list = lists_.find(vob);
        return list != lists_.end() &&
               std::find(list->second.begin(), list->second.end(), number) != list->second.end();
    }
    eClientPriority priorityOf(int number) const {
        return entries_.at(number).client->getPriority();
    }
    // A client that nobody is destroying; -1 when there is none.
    int anyone() {
        std::vector<int> candidates;
        for (const auto& [number, entry] : entries_)
            if (!entry.dying)
                candidates.push_back(number);
        return candidates.empty() ? -1
                                  : candidates[static_cast<std::size_t>(
                                        below(static_cast<int>(candidates.size())))];
    }
    Kv::Ptr<Vob> anyVob() {
        auto& manager = VobManager::instance();
        if (manager.getAllVobs().size() < 3) {
            const auto made = manager.createVob(edit_);
            lists_[made.get()];
            return made;
        }
        return manager.getAllVobs()[static_cast<std::size_t>(below(3))];
    }

    void changed(Vob* vob, int left = -1) {
        for (Round& round : rounds_)
            if (round.vob == vob) {
                round.changed = true;
                if (left >= 0)
                    round.left.insert(left);
            }
    }
    void sort(Vob* vob) {
        List& list = lists_[vob];
        const List before = list;
        std::stable_sort(list.begin(), list.end(),
                         [&](int a, int b) { return priorityOf(a) > priorityOf(b); });
        if (list != before)
            changed(vob);
    }
    void leave(Vob* vob, int number) {
        if (isIn(vob, number)) {
            std::erase(lists_[vob], number);
            changed(vob, number);
        }
    }
    // What is so once the leaving has been told.
    void hasLeft(Vob* vob, int number) {
        const auto entry = entries_.find(number);
        if (entry != entries_.end() && entry->second.holds == vob && !isIn(vob, number))
            entry->second.holds = nullptr;
    }
    void closeIfAbandoned(Vob* vob) {
        const auto list = lists_.find(vob);
        if (list == lists_.end())
            return;
        for (const int number : list->second)
            if (entries_.at(number).client->getManagementDetails() == kClientUnmanaged)
                return;
        for (const int number : List(list->second)) {
            leave(vob, number);
            entries_.at(number).holds = nullptr;
        }
        lists_.erase(vob);
    }

    void open(int number, const Kv::Ptr<Vob>& vob) {
        Entry& entry = entries_.at(number);
        const bool opens = !entry.holds;
        if (opens) {
            entry.holds = vob.get();
            lists_[vob.get()].push_back(number);
            changed(vob.get());
        }
        VobManager::instance().open(entry.client.get(), vob);
        if (opens && lists_.count(vob.get()))
            sort(vob.get());
    }
    void add() {
        if (entries_.size() > 24)
            return destroy();
        const int number = ++lastNumber_;
        auto client = std::make_unique<ModelClient>(*this, number);
        client->setPriority(eClientPriority(below(4)));
        client->setManagementDetails(eClientManagementDetails(below(3)));
        entries_[number].client = std::move(client);
        open(number, anyVob());
    }
    void reopen() {
        if (const int number = anyone(); number >= 0)
            open(number, anyVob());
    }
    void destroy() {
        const int number = anyone();
        if (number < 0)
            return;
        Entry& entry = entries_.at(number);
        entry.dying = true;
        const Kv::Ptr<Vob> vob = entry.holds;
        if (vob)
            leave(vob.get(), number);
        entry.client.reset();
        entries_.erase(number);
        if (vob)
            closeIfAbandoned(vob.get());
    }
    void close() { detach(true); }
    void closeInternal() { detach(false); }
    void detach(bool mayCloseVob) {
        const int number = anyone();
        const Kv::Ptr<Vob> vob = number < 0 ? nullptr : entries_.at(number).holds;
        if (!vob)
            return;
        leave(vob.get(), number);
        if (mayCloseVob)
            VobManager::instance().close(entries_.at(number).client.get(), false);
        else
            VobManager::instance().closeInternal(entries_.at(number).client.get());
        hasLeft(vob.get(), number);
        if (mayCloseVob)
            closeIfAbandoned(vob.get());
    }
    void setPriority() {
        const int number = anyone();
        if (number < 0)
            return;
        const Entry& entry = entries_.at(number);
        entry.client->setPriority(eClientPriority(below(4)));
        if (entry.holds && lists_.count(entry.holds))
            sort(entry.holds);
    }
    void setDetails() {
        if (const int number = anyone(); number >= 0)
            entries_.at(number).client->setManagementDetails(eClientManagementDetails(below(3)));
    }
    void inform() {
        const Kv::Ptr<Vob> vob = anyVob();
        rounds_.push_back({++lastSerial_, vob.get(), lists_[vob.get()], {}, {}});
        const auto round = std::prev(rounds_.end());
        VobModification change(kVobCuts);
        change.setMarkTime(round->serial);
        vob->informClients(change);
        judge(*round);
        rounds_.erase(round);
    }
    void judge(const Round& round) {
        longest_ = std::max(longest_, round.told.size());
        if (!round.changed) {
            EXPECT_EQ(round.told, round.atStart);
            return;
        }
        const std::set<int> once(round.told.begin(), round.told.end());
        EXPECT_EQ(once.size(), round.told.size()) << "somebody was told twice";
        for (const int number : round.atStart) {
            EXPECT_TRUE(round.left.count(number) || once.count(number)) << "not told: " << number;
        }
        if (lists_.count(round.vob) != 0) {
            const std::set<int> now(lists_.at(round.vob).begin(), lists_.at(round.vob).end());
            EXPECT_TRUE(std::includes(once.begin(), once.end(), now.begin(), now.end()))
                << "not told: somebody who was there at the end";
        }
    }

    std::mt19937 random_;
    const EditPtr edit_;
    std::map<int, Entry> entries_;
    std::map<Vob*, List> lists_; // of the open Vobs
    std::list<Round> rounds_;    // under way
    int lastNumber_ = 0;
    int lastSerial_ = 0;
    int depth_ = 0;
    long nested_ = 0;
    std::size_t longest_ = 0;
};

void ModelClient::handleModifications(const EditModifications&, const VobModification& change) {
    world_.told(*this, static_cast<int>(change.getMarkTime())); // this may be gone afterwards
}
void ModelClient::notifyClientAdded(VobClient*) { world_.noticed(*this); }
void ModelClient::notifyClientRemoved(VobClient*) { world_.noticed(*this); }

void World::check() {
    const auto& vobs = VobManager::instance().getAllVobs();
    ASSERT_EQ(vobs.size(), lists_.size());
    for (const auto& vob : vobs) {
        List present;
        for (std::size_t i = 0; VobClient* const client = vob->getClientPtr(i); ++i) {
            ASSERT_EQ(client->getVob(), vob.get());
            present.push_back(static_cast<ModelClient*>(client)->number());
        }
        ASSERT_EQ(present, lists_.at(vob.get()));
    }
    for (const auto& [number, entry] : entries_)
        ASSERT_EQ(entry.client->getVob(), entry.holds);
}

void World::end() {
    depth_ = 3; // no more meddling
    while (!entries_.empty())
        destroy();
}

class ClientModel : public VobFixture {};

} // namespace

TEST_F(ClientModel, HoldsWhateverClientsDoWhileTheyAreTold) {
    const unsigned seed = 20'261'121;
    World world(seed);
    const long steps = rounds(kSteps, 10'000'000);
    RecordProperty("steps", std::to_string(steps));
    for (long step = 0; step < steps && !HasFailure(); ++step) {
        SCOPED_TRACE("step " + std::to_string(step));
        world.step();
        world.check();
    }
    EXPECT_GT(world.longest(), 8u); // there was a crowd to tell
    EXPECT_GT(world.nested(), kSteps / 20);
    world.end();
}
