// Lives of the process, one after the other, over one project of real timelines.
#pragma once

#include "platform/embedded/EmbeddedProject.h"
#include "platform/store/Edit.h"
#include "platform/store/EditManager.h"
#include "tests/support/LogLines.h"
#include "tests/support/ProjectStates.h"
#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace cutroom::test {

class CrashFixture : public testing::Test {
protected:
    using Access = CurrentProject::Access;
    using IfMissing = CurrentProject::IfMissing;

    explicit CrashFixture(const std::filesystem::path& place = TempFolder::inMemory())
        : temp_(place) {}

    void SetUp() override {
        begin(Access::readWrite, IfMissing::create);
        edits_ = importTimelines();
        for (const Cookie& cookie : edits_) {
            const EditPtr edit(cookie);
            ASSERT_TRUE(edit);
            EditManager::instance().makeBackup(edit, "first");
            edit->addCue(Cue(1.0, L"first"));
        }
        end();
    }
    void TearDown() override { end(); }

    // Ends the process before, and begins one that opens the project.
    Status tryBegin(Access access = Access::readWrite, IfMissing missing = IfMissing::fail) {
        project_.reset();
        host_.reset();
        host_.emplace(options_);
        project_.emplace(*host_);
        return project_->open(folder_, access, missing);
    }
    void begin(Access access = Access::readWrite, IfMissing missing = IfMissing::fail) {
        const Status opened = tryBegin(access, missing);
        EXPECT_TRUE(opened.ok()) << opened.text();
    }
    void end() {
        if (!project_)
            return;
        const Status closed = project_->close();
        EXPECT_TRUE(closed.ok()) << closed.text();
        project_.reset();
        host_.reset();
    }

    // Checks that nothing in the open project shows that a process before it was cut off.
    void expectNoTrace() const {
        EXPECT_THAT(CurrentProject::getWarnings(), testing::IsEmpty());
        EXPECT_THAT(litter(), testing::IsEmpty());
        EXPECT_EQ(databaseTrouble(), "");
    }

    std::string path(const std::string& name) const { return folder_ + "/" + name; }
    std::string fileOf(const Cookie& edit, const std::string& extension = ".edit") const {
        return path("edits/" + edit.asString() + extension);
    }
    std::vector<std::string> litter() const { return litterAmong(filesBelow(temp_.path())); }

    LogLines log_;
    TempFolder temp_;
    const std::string folder_ = temp_ / "film";
    CookieVec edits_; // of several tracks and some history
    EmbeddedHost::Options options_;
    std::optional<EmbeddedHost> host_;
    std::optional<EmbeddedProject> project_;
};

} // namespace cutroom::test
