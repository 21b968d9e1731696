// A project of 10,000 bins at its start: the summaries of all from the bins cache, against one flat
// file of the same and a database; the same with a look at every bin's file, which shows whether
// the cache can be trusted; and without a cache, against opening and reading the files.
#include "bench/limits/Summary.h"
#include "bench/support/Paired.h"
#include "bins/BinsCache.h"
#include "platform/embedded/EmbeddedProject.h"
#include "platform/files/Files.h"
#include "platform/files/KVContainerFile.h"
#include "platform/project/ProjectPaths.h"
#include "tests/support/LogLines.h"
#include "tests/support/TempFolder.h"

#include <sqlite3.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>

namespace cutroom::bench {

namespace {

void require(bool done) {
    if (!done)
        std::abort();
}

// The project, and what the rivals read.
class ManyBins {
public:
    ManyBins(std::size_t bins, std::size_t itemsEach) {
        require(project_
                    .open(folder_ / "film", CurrentProject::Access::readWrite,
                          CurrentProject::IfMissing::create)
                    .ok());
        for (std::size_t i = 0; i < bins; ++i)
            write(Cookie('G', i * 7919 + 1), L"Bin number " + std::to_wstring(i), itemsEach);
        summaries_ = findBins().summaries;
        for (auto& [id, summary] : summaries_)
            summary.children = {id};
        namespace fs = std::filesystem;
        for (const std::string& path : files_) // the cache is newer
            fs::last_write_time(path, fs::last_write_time(path) - std::chrono::hours(1));
        plainWrite(flatFile(), summaries_);
        require(writeFile(binsCachePath(), binsCacheBytes(summaries_), Backup::none).ok());
        fillDatabase();
    }

    std::string flatFile() const { return folder_ / "flat"; }
    std::string folder() const { return folder_ / "film/groups"; }
    std::string database() const { return folder_ / "rival.db"; }
    const std::vector<std::string>& files() const { return files_; }

private:
    void write(const Cookie& bin, const std::wstring& name, std::size_t items) {
        static constexpr KVContainerFile::ItemField kFields[] = {
            {"Cookie", 'a'},   {"Pos", 'a'}, {"Time", 'f'}, {"Mark", 'f'},
            {"Mark Out", 'f'}, {"ID", 'a'},  {nullptr, 'a'}};
        KVContainerFile::Writer writer(kFields);
        writer.setName(toUtf8(name));
        for (const char* attribute : {"Version", "ModTime", "Created"})
            writer.addAttribute(attribute, "2");
        for (std::size_t i = 0; i < items; ++i) {
            writer.addItem(Cookie('E', bin.id() * 100 + i).asString());
            writer.setField(1, "(-1,-1)");
            writer.setField(2, 0.0);
        }
        files_.push_back(toUtf8(getFileNameForLogGroup(bin, nullptr, Cookie())));
        require(systemWrite(files_.back(), writer.bytes()));
    }
    static bool systemWrite(const std::string& path, const std::string& bytes) {
        return static_cast<bool>(std::ofstream(path, std::ios::binary) << bytes);
    }
    void fillDatabase() {
        sqlite3* db = nullptr;
        require(sqlite3_open(database().c_str(), &db) == SQLITE_OK);
        require(sqlite3_exec(db,
                             "CREATE TABLE bins (id INTEGER PRIMARY KEY, name TEXT, logs INTEGER, "
                             "modified INTEGER, created INTEGER, children TEXT); BEGIN",
                             nullptr, nullptr, nullptr) == SQLITE_OK);
        sqlite3_stmt* insert = nullptr;
        require(sqlite3_prepare_v2(db, "INSERT INTO bins VALUES (?,?,?,?,?,?)", -1, &insert,
                                   nullptr) == SQLITE_OK);
        for (const auto& [id, summary] : summaries_) {
            const std::string name = toUtf8(summary.name);
            const std::string child = id.asString();
            sqlite3_bind_int64(insert, 1, static_cast<sqlite3_int64>(id.id()));
            sqlite3_bind_text(insert, 2, name.c_str(), -1, nullptr);
            sqlite3_bind_int(insert, 3, summary.logCount);
            sqlite3_bind_int64(insert, 4, summary.modTime);
            sqlite3_bind_int64(insert, 5, summary.created);
            sqlite3_bind_text(insert, 6, child.c_str(), -1, nullptr);
            require(sqlite3_step(insert) == SQLITE_DONE);
            sqlite3_reset(insert);
        }
        sqlite3_finalize(insert);
        require(sqlite3_exec(db, "COMMIT", nullptr, nullptr, nullptr) == SQLITE_OK);
        sqlite3_close(db);
    }

    test::LogLines quiet_; // a missing cache is logged
    test::TempFolder folder_{test::TempFolder::inMemory()};
    EmbeddedHost host_{EmbeddedHost::repeatable()};
    EmbeddedProject project_{host_};
    std::vector<std::string> files_;
    BinSummaries summaries_;
};

// Every record of the rival's table becomes an entry of the same map.
BinSummaries fromDatabase(const std::string& path) {
    sqlite3* db = nullptr;
    require(sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READONLY, nullptr) == SQLITE_OK);
    sqlite3_stmt* select = nullptr;
    require(sqlite3_prepare_v2(db, "SELECT * FROM bins ORDER BY id", -1, &select, nullptr) ==
            SQLITE_OK);
    const auto text = [&](int column) {
        return std::string_view(reinterpret_cast<const char*>(sqlite3_column_text(select, column)),
                                static_cast<std::size_t>(sqlite3_column_bytes(select, column)));
    };
    BinSummaries summaries;
    while (sqlite3_step(select) == SQLITE_ROW) {
        BinSummary summary;
        summary.id = Cookie('G', static_cast<std::uint64_t>(sqlite3_column_int64(select, 0)));
        summary.name = toWide(text(1));
        summary.logCount = sqlite3_column_int(select, 2);
        summary.modTime = static_cast<std::uint32_t>(sqlite3_column_int64(select, 3));
        summary.created = static_cast<std::uint32_t>(sqlite3_column_int64(select, 4));
        summary.children = {Cookie(text(5))};
        summaries.emplace_hint(summaries.end(), summary.id, std::move(summary));
    }
    sqlite3_finalize(select);
    sqlite3_close(db);
    return summaries;
}

constexpr std::size_t kItemsEach = 20;

void summariesFromTheCache(benchmark::State& state) {
    const auto count = static_cast<std::size_t>(state.range(0));
    const ManyBins bins(count, kItemsEach);
    const std::string cache = binsCachePath();
    Paired paired(static_cast<double>(count));
    paired.add("limit", [&] { require(plainSummaries(bins.flatFile()).size() == count); });
    paired.add("cache", [&] { require(readBinsCache(cache)->size() == count); });
    paired.add("SQLite", [&] { require(fromDatabase(bins.database()).size() == count); });
    paired.run(state);
}
BENCHMARK(summariesFromTheCache)->Arg(10'000)->UseManualTime()->MinTime(1);

void summariesAndALookAtTheFiles(benchmark::State& state) {
    const auto count = static_cast<std::size_t>(state.range(0));
    const ManyBins bins(count, kItemsEach);
    Paired paired(static_cast<double>(count));
    paired.add("limit", [&] {
        require(plainSummaries(bins.flatFile()).size() == plainLook(bins.folder()).size());
    });
    paired.add("start", [&] { require(findBins().cacheIsCurrent); });
    paired.run(state);
}
BENCHMARK(summariesAndALookAtTheFiles)->Arg(10'000)->UseManualTime()->MinTime(2);

void summariesFromTheFiles(benchmark::State& state) {
    const auto count = static_cast<std::size_t>(state.range(0));
    const ManyBins bins(count, kItemsEach);
    std::filesystem::remove(binsCachePath());
    Paired paired(static_cast<double>(count));
    paired.add("limit", [&] { require(plainReadAll(bins.files()) > count); });
    paired.add("files", [&] { require(findBins().summaries.size() == count); });
    paired.run(state);
}
BENCHMARK(summariesFromTheFiles)->Arg(10'000)->UseManualTime()->MinTime(4);

} // namespace

} // namespace cutroom::bench
