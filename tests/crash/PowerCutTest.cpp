// The power cut at any moment of a save of several edits: all of them are old or all are new, each
// with the history that belongs to it.
#include "platform/files/GroupCommit.h"
#include "platform/store/EditFile.h"
#include "tests/crash/CrashFixture.h"
#include "tests/support/FaultyFiles.h"
#include "tests/support/PowerCutDisk.h"
#include "tests/support/Scale.h"

#include <random>

using namespace cutroom;
using namespace cutroom::test;

namespace {

class PowerCutTest : public CrashFixture {
protected:
    // The project's files on a disk that can be cut off; the database stays where it is.
    PowerCutDisk copyOfProject() const {
        PowerCutDisk disk;
        for (const auto& [name, content] : filesBelow(folder_)) {
            if (name.starts_with("project.db"))
                continue;
            const auto file = disk.open(path(name), OpenMode::createNew);
            (void)disk.write(*file, content.data(), content.size());
            (void)disk.close(*file);
        }
        disk.settle();
        return disk;
    }
    // Opens the project there, changes both edits, and saves until operation `at`, with which the
    // power goes. Gives whether the save succeeded.
    bool saveUntil(PowerCutDisk& disk, long at, std::size_t* operations = nullptr) {
        FaultyFiles running(disk);
        installFileSystem(&running);
        begin();
        EditManager& manager = EditManager::instance();
        for (const Cookie& cookie : edits_) {
            const EditPtr edit(cookie);
            manager.makeBackup(edit, "second");
            edit->setName(L"new");
        }
        running.arm(at, FaultyFiles::Span::allForEver);
        const bool saved = manager.flushChanges(false).ok();
        if (operations)
            *operations = running.operations().size();
        (void)project_->close(); // fails, since the power is gone
        project_.reset();
        host_.reset();
        installFileSystem(nullptr);
        return saved;
    }
    // Steps of history of the edit on the disk and whether it is the new one; -1 when it is torn.
    int lookAt(const PowerCutDisk& disk, const Cookie& cookie) const {
        const auto files = disk.files();
        const std::string file = fileOf(cookie);
        const auto read = EditFile::decode(files.at(file), file);
        if (!read)
            return -1;
        const std::string past = fileOf(cookie, ".undo");
        const auto history = EditFile::decodeHistory(files.at(past), past, read->historyId);
        const bool isNew = read->state.name == L"new";
        return history && history->steps.size() == (isNew ? 2u : 1u) ? isNew : -1;
    }
};

TEST_F(PowerCutTest, aSaveOfSeveralEditsIsWholeOrNotThere) {
    const PowerCutDisk start = copyOfProject();
    PowerCutDisk whole = start;
    std::size_t operations = 0;
    ASSERT_TRUE(saveUntil(whole, 1'000'000, &operations));
    std::mt19937 random(9);
    int found[2] = {0, 0};
    const long cuts = rounds(300, 100'000);
    RecordProperty("cuts", std::to_string(cuts));
    for (long cut = 0; cut < cuts; ++cut) {
        PowerCutDisk disk = start;
        const bool saved = saveUntil(disk, static_cast<long>(random() % (operations + 1)));
        PowerCutDisk left = disk.afterCut(random);
        installFileSystem(&left);
        const bool recovered = GroupCommit::recover(folder_).ok();
        installFileSystem(nullptr);
        ASSERT_TRUE(recovered);
        const int first = lookAt(left, edits_[0]);
        ASSERT_NE(first, -1);
        for (const Cookie& cookie : edits_)
            ASSERT_EQ(lookAt(left, cookie), first);
        EXPECT_TRUE(first == 1 || !saved);
        ++found[first];
    }
    EXPECT_GT(found[0], 20);
    EXPECT_GT(found[1], 20);
}

} // namespace
