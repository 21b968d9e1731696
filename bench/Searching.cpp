// A million records of 200 bytes searched for free text, the result bin filled: one scan of the
// original texts against ours and rivals. CUTROOM_BENCH_RECORDS names another number of records.

#include "bench/limits/Search.h"
#include "bench/support/Paired.h"
#include "bench/support/SearchRivals.h"
#include "filters/ProjectSearch.h"
#include "platform/embedded/EmbeddedProject.h"
#include "platform/project/ProjDb.h"
#include "tests/support/TempFolder.h"

#include <chrono>
#include <cstdlib>
#include <memory>

namespace cutroom::bench {

namespace {

constexpr std::size_t kRecords = 1'000'000;

std::size_t recordCount() {
    const char* const wanted = std::getenv("CUTROOM_BENCH_RECORDS");
    return wanted ? std::strtoul(wanted, nullptr, 10) : kRecords;
}

// The same records in the limit's texts, in a project's database, and in the rivals' hands.
class Searched {
public:
    Searched() : records(searchedRecords(recordCount())), plain(records), table(records, false) {
        if (!project_.open(folder_ / "film", CurrentProject::Access::readWrite,
                           CurrentProject::IfMissing::create))
            std::abort();
        const ProjDbModificationCoalescer together;
        for (const SearchedRecord& from : records) {
            projdb::Record record;
            record.cookie = from.cookie;
            record.kinds = projdb::kKindClip;
            record.end = 10;
            record.setField("name", from.name);
            record.setField("notes", from.note);
            record.setField("scene", from.scene);
            if (!projdb::put(record))
                std::abort();
        }
        if (GreppedFile::isThere())
            file = std::make_unique<GreppedFile>(records, folder_ / "texts");
    }
    static Searched& instance() {
        static Searched all;
        return all;
    }

    const std::vector<SearchedRecord> records;
    const PlainTexts plain;
    const SqliteTexts table;
    std::unique_ptr<GreppedFile> file;

private:
    test::TempFolder folder_;
    EmbeddedHost host_{EmbeddedHost::repeatable()};
    EmbeddedProject project_{host_};
};

Kv::Ptr<BinData> ours(const char* pattern, bool wholeWords) {
    ProjectSearch::Criteria criteria;
    criteria.quickSearch = pattern;
    criteria.options = wholeWords ? ProjectSearch::Criteria::kWholeWords : 0u;
    return ProjectSearch::instance().perform(criteria);
}

// Both find the same, or nothing is measured.
void searching(benchmark::State& state, const char* pattern, bool wholeWords) {
    const Searched& all = Searched::instance();
    if (all.plain.search(pattern, wholeWords).size() != ours(pattern, wholeWords)->numItems()) {
        state.SkipWithError("limit and ours differ");
        return;
    }
    Paired paired(static_cast<double>(all.records.size()));
    paired.add("limit",
               [&] { benchmark::DoNotOptimize(all.plain.search(pattern, wholeWords).size()); });
    paired.add("search", [&] { benchmark::DoNotOptimize(ours(pattern, wholeWords)->numItems()); });
    if (!wholeWords)
        paired.add("LIKE", [&] { benchmark::DoNotOptimize(all.table.search(pattern).size()); });
    if (all.file)
        paired.add("ripgrep",
                   [&] { benchmark::DoNotOptimize(all.file->count(pattern, wholeWords)); });
    paired.run(state);
}
BENCHMARK_CAPTURE(searching, absent, "quagga", false)->UseManualTime();
BENCHMARK_CAPTURE(searching, rare, "zebrafinch", false)->UseManualTime();
BENCHMARK_CAPTURE(searching, some, "kingfisher", false)->UseManualTime();
BENCHMARK_CAPTURE(searching, tenth, "harbour", false)->UseManualTime();
BENCHMARK_CAPTURE(searching, word, "harbour", true)->UseManualTime();

// Rare patterns, beside an index that was built before: what ours would have to beat with one.
void indexed(benchmark::State& state) {
    const Searched& all = Searched::instance();
    const auto begin = std::chrono::steady_clock::now();
    const SqliteTexts index(all.records, true);
    const std::chrono::duration<double> built = std::chrono::steady_clock::now() - begin;
    Paired paired(static_cast<double>(all.records.size()));
    paired.add("limit",
               [&] { benchmark::DoNotOptimize(all.plain.search("zebrafinch", false).size()); });
    paired.add("search", [&] { benchmark::DoNotOptimize(ours("zebrafinch", false)->numItems()); });
    paired.add("FTS5", [&] { benchmark::DoNotOptimize(index.search("zebrafinch").size()); });
    paired.run(state);
    state.counters["FTS5 built s"] = built.count();
    state.counters["FTS5 bytes"] = index.bytes() / static_cast<double>(all.records.size());
}
BENCHMARK(indexed)->UseManualTime();

} // namespace

} // namespace cutroom::bench
