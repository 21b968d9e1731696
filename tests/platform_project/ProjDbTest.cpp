// The project database: records, searches, transactions, notices, damage.
#include "platform/project/ProjDb.h"
#include "platform/prefs/Configuration.h"
#include "platform/project/RecordTable.h"
#include "tests/platform_project/ProjectFixture.h"
#include "tests/support/Scale.h"

#include <gmock/gmock.h>

#include <csignal>
#include <filesystem>
#include <functional>
#include <limits>
#include <map>
#include <random>
#include <thread>

#include <sys/resource.h>

using cutroom::Status;
using cutroom::StatusCode;
using cutroom::test::bytesOf;
using cutroom::test::putBytes;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

Cookie edit(std::uint64_t id) { return Cookie('E', id); }

class ProjDbTest : public cutroom::test::ProjectFixture {
protected:
    void SetUp() override { ASSERT_TRUE(create().ok()); }

    // The notices as text: "+ added ~ modified - removed" by number.
    void listen() {
        guard_ = projdb::addListener(makeCallback<NotifyMsg>([this](const NotifyMsg& message) {
            const auto* const changes = message.getObjectAs<projdb::Changes>();
            std::string line;
            for (const auto& [mark, list] :
                 {std::pair("+", changes->added), std::pair("~", changes->modified),
                  std::pair("-", changes->removed)})
                for (const Cookie& cookie : list)
                    line += mark + std::to_string(cookie.id());
            told_.push_back(line);
        }));
    }
    static std::vector<std::uint64_t> matching(const projdb::SearchCriteria& criteria) {
        std::vector<std::uint64_t> ids;
        projdb::forEachMatch(criteria, [&](const projdb::Summary& summary) {
            ids.push_back(summary.cookie.id());
            return true;
        });
        return ids;
    }
    static std::vector<std::uint64_t> quickly(const std::string& text) {
        projdb::SearchCriteria criteria;
        criteria.quickSearch = text;
        return matching(criteria);
    }

    std::vector<std::string> told_;
    Kv::Ptr<Guard> guard_;
};

projdb::Record fullRecord() {
    projdb::Record record;
    record.cookie = edit(7);
    record.kinds = projdb::kKindSubClip | projdb::kKindImage;
    record.logType = kLogTypeSubclip;
    record.start = 1e99;
    record.end = -0.0;
    record.videoTracks = 3;
    record.audioTracks = std::numeric_limits<std::uint32_t>::max();
    record.created = 4'000'000'000u;
    record.modified = 5;
    record.markerTypes = 0x80000001;
    record.attributes = {{"name", "Ünï"}, {"notes", std::string("a\0b", 3)}, {"weather", "rain"}};
    record.mediaLocations = {"/a", ""};
    record.markerTexts = {"", "x"};
    return record;
}

TEST_F(ProjDbTest, givesBackWhatWasPut) {
    ASSERT_TRUE(projdb::insert(fullRecord()).ok());
    for (int run = 0; run < 2; ++run) {
        const std::optional<projdb::Record> found = projdb::find(edit(7));
        ASSERT_TRUE(found);
        EXPECT_EQ(*found, fullRecord());
        EXPECT_EQ(projdb::findSummary(edit(7))->audioTracks, fullRecord().audioTracks);
        ASSERT_TRUE(reopen().ok());
    }
}

TEST_F(ProjDbTest, answersForEachChange) {
    projdb::Record endless = record(3, "c");
    endless.end = std::numeric_limits<double>::infinity();
    EXPECT_EQ(projdb::update(record(1, "a")).code(), StatusCode::notFound);
    EXPECT_TRUE(projdb::insert(record(1, "a")).ok());
    EXPECT_EQ(projdb::insert(record(1, "b")).code(), StatusCode::wrongUsage);
    EXPECT_EQ(projdb::remove(edit(2)).code(), StatusCode::notFound);
    for (const projdb::Record& bad : {projdb::Record(), endless})
        EXPECT_EQ(projdb::insert(bad).code(), StatusCode::wrongUsage);
    EXPECT_THAT(projdb::arePresent({edit(2), edit(1), edit(3)}), ElementsAre(false, true, false));
    EXPECT_THAT(projdb::firstPresent({edit(2), edit(1), edit(1)}), ElementsAre(false, true, false));
    ASSERT_TRUE(CurrentProject::close().ok());
    EXPECT_EQ(projdb::put(record(1, "a")).code(), StatusCode::failed);
    EXPECT_EQ(projdb::count(), 0u);
}

TEST_F(ProjDbTest, walksInTheOrderOfInsertion) {
    for (const std::uint64_t id : {5u, 2u, 9u, 4u})
        ASSERT_TRUE(projdb::put(record(id, "n" + std::to_string(id))).ok());
    projdb::Record changed = record(2, "changed");
    changed.setField("cookie", "its own"); // as the configuration of an edit may say
    ASSERT_TRUE(projdb::put(changed).ok());
    std::vector<std::string> names;
    projdb::forEach({"cookie", "name", "tags"}, [&](const std::vector<std::string>& texts) {
        EXPECT_EQ(texts[2], "");
        EXPECT_NE(texts[0], "its own");
        names.push_back(texts[1]);
        // A visitor may change the records: those that it removes are skipped, new ones are not
        // visited.
        EXPECT_EQ(projdb::remove(edit(9)).ok(), names.size() == 1);
        EXPECT_TRUE(projdb::put(record(100 + names.size(), "new")).ok());
        return texts[0] != edit(4).asString();
    });
    EXPECT_THAT(names, ElementsAre("n5", "changed", "n4"));
}

TEST_F(ProjDbTest, tellsOneNoticeForEachChangeOrBatch) {
    listen();
    ASSERT_TRUE(projdb::put(record(1, "a")).ok());
    ASSERT_TRUE(projdb::put(record(1, "a")).ok()) << "equal: silent";
    ASSERT_TRUE(projdb::put(record(1, "b")).ok());
    {
        const ProjDbModificationCoalescer outer;
        const ProjDbModificationCoalescer inner;
        ASSERT_TRUE(projdb::put(record(2, "a")).ok() && projdb::put(record(3, "a")).ok());
        ASSERT_TRUE(projdb::put(record(3, "b")).ok() && projdb::put(record(1, "c")).ok());
        ASSERT_TRUE(projdb::remove(edit(2)).ok() && projdb::remove(edit(1)).ok());
        EXPECT_THAT(told_, ElementsAre("+1", "~1")) << "nothing before the end";
    }
    ASSERT_TRUE(projdb::remove(edit(3)).ok());
    { const ProjDbModificationCoalescer idle; }
    EXPECT_THAT(told_, ElementsAre("+1", "~1", "+3-1", "-3"));
    {
        const ProjDbModificationCoalescer back;
        ASSERT_TRUE(projdb::put(record(4, "a")).ok() && projdb::remove(edit(4)).ok());
    }
    EXPECT_EQ(told_.size(), 4u) << "there and back is no change";
}

TEST_F(ProjDbTest, letsListenersChangeRecords) {
    guard_ = projdb::addListener(makeCallback<NotifyMsg>([](const NotifyMsg&) {
        if (projdb::count() < 3) {
            EXPECT_TRUE(projdb::put(record(10 + projdb::count(), "more")).ok());
        }
    }));
    ASSERT_TRUE(projdb::put(record(1, "a")).ok());
    EXPECT_EQ(projdb::count(), 3u);
}

// Random operations compared with a plain map, and searches with `matchRecord`.
TEST_F(ProjDbTest, agreesWithAPlainMap) {
    std::mt19937 random(42);
    const std::vector<std::string> words = {
        "tide", "Ebb", "flow tide", "tidebreak", "", "Ébène", std::string("sea\0tide", 8)};
    std::map<std::uint64_t, projdb::Record> model;
    std::vector<std::uint64_t> order;
    for (long step = 0; step < cutroom::test::rounds(600, 20000); ++step) {
        const std::uint64_t id = random() % 40;
        projdb::Record changed = record(id, words[random() % words.size()]);
        changed.kinds = random() % 2 ? projdb::kKindClip : projdb::kKindSequence;
        changed.setField("scene", words[random() % words.size()]);
        if (random() % 3 == 0) {
            EXPECT_EQ(projdb::remove(edit(id)).ok(), model.erase(id) == 1);
            std::erase(order, id);
        } else {
            ASSERT_TRUE(projdb::put(changed).ok());
            if (model.insert_or_assign(id, changed).second)
                order.push_back(id);
        }
        if (random() % 100 == 0) {
            ASSERT_TRUE(reopen().ok());
        }
        projdb::SearchCriteria criteria;
        criteria.kinds = 1u + static_cast<unsigned>(random() % 3);
        criteria.options = static_cast<unsigned>(random() % 2);
        // With the texts in memory, and with none.
        cutroom::Configuration::instance().set("search_text_megabytes", random() % 3 ? "" : "0");
        if (random() % 4)
            criteria.quickSearch = words[random() % words.size()];
        else
            criteria.attributes = {
                {LogAttribute::scene, {{{"e", projdb::eMatchMethod::contains}}, {}}}};
        std::vector<std::uint64_t> expected;
        for (const std::uint64_t present : order)
            if (criteria.matchesKinds(model[present].kinds) &&
                projdb::matchRecord(model[present], criteria))
                expected.push_back(present);
        ASSERT_EQ(matching(criteria), expected) << step << " " << criteria.quickSearch;
        ASSERT_EQ(projdb::count(), model.size());
    }
}

TEST_F(ProjDbTest, closesTheGapsOfManyRemovals) {
    const ProjDbModificationCoalescer batch;
    for (std::uint64_t id = 0; id < 3000; ++id)
        ASSERT_TRUE(projdb::put(record(id, "clip " + std::to_string(id))).ok());
    for (std::uint64_t id = 0; id < 2990; ++id)
        ASSERT_TRUE(projdb::remove(edit(id)).ok());
    EXPECT_THAT(quickly("clip 299"), testing::SizeIs(10));
    EXPECT_EQ(projdb::find(edit(2995))->name(), "clip 2995");
}

TEST_F(ProjDbTest, servesManyThreadsAtOnce) {
    constexpr std::uint64_t kEach = 60;
    listen();
    std::vector<std::thread> threads;
    for (std::uint64_t t = 0; t < 4; ++t)
        threads.emplace_back([t] {
            const ProjDbModificationCoalescer batch;
            for (std::uint64_t i = 0; i < kEach; ++i) {
                EXPECT_TRUE(projdb::put(record(t * kEach + i, "thread")).ok());
                EXPECT_TRUE(projdb::isPresent(edit(t * kEach + i)));
                if (i % 20 == 0) {
                    EXPECT_THAT(quickly("thread"), testing::Contains(t * kEach));
                    projdb::forEach(
                        [](const projdb::Record& one) { return one.name() == "thread"; });
                }
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(projdb::count(), 4 * kEach);
    EXPECT_THAT(told_, testing::Not(IsEmpty()));
}

TEST_F(ProjDbTest, aWriterThatComesLaterLeavesAReaderAlone) {
    constexpr std::uint64_t kRecords = 200;
    const std::string text = "old" + std::string(20'000, 'x'); // SQLite keeps 2 MB of a file
    {
        const ProjDbModificationCoalescer batch;
        for (std::uint64_t id = 0; id < kRecords; ++id)
            ASSERT_TRUE(projdb::put(record(id, text)).ok());
    }
    ASSERT_TRUE(reopen(Access::readOnly).ok());
    auto writer =
        cutroom::RecordTable::open(inFolder("project.db"), cutroom::SqliteConnection::Mode::create);
    ASSERT_TRUE(writer.ok() && writer->begin().ok());
    for (std::uint64_t id = 0; id < kRecords; ++id)
        ASSERT_TRUE(writer->update(static_cast<std::int64_t>(id + 1), record(id, "new")).ok());
    ASSERT_TRUE(writer->commit().ok() && writer->close().ok());
    std::uint64_t same = 0;
    projdb::forEach([&](const projdb::Record& one) { return one == record(same++, text); });
    EXPECT_EQ(same, kRecords);
}

// --- crashes, failures, damage -----------------------------------------------------------------

// No file grows beyond `bytes` while it lives.
class FullDisk {
public:
    explicit FullDisk(rlim_t bytes) : signal_(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit full{bytes, before_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &full);
    }
    ~FullDisk() {
        setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, signal_);
    }

private:
    rlimit before_{};
    void (*signal_)(int);
};

TEST_F(ProjDbTest, isAsBeforeWhenTheDiskIsFull) {
    ASSERT_TRUE(projdb::put(record(1, "a")).ok());
    listen();
    const std::string large(100'000, 'x');
    {
        const FullDisk disk(200'000);
        EXPECT_TRUE(projdb::put(record(2, "small")).ok());
        Status failed;
        for (std::uint64_t id = 10; failed.ok() && id < 20; ++id)
            failed = projdb::put(record(id, large));
        EXPECT_EQ(failed.code(), StatusCode::inputOutput) << failed.text();
        const std::size_t kept = projdb::count();
        EXPECT_EQ(told_.size() + 1, kept) << "told of what was kept, and of nothing else";
        ProjDbModificationCoalescer batch;
        EXPECT_TRUE(projdb::put(record(1, "b")).ok());
        Status lost = projdb::put(record(3, large));
        if (lost)
            lost = batch.commit();
        EXPECT_FALSE(lost.ok());
        EXPECT_FALSE(projdb::isPresent(edit(3)));
    }
    EXPECT_EQ(projdb::find(edit(1))->name(), "a") << "the whole batch is undone";
    EXPECT_TRUE(projdb::put(record(3, large)).ok()) << "a later try succeeds";
    ASSERT_TRUE(reopen().ok());
    EXPECT_EQ(projdb::find(edit(3))->name(), large);
    EXPECT_EQ(projdb::find(edit(1))->name(), "a");
}

TEST_F(ProjDbTest, isRebuiltWhenMissingOrDamaged) {
    ASSERT_TRUE(projdb::put(record(1, "a")).ok());
    const Kv::Ptr<Guard> rebuilder = CurrentProject::installDatabaseRebuilder(
        [] { return projdb::put(record(1, "rebuilt in " + CurrentProject::getFolder())); });
    EXPECT_FALSE(CurrentProject::installDatabaseRebuilder([] { return Status(); })) << "one only";
    putBytes(inFolder("edits/E0000000000001.edit"), "x");
    ASSERT_TRUE(CurrentProject::close().ok());
    const std::string whole = bytesOf(inFolder("project.db"));
    std::string foreign = whole, later = whole; // SQLite's header: application_id, user_version
    foreign[68] ^= 1;
    later[63] = 9;
    putBytes(inFolder("project.db"), later);
    EXPECT_EQ(CurrentProject::open(folder()).message(), "written by a later version");
    EXPECT_EQ(bytesOf(inFolder("project.db")), later);
    const std::string garbage = "not a database at all, but long enough to be read as one";
    for (const auto& [damaged, access] : {std::pair(garbage, Access::readOnly),
                                          {garbage, Access::readWrite},
                                          {foreign, Access::readWrite}}) {
        putBytes(inFolder("project.db"), damaged);
        ASSERT_TRUE(CurrentProject::open(folder(), access).ok());
        EXPECT_EQ(projdb::find(edit(1))->name(), "rebuilt in " + folder());
        EXPECT_EQ(CurrentProject::getWarnings().size(), 1u);
        ASSERT_TRUE(CurrentProject::close().ok());
        EXPECT_EQ(bytesOf(inFolder("project.db")) == damaged, access == Access::readOnly);
    }
    EXPECT_EQ(bytesOf(inFolder("project.db.damaged")), garbage);
    EXPECT_TRUE(bytesOf(inFolder("project.db.damaged.2")) == foreign);
    std::filesystem::remove(inFolder("project.db"));
    ASSERT_TRUE(CurrentProject::open(folder()).ok());
    EXPECT_EQ(projdb::count(), 1u);
    EXPECT_THAT(CurrentProject::getWarnings(), IsEmpty());
}

TEST_F(ProjDbTest, isAsBeforeWhenARebuildFails) {
    ASSERT_TRUE(projdb::put(record(1, "a")).ok());
    EXPECT_EQ(CurrentProject::rebuildDatabase().code(), StatusCode::notFound);
    listen();
    const Kv::Ptr<Guard> rebuilder = CurrentProject::installDatabaseRebuilder([]() -> Status {
        if (Status status = projdb::put(record(2, "b")); !status)
            return status;
        return Status(StatusCode::damaged, "E2.edit", "torn");
    });
    EXPECT_EQ(CurrentProject::rebuildDatabase().code(), StatusCode::damaged);
    EXPECT_TRUE(projdb::isPresent(edit(1)));
    EXPECT_FALSE(projdb::isPresent(edit(2)));
    EXPECT_THAT(told_, IsEmpty());
}

TEST_F(ProjDbTest, noticesEveryWrongByteOrIsWhole) {
    for (std::uint64_t id = 1; id <= 20; ++id)
        ASSERT_TRUE(projdb::put(record(id, "clip " + std::to_string(id))).ok());
    ASSERT_TRUE(CurrentProject::close().ok());
    const std::string good = bytesOf(inFolder("project.db"));
    const std::size_t step =
        good.size() / static_cast<std::size_t>(cutroom::test::rounds(300, 9000));
    std::vector<std::size_t> places = {8128}; // the first record's number
    for (std::size_t at = 0; at < good.size(); at += step)
        places.push_back(at);
    for (const std::size_t at : places) {
        std::string bad = good;
        bad[at] = static_cast<char>(bad[at] ^ (1 << (at % 8)));
        putBytes(inFolder("project.db"), bad);
        ASSERT_TRUE(CurrentProject::open(folder(), Access::readOnly).ok()) << at;
        if (CurrentProject::getWarnings().empty()) {
            EXPECT_EQ(projdb::count(), 20u) << at;
            for (std::uint64_t id = 1; id <= 20; ++id)
                EXPECT_EQ(projdb::find(edit(id)), record(id, "clip " + std::to_string(id))) << at;
        }
        ASSERT_TRUE(CurrentProject::close().ok());
        EXPECT_EQ(bytesOf(inFolder("project.db")), bad) << at;
    }
}

} // namespace
