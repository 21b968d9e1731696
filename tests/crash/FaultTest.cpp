// Every operation on files failing in turn, under work on real timelines: the disk holds the old or
// the new content, the failure is told, what is not saved stays dirty, and the next try succeeds.
#include "platform/files/Files.h"
#include "platform/files/GroupCommit.h"
#include "platform/project/PermissionsManager.h"
#include "platform/store/EditFile.h"
#include "tests/crash/CrashFixture.h"
#include "tests/support/FaultyFiles.h"

#include <sqlite3.h>

#include <functional>

using namespace cutroom;
using namespace cutroom::test;
using testing::IsEmpty;
using Span = FaultyFiles::Span;

namespace {

struct Fault {
    const char* name;
    Span span;
    const char* message;
    std::size_t shortWrites = 0; // most bytes of one write; 0: all
};

class FaultTest : public CrashFixture, public testing::WithParamInterface<Fault> {
protected:
    // Does `work` under a file system whose operation `at` fails.
    template <class Work> auto strike(long at, const Work& work) {
        faulty_.writeShort(GetParam().shortWrites);
        faulty_.arm(at, GetParam().span, GetParam().message);
        installFileSystem(&faulty_);
        const auto done = work();
        faulty_.disarm();
        installFileSystem(nullptr);
        return done;
    }
    // Strikes operation 0, 1, 2 … until none is left.
    void sweep(const std::function<void(long at)>& round) {
        for (long at = 0; at == 0 || faulty_.struck(); ++at) {
            SCOPED_TRACE(at);
            ASSERT_LT(at, 3000);
            round(at);
            EXPECT_EQ(faulty_.openHandles(), 0u);
            if (HasFailure())
                return;
        }
    }
    bool litterIsAllowed() const { return GetParam().span != Span::once; }
    // What the files of the edits say, decoded, without the numbers that change with every save.
    std::vector<std::string> contents() const {
        std::vector<std::string> contents;
        for (const Cookie& cookie : edits_) {
            const std::string file = fileOf(cookie);
            const auto read = EditFile::decode(bytesOf(file), file);
            contents.push_back(read ? EditFile::encode(cookie, 0, read->state).value()
                                    : read.status().text());
        }
        return contents;
    }

    FaultyFiles faulty_{systemFiles()};
};

INSTANTIATE_TEST_SUITE_P(
    Faults, FaultTest,
    testing::Values(Fault{"FullDiskOnce", Span::once, "No space left on device"},
                    Fault{"ShortWritesThenBadDisk", Span::once, "Input/output error", 30'000},
                    Fault{"FullDiskForEver", Span::sameForEver, "No space left on device"},
                    Fault{"TheEndOfTheProcess", Span::allForEver, "Input/output error"}),
    [](const auto& test) { return test.param.name; });

TEST_P(FaultTest, aSaveLeavesOldOrNewAndTheNextOneSucceeds) {
    begin();
    EditManager& manager = EditManager::instance();
    const std::vector<EditPtr> edits{EditPtr(edits_[0]), EditPtr(edits_[1])};
    sweep([&](long at) {
        const std::vector<std::string> old = contents();
        for (const EditPtr& edit : edits) {
            if (at % 3 == 2 && manager.undo(edit))
                continue;
            manager.makeBackup(edit, "cut " + std::to_string(at));
            edit->setName(L"cut " + std::to_wstring(at));
            const auto channel = edit->getFirstChan(kChanVideo);
            EXPECT_TRUE(edit->get_edit_cel_p(channel)
                            ->lift(TimeRange(1, 1.5 + 0.01 * static_cast<double>(at)))
                            .ok());
        }
        const Status status = strike(at, [&] { return manager.flushChanges(false); });
        EXPECT_TRUE(status.ok() || faulty_.struck()) << status.text();
        const std::vector<std::string> found = contents();
        for (const EditPtr& edit : edits)
            EXPECT_EQ(edit->isDirty(), !status.ok());
        EXPECT_TRUE(litterIsAllowed() || GroupCommit::pending(folder_) || litter().empty());
        const Status again = manager.flushChanges(false);
        EXPECT_TRUE(again.ok()) << again.text();
        EXPECT_TRUE(!manager.anyDirty());
        const std::vector<std::string> fresh = contents();
        for (std::size_t i = 0; i < found.size(); ++i)
            EXPECT_TRUE(found[i] == fresh[i] || (found[i] == old[i] && !status.ok()));
        EXPECT_TRUE(litterIsAllowed() || litter().empty());
    });
    EXPECT_EQ(databaseTrouble(), "");
    EXPECT_EQ(historyTrouble(edits[0]), "");
}

TEST_P(FaultTest, openingFailsOrFindsEverything) {
    begin();
    ASSERT_TRUE(PermissionsManager::instance().setProtected(edits_[0], true).ok());
    const ProjectState before = stateOfProject();
    end();
    sweep([&](long at) {
        const Status status = strike(at, [&] { return tryBegin(); });
        EXPECT_EQ(CurrentProject::isOpen(), status.ok());
        if (status.ok()) {
            EXPECT_EQ(differences(stateOfProject(), before), "");
            EXPECT_TRUE(PermissionsManager::instance().setProtected(edits_[1], at % 2).ok());
        }
        end();
        begin();
        expectNoTrace();
        EXPECT_EQ(differences(stateOfProject(), before), "");
        EXPECT_TRUE(PermissionsManager::instance().isProtected(edits_[0]));
        end();
    });
}

TEST_F(CrashFixture, anEditWhoseRecordCannotBeWrittenStaysDirty) {
    begin();
    const EditPtr edit(edits_[0]);
    edit->setName(L"recorded later");
    sqlite3* other = nullptr; // another program's, which holds the database
    ASSERT_EQ(sqlite3_open(path("project.db").c_str(), &other), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(other, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr), SQLITE_OK);
    EXPECT_FALSE(EditManager::instance().flushChanges(false).ok());
    sqlite3_close(other);
    EXPECT_TRUE(edit->isDirty());
    EXPECT_NE(databaseTrouble(), "");
    EXPECT_TRUE(EditManager::instance().flushChanges(false).ok());
    EXPECT_FALSE(edit->isDirty());
    EXPECT_EQ(databaseTrouble(), "");
}

// A history that could not be read is read again when it is asked for, and kept aside when a new
// one begins.
TEST_F(CrashFixture, aHistoryThatCannotBeReadNowIsNotWrittenOver) {
    const std::string file = fileOf(edits_[0], ".undo");
    const std::string history = bytesOf(file);
    FaultyFiles faulty(systemFiles());
    const auto failing = [&](const std::function<bool()>& work) {
        faulty.arm(0, Span::allForEver, "Input/output error");
        installFileSystem(&faulty);
        const bool done = work();
        installFileSystem(nullptr);
        return done;
    };
    begin();
    const EditPtr edit(edits_[0]);
    EXPECT_FALSE(failing([&] { return EditManager::instance().undo(edit); }));
    EXPECT_EQ(EditManager::instance().getHistory(edit).size(), 1u);
    end();
    begin();
    const EditPtr again(edits_[0]);
    EXPECT_TRUE(failing([&] {
        EditManager::instance().makeBackup(again, "blind");
        return EditManager::instance().canUndo(again);
    }));
    again->setName(L"changed");
    int tries = 0; // each fails later than the one before, also after the file went aside
    for (bool saved = false; !saved && tries < 100; ++tries) {
        faulty.arm(tries, Span::once, "Input/output error");
        installFileSystem(&faulty);
        saved = EditManager::instance().save(again).ok();
        installFileSystem(nullptr);
    }
    EXPECT_THAT(tries, testing::AllOf(testing::Gt(5), testing::Lt(100)));
    EXPECT_EQ(bytesOf(file + ".damaged"), history);
}

} // namespace
