// cutroom search ...
#include "bins/BinManager.h"
#include "cli/Assets.h"
#include "cli/Command.h"
#include "cli/Names.h"
#include "cli/Progress.h"
#include "cli/SearchWords.h"
#include "platform/base/Strings.h"
#include "platform/base/Timecode.h"
#include "platform/project/ProjDb.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <csignal>
#include <memory>

namespace cutroom::cli {

namespace {

// Of more results than this the edits are not opened for their timecode.
constexpr std::size_t kMostOpened = 2000;

struct SearchCommandWords {
    SearchConditions conditions;
    std::string keep;
    std::string save;
};

// While it lives an interrupt (Ctrl-C) is remembered and ends the search, not the program.
class InterruptWatch {
public:
    InterruptWatch() : before_(std::signal(SIGINT, [](int) { interrupted_ = 1; })) {
        if (before_ == SIG_IGN) // a background job: it stays so
            std::signal(SIGINT, SIG_IGN);
    }
    ~InterruptWatch() { std::signal(SIGINT, before_); }
    InterruptWatch(const InterruptWatch&) = delete;
    InterruptWatch& operator=(const InterruptWatch&) = delete;
    static bool interrupted() noexcept { return interrupted_ != 0; }

private:
    static inline volatile std::sig_atomic_t interrupted_ = 0;
    void (*before_)(int);
};

// --- what is found, for people and programs ------------------------------------------------------

// One result with its place: reel and extent, as timecode where the edit is opened.
struct Found {
    std::string id, name, kind, reel, start, end;
};

std::string secondsText(double seconds) { return format("%.3f s", seconds); }

Found foundOf(const projdb::Summary& summary, bool open) {
    const auto record = projdb::find(summary.cookie);
    Found found{summary.cookie.asString(),
                record ? record->name() : std::string(),
                kindText(summary.kinds),
                record ? record->getText(LogAttribute::reel) : std::string(),
                secondsText(std::min(summary.start, summary.end)),
                secondsText(std::max(summary.start, summary.end))};
    if (!open)
        return found;
    const BinData single(CookieVec{summary.cookie});
    if (const auto start = single.getAttribute(0, LogAttribute::timecode); !start.empty()) {
        found.start = toUtf8(start);
        found.end = toUtf8(single.getAttribute(0, LogAttribute::endTimecode));
    }
    return found;
}

// Each line is printed as soon as its asset is found.
std::string lineOf(const Found& found) {
    return found.id +
           format("  %-12s  %-11s - %-11s  %-10s  ", found.kind.c_str(), found.start.c_str(),
                  found.end.c_str(), oneLine(found.reel).c_str()) +
           oneLine(found.name) + '\n';
}

std::string jsonOf(const BinData& results, const std::wstring& name, const Cookie& bin) {
    JSON::Builder json;
    json.beginObject();
    json.add("bin", bin.valid() ? bin.asString() : std::string());
    json.add("name", name);
    json.beginArray("results");
    const bool open = results.numItems() <= kMostOpened;
    for (const BinItem& item : results) {
        const auto summary = projdb::findSummary(item.asset);
        if (!summary)
            continue;
        const Found found = foundOf(*summary, open);
        json.beginObject();
        json.add("id", found.id);
        json.add("name", found.name);
        json.add("kind", found.kind);
        json.add("reel", found.reel);
        json.add("start", found.start);
        json.add("end", found.end);
        json.add("start_seconds", item.markIn);
        json.add("end_seconds", item.markOut);
        json.endObject();
    }
    json.endArray();
    json.endObject();
    return json.take();
}

Result<Kv::Ptr<BinData>> perform(const ProjectSearch::Criteria& criteria, bool printing) {
    const InterruptWatch watch;
    Progress progress("search");
    const auto results =
        ProjectSearch::instance().perform(criteria, [&](const ProjectSearch::Progress& state) {
            progress.show(state.share);
            for (const projdb::Summary& summary : state.last)
                if (printing && !InterruptWatch::interrupted())
                    print(lineOf(foundOf(summary, state.found <= kMostOpened)));
            return !InterruptWatch::interrupted();
        });
    if (results)
        return results;
    if (InterruptWatch::interrupted())
        return Status(StatusCode::failed, "search", "interrupted; no results were kept");
    return Status(StatusCode::inputOutput, "search", "the project's records cannot be read");
}

// --- keeping -------------------------------------------------------------------------------------

// Into a bin of the project: the one of that name, or a new one; written before it counts.
Result<Cookie> keepAs(const std::string& name, const BinData& results) {
    const auto known = allAssets(kBins);
    const bool isThere = std::any_of(known.begin(), known.end(), [&](const NamedAsset& asset) {
        return asset.name == name || asset.cookie.asString() == name;
    });
    Kv::Ptr<BinData> bin;
    if (isThere) {
        auto opened = openBin(name);
        if (!opened)
            return opened.status();
        bin = std::move(*opened);
        bin->add(results);
    } else {
        const auto wide = parseName(name);
        if (!wide)
            return wide.status();
        bin = Kv::makePtr<BinData>(results);
        bin->setName(*wide);
        bin = BinManager::instance().addBin(bin, "search kept by command");
    }
    if (Status status = BinManager::instance().saveAll(); !status)
        return status;
    return bin->getID();
}

Status saveSearch(const std::string& name, const ProjectSearch::Criteria& criteria) {
    const auto results = searchResults();
    if (!results)
        return results.status();
    return (*results)->saveCriteria(toWide(name), criteria).status();
}

Status search(const Options& options, const SearchCommandWords& words) {
    const auto criteria = criteriaOf(words.conditions);
    if (!criteria)
        return criteria.status();
    if (!words.save.empty()) // first, since a name may be refused
        if (Status status = saveSearch(words.save, *criteria); !status)
            return status;
    const auto results = perform(*criteria, !options.json);
    if (!results)
        return results.status();
    Cookie kept;
    if (!words.keep.empty()) {
        const auto bin = keepAs(words.keep, **results);
        if (!bin)
            return bin.status();
        kept = *bin;
    }
    const std::wstring name = words.keep.empty() ? (*results)->getName() : toWide(words.keep);
    if (options.json)
        print(jsonOf(**results, name, kept));
    const unsigned count = (*results)->numItems();
    note(count == 0 ? "nothing found"
                    : format("%u found", count) +
                          (kept.valid() ? ", kept in bin " + kept.asString() : std::string()));
    return {};
}

void addConditionOptions(CLI::App& command, SearchConditions& conditions) {
    command.add_option("text", conditions.text, "Found anywhere in an asset's texts, in any case")
        ->type_name("TEXT");
    command.add_flag("--words", conditions.wholeWords,
                     "TEXT as whole words; its first place in a text decides");
    command.add_option("--kinds", conditions.kinds,
                       "Of sequences,clips,clip-sections,subclips,prints,syncs");
    command
        .add_option("--where", conditions.where,
                    "\"ATTRIBUTE HOW TEXT\", more HOW TEXT joined by and, or, and-not, TEXT with "
                    "blanks in quotes; several --where must all hold. HOW: " +
                        matchWords())
        ->type_name("LINE")
        ->allow_extra_args(false);
    command.add_flag("--or-empty", conditions.orEmpty, "Attributes without text match too");
    command.add_option("--markers", conditions.markers, "\"HOW TEXT ...\" of some marker")
        ->type_name("LINE");
    command.add_option("--colours", conditions.colours,
                       "Some marker has one of these: red,green,blue,cyan,magenta,yellow,white,"
                       "black,other");
    command.add_option("--no-colours", conditions.noColours, "No marker has one of these");
    command.add_option("--at", conditions.time, "Holds this time, in seconds of its extent")
        ->type_name("SECONDS");
    command.add_option("--drive", conditions.drive, "Its media lies there: a path, URL or drive")
        ->type_name("PLACE");
    for (const auto& [name, value, about] :
         {std::tuple("--video", &conditions.video, "Picture tracks of clips: present or absent"),
          std::tuple("--audio", &conditions.audio, "Sound tracks of clips: present or absent"),
          std::tuple("--media", &conditions.media, "Media of clips: present or absent")})
        command.add_option(name, *value, about)->check(CLI::IsMember({"present", "absent"}));
    command.add_flag("--clipboard", conditions.clipboard, "What lies on the clipboard too");
    command.add_flag("--no-images", conditions.noImages, "No still images");
    command
        .add_option("--saved", conditions.saved,
                    "Begin with criteria that were saved, or those of a file")
        ->type_name("NAME");
}

} // namespace

void addSearchCommand(Commands commands) {
    const auto words = std::make_shared<SearchCommandWords>();
    CLI::App* const command =
        commands.app.add_subcommand("search", "Find edits and logs by what is known of them");
    addConditionOptions(*command, words->conditions);
    command->add_option("--keep", words->keep, "Put the results into this bin, made when it is new")
        ->check(refuseEmpty)
        ->type_name("BIN");
    command
        ->add_option("--save", words->save, "Keep the criteria: a search that follows the project")
        ->check(refuseEmpty)
        ->type_name("NAME");
    command->footer(
        "  cutroom search harbour\n"
        "  cutroom search --where \"reel starts A0\" --where \"scene is 12 or is 12A\"\n"
        "  cutroom search --where 'created greater-than \"2026-11-22 08:00\"'\n"
        "  cutroom search gull --kinds clips --media absent --keep \"Missing gulls\"\n"
        "One line each: cookie, kind, extent, reel, name. Nothing found is no failure.\n"
        "What --save kept is forgotten by search-remove in a session.");
    command->callback([commands, words] {
        commands.action = [&options = commands.options, words] {
            const bool writes = !words->keep.empty() || !words->save.empty();
            return withProject(options, writes ? Workspace::Use::write : Workspace::Use::read,
                               [&](Workspace&) { return search(options, *words); });
        };
    });
}

} // namespace cutroom::cli
