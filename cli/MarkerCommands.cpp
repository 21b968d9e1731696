// cutroom markers EDIT [add|change|remove|import]
#include "cli/Command.h"
#include "cli/EditView.h"
#include "cli/MarkersIn.h"
#include "cli/Names.h"
#include "cli/Permission.h"
#include "platform/base/Strings.h"
#include "platform/files/JsonBuilder.h"
#include "platform/store/Edit.h"
#include "platform/store/EditManager.h"

#include <CLI/CLI.hpp>

#include <memory>
#include <optional>

namespace cutroom::cli {

namespace {

// The words of one call; what was not said is empty.
struct MarkerWords {
    std::string edit;
    std::string action = "list";
    std::vector<std::string> numbers;
    std::optional<std::string> at;
    std::optional<std::string> end;
    std::optional<std::string> name;
    std::optional<std::string> description;
    std::optional<std::string> colour;
    bool point = false;
    std::vector<std::string> fields; // KEY=VALUE
    MarkersInWords in;

    bool describe() const {
        return at || end || name || description || colour || point || !fields.empty();
    }
    bool importing() const {
        return !in.format.empty() || !in.encoding.empty() || !in.conflict.empty() ||
               !in.clock.empty();
    }
};

// Words that the action would not look at are a mistake: what they ask for would not be done.
Status checkWords(const MarkerWords& words) {
    const bool choosing = words.action == "change" || words.action == "remove";
    const bool describing = words.action == "change" || words.action == "add";
    const bool importing = words.action == "import";
    if (importing && words.numbers.size() != 1)
        return {StatusCode::wrongUsage, words.action, "say which file, and one alone"};
    if (!importing && words.importing())
        return {StatusCode::wrongUsage, words.action, "takes no words about a file; `import` does"};
    if (!choosing && !importing && !words.numbers.empty())
        return {StatusCode::wrongUsage, words.action, "takes no numbers of markers"};
    if (!describing && words.describe())
        return {StatusCode::wrongUsage, words.action,
                "takes no place, text or colour; `add` and `change` do"};
    if (words.action == "change" && !words.describe())
        return {StatusCode::wrongUsage, words.action, "say what to change (--name, --at ...)"};
    return {};
}

Status applyTimes(Cue& cue, const MarkerWords& words, const EditPtr& edit) {
    if (words.at) {
        const auto place = parsePlaceInside(*words.at, edit);
        if (!place)
            return place.status();
        cue.slide(*place - cue.getTime());
    }
    if (words.point)
        cue.setEndTime(kNoTime);
    if (words.end) {
        const auto place = parsePlaceInside(*words.end, edit);
        if (!place)
            return place.status();
        cue.setEndTime(*place);
    }
    if (cue.hasEnd() && cue.getEndTime() < cue.getTime())
        return {StatusCode::wrongUsage, words.end.value_or("--at"),
                "the marker would end before it begins"};
    return {};
}

Status applyTexts(Cue& cue, const MarkerWords& words) {
    if (words.name)
        cue.setName(toWide(*words.name));
    if (words.description)
        cue.setDescription(toWide(*words.description));
    if (words.colour) {
        const auto colour = parseColour(*words.colour);
        if (!colour)
            return colour.status();
        cue.setColour(*colour);
    }
    return {};
}

Status applyFields(Cue& cue, const MarkerWords& words) {
    for (const std::string& field : words.fields) {
        const auto equals = field.find('=');
        if (equals == field.npos || equals == 0)
            return {StatusCode::wrongUsage, field, "not KEY=VALUE"};
        cue.setCustomMetadata(field.substr(0, equals), toWide(field.substr(equals + 1)));
    }
    return {};
}

Status applyWords(Cue& cue, const MarkerWords& words, const EditPtr& edit) {
    if (const Status times = applyTimes(cue, words, edit); !times)
        return times;
    const Status texts = applyTexts(cue, words);
    return texts.ok() ? applyFields(cue, words) : texts;
}

// Numbers on the command line count from 1, as `markers` and `show` print them.
Result<std::vector<Cue>> chosen(const MarkerWords& words, const EditPtr& edit) {
    const CueList cues = edit->getCues();
    std::vector<Cue> found;
    const auto count = static_cast<long long>(cues.getNumCuePoints());
    for (const std::string& word : words.numbers) {
        const auto number = parseInt(word);
        if (!number)
            return Status(StatusCode::wrongUsage, word, "not the number of a marker");
        if (*number < 1 || *number > count)
            return Status(StatusCode::notFound, word,
                          format("no such marker; the edit has %lld", count));
        found.push_back(cues.getCuePoint(static_cast<std::size_t>(*number - 1)));
    }
    if (found.empty())
        return Status(StatusCode::wrongUsage, words.action, "say which markers, by number");
    return found;
}

Status add(const MarkerWords& words, const EditPtr& edit) {
    if (!words.at)
        return {StatusCode::wrongUsage, "add", "say where with --at"};
    Cue cue;
    if (const Status applied = applyWords(cue, words, edit); !applied)
        return applied;
    EditManager::instance().makeBackup(edit, "Add marker");
    EditModifier(edit, "Add marker")->addCue(cue);
    return {};
}

Status change(const MarkerWords& words, const EditPtr& edit) {
    auto cues = chosen(words, edit);
    if (!cues)
        return cues.status();
    for (Cue& cue : *cues)
        if (const Status applied = applyWords(cue, words, edit); !applied)
            return applied;
    EditManager::instance().makeBackup(edit, "Change markers");
    EditModifier modifier(edit, "Change markers");
    for (const Cue& cue : *cues)
        modifier->changeCue(cue);
    return {};
}

Status removeChosen(const MarkerWords& words, const EditPtr& edit) {
    const auto cues = chosen(words, edit);
    if (!cues)
        return cues.status();
    EditManager::instance().makeBackup(edit, "Remove markers");
    EditModifier modifier(edit, "Remove markers");
    for (const Cue& cue : *cues)
        modifier->removeCue(cue.getExtID());
    return {};
}

std::string listText(const EditView& view) {
    std::string text;
    for (std::size_t i = 0; i < view.markers.size(); ++i) {
        const MarkerView& marker = view.markers[i];
        text += format("%zu\t%s\t%s\t%s\t", i + 1, marker.startTimecode.c_str(),
                       marker.endTimecode.c_str(), marker.colour.c_str()) +
                oneLine(marker.name) + '\t' + oneLine(marker.description) + '\n';
    }
    return text;
}

std::string listJson(const EditView& view) {
    JSON::Builder json;
    json.beginArray();
    for (const MarkerView& marker : view.markers)
        addJson(json, marker);
    json.endArray();
    return json.take();
}

std::string importedJson(const MarkersInReport& report) {
    JSON::Builder json;
    json.beginObject();
    json.add("added", report.plan.added);
    json.add("replaced", report.plan.replaced);
    json.add("kept", report.plan.kept);
    json.beginArray("warnings");
    for (const std::string& warning : report.warnings)
        json.add(warning);
    json.endArray();
    json.endObject();
    return json.take();
}

Status import(const Options& options, const MarkerWords& words, const EditPtr& edit) {
    MarkersInWords in = words.in;
    in.file = words.numbers.front();
    const auto report = addMarkers(in, edit);
    if (!report)
        return report.status();
    if (options.json) {
        print(importedJson(*report));
        return {};
    }
    for (const std::string& warning : report->warnings)
        note("warning: " + in.file + ": " + warning);
    note(textOf(report->plan));
    return {};
}

Status perform(const Options& options, const MarkerWords& words, const EditPtr& edit) {
    if (words.action == "import")
        return import(options, words, edit);
    if (words.action == "add")
        return add(words, edit);
    return words.action == "change" ? change(words, edit) : removeChosen(words, edit);
}

int run(const Options& options, const MarkerWords& words) {
    if (const Status checked = checkWords(words); !checked)
        return fail(checked);
    const bool lists = words.action == "list";
    return withProject(options, lists ? Workspace::Use::read : Workspace::Use::write,
                       [&](Workspace&) -> Status {
                           const auto edit = openEdit(words.edit);
                           if (!edit)
                               return edit.status();
                           if (lists) {
                               const EditView view = describe(*edit);
                               print(options.json ? listJson(view) : listText(view));
                               return {};
                           }
                           if (Status may = mayChange(*edit); !may)
                               return may;
                           return perform(options, words, *edit);
                       });
}

} // namespace

void addMarkersCommand(Commands commands) {
    auto words = std::make_shared<MarkerWords>();
    CLI::App* command = commands.app.add_subcommand(
        "markers", "List, add, change, remove or import an edit's markers");
    command->add_option("edit", words->edit, "Name or cookie")->required()->type_name("EDIT");
    command->add_option("action", words->action, "list (the default), add, change, remove, import")
        ->check(CLI::IsMember({"list", "add", "change", "remove", "import"}));
    command->add_option("numbers", words->numbers,
                        "Which markers, by their number in the list; import: the file");
    command->add_option("--at", words->at, "Place: 01:00:10:12, 12.5 (seconds) or 300f (frames)");
    CLI::Option* const end = command->add_option("--end", words->end, "End of a range, likewise");
    command->add_flag("--point", words->point, "Make it a point, without an end")->excludes(end);
    command->add_option("--name", words->name, "Name");
    command->add_option("--description", words->description, "Description");
    command->add_option("--colour,--color", words->colour, "red, green ... or #rrggbb");
    command->add_option("--field", words->fields, "A custom field")
        ->type_name("KEY=VALUE")
        ->allow_extra_args(false);
    command->add_option("--format", words->in.format, "Of a file (default: by its extension)")
        ->check(CLI::IsMember({"csv", "json", "srt", "edl"}));
    command->add_option("--encoding", words->in.encoding, "Of a file's text (default: UTF-8)");
    command
        ->add_option("--on-conflict", words->in.conflict,
                     "A marker of the same time and name: keep it (the default), replace it with "
                     "the file's, or have both")
        ->check(CLI::IsMember({"keep", "replace", "both"}));
    command
        ->add_option("--clock", words->in.clock,
                     "What the times of subtitles count: timecode (the default), or media")
        ->check(CLI::IsMember({"timecode", "media"}));
    command->footer(
        "  cutroom markers \"Reel 1\"\n"
        "  cutroom markers \"Reel 1\" add --at 01:00:10:00 --end 01:00:12:00 --name Sky\n"
        "  cutroom markers \"Reel 1\" change 2 --colour green\n"
        "  cutroom markers \"Reel 1\" remove 1 3\n"
        "  cutroom markers \"Reel 1\" import notes.csv --on-conflict replace");
    command->callback([commands, words] {
        commands.action = [&options = commands.options, words] { return run(options, *words); };
    });
}

} // namespace cutroom::cli
