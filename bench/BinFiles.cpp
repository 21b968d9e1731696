// A bin of N items saved and loaded: packed records against ours and rivals. Loading is measured
// as the parsing of the file alone, with items whose assets need no check, with logs that the
// project database knows, and with those among a million others.

#include "bench/limits/BinRecords.h"
#include "bench/support/BinRivals.h"
#include "bench/support/Paired.h"
#include "bins/BinFileText.h"
#include "bins/BinManager.h"
#include "platform/embedded/EmbeddedProject.h"
#include "platform/files/Files.h"
#include "platform/files/KVContainerFile.h"
#include "platform/project/ProjDb.h"
#include "tests/support/TempFolder.h"

#include <cstdlib>
#include <random>

namespace cutroom::bench {

namespace {

// A project on the disk with a saved bin.
class SavedBin {
public:
    SavedBin(std::size_t count, char type) : plain(plainItems(count, type)) {
        if (!project_.open(folder_ / "film", CurrentProject::Access::readWrite,
                           CurrentProject::IfMissing::create))
            std::abort();
        bin = BinManager::instance().newBin();
        BinData::Items items;
        for (const PlainItem& from : plain) {
            BinItem& item = items.emplace_back(from.asset, from.time);
            item.markIn = from.markIn;
            item.markOut = from.markOut;
            item.position = {from.x, from.y};
        }
        bin->setContents(std::move(items));
        save();
    }
    ~SavedBin() {
        bin.reset();
        if (!project_.close())
            std::abort();
    }
    // Puts the bin's logs and `others` more into the project database.
    void record(std::size_t others) {
        ProjDbModificationCoalescer together;
        projdb::Record record;
        for (const PlainItem& item : plain) {
            record.cookie = item.asset;
            if (!projdb::put(record))
                std::abort();
        }
        std::mt19937_64 random(2);
        for (std::size_t i = 0; i < others; ++i) {
            record.cookie = Cookie('E', random());
            if (!projdb::put(record))
                std::abort();
        }
    }
    void save() {
        if (!bin->save())
            std::abort();
    }
    void load() {
        if (!bin->load() || bin->numItems() != plain.size())
            std::abort();
    }
    std::string path(const std::string& name) const { return folder_ / name; }

    std::vector<PlainItem> plain;
    Kv::Ptr<BinData> bin;

private:
    test::TempFolder folder_;
    EmbeddedHost host_;
    EmbeddedProject project_{host_};
};

std::size_t countOf(const benchmark::State& state) {
    return static_cast<std::size_t>(state.range(0));
}

void saving(benchmark::State& state) {
    SavedBin saved(countOf(state), 'E');
    Paired paired(static_cast<double>(saved.plain.size()));
    paired.add("limit", [&] { savePacked(saved.plain, saved.path("packed")); });
    paired.add("bin", [&] { saved.save(); });
    for (const BinRival& rival : binRivals())
        if (rival.save)
            paired.add(rival.name,
                       [&saved, rival] { rival.save(saved.plain, saved.path(rival.name)); });
    paired.run(state);
    const std::string path = toUtf8(saved.bin->getLocation());
    state.counters["bytes per item"] =
        static_cast<double>(readFile(path)->size()) / static_cast<double>(saved.plain.size());
}
BENCHMARK(saving)->Arg(1000)->Arg(100'000)->UseManualTime();

// All that the file says of the items, as it stands there.
std::vector<PlainItem> parse(const std::string& path) {
    using Reader = KVContainerFile::Reader;
    const Reader file(path, Reader::Access::inOrder);
    std::vector<PlainItem> items;
    items.reserve(file.getNumItems());
    const Status read = file.forEachItem([&](const Reader::Value* values) {
        const XY<float> position = readPosition(values[1].text);
        items.push_back({Cookie(values[0].text), values[2].number, values[3].number,
                         values[4].number, position.x, position.y, false,
                         std::string(values[5].text)});
    });
    if (!read)
        std::abort();
    return items;
}

void parsing(benchmark::State& state) {
    SavedBin saved(countOf(state), 'E');
    savePacked(saved.plain, saved.path("packed"));
    Paired paired(static_cast<double>(saved.plain.size()));
    const std::string path = toUtf8(saved.bin->getLocation());
    paired.add("limit", [&] { benchmark::DoNotOptimize(loadPacked(saved.path("packed"))); });
    paired.add("bin", [&] { benchmark::DoNotOptimize(parse(path)); });
    paired.run(state);
}
BENCHMARK(parsing)->Arg(100'000)->UseManualTime();

// `checked`: the bin holds logs, which are looked up among `others` more.
void loadingOf(benchmark::State& state, bool checked, std::size_t others, bool withRivals) {
    SavedBin saved(countOf(state), checked ? 'E' : 'X');
    if (checked)
        saved.record(others);
    savePacked(saved.plain, saved.path("packed"));
    Paired paired(static_cast<double>(saved.plain.size()));
    paired.add("limit", [&] { benchmark::DoNotOptimize(loadPacked(saved.path("packed"))); });
    paired.add("bin", [&] { saved.load(); });
    std::string path;
    for (const BinRival& rival : withRivals ? binRivals() : std::vector<BinRival>()) {
        if (rival.save) {
            path = saved.path(rival.name);
            rival.save(saved.plain, path);
        }
        paired.add(rival.name, [rival, path] { benchmark::DoNotOptimize(rival.load(path)); });
    }
    paired.run(state);
}

void loading(benchmark::State& state) { loadingOf(state, false, 0, true); }
BENCHMARK(loading)->Arg(1000)->Arg(100'000)->UseManualTime();

void loadingLogs(benchmark::State& state) { loadingOf(state, true, 0, false); }
BENCHMARK(loadingLogs)->Arg(100'000)->UseManualTime();

void loadingLogsOfAMillion(benchmark::State& state) { loadingOf(state, true, 1'000'000, false); }
BENCHMARK(loadingLogsOfAMillion)->Arg(100'000)->UseManualTime();

} // namespace

} // namespace cutroom::bench
