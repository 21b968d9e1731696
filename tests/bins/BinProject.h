// A project with bins, for tests that open, save and open again.
#pragma once

#include "bins/BinManager.h"
#include "bins/ContainerNotice.h"
#include "platform/embedded/EmbeddedProject.h"
#include "platform/files/Files.h"
#include "platform/project/ProjectPaths.h"
#include "tests/support/Edits.h"
#include "tests/support/FaultyFiles.h"
#include "tests/support/LogLines.h"
#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace cutroom::test {

// The life of one process after the other, on one project folder.
class BinProject : public testing::Test {
protected:
    BinProject() { open(); }
    ~BinProject() override { end(); }

    // Begins a life; the bin manager is there before the project.
    void open(CurrentProject::Access access = CurrentProject::Access::readWrite) {
        EmbeddedHost::Options options;
        options.files = &files_;
        host_.emplace(options);
        guard_ = BinManager::instance().registerNotification(
            makeCallback<NotifyMsg>([this](const NotifyMsg& message) { hear(message); }),
            BinManager::instance().changeMsgType());
        openProject(access);
        told_.clear();
    }
    void openProject(CurrentProject::Access access = CurrentProject::Access::readWrite) {
        project_.emplace(*host_);
        const Status opened =
            project_->open(folder_ / "film", access, CurrentProject::IfMissing::create);
        EXPECT_TRUE(opened.ok()) << opened.text();
    }
    // Ends that life.
    void end() {
        guard_.reset();
        if (project_) {
            const Status closed = project_->close();
            EXPECT_TRUE(closed.ok()) << closed.text();
        }
        project_.reset();
        host_.reset();
    }
    void reopen(CurrentProject::Access access = CurrentProject::Access::readWrite) {
        end();
        open(access);
    }
    // For tests with several threads: uses the system's files, since those that fail allow one
    // thread only.
    static void filesForThreads() { installFileSystem(nullptr); }
    static BinManager& bins() { return BinManager::instance(); }
    static Kv::Ptr<BinData> newBin(const std::wstring& name) {
        const Kv::Ptr<BinData> bin = bins().newBin();
        bin->setName(name);
        return bin;
    }
    // An edit of the project, saved.
    static Cookie newEdit(const std::wstring& name = L"cut") {
        const EditPtr edit = EditManager::instance().addToProject(makeEdit(1, 0, {25, 1}, name));
        EXPECT_TRUE(EditManager::instance().flushChanges(false).ok());
        return edit.getCookie();
    }
    static std::string fileOf(const Cookie& bin) {
        return toUtf8(getFileNameForLogGroup(bin, nullptr, Cookie()));
    }
    std::string cacheFile() const {
        return folder_ / "film/groups/" +
               convertCookie(CurrentProject::getCookie(), 'G').asString() + ".odb";
    }
    static std::string file(const std::string& path) { return readFile(path).value(); }

    // "changed 256 'reason'", "destroyed".
    void hear(const NotifyMsg& message) {
        const auto* notice = message.getObjectAs<ContainerNotice>();
        ASSERT_TRUE(notice);
        static constexpr const char* kNames[] = {"changed", "destroyed", "saved", "reset"};
        std::string text = kNames[static_cast<int>(notice->what())];
        for (const auto& record : notice->changes().records())
            text += " " + std::to_string(record.getType());
        if (!notice->reason().empty())
            text += " '" + notice->reason() + "'";
        told_.push_back(text);
        heard_ = notice->container();
    }

    TempFolder folder_{TempFolder::inMemory()};
    LogLines log_;
    FaultyFiles files_{systemFiles()};
    std::optional<EmbeddedHost> host_;
    std::optional<EmbeddedProject> project_;
    Kv::Ptr<Guard> guard_;
    std::vector<std::string> told_;
    Cookie heard_; // the container that was named last
};

} // namespace cutroom::test
