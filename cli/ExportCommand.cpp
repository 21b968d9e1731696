// cutroom export EDIT|BIN --format F
#include "cli/Assets.h"
#include "cli/Command.h"
#include "cli/ExportFormats.h"
#include "cli/Names.h"
#include "platform/base/Strings.h"
#include "platform/files/Files.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <memory>

namespace cutroom::cli {

namespace {

// One row a format.
constexpr ExportFormat kFormats[] = {
    {"srt", "markers with an end, or a subtitle track, as subtitles", kEdits,
     kTakesTrack | kTakesClock | kTakesPointDuration, writeSrt},
    {"subtitles", "markers with an end as a plain list", kEdits, kTakesPointDuration,
     writeSubtitles},
    {"json", "metadata, with the markers", kEdits | kBins, kTakesPointDuration, writeJson},
    {"xml", "the same as XML", kEdits | kBins, kTakesPointDuration, writeXml},
    {"csv", "a table of an edit's markers, or of a bin's assets", kEdits | kBins,
     kTakesPointDuration | kTakesSpreadsheet, writeCsv},
    {"otio", "the edit as an OpenTimelineIO timeline", kEdits, 0, writeOtioEdit},
    {"edl", "one picture track with sound as a CMX 3600 edit list", kEdits, kTakesTrack,
     writeEdlEdit},
};

const ExportFormat& formatOf(const std::string& name) {
    return *std::find_if(std::begin(kFormats), std::end(kFormats),
                         [&](const ExportFormat& format) { return name == format.name; });
}

std::vector<std::string> formatNames() {
    std::vector<std::string> names;
    for (const ExportFormat& format : kFormats)
        names.emplace_back(format.name);
    return names;
}

std::string formatHelp() {
    std::string help;
    for (const ExportFormat& format : kFormats)
        help += std::string(help.empty() ? "" : "; ") + format.name + ": " + format.help;
    return help;
}

// Words that the format would not look at are a mistake: what they ask for would not be done.
Status checkWords(const ExportWords& words, const ExportFormat& format) {
    const struct {
        bool said;
        unsigned option;
        const char* name;
    } all[] = {{!words.track.empty(), kTakesTrack, "--track"},
               {!words.clock.empty(), kTakesClock, "--clock"},
               {!words.pointDuration.empty(), kTakesPointDuration, "--point-duration"},
               {words.spreadsheet, kTakesSpreadsheet, "--spreadsheet"}};
    for (const auto& [said, option, name] : all)
        if (said && !(format.options & option))
            return {StatusCode::wrongUsage, name, "does not apply to " + words.format};
    return {};
}

Result<ExportSource> openSource(const ExportWords& words, const ExportFormat& format) {
    const auto found = findAsset(words.asset, format.assets);
    if (!found && !(format.assets & kBins) && findAsset(words.asset, kBins))
        return Status(StatusCode::notFound, words.asset,
                      "is a bin; " + words.format + " is made of an edit");
    if (!found)
        return found.status();
    ExportSource source;
    if (found->kind == kBins) {
        auto bin = openBin(found->cookie.asString());
        if (!bin)
            return bin.status();
        source.bin = *bin;
        return source;
    }
    auto edit = openEdit(found->cookie.asString());
    if (!edit)
        return edit.status();
    source.edit = *edit;
    return source;
}

// Without --format the name of the file tells.
Status chooseFormat(ExportWords& words) {
    if (!words.format.empty())
        return {};
    words.format = toLowerUtf8(extensionOf(words.output));
    const auto names = formatNames();
    if (std::find(names.begin(), names.end(), words.format) != names.end())
        return {};
    return {StatusCode::wrongUsage, words.output.empty() ? "export" : words.output,
            "say the format with --format, or by the file's name: " + join(names, ", ")};
}

Status run(ExportWords words) {
    if (const Status chosen = chooseFormat(words); !chosen)
        return chosen;
    const ExportFormat& format = formatOf(words.format);
    if (const Status checked = checkWords(words, format); !checked)
        return checked;
    const auto source = openSource(words, format);
    if (!source)
        return source.status();
    const auto text = format.write(words, *source);
    if (!text)
        return text.status();
    if (!words.output.empty())
        return writeOutput(words.output, *text);
    print(*text);
    return {};
}

} // namespace

void addExportCommand(Commands commands) {
    auto words = std::make_shared<ExportWords>();
    CLI::App* command = commands.app.add_subcommand(
        "export", "Write a timeline, markers, subtitles or metadata to a file");
    command->add_option("asset", words->asset, "Name or cookie")->required()->type_name("EDIT|BIN");
    command
        ->add_option("--format", words->format,
                     formatHelp() + " (default: what the name of the file ends in)")
        ->check(CLI::IsMember(formatNames()));
    command->add_option("-o,--output", words->output, "The file (default: standard output)")
        ->check(refuseEmpty)
        ->type_name("FILE");
    command
        ->add_option("--track", words->track,
                     "srt: a subtitle track instead of the markers (S1); edl: the picture track "
                     "that is wanted, or one sound track alone (V2, A1)")
        ->type_name("TRACK");
    command
        ->add_option("--clock", words->clock,
                     "What the times count: timecode, or media (from the first frame, as "
                     "players count)")
        ->check(CLI::IsMember({"timecode", "media"}));
    command
        ->add_option("--point-duration", words->pointDuration,
                     "Give point markers an end: so many FRAMES on, or at the next marker")
        ->type_name("FRAMES|next");
    command->add_flag("--spreadsheet", words->spreadsheet,
                      "csv: keep spreadsheets from running cells as formulas");
    command->footer("  cutroom export \"Reel 1\" --format srt -o reel1.srt --clock media\n"
                    "  cutroom export \"Reel 1\" --format srt --point-duration next\n"
                    "  cutroom export \"Reel 1\" --format srt --track S1\n"
                    "  cutroom export Dailies --format csv -o dailies.csv\n"
                    "  cutroom export \"Reel 1\" -o reel1.otio\n"
                    "  cutroom export \"Reel 1\" -o reel1.edl --track V2");
    runsWithProject(commands, command, Workspace::Use::read,
                    [words](const Options&) { return run(*words); });
}

} // namespace cutroom::cli
