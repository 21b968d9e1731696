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

    void SetUp() override {
        begin(Access::readWrite, IfMissing::create);
        edits_ = importTimelines();
        for (const Cookie& cookie : edits_) {
            Status why;
            const EditPtr edit = EditManager::instance().open(cookie, &why);
            ASSERT_TRUE(edit) << why.text();
            EditManager::instance().makeBackup(edit, "the first");
            edit->addCue(Cue(1.0, L"first"));
        }
        end();
    }
    void TearDown() override { end(); }

    // A process that opens the project; what was there before ends.
    Status tryBegin(Access access = Access::readWrite, IfMissing missing = IfMissing::fail) {
        project_.reset();
        host_.reset();
        host_.emplace();
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

    std::string path(const std::string& name) const { return folder_ + "/" + name; }
    std::string fileOf(const Cookie& edit, const std::string& extension = ".edit") const {
        return path("edits/" + edit.asString() + extension);
    }
    std::vector<std::string> litter() const { return litterAmong(filesBelow(folder_)); }

    LogLines log_;
    TempFolder temp_{TempFolder::inMemory()};
    const std::string folder_ = temp_ / "film";
    CookieVec edits_; // of several tracks and some history
    std::optional<EmbeddedHost> host_;
    std::optional<EmbeddedProject> project_;
};

} // namespace cutroom::test
