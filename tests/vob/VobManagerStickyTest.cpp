#include "tests/vob/MeddlingClient.h"
#include "tests/vob/VobFixture.h"

using namespace cutroom::test;
using testing::ElementsAre;

namespace {

using Role = VobManager::eSignificantViewType;
const Role kRoles[] = {VobManager::kViewRecord, VobManager::kViewSource, VobManager::kViewPlay};

class VobManagerSticky : public VobFixture, public testing::WithParamInterface<Role> {
protected:
    void move(const Kv::Ptr<Vob>& vob) { move(role_, vob); }
    void move(Role role, const Kv::Ptr<Vob>& vob) {
        if (role == VobManager::kViewRecord)
            manager_.setRecordMachineRaw(vob.get());
        else if (role == VobManager::kViewSource)
            manager_.setSourceMachineRaw(vob.get());
        else
            manager_.setPlayMachineRaw(vob.get());
    }

    VobManager& manager_ = VobManager::instance();
    const Role role_ = GetParam();
    Kv::Ptr<Vob> a_ = open(makeEdit()), b_ = open(makeEdit());
};

} // namespace

TEST_P(VobManagerSticky, ClientsFollowTheirRoleUntilTheyAreTakenOff) {
    MeddlingClient managed(nullptr, calls_, "m", 0, kClientManaged);
    {
        MeddlingClient client(nullptr, calls_, "a");
        client.managed = {&managed};
        manager_.addStickyClient(nullptr, role_);
        manager_.addStickyClient(&client, role_);
        EXPECT_EQ(client.getVob(), nullptr); // nobody has the role
        move(a_);
        EXPECT_EQ(client.getVob(), a_.get());
        EXPECT_EQ(managed.getVob(), a_.get());
        for (const Role other : kRoles)
            if (other != role_)
                move(other, b_);
        EXPECT_EQ(client.getVob(), a_.get());
        move(b_);
        EXPECT_EQ(client.getVob(), b_.get());
        EXPECT_THAT(manager_.getAllVobs(), ElementsAre(a_, b_)); // the one left stays open
        manager_.addStickyClient(&client, role_);
        manager_.removeStickyClient(&client, role_);
        EXPECT_FALSE(manager_.isStickyClient(&client)); // it was one but once
        move(a_);
        EXPECT_EQ(client.getVob(), b_.get());
        manager_.addStickyClient(&client, role_); // joins at once
        EXPECT_EQ(client.getVob(), a_.get());
        move(nullptr);
        EXPECT_EQ(managed.getVob(), nullptr);
        EXPECT_TRUE(manager_.isStickyClient(&client));
        client.managed.clear();
    }
    move(b_); // must not touch the client that is gone
    EXPECT_EQ(b_->getNumClients(), 0u);
}

TEST_P(VobManagerSticky, AClientToldOnTheWayMayDestroyTheNext) {
    MeddlingClient first(nullptr, calls_, "first"), third(nullptr, calls_, "third");
    auto second = std::make_unique<MeddlingClient>(nullptr, calls_, "second");
    move(a_);
    for (VobClient* client : std::initializer_list<VobClient*>{&first, second.get(), &third})
        manager_.addStickyClient(client, role_);
    third.onRemoved = [&](VobClient*) { second.reset(); };
    move(b_);
    EXPECT_EQ(second, nullptr);
    EXPECT_EQ(first.getVob(), b_.get());
    EXPECT_EQ(third.getVob(), b_.get());
    third.onRemoved = nullptr;
}

INSTANTIATE_TEST_SUITE_P(Roles, VobManagerSticky, testing::ValuesIn(kRoles));
