#include "StoreFixture.h"
#include "platform/files/CheckedFile.h"
#include "platform/files/Files.h"
#include "platform/project/ProjDb.h"
#include "platform/project/ProjectPaths.h"
#include "platform/store/ProjectListener.h"
#include "tests/support/Allocations.h"
#include "tests/support/FaultyFiles.h"

#include <functional>
#include <thread>
#include <utility>

using namespace cutroom;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

class EditManagerTest : public cutroom::test::StoredFixture {
protected:
    void follow(int notice) {
        guards_.push_back(manager().registerNotification(
            makeCallback<NotifyMsg>([this, notice](const NotifyMsg& message) {
                told_.push_back(std::to_string(notice) + " " + message.getText());
            }),
            notice));
    }
    std::vector<Kv::Ptr<Guard>> guards_;
    std::vector<std::string> told_;
};

// Notes what it is told, with its name.
class Listener : public ProjectListener {
public:
    Listener(std::string name, std::vector<std::string>& told)
        : name_(std::move(name)), told_(told) {}
    void handleProjectEntry() override { told_.push_back(name_ + " entry"); }
    void handleProjectExit() override { told_.push_back(name_ + " exit"); }
    void handleLogsDeletion(const CookieVec& logs, const std::string& reason) override {
        told_.push_back(name_ + " deleted " + std::to_string(logs.size()) + " " + reason);
    }

private:
    std::string name_;
    std::vector<std::string>& told_;
};

TEST_F(EditManagerTest, anEditLeavesMemoryWithItsLastHandleOnceSaved) {
    EditModifier edit = fresh();
    const Cookie cookie = edit.getCookie();
    EditPtr second(edit);
    edit.release();
    ASSERT_TRUE(manager().save(second).ok());
    EXPECT_TRUE(manager().isOpen(cookie));
    second.reset();
    EXPECT_FALSE(manager().isOpen(cookie));
    EXPECT_TRUE(manager().exists(cookie));
    EditPtr(cookie)->setName(L"changed");
    EXPECT_TRUE(manager().isOpen(cookie)) << "has changes";
    ASSERT_TRUE(manager().flushChanges(false).ok());
    EXPECT_FALSE(manager().isOpen(cookie));
    EXPECT_FALSE(manager().anyDirty());
}

TEST_F(EditManagerTest, savingPutsTheRecordIntoTheDatabase) {
    EditModifier edit = fresh();
    edit->setName(L"Titled");
    edit->setLogType(kLogTypeSubclip);
    edit->setConfig("scene", "12");
    edit->setConfig("no attribute", "x");
    Cue cue(1.0, L"marked");
    cue.setColour(0xFF0000);
    edit->addCue(cue);
    edit->addCue(Cue(2.0, L"white"));
    EXPECT_FALSE(projdb::isPresent(edit.getCookie()));
    ASSERT_TRUE(manager().flushChanges(false).ok());
    const auto record = projdb::find(edit.getCookie());
    ASSERT_TRUE(record);
    EXPECT_EQ(record->name() + record->getField("scene"), "Titled12");
    EXPECT_EQ(record->kinds, unsigned{projdb::kKindSubClip});
    EXPECT_EQ(record->end, 10.0);
    EXPECT_EQ(record->videoTracks * 10 + record->audioTracks, 12u);
    EXPECT_EQ(record->markerTypes,
              projdb::markerTypeBit(0xFF0000) | projdb::markerTypeBit(0xFFFFFF));
    EXPECT_THAT(record->markerTexts, ElementsAre("marked", "white"));
    edit->setName(L"Renamed");
    edit->addModification(EditModifications(), true);
    EXPECT_EQ(projdb::find(edit.getCookie())->name(), "Renamed") << "before the next save";
}

TEST_F(EditManagerTest, theDatabaseIsRebuiltFromTheFiles) {
    const Cookie cookie = fresh().getCookie();
    ASSERT_TRUE(CurrentProject::close().ok());
    test::putBytes(fileOf(Cookie('E', 77)), "damaged");
    test::putBytes(fileOf(Cookie('E', 78)),
                   CheckedFile::wrap(kEditKind, kEditVersion + 1, "of a later version"));
    for (const char* name : {"project.db", "project.db-wal", "project.db-shm"})
        std::filesystem::remove(folder() + "/" + name);
    ASSERT_TRUE(CurrentProject::open(folder()).ok());
    EXPECT_TRUE(projdb::isPresent(cookie));
    EXPECT_EQ(projdb::count(), 1u);
    ASSERT_TRUE(CurrentProject::close().ok());
    log_.lines.clear();
    ASSERT_TRUE(CurrentProject::open(folder(), CurrentProject::Access::readOnly).ok());
    EXPECT_THAT(log_.lines, testing::IsEmpty()) << "what cannot be read is not missed";
}

TEST_F(EditManagerTest, deletionIsToldBeforeAndAfter) {
    EditModifier edit = fresh();
    const Cookie cookie = edit.getCookie();
    manager().makeBackup(edit);
    edit->setName(L"x");
    ASSERT_TRUE(manager().flushChanges(false).ok());
    follow(kNoticePrepareForDeletion);
    follow(kNoticeDeletion);
    Listener listener("a", told_);
    ASSERT_TRUE(manager().deleteEdits({cookie, Cookie('E', 5), cookie}, "tidy").ok());
    const std::string name = cookie.asString();
    EXPECT_THAT(told_, ElementsAre("20 " + name, "21 " + name, "a deleted 1 tidy"));
    EXPECT_FALSE(manager().exists(cookie) || projdb::isPresent(cookie));
    EXPECT_FALSE(std::filesystem::exists(fileOf(cookie, ".undo")));
    edit->setName(L"ghost");
    edit.release();
    ASSERT_TRUE(manager().flushChanges(true).ok());
    EXPECT_FALSE(std::filesystem::exists(fileOf(cookie))) << "what is deleted stays so";
}

// The file system in use; calls back once, when a file has been opened.
class Meddling final : public test::FaultyFiles {
public:
    explicit Meddling(std::function<void()> act)
        : FaultyFiles(systemFiles()), act_(std::move(act)), before_(installFileSystem(this)) {}
    ~Meddling() override { installFileSystem(before_); }
    Result<Handle> open(const std::string& path, OpenMode mode) override {
        const Result<Handle> file = FaultyFiles::open(path, mode);
        std::exchange(act_, [] {})();
        return file;
    }

private:
    std::function<void()> act_;
    iFileSystem* const before_;
};

TEST_F(EditManagerTest, anEditThatGoesWhileItIsReadStaysAway) {
    for (const bool closes : {false, true}) {
        const Cookie cookie = fresh().getCookie();
        ASSERT_TRUE(manager().flushChanges(false).ok());
        const Meddling files([&] {
            EXPECT_TRUE(
                (closes ? CurrentProject::close() : manager().deleteEdits({cookie}, "")).ok());
        });
        EXPECT_FALSE(EditPtr(cookie));
        EXPECT_FALSE(manager().exists(cookie));
    }
}

TEST_F(EditManagerTest, editsMayTakeOthersAlongAtTheEndOfALife) {
    std::vector<EditPtr> holders, others;
    for (int i = 0; i < 10; ++i) {
        holders.emplace_back(fresh());
        others.emplace_back(fresh());
    }
    ASSERT_TRUE(manager().flushChanges(false).ok());
    for (const EditPtr& holder : holders) {
        guards_.push_back(holder->registerNotification(
            makeCallback<NotifyMsg>([other = others.back()](const NotifyMsg&) {}),
            kNoticeModifications));
        holder->setDirty(); // stays open
        others.pop_back();
    }
    holders.clear();
    ProcessLife::end();
    EXPECT_TRUE(manager().getAllEdits().empty());
}

TEST_F(EditManagerTest, exitTellsViewersThenListenersThenSaves) {
    follow(kNoticeProjectExit);
    Listener first("first", told_);
    Listener second("second", told_);
    const Cookie cookie = fresh().getCookie();
    told_.clear();
    const std::string project = CurrentProject::getCookie().asString();
    reopen();
    EXPECT_THAT(told_, ElementsAre("16 " + project, "second exit", "first exit", "first entry",
                                   "second entry"));
    EXPECT_FALSE(manager().isOpen(cookie));
    EXPECT_TRUE(manager().exists(cookie)) << "saved";
}

TEST_F(EditManagerTest, filtersDecideWhichNoticesAreDelivered) {
    const EditPtr edit = fresh();
    const Kv::Ptr<Guard> guard = manager().registerNotification(
        makeCallback<NotifyMsg>([this](const NotifyMsg&) { told_.emplace_back("told"); }),
        kNoticeModifications, [](const NotifyMsg& message) {
            return message.getObjectAs<EditModificationNotice>()->modifications().includes(
                kModName);
        });
    edit->addModification(kModGeneral, true);
    EXPECT_THAT(told_, IsEmpty());
    edit->setName(L"now");
    edit->addModification(EditModifications(), true);
    EXPECT_THAT(told_, ElementsAre("told"));
    EXPECT_FALSE(manager().registerNotification({}, kNoticeModifications));
}

TEST_F(EditManagerTest, theClipboardIsARealEditThatLasts) {
    const Cookie cookie = manager().getClipboard().getCookie();
    EXPECT_TRUE(EditPtr(cookie)->isClipboard());
    reopen();
    EXPECT_EQ(manager().getClipboard().getCookie(), cookie);
    ASSERT_TRUE(manager().deleteEdits({cookie}, "").ok());
    EXPECT_NE(manager().getClipboard().getCookie(), cookie);
}

TEST_F(EditManagerTest, aReadOnlyProjectIsNeverWritten) {
    const Cookie cookie = fresh().getCookie();
    ASSERT_TRUE(CurrentProject::close().ok());
    ASSERT_TRUE(CurrentProject::open(folder(), CurrentProject::Access::readOnly).ok());
    const std::string bytes = test::bytesOf(fileOf(cookie));
    EditPtr edit(cookie);
    edit->setName(L"only here");
    EXPECT_FALSE(manager().flushChanges(false).ok() || manager().deleteEdits({cookie}, "").ok());
    EXPECT_TRUE(manager().isOpen(cookie));
    EXPECT_EQ(test::bytesOf(fileOf(cookie)), bytes);
}

// A file takes five million segments at most.
TEST_F(EditManagerTest, anEditThatNoFileHoldsKeepsNoOtherFromBeingSaved) {
    EditModifier large = manager().makeNewEdit(makeNewEditCookie(), 1, 4, 10.0, Kv::FrameRate(25));
    const auto fill = [&](const std::vector<CelSegment>& segments) {
        for (const IdStamp& channel : large->getChans())
            ASSERT_TRUE(large->get_edit_cel_p(channel)->setSegments(segments).ok());
    };
    std::vector<CelSegment> segments(1'000'001);
    for (std::size_t i = 0; i < segments.size(); ++i) {
        segments[i].start = static_cast<cutroom::Flicks>(i);
        segments[i].end = segments[i].start + 1;
    }
    fill(segments);
    const EditModifier other = fresh();
    const Status status = manager().flushChanges(false);
    EXPECT_THAT(status.text(),
                AllOf(HasSubstr(large.getCookie().asString()), HasSubstr("has 5000005 segments")));
    EXPECT_TRUE(large->isDirty() && !other->isDirty());
    EXPECT_TRUE(projdb::isPresent(other.getCookie()));
    other->setName(L"again");
    EXPECT_FALSE(manager().save(std::vector<EditPtr>{other, large}).ok());
    EXPECT_TRUE(other->isDirty()) << "all or none";
    fill({});
    EXPECT_TRUE(manager().flushChanges(false).ok());
    EXPECT_FALSE(manager().anyDirty());
}

TEST_F(EditManagerTest, namesNewEditsWithoutReadingEveryRecord) {
    projdb::Record record;
    for (std::uint64_t i = 1; i <= 400; ++i) {
        record.cookie = Cookie('E', i);
        record.setField("name", i < 3 ? "Edit " + std::to_string(i) : "Shot");
        ASSERT_TRUE(projdb::put(record).ok());
    }
    reopen();
    const std::size_t before = cutroom::test::allocations();
    EXPECT_EQ(generateNewEditName(), L"Edit 3");
    EXPECT_LT(cutroom::test::allocations() - before, 200u);
    record.setField("name", "Edit 3");
    ASSERT_TRUE(projdb::put(record).ok() && projdb::remove(Cookie('E', 1)).ok());
    EXPECT_EQ(generateNewEditName(), L"Edit 1");
    fresh()->setName(L"Edit 1");
    EXPECT_EQ(generateNewEditName(), L"Edit 4");
    EXPECT_THAT(manager().getAllEdits(), testing::SizeIs(400));
}

TEST_F(EditManagerTest, handlesComeAndGoOnManyThreads) {
    CookieVec cookies;
    for (int i = 0; i < 4; ++i)
        cookies.push_back(fresh().getCookie());
    ASSERT_TRUE(manager().flushChanges(false).ok());
    std::vector<std::thread> threads;
    std::atomic<int> lost{0};
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&, t] {
            for (int i = 0; i < 200; ++i) {
                const EditPtr edit(cookies[static_cast<std::size_t>((t + i) % 4)]);
                const EditPtr copy(edit);
                lost += !edit || copy->getNumChans() != 3;
                if (i % 50 == 0)
                    edit->setConfig("scene", i);
            }
        });
    threads.emplace_back([&] {
        for (int i = 0; i < 20; ++i)
            lost += !manager().flushChanges(false).ok();
    });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(lost, 0);
    ASSERT_TRUE(manager().flushChanges(false).ok());
    EXPECT_THAT(manager().getAllEdits(), testing::SizeIs(4));
}

} // namespace
