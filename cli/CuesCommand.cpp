// cutroom cues EDIT
#include "cli/Command.h"
#include "cli/CopyWords.h"
#include "cli/Filing.h"
#include "cli/Names.h"
#include "editops/CueEdit.h"
#include "editops/CueLogs.h"
#include "editops/CueRegions.h"
#include "platform/base/Strings.h"
#include "platform/files/JsonBuilder.h"
#include "platform/store/Edit.h"
#include "platform/store/EditManager.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <map>
#include <memory>

namespace cutroom::cli {

namespace {

struct CuesWords {
    std::string edit;
    bool logs = false;
    bool oneEdit = false;
    std::string type;
    std::vector<std::size_t> markers; // counted from 1; none: all
    std::string bin;

    bool makes() const { return logs || oneEdit; }
};

const std::map<std::string, eLogType> kTypes = {{"subclip", kLogTypeSubclip},
                                                {"edit", kLogTypeEdit},
                                                {"sync", kLogTypeSyncGhost},
                                                {"print", kLogTypePrintGhost}};

Status checkWords(const CuesWords& words) {
    if (words.logs && words.oneEdit)
        return {StatusCode::wrongUsage, "--edit", "give either --logs or --edit"};
    if (!words.type.empty() && !words.logs)
        return {StatusCode::wrongUsage, "--type", "is the type of --logs"};
    if (!words.bin.empty() && !words.makes())
        return {StatusCode::wrongUsage, "--bin", "nothing is made; say --logs or --edit"};
    return {};
}

// The region of each marker that was asked for: one without end reaches to the next of the edit,
// chosen or not.
Result<std::vector<NamedRegion>> chosenRegions(const CuesWords& words, const EditPtr& edit) {
    if (words.markers.empty())
        return getRegionsFromCues(edit);
    const CueList list = edit->getCues();
    const std::size_t count = list.getNumCuePoints();
    std::vector<NamedRegion> chosen;
    for (const std::size_t number : words.markers) {
        if (number < 1 || number > count)
            return Status(StatusCode::notFound, std::to_string(number),
                          format("no such marker; the edit has %zu", count));
        std::vector<Cue> cues = {list.getCuePoint(number - 1)};
        if (number < count)
            cues.push_back(list.getCuePoint(number));
        const auto regions = regionsOf(cues);
        if (regions.empty())
            return Status(StatusCode::failed, std::to_string(number),
                          "the last marker has no end, so it spans nothing");
        chosen.push_back(regions.front());
    }
    return chosen;
}

// The regions that have anything of the edit, as cues with an end; the others are told. They lie on
// frames, so that what is made is what is listed.
std::vector<Cue> usable(const std::vector<NamedRegion>& regions, const EditPtr& edit) {
    std::vector<Cue> cues;
    for (const NamedRegion& region : regions) {
        const TimeRange range(shownAt(region.range.getStart(), edit),
                              shownAt(region.range.getEnd(), edit));
        const double start = std::max(range.getStart(), edit->getStartTime());
        const double end = std::min(range.getEnd(), edit->getEndTime());
        if (end - start > kTimeTolerance)
            cues.emplace_back(range, region.name);
        else
            note("left out: marker \"" + toUtf8(region.name) + "\" at " +
                 edit->getTimecode(region.range.getStart()) + " spans nothing of the edit");
    }
    return cues;
}

std::string regionsText(const std::vector<NamedRegion>& regions, const EditPtr& edit) {
    std::string text;
    for (const NamedRegion& region : regions)
        text += edit->getTimecode(region.range.getStart()) + '\t' +
                edit->getTimecode(region.range.getEnd()) + '\t' + oneLine(toUtf8(region.name)) +
                '\n';
    return text;
}

std::string regionsJson(const std::vector<NamedRegion>& regions, const EditPtr& edit) {
    JSON::Builder json;
    json.beginArray();
    for (const NamedRegion& region : regions) {
        json.beginObject();
        json.add("name", region.name);
        json.add("start", region.range.getStart());
        json.add("end", region.range.getEnd());
        json.add("start_timecode", edit->getTimecode(region.range.getStart()));
        json.add("end_timecode", edit->getTimecode(region.range.getEnd()));
        json.endObject();
    }
    json.endArray();
    return json.take();
}

std::string madeText(const CookieVec& made) {
    std::string text;
    for (const Cookie& cookie : made)
        text += cookie.asString() + '\t' + oneLine(toUtf8(EditPtr(cookie)->getName())) + '\n';
    return text;
}

std::string madeJson(const CookieVec& made, const Cookie& bin) {
    JSON::Builder json;
    json.beginObject();
    json.beginArray("made");
    for (const Cookie& cookie : made) {
        const EditPtr edit(cookie);
        json.beginObject();
        json.add("id", cookie.asString());
        json.add("name", edit->getName());
        json.add("log_type", static_cast<unsigned>(edit->getLogType()));
        json.add("start_timecode", edit->getTimecode(0));
        json.add("duration_seconds", edit->getEndTime() - edit->getStartTime());
        json.endObject();
    }
    json.endArray();
    if (bin.valid())
        json.add("bin", bin.asString());
    else
        json.addNull("bin");
    json.endObject();
    return json.take();
}

// The edit is in the project already, so it need not be marked as imported.
constexpr bool kAlreadyImported = true;

CookieVec make(const CuesWords& words, const EditPtr& edit, const std::vector<Cue>& cues) {
    if (words.logs)
        return makeLogsUsingCuePoints(words.type.empty() ? kLogTypeSubclip : kTypes.at(words.type),
                                      edit, cues);
    const EditModifier made = makeEditFromCues(edit, cues, kAlreadyImported);
    return made ? CookieVec{made.getCookie()} : CookieVec();
}

Status makeAll(const Options& options, const CuesWords& words, const EditPtr& edit,
               const std::vector<NamedRegion>& regions) {
    auto filing = Filing::into(words.bin);
    if (!filing)
        return filing.status();
    const std::vector<Cue> cues = usable(regions, edit);
    if (cues.empty())
        return {StatusCode::failed, words.edit,
                "no marker spans anything; one without end reaches to the next"};
    const CookieVec made = make(words, edit, cues);
    if (made.size() != (words.logs ? cues.size() : 1)) {
        const Status gone = EditManager::instance().discard(made);
        return gone.ok() ? Status(StatusCode::failed, words.edit, "a copy could not be made")
                         : gone;
    }
    if (Status kept = filing->keep(made); !kept)
        return kept;
    print(options.json ? madeJson(made, filing->bin()) : madeText(made));
    return {};
}

int run(const Options& options, const CuesWords& words) {
    if (const Status checked = checkWords(words); !checked)
        return fail(checked);
    const auto use = words.makes() ? Workspace::Use::write : Workspace::Use::read;
    return withProject(options, use, [&](Workspace&) -> Status {
        const auto edit = openEdit(words.edit);
        if (!edit)
            return edit.status();
        const auto regions = chosenRegions(words, *edit);
        if (!regions)
            return regions.status();
        if (words.makes())
            return makeAll(options, words, *edit, *regions);
        print(options.json ? regionsJson(*regions, *edit) : regionsText(*regions, *edit));
        return {};
    });
}

} // namespace

void addCuesCommand(Commands commands) {
    auto words = std::make_shared<CuesWords>();
    CLI::App* command =
        commands.app.add_subcommand("cues", "Make logs, or one edit, of an edit's markers");
    command->add_option("edit", words->edit, "Name or cookie")->required()->type_name("EDIT");
    command->add_flag("--logs", words->logs, "Make a log of each marked region");
    command->add_flag("--edit", words->oneEdit, "Make one edit of all, one after the other");
    command
        ->add_option("--type", words->type,
                     "Type of the logs: subclip (the default), edit, sync or print")
        ->check(CLI::IsMember({"subclip", "edit", "sync", "print"}));
    command->add_option("--markers", words->markers, "Only these, by their number in the list");
    command->add_option("--bin", words->bin, "File them in this bin, made when it is missing")
        ->check(refuseEmpty)
        ->type_name("BIN");
    command->footer(
        "A marker with an end is its range, one without reaches to the next. Without --logs or\n"
        "--edit the regions are listed: start, end, name.\n\n"
        "  cutroom cues \"Reel 1\"\n"
        "  cutroom cues \"Reel 1\" --logs --bin Selects\n"
        "  cutroom cues \"Reel 1\" --edit --markers 2 5 1");
    command->callback([commands, words] {
        commands.action = [&options = commands.options, words] { return run(options, *words); };
    });
}

} // namespace cutroom::cli
