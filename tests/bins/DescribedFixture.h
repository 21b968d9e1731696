// A project on the shipped platform, for tests of documents and asset groups.
#pragma once

#include "bins/ContainerManagerBase.h"
#include "bins/ContainerNotice.h"
#include "bins/DescribedContainer.h"
#include "platform/embedded/EmbeddedProject.h"
#include "platform/files/Files.h"
#include "platform/messaging/NotifyMsgTypeDictionary.h"
#include "tests/support/FaultyFiles.h"
#include "tests/support/LogLines.h"
#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

namespace cutroom::test {

inline std::string textOf(const DescribedContainer& container) {
    JSON::Builder out;
    container.write(out);
    return out.take();
}

inline Kv::Ptr<JSON::Element> jsonOf(const std::string& text) {
    const auto element = JSON::Element::parse(text, "text");
    EXPECT_TRUE(element.ok()) << element.status().text();
    return element ? *element : nullptr;
}

// "changed D1 2 32/15 'why'", "destroyed D1 E2 'why'", "saved".
inline std::string noticeText(const ContainerNotice& notice) {
    static constexpr const char* kKinds[] = {"changed", "destroyed",   "saved",
                                             "reset",   "logsDeleted", "logsModified"};
    std::string text = kKinds[static_cast<int>(notice.what())];
    for (const Cookie& cookie : notice.subjects())
        text += std::string(" ") + cookie.type() + std::to_string(cookie.id());
    for (const auto& record : notice.changes().records()) {
        text += " " + std::to_string(record.getType());
        if (record.getDetail() != 0)
            text += "/" + std::to_string(record.getDetail());
    }
    return notice.reason().empty() ? text : text + " '" + notice.reason() + "'";
}

class DescribedFixture : public testing::Test {
protected:
    using Access = CurrentProject::Access;

    DescribedFixture() { open(Access::readWrite, CurrentProject::IfMissing::create); }
    // What a test leaves dirty is not what it asks about.
    ~DescribedFixture() override { EXPECT_TRUE(project_.close().ok()); }

    void open(Access access = Access::readWrite,
              CurrentProject::IfMissing ifMissing = CurrentProject::IfMissing::fail) {
        const Status opened = project_.open(path(""), access, ifMissing);
        ASSERT_TRUE(opened.ok()) << opened.text();
    }
    void reopen(Access access = Access::readWrite) {
        ASSERT_TRUE(project_.close().ok());
        open(access);
    }
    // Records what the manager tells.
    void listen(const ContainerManagerBase& manager) {
        listening_ = manager.registerNotification(
            makeCallback<NotifyMsg>([this](const NotifyMsg& message) {
                told_.push_back(noticeText(*message.getObjectAs<ContainerNotice>()));
            }),
            manager.changeMsgType());
    }
    std::string path(const std::string& name) const {
        return folder_.path() + "/p" + (name.empty() ? "" : "/" + name);
    }
    static std::string golden(const std::string& name) {
        return bytesOf(std::string(CUTROOM_TEST_DATA) + "/" + name);
    }
    static void put(const std::string& file, const std::string& content) {
        std::filesystem::create_directories(folderOf(file));
        putBytes(file, content);
    }
    // Lets each file operation of `work` fail in turn, until one run of it meets no failure; each
    // run follows `prepare` and is followed by `check`, which is given what `work` gave.
    template <class Prepare, class Work, class Check>
    void failEach(Prepare prepare, Work work, Check check) {
        FaultyFiles faulty(systemFiles());
        for (long at = 0; at < 300; ++at) {
            prepare(at);
            iFileSystem* const before = installFileSystem(&faulty);
            faulty.arm(at, FaultyFiles::Span::once);
            const Status status = work();
            faulty.disarm();
            installFileSystem(before);
            check(at, status);
            EXPECT_EQ(faulty.openHandles(), 0u) << at;
            if (!faulty.struck() || HasFatalFailure())
                return;
        }
        FAIL() << "never ends";
    }

    TempFolder folder_{TempFolder::inMemory()};
    LogLines log_;
    EmbeddedHost host_{EmbeddedHost::repeatable()};
    EmbeddedProject project_{host_};
    std::vector<std::string> told_;
    Kv::Ptr<Guard> listening_;
};

} // namespace cutroom::test
