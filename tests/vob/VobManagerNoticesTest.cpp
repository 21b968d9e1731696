#include "platform/host/ConsoleFocus.h"
#include "tests/vob/MeddlingClient.h"
#include "tests/vob/VobFixture.h"

using namespace cutroom::test;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class VobManagerNotices : public VobFixture {
protected:
    static std::string text(const Cookie& cookie) { return cookie.asString(); }

    VobManager& manager_ = VobManager::instance();
    EditPtr edit_ = makeEdit(), otherEdit_ = makeEdit();
    Kv::Ptr<Vob> a_ = open(edit_), other_ = open(otherEdit_), c_ = open(edit_);
};

} // namespace

TEST_F(VobManagerNotices, ChangesReachViewersOfTheEditAndOthersWhereTheyMatter) {
    const struct {
        EditModificationType kind;
        int material;
        bool toldElsewhere;
    } rows[] = {{kModName, 0, true},      {kModMedia, 0, true},
                {kModLogType, 0, true},   {kModOriginalMaterial, 0, true},
                {kModImported, 0, true},  {kModReadOnly, 0, true},
                {kModMetadata, 0, false}, {kModMetadata, 1, true},
                {kModCues, 0, false},     {kModConfiguration, 1, false}};
    RecorderClient a(a_.get(), calls_, "a"), b(other_.get(), calls_, "b"), c(c_.get(), calls_, "c");
    for (const auto& row : rows) {
        edit_->set_original_material(row.material);
        edit_->addModification(kModLabels, true); // what was recorded by now is told
        calls_.clear();
        edit_->addModification(row.kind, true);
        const std::string kind = std::to_string(row.kind);
        Calls expected{"a: edit " + kind + " change 0", "c: edit " + kind + " change 0"};
        if (row.toldElsewhere)
            expected.insert(expected.begin() + 1,
                            "b: other " + text(edit_.getCookie()) + " " + kind);
        EXPECT_EQ(calls_, expected);
    }
}

TEST_F(VobManagerNotices, AClientMayCloseTheNextVobWhileAChangeGoesRound) {
    RecorderClient a(a_.get(), calls_, "a");
    auto c = std::make_unique<RecorderClient>(c_.get(), calls_, "c");
    a.onChange = [&](const VobModification&) {
        c.reset();
        c_.reset();
    };
    edit_->addModification(kModName, true);
    EXPECT_THAT(manager_.getAllVobs(), ElementsAre(a_, other_));
    EXPECT_THAT(calls_, testing::SizeIs(1));
}

TEST_F(VobManagerNotices, AClientMayHaveAnotherEditShownWhileAChangeGoesRound) {
    RecorderClient a(a_.get(), calls_, "a"), b(other_.get(), calls_, "b"), c(c_.get(), calls_, "c");
    a.onChange = [&](const VobModification&) {
        a.onChange = nullptr;
        a_->setEdit(otherEdit_, false);
    };
    a_->setChangeDescription({}, VobModification(kVobCuts));
    EXPECT_THAT(calls_, ElementsAre("a: change 8", "a: change 32 time 0", "c: change 8"));
}

// --- the project's exit --------------------------------------------------------------------------

TEST_F(VobManagerNotices, AtTheProjectsExitVobsCloseAndWhatShowsThemGoes) {
    Calls gone;
    const auto attach = [&](const Kv::Ptr<Vob>& vob, const std::string& name,
                            eClientManagementDetails details) {
        auto* const client = new MeddlingClient(vob.get(), calls_, name, 0, details);
        client->onEnd = [&gone, name] { gone.push_back(name); };
        return client;
    };
    attach(a_, "m", kClientManaged); // alone: goes with its Vob
    attach(c_, "u", kClientUnmanaged);
    attach(c_, "owner", kClientUnmanaged);
    attach(c_, "owned", kClientManaged);
    manager_.setSourceMachine(a_.get(), 0);
    manager_.setSourceMachine(other_.get(), 0);
    manager_.setRecordMachine(c_.get(), 0);
    manager_.setPlayMachine(c_.get(), false);
    c_->setCurrentTime(2);

    ASSERT_TRUE(EditManager::instance().handleProjectExit());
    EXPECT_THAT(manager_.getAllVobs(), IsEmpty());
    EXPECT_THAT(gone, ElementsAre("m", "owned", "u", "owner"));
    for (const auto role :
         {VobManager::kViewRecord, VobManager::kViewSource, VobManager::kViewPlay})
        EXPECT_EQ(manager_.getVob(role), nullptr);
    EXPECT_EQ(manager_.getPreviousSourceMachine(), nullptr);
    EXPECT_EQ(getConsoleFocus(), nullptr);
    EXPECT_EQ(edit_->getConfig("BACKUP_CURRENT"), "2"); // by the last that closed
}

TEST_F(VobManagerNotices, ClientsThatComeWithEveryGoingCannotHoldUpTheExit) {
    auto* const stubborn = new MeddlingClient(a_.get(), calls_, "s");
    std::vector<std::unique_ptr<MeddlingClient>> came;
    stubborn->onRemoved = [&](VobClient*) {
        came.push_back(std::make_unique<MeddlingClient>(a_.get(), calls_, "n"));
        came.back()->onRemoved = [&](VobClient*) {
            came.push_back(std::make_unique<MeddlingClient>(a_.get(), calls_, "n"));
        };
    };
    new MeddlingClient(a_.get(), calls_, "u");
    ASSERT_TRUE(EditManager::instance().handleProjectExit());
    EXPECT_THAT(manager_.getAllVobs(), IsEmpty());
    for (auto& client : came) {
        client->onRemoved = nullptr;
        if (!a_->isClient(client.get()))
            client.release(); // the exit has deleted it
    }
}

TEST_F(VobManagerNotices, NorCanVobsThatComeWithEveryGoing) {
    const auto guard = manager_.registerNotification(
        makeCallback<NotifyMsg>([&](const NotifyMsg& message) {
            if (!message.getObject())
                manager_.setSourceMachineRaw(manager_.createVob(edit_).get());
        }),
        manager_.sourceChangedMsgType());
    manager_.setSourceMachineRaw(a_.get());
    ASSERT_TRUE(EditManager::instance().handleProjectExit());
    EXPECT_THAT(manager_.getAllVobs(), IsEmpty());
    EXPECT_EQ(manager_.getSourceMachine(), nullptr);
}
