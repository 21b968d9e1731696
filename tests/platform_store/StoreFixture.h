// A project in a folder of its own for tests of the store; every test is a process life.
#pragma once

#include "platform/host/ProcessLife.h"
#include "platform/project/CurrentProject.h"
#include "platform/store/Edit.h"
#include "platform/store/EditManager.h"
#include "tests/support/LogLines.h"
#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace cutroom::test {

// Without project; edits live in memory.
class StoreFixture : public testing::Test {
protected:
    ~StoreFixture() override { ProcessLife::end(); }

    static EditManager& manager() { return EditManager::instance(); }
    // An edit of one video and two audio channels of 10 s, all black.
    static EditModifier fresh() {
        return manager().makeNewEdit(makeNewEditCookie(), 1, 2, 10.0, Kv::FrameRate(25));
    }
    static Kv::Ptr<Cel> video(const EditPtr& edit) {
        return edit->get_edit_cel_p(edit->getFirstChan(kChanVideo));
    }
    // Lays named material over `from` to `to` seconds of the picture.
    static void lay(const EditPtr& edit, int from, int to, std::uint64_t material) {
        CelSegment segment;
        segment.start = from * kFlicksPerSecond;
        segment.end = to * kFlicksPerSecond;
        segment.material = Cookie('E', material);
        segment.detail.name = L"clip " + std::to_wstring(material);
        EXPECT_TRUE(video(edit)->overwrite(segment).ok());
    }

    LogLines log_;
};

// With an open project.
class StoredFixture : public StoreFixture {
protected:
    StoredFixture() {
        manager();
        const Status status = CurrentProject::open(folder(), CurrentProject::Access::readWrite,
                                                   CurrentProject::IfMissing::create);
        EXPECT_TRUE(status.ok()) << status.text();
    }
    ~StoredFixture() override { (void)CurrentProject::close(); }

    std::string folder() const { return temp_ / "film"; }
    std::string fileOf(const Cookie& edit, const std::string& extension = ".edit") const {
        return folder() + "/edits/" + edit.asString() + extension;
    }
    // Closes the project and opens it again: nothing stays in memory.
    void reopen() {
        const Status closed = CurrentProject::close();
        EXPECT_TRUE(closed.ok()) << closed.text();
        const Status opened = CurrentProject::open(folder());
        EXPECT_TRUE(opened.ok()) << opened.text();
    }

    TempFolder temp_;
};

} // namespace cutroom::test
