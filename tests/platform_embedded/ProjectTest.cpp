// Projects opened and closed on the shipped platform, and saved meanwhile.
#include "platform/embedded/EmbeddedProject.h"
#include "platform/prefs/EditorPreferences.h"
#include "platform/project/ProjectPaths.h"
#include "tests/support/Edits.h"
#include "tests/support/LogLines.h"
#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace {

using cutroom::EmbeddedHost;
using cutroom::EmbeddedProject;

class Project : public testing::Test {
protected:
    Project() {
        EXPECT_TRUE(
            open(CurrentProject::Access::readWrite, CurrentProject::IfMissing::create).ok());
        edit_ = cutroom::test::makeEdit(1, 0);
        EXPECT_TRUE(EditManager::instance().addToProject(edit_));
        EXPECT_TRUE(EditManager::instance().flushChanges(false).ok());
    }
    cutroom::Status open(CurrentProject::Access access, CurrentProject::IfMissing ifMissing) {
        return project_.open(folder_.path() + "/p", access, ifMissing);
    }
    void change(int times) {
        for (int i = 0; i < times; ++i)
            edit_->setConfig("scene", ++scene_), edit_->addModification(kModConfiguration, true);
        host_.loop().pump();
    }

    cutroom::test::TempFolder folder_;
    EmbeddedHost host_{EmbeddedHost::repeatable()};
    EmbeddedProject project_{host_};
    EditPtr edit_;
    int scene_ = 0;
};

TEST_F(Project, AChangeIsSavedAfterAMinuteOrTwentyFourMoreChanges) {
    change(1);
    host_.loop().runFor(59);
    EXPECT_TRUE(edit_->isDirty());
    host_.loop().runFor(2);
    EXPECT_FALSE(edit_->isDirty());
    change(24);
    EXPECT_TRUE(edit_->isDirty());
    change(1);
    host_.loop().runFor(0.1);
    EXPECT_FALSE(edit_->isDirty());
    host_.loop().runFor(300);
    change(1);
    EXPECT_TRUE(edit_->isDirty());
}

TEST_F(Project, ASaveThatFailsIsSaidAndTriedAgain) {
    const cutroom::test::LogLines log;
    change(1);
    const auto edits = cutroom::toUtf8(getProjectEditsDirectory());
    std::filesystem::rename(edits, edits + ".away");
    std::ofstream(edits) << "in the way";
    host_.loop().runFor(61);
    EXPECT_TRUE(edit_->isDirty());
    EXPECT_THAT(log.lines, testing::Contains(testing::HasSubstr("autosave: ")));
    std::filesystem::remove(edits);
    std::filesystem::rename(edits + ".away", edits);
    host_.loop().runFor(61);
    EXPECT_FALSE(edit_->isDirty());
}

TEST_F(Project, ClosingWritesWhatIsDirty) {
    const Cookie cookie = edit_->getCookie();
    change(3);
    edit_.reset();
    EditorPreferences::setPreference("Scale", 2);
    ASSERT_TRUE(project_.close().ok());
    EXPECT_FALSE(EditorPreferences::isDirty());
    ASSERT_TRUE(open(CurrentProject::Access::readOnly, CurrentProject::IfMissing::fail).ok());
    EXPECT_EQ(EditPtr(cookie)->getConfig("scene"), "3");
    ASSERT_TRUE(project_.close().ok());
    EXPECT_TRUE(project_.close().ok());
}

TEST_F(Project, PreferencesAreWrittenOnlyWhileItIsOpenForWriting) {
    const auto reopened = [&](CurrentProject::Access access) {
        EXPECT_TRUE(open(access, CurrentProject::IfMissing::fail).ok());
        return EditorPreferences::getPreference("Scale", 0);
    };
    EditorPreferences::setPreference("Scale", 2);
    ASSERT_TRUE(project_.close().ok());
    EditorPreferences::setPreference("Scale", 3);
    EXPECT_EQ(reopened(CurrentProject::Access::readOnly), 2);
    EditorPreferences::setPreference("Scale", 4);
    ASSERT_TRUE(project_.close().ok());
    EXPECT_EQ(reopened(CurrentProject::Access::readWrite), 2);
}

TEST_F(Project, NoneIsOpenedInTheMidstOfClosingOne) {
    std::vector<std::string> refused;
    const auto openAnother = [&] {
        EXPECT_TRUE(project_.close().ok());
        refused.push_back(project_
                              .open(folder_.path() + "/other", CurrentProject::Access::readWrite,
                                    CurrentProject::IfMissing::create)
                              .message());
    };
    host_.loop().post(openAnother);
    const auto exited = CurrentProject::addListener(
        makeCallback<NotifyMsg>([&](const NotifyMsg&) { openAnother(); }),
        CurrentProject::exitedMsgType());
    EXPECT_TRUE(project_.close().ok());
    EXPECT_FALSE(CurrentProject::isOpen());
    EXPECT_THAT(refused,
                testing::ElementsAre("a project is open already", "a project is being closed"));
}

TEST_F(Project, DamagedSettingsRefuseTheProjectAndLeaveItClosed) {
    ASSERT_TRUE(project_.close().ok());
    std::ofstream(folder_.path() + "/p/configuration.ini") << "[config\nx";
    const auto opened = open(CurrentProject::Access::readWrite, CurrentProject::IfMissing::fail);
    EXPECT_THAT(opened.text(), testing::HasSubstr("configuration.ini"));
    EXPECT_FALSE(CurrentProject::isOpen());
}

} // namespace
