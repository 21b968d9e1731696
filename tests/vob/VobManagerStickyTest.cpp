#include "tests/vob/MeddlingClient.h"
#include "tests/vob/VobFixture.h"

using namespace cutroom::test;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

struct StickyRow {
    const char* name;
    VobManager::eSignificantViewType role;
};

void moveRole(VobManager::eSignificantViewType role, Vob* vob) {
    VobManager& manager = VobManager::instance();
    switch (role) {
    case VobManager::kViewRecord:
        return manager.setRecordMachineRaw(vob);
    case VobManager::kViewSource:
        return manager.setSourceMachineRaw(vob);
    case VobManager::kViewPlay:
        return manager.setPlayMachineRaw(vob);
    }
}

class VobManagerSticky : public VobFixture, public testing::WithParamInterface<StickyRow> {
protected:
    void move(const Kv::Ptr<Vob>& vob) { moveRole(GetParam().role, vob.get()); }

    VobManager& manager_ = VobManager::instance();
    Kv::Ptr<Vob> a_ = open(makeEdit()), b_ = open(makeEdit());
};

const StickyRow kRoles[] = {{"record", VobManager::kViewRecord},
                            {"source", VobManager::kViewSource},
                            {"play", VobManager::kViewPlay}};

} // namespace

TEST_P(VobManagerSticky, ClientsFollowTheirRole) {
    MeddlingClient client(nullptr, calls_, "a"), managed(nullptr, calls_, "m", 0, kClientManaged);
    client.managed = {&managed};
    manager_.addStickyClient(&client, GetParam().role);
    EXPECT_EQ(client.getVob(), nullptr); // nobody has the role
    move(a_);
    EXPECT_EQ(client.getVob(), a_.get());
    EXPECT_EQ(managed.getVob(), a_.get());
    move(b_);
    EXPECT_EQ(client.getVob(), b_.get());
    EXPECT_THAT(manager_.getAllVobs(), ElementsAre(a_, b_)); // the one left stays open
    for (const StickyRow& other : kRoles)
        if (other.role != GetParam().role)
            moveRole(other.role, a_.get());
    EXPECT_EQ(client.getVob(), b_.get());
    move(nullptr);
    EXPECT_EQ(client.getVob(), nullptr);
    client.managed.clear();
}

TEST_P(VobManagerSticky, OnesJoinAtOnceAndLeaveTheListWhenTheyGo) {
    move(a_);
    {
        MeddlingClient client(nullptr, calls_, "a");
        manager_.addStickyClient(&client, GetParam().role);
        manager_.addStickyClient(&client, GetParam().role);
        manager_.addStickyClient(nullptr, GetParam().role);
        EXPECT_EQ(client.getVob(), a_.get());
        manager_.removeStickyClient(&client, GetParam().role);
        EXPECT_FALSE(manager_.isStickyClient(&client));
        move(b_);
        EXPECT_EQ(client.getVob(), a_.get());
        manager_.addStickyClient(&client, GetParam().role);
        EXPECT_TRUE(manager_.isStickyClient(&client));
        EXPECT_EQ(client.getVob(), b_.get());
    }
    move(b_); // no memory of it is touched
    EXPECT_EQ(b_->getNumClients(), 0u);
}

TEST_P(VobManagerSticky, AClientToldOnTheWayMayDestroyTheNext) {
    MeddlingClient first(nullptr, calls_, "first");
    auto second = std::make_unique<MeddlingClient>(nullptr, calls_, "second");
    MeddlingClient third(nullptr, calls_, "third");
    move(a_);
    for (VobClient* client :
         {static_cast<VobClient*>(&first), static_cast<VobClient*>(second.get()),
          static_cast<VobClient*>(&third)})
        manager_.addStickyClient(client, GetParam().role);
    third.onRemoved = [&](VobClient*) { second.reset(); };
    move(b_);
    EXPECT_EQ(second, nullptr);
    EXPECT_EQ(first.getVob(), b_.get());
    EXPECT_EQ(third.getVob(), b_.get());
    third.onRemoved = nullptr;
}

INSTANTIATE_TEST_SUITE_P(Rows, VobManagerSticky, testing::ValuesIn(kRoles),
                         [](const auto& row) { return std::string(row.param.name); });
