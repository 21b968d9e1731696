// Files of a project cut short or with a bit flipped: named with the place, kept as they are by
// readers, moved aside by writers, and the rest of the project opens.
#include "platform/files/Files.h"
#include "platform/project/PermissionsManager.h"
#include "tests/crash/CrashFixture.h"
#include "tests/support/Scale.h"

using namespace cutroom;
using namespace cutroom::test;

namespace {

// Names a file of the project: one at its top, or by its extension one of the first edit.
using Victim = std::pair<const char*, const char*>;

class DamageTest : public CrashFixture, public testing::WithParamInterface<Victim> {
protected:
    void SetUp() override {
        CrashFixture::SetUp();
        begin();
        EXPECT_TRUE(PermissionsManager::instance().setProtected(edits_[0], true).ok());
        EXPECT_TRUE(CurrentProject::setName(L"A film").ok());
        state_ = stateOfProject();
        end();
        const std::string file = GetParam().second;
        isEdit_ = file.starts_with('.');
        file_ = isEdit_ ? fileOf(edits_[0], file) : path(file);
        good_ = bytesOf(file_);
    }
    // Truncations and flipped bits over the whole file, so many of each.
    std::vector<std::string> damages(long many) const {
        std::vector<std::string> damages;
        const auto count = static_cast<std::size_t>(many);
        for (std::size_t i = 0; i < count; ++i) {
            const std::size_t at = i * good_.size() / count;
            damages.push_back(good_.substr(0, at));
            damages.push_back(good_);
            damages.back()[at] = static_cast<char>(good_[at] ^ (1 << (i % 8)));
        }
        return damages;
    }
    // The victim is found damaged, or (a flip that leaves sound text of other keys) as it was; all
    // else is as it was.
    void expectTheRest() {
        const ProjectState found = stateOfProject();
        for (const auto& [key, stamp] : state_) {
            const bool isVictim = key == (isEdit_ ? edits_[0].asString() : "name");
            EXPECT_TRUE(isVictim || found.at(key) == stamp) << key;
        }
    }
    // What was said of the victim, wherever it was said.
    std::string said() {
        std::string text;
        for (const Status& warning : CurrentProject::getWarnings())
            text += warning.text() + '\n';
        Status why;
        const EditPtr edit = EditManager::instance().open(edits_[0], &why);
        text += why.ok() ? "" : why.text();
        if (edit)
            EditManager::instance().canUndo(edit);
        for (const std::string& line : log_.lines)
            text += line;
        return text;
    }
    // No damage that can be seen: the file says what it said.
    bool unharmed() {
        const ProjectState found = stateOfProject();
        return found == state_ && PermissionsManager::instance().isProtected(edits_[0]);
    }

    ProjectState state_;
    std::string file_;
    std::string good_;
    bool isEdit_ = false;
};

INSTANTIATE_TEST_SUITE_P(Files, DamageTest,
                         testing::Values(Victim{"Edit", ".edit"}, Victim{"History", ".undo"},
                                         Victim{"Project", "project.json"},
                                         Victim{"Permissions", "permissions.json"}),
                         [](const auto& test) { return test.param.first; });

TEST_P(DamageTest, readersNameItAndTouchNothing) {
    for (const std::string& damage : damages(rounds(120, 5000))) {
        putBytes(file_, damage);
        const auto before = filesBelow(folder_);
        log_.lines.clear();
        begin(Access::readOnly);
        expectTheRest();
        EXPECT_TRUE(unharmed() || said().find(file_) != std::string::npos) << damage.size();
        end();
        ASSERT_EQ(filesBelow(folder_), before) << damage.size();
    }
}

TEST_P(DamageTest, writersMoveItAsideAndWriteAnew) {
    const auto names = [&] { return filesBelow(folder_); };
    for (const std::string& damage : damages(rounds(25, 1000))) {
        putBytes(file_, damage);
        const auto before = names();
        log_.lines.clear();
        begin();
        expectTheRest();
        const bool harmed = !unharmed();
        EditManager& manager = EditManager::instance();
        if (EditPtr edit = EditPtr(edits_[0])) {
            manager.makeBackup(edit, "after the damage");
            edit->addCue(Cue(3.0, L"x"));
            EXPECT_TRUE(manager.save(edit).ok());
        } else {
            EXPECT_FALSE(manager.makeNewEdit(edits_[0], 1, 1, 5.0, Kv::FrameRate(25)));
            EXPECT_EQ(bytesOf(file_), damage);
            EXPECT_TRUE(manager.setDamagedAside(edits_[0]).ok());
        }
        end();
        int kept = 0;
        for (const auto& [name, content] : names())
            kept +=
                !before.contains(name) && name.find(".damaged") != name.npos && content == damage;
        EXPECT_EQ(kept, harmed ? 1 : 0) << damage.size();
        for (const auto& [name, content] : names()) // as it all was
            if (!before.contains(name))
                std::filesystem::remove(path(name));
        for (const auto& [name, content] : before)
            putBytes(path(name), content);
        ASSERT_FALSE(HasFailure()) << damage.size();
    }
}

} // namespace
