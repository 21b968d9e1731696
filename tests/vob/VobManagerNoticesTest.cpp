#include "platform/host/ConsoleFocus.h"
#include "platform/project/CurrentProject.h"
#include "tests/support/TempFolder.h"
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

struct ChangeRow {
    const char* name;
    EditModificationType kind;
    bool sourceMaterial;
    bool toldElsewhere;
};
class VobManagerChanges : public VobManagerNotices,
                          public testing::WithParamInterface<ChangeRow> {};

} // namespace

TEST_P(VobManagerChanges, ReachViewersOfTheEditAndOthersWhereTheyMatter) {
    const ChangeRow& row = GetParam();
    if (row.sourceMaterial)
        edit_->set_original_material(1);
    edit_->addModification(kModLabels, true); // what was recorded by now is told
    RecorderClient a(a_.get(), calls_, "a"), b(other_.get(), calls_, "b"), c(c_.get(), calls_, "c");
    edit_->addModification(row.kind, true);
    const std::string kind = std::to_string(row.kind);
    Calls expected{"a: edit " + kind + " change 0"};
    if (row.toldElsewhere)
        expected.push_back("b: other " + text(edit_.getCookie()) + " " + kind);
    expected.push_back("c: edit " + kind + " change 0");
    EXPECT_EQ(calls_, expected);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, VobManagerChanges,
    testing::Values(ChangeRow{"name", kModName, false, true},
                    ChangeRow{"media", kModMedia, false, true},
                    ChangeRow{"logType", kModLogType, false, true},
                    ChangeRow{"originalMaterial", kModOriginalMaterial, false, true},
                    ChangeRow{"imported", kModImported, false, true},
                    ChangeRow{"readOnly", kModReadOnly, false, true},
                    ChangeRow{"metadata", kModMetadata, false, false},
                    ChangeRow{"metadataOfMaterial", kModMetadata, true, true},
                    ChangeRow{"cues", kModCues, false, false},
                    ChangeRow{"configuration", kModConfiguration, true, false}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_F(VobManagerNotices, DescribedChangesAreToldWithTheirDescription) {
    RecorderClient a(a_.get(), calls_, "a"), b(other_.get(), calls_, "b");
    VobModification marks(kVobMarks);
    marks.setMarkTime(3);
    manager_.informEditAltered(edit_.getCookie(), EditModifications(), marks);
    manager_.informEditAltered(Cookie('E', 99), EditModifications(kModName), marks);
    manager_.informVobOfEditAlteration(nullptr, EditModifications(kModName), marks);
    EXPECT_THAT(calls_,
                ElementsAre("a: change 4 mark 3", "a: other " + text(Cookie('E', 99)) + " 3",
                            "b: other " + text(Cookie('E', 99)) + " 3"));
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

TEST_F(VobManagerNotices, DeletionIsAnnouncedToViewersThenToldToAll) {
    const EditPtr second = makeEdit();
    const auto viewsSecond = open(second);
    RecorderClient a(a_.get(), calls_, "a"), b(other_.get(), calls_, "b"),
        d(viewsSecond.get(), calls_, "d");
    const Cookie first = edit_.getCookie(), other = second.getCookie();
    ASSERT_TRUE(EditManager::instance().deleteEdits({first, other}, "tidy"));
    EXPECT_THAT(calls_,
                ElementsAre("a: edit 10 change 0", "d: edit 10 change 0",
                            "a: other " + text(first) + " 10", "b: other " + text(first) + " 10",
                            "d: other " + text(first) + " 10", "a: other " + text(other) + " 10",
                            "b: other " + text(other) + " 10", "d: other " + text(other) + " 10"));
}

// --- the project's exit --------------------------------------------------------------------------

TEST_F(VobManagerNotices, AtTheProjectsExitVobsCloseAndWhatShowsThemGoes) {
    std::vector<std::string> gone;
    const auto attach = [&](const Kv::Ptr<Vob>& vob, const std::string& name,
                            eClientManagementDetails details) {
        auto* const client = new MeddlingClient(vob.get(), calls_, name, 0, details);
        client->onEnd = [&gone, name] { gone.push_back(name); };
        return client;
    };
    attach(a_, "m", kClientManaged); // alone: goes with its Vob
    attach(c_, "u", kClientUnmanaged);
    MeddlingClient* const owner = attach(c_, "owner", kClientUnmanaged);
    owner->managed = {attach(c_, "owned", kClientManaged)};
    manager_.setSourceMachine(a_.get(), 0);
    manager_.setSourceMachine(other_.get(), 0);
    manager_.setRecordMachine(c_.get(), 0);
    manager_.setPlayMachine(c_.get(), false);
    c_->setCurrentTime(2);
    owner->managed.clear();

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
