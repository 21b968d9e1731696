// Clients that come, go, die, change places and tell again while they are told, at random: whatever
// they do, each telling reaches everyone once, and lists and clients agree.
#include "tests/support/Scale.h"
#include "tests/vob/VobFixture.h"

#include <list>
#include <random>

using namespace cutroom::test;

#ifdef CUTROOM_SANITIZED
constexpr long kSteps = 10'000;
#else
constexpr long kSteps = 100'000;
#endif

namespace {

using Numbers = std::vector<int>; // of clients, in their order

// A client with a number, since an address may be used again. It may be gone when a call returns.
struct ModelClient final : VobClient {
    void handleModifications(const EditModifications&, const VobModification& change) override {
        const auto call = told;
        call(number, static_cast<int>(change.getMarkTime()));
    }
    void notifyClientAdded(VobClient*) override { hear(); }
    void notifyClientRemoved(VobClient*) override { hear(); }
    void hear() const {
        const auto call = noticed;
        call();
    }

    int number = 0;
    std::function<void(int client, int telling)> told;
    std::function<void()> noticed; // of another client
};

Numbers clientsOf(const Vob& vob) {
    Numbers numbers;
    for (std::size_t i = 0; VobClient* const client = vob.getClientPtr(i); ++i)
        numbers.push_back(static_cast<ModelClient*>(client)->number);
    return numbers;
}

bool contains(const Numbers& numbers, int number) {
    return std::find(numbers.begin(), numbers.end(), number) != numbers.end();
}

class World {
public:
    explicit World(unsigned seed) : random_(seed) {}
    ~World() {
        depth_ = kDeepest; // so that no client does anything any more
        while (!clients_.empty())
            destroy();
    }

    void step() {
        static constexpr void (World::*kKinds[])() = {
            &World::add,           &World::add,    &World::destroy,     &World::close,
            &World::closeInternal, &World::reopen, &World::setPriority, &World::setPriority,
            &World::setDetails,    &World::inform, &World::inform,      &World::inform};
        (this->*kKinds[below(12)])();
    }
    void check() const {
        for (const auto& vob : manager_.getAllVobs())
            for (std::size_t i = 0; VobClient* const client = vob->getClientPtr(i); ++i) {
                ASSERT_EQ(client->getVob(), vob.get());
                ASSERT_EQ(vob->findClient(client), i) << "there twice";
                ASSERT_TRUE(i == 0 ||
                            vob->getClientPtr(i - 1)->getPriority() >= client->getPriority());
            }
        for (const auto& [number, client] : clients_)
            ASSERT_TRUE(!client->getVob() || client->getVob()->isClient(client.get())) << number;
    }
    std::size_t longest() const { return longest_; }
    long nested() const { return nested_; }

private:
    static constexpr int kDeepest = 3;
    struct Round {
        int serial;
        Kv::Ptr<Vob> vob;
        Numbers told;
    };

    void told(int number, int serial) {
        Round& round = *std::find_if(rounds_.begin(), rounds_.end(),
                                     [&](const Round& each) { return each.serial == serial; });
        EXPECT_TRUE(contains(clientsOf(*round.vob), number)) << "told after leaving";
        EXPECT_FALSE(contains(round.told, number)) << "told twice";
        round.told.push_back(number);
        meddle();
    }
    void meddle() {
        if (depth_ >= kDeepest || below(100) >= 15)
            return;
        ++depth_;
        ++nested_;
        step();
        --depth_;
    }
    int below(int limit) { return std::uniform_int_distribution<int>(0, limit - 1)(random_); }
    // Null when there is none.
    ModelClient* anyone() {
        if (clients_.empty())
            return nullptr;
        return std::next(clients_.begin(), below(static_cast<int>(clients_.size())))->second.get();
    }
    Kv::Ptr<Vob> anyVob() {
        if (manager_.getAllVobs().size() < 3)
            return manager_.createVob(edit_);
        return manager_.getAllVobs()[static_cast<std::size_t>(below(3))];
    }

    void add() {
        if (clients_.size() > 24)
            return destroy();
        auto made = std::make_unique<ModelClient>();
        ModelClient* const client = made.get();
        client->number = ++lastNumber_;
        client->told = [this](int number, int serial) { told(number, serial); };
        client->noticed = [this] { meddle(); };
        clients_[client->number] = std::move(made);
        client->setPriority(eClientPriority(below(4)));
        client->setManagementDetails(eClientManagementDetails(below(3)));
        manager_.open(client, anyVob());
    }
    void reopen() { manager_.open(anyone(), anyVob()); }
    void destroy() {
        if (ModelClient* const client = anyone())
            clients_.extract(client->number); // it leaves the map first
    }
    void closeInternal() { manager_.closeInternal(anyone()); }
    // The Vob closes with its last unmanaged client.
    void close() {
        ModelClient* const client = anyone();
        const Kv::Ptr<Vob> vob = client ? client->getVob() : nullptr;
        if (!vob)
            return;
        const long nestedBefore = nested_;
        manager_.close(client, false);
        if (nested_ == nestedBefore) {
            const bool wanted = vob->getNumClients(kClientUnmanaged) != 0;
            const auto& open = manager_.getAllVobs();
            EXPECT_EQ(std::find(open.begin(), open.end(), vob) != open.end(), wanted);
            EXPECT_TRUE(wanted || vob->getNumClients() == 0);
        }
    }
    void setPriority() {
        if (ModelClient* const client = anyone())
            client->setPriority(eClientPriority(below(4)));
    }
    void setDetails() {
        if (ModelClient* const client = anyone())
            client->setManagementDetails(eClientManagementDetails(below(3)));
    }
    void inform() {
        const auto round = rounds_.insert(rounds_.end(), {++lastSerial_, anyVob(), {}});
        const Numbers before = clientsOf(*round->vob);
        const long nestedBefore = nested_;
        VobModification change(kVobCuts);
        change.setMarkTime(round->serial);
        round->vob->informClients(change);
        for (const int number : clientsOf(*round->vob))
            EXPECT_TRUE(contains(round->told, number)) << "not told";
        EXPECT_TRUE(nested_ != nestedBefore || round->told == before);
        longest_ = std::max(longest_, round->told.size());
        rounds_.erase(round);
    }

    VobManager& manager_ = VobManager::instance();
    std::mt19937 random_;
    const EditPtr edit_ = makeEdit(1, 1, 0);
    std::map<int, std::unique_ptr<ModelClient>> clients_;
    std::list<Round> rounds_; // under way
    int lastNumber_ = 0;
    int lastSerial_ = 0;
    int depth_ = 0;
    long nested_ = 0;
    std::size_t longest_ = 0;
};

using ClientModel = VobFixture;

} // namespace

TEST_F(ClientModel, HoldsWhateverClientsDoWhileTheyAreTold) {
    World world(20'261'121);
    const long steps = rounds(kSteps, 10'000'000);
    RecordProperty("steps", std::to_string(steps));
    for (long step = 0; step < steps && !HasFailure(); ++step) {
        SCOPED_TRACE("step " + std::to_string(step));
        world.step();
        world.check();
    }
    EXPECT_GT(world.longest(), 8u); // there was a crowd to tell
    EXPECT_GT(world.nested(), kSteps / 20);
}
