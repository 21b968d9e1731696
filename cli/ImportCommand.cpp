// cutroom import FILE…
#include "cli/Command.h"
#include "cli/Filing.h"
#include "cli/Names.h"
#include "cli/Progress.h"
#include "cli/SubtitlesIn.h"
#include "interchange/Importer.h"
#include "platform/base/Strings.h"
#include "platform/files/JsonBuilder.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <optional>

namespace cutroom::cli {

namespace {

struct ImportWords {
    std::vector<std::string> files;
    std::optional<std::string> rate;
    std::string subtitlesOf; // the edit that subtitles go to; empty: the files are timelines
    std::string clock = "media";
    std::string encoding;
    std::string bin; // what is made goes there; empty: nowhere
};

// What all files together gave.
struct Outcome {
    struct Edit {
        ImportReport::Made made;
        std::string file;
    };
    std::vector<Edit> edits;
    std::size_t logs = 0;
    std::vector<std::string> warnings;
    std::vector<Status> failures;
};

void take(Outcome& outcome, const std::string& file, const ImportReport& report) {
    for (const auto& made : report.edits)
        outcome.edits.push_back({made, file});
    outcome.logs += report.logs;
    for (const auto& warning : report.warnings)
        outcome.warnings.push_back(file + ": " + warning);
}

CookieVec allMade(const ImportReport& report) {
    CookieVec made;
    for (const auto& edit : report.edits)
        made.push_back(edit.edit);
    for (const auto& edit : report.nested)
        made.push_back(edit.edit);
    made.insert(made.end(), report.newLogs.begin(), report.newLogs.end());
    return made;
}

// The bin is written with what goes into it, all or nothing.
Outcome importAll(const ImportWords& words, ImportOptions options, Filing& filing) {
    Outcome outcome;
    options.alongside = [&](const ImportReport& report) { return filing.stage(allMade(report)); };
    for (const std::string& file : words.files) {
        Progress progress(file);
        options.progress = [&](double share) { progress.show(share); };
        const auto report = importFile(file, options);
        if (const Status settled = filing.settle(report.ok()); !settled)
            outcome.failures.push_back(settled);
        if (report)
            take(outcome, file, *report);
        else
            outcome.failures.push_back(report.status());
    }
    return outcome;
}

std::string outcomeJson(const Outcome& outcome) {
    JSON::Builder json;
    json.beginObject();
    json.beginArray("edits");
    for (const auto& edit : outcome.edits) {
        json.beginObject();
        json.add("id", edit.made.edit.asString());
        json.add("name", edit.made.name);
        json.add("file", edit.file);
        json.endObject();
    }
    json.endArray();
    json.add("logs", outcome.logs);
    json.beginArray("warnings");
    for (const auto& warning : outcome.warnings)
        json.add(warning);
    json.endArray();
    json.beginArray("errors");
    for (const auto& failure : outcome.failures)
        json.add(failure.text());
    json.endArray();
    json.endObject();
    return json.take();
}

std::string outcomeText(const Outcome& outcome) {
    std::string text;
    for (const auto& edit : outcome.edits)
        text += edit.made.edit.asString() + '\t' + oneLine(toUtf8(edit.made.name)) + '\n';
    return text;
}

struct Laid {
    std::string file;
    SubtitleReport report;
};

std::string laidJson(const std::vector<Laid>& all, bool asList) {
    JSON::Builder json;
    if (asList)
        json.beginArray();
    for (const auto& [file, report] : all) {
        json.beginObject();
        json.add("file", file);
        json.add("track", report.channel.asString());
        json.add("subtitles", report.count);
        json.beginArray("warnings");
        for (const auto& warning : report.warnings)
            json.add(warning);
        json.endArray();
        json.endObject();
    }
    if (asList)
        json.endArray();
    return json.take();
}

// Each file for itself, like timelines. Of several files the answer is a list.
int importSubtitleFiles(const Options& options, const ImportWords& words) {
    const bool several = words.files.size() > 1;
    const MarkerClock clock =
        words.clock == "timecode" ? MarkerClock::timecode : MarkerClock::media;
    int worst = kExitDone;
    const int closed = withProject(options, Workspace::Use::write, [&](Workspace&) {
        const auto edit = openEdit(words.subtitlesOf);
        if (!edit)
            return edit.status();
        std::vector<Laid> all;
        for (const std::string& file : words.files)
            if (const auto report = addSubtitles({file, words.encoding, clock}, *edit))
                all.push_back({file, *report});
            else
                worst = std::max(worst, fail(report.status()));
        if (options.json && (several || !all.empty()))
            print(laidJson(all, several));
        for (const auto& [file, report] : all)
            for (const auto& warning : report.warnings)
                if (!options.json)
                    note("warning: " + file + ": " + warning);
        return Status();
    });
    return std::max(worst, closed);
}

// Whether any of the files is there: no project is made for words that name nothing.
bool anyExists(const std::vector<std::string>& files) {
    return std::any_of(files.begin(), files.end(), [](const std::string& file) {
        std::error_code ignored;
        return std::filesystem::exists(file, ignored);
    });
}

int run(const Options& options, const ImportWords& words) {
    if (!words.subtitlesOf.empty() && !words.bin.empty())
        return fail({StatusCode::wrongUsage, "--bin", "subtitles are laid on an edit, in no bin"});
    if (!words.subtitlesOf.empty())
        return importSubtitleFiles(options, words);
    ImportOptions how;
    if (words.rate) {
        how.rate = Kv::FrameRate::fromString(*words.rate);
        if (!how.rate)
            return fail({StatusCode::wrongUsage, *words.rate,
                         "not a frame rate: give 25, 29.97 or 30000/1001"});
    }
    if (!anyExists(words.files))
        return fail({StatusCode::notFound, words.files.front(), "no such file"});
    int worst = kExitDone;
    const int closed = withProject(options, Workspace::Use::writeOrCreate, [&](Workspace&) {
        auto filing = Filing::into(words.bin);
        if (!filing)
            return filing.status();
        const Outcome outcome = importAll(words, how, *filing);
        print(options.json ? outcomeJson(outcome) : outcomeText(outcome));
        if (!options.json)
            for (const auto& warning : outcome.warnings)
                note("warning: " + warning);
        for (const Status& failure : outcome.failures)
            worst = std::max(worst, fail(failure));
        return Status();
    });
    return std::max(worst, closed);
}

} // namespace

void addImportCommand(Commands commands) {
    auto words = std::make_shared<ImportWords>();
    CLI::App* command = commands.app.add_subcommand(
        "import", "Take timelines (OTIO, EDL) or subtitles (SRT) into the project");
    command->add_option("files", words->files, "Timeline files")->required()->type_name("FILE");
    command->add_option("--rate", words->rate,
                        "Frame rate of edit lists, which do not state it (25, 29.97, 30000/1001)");
    CLI::Option* const subtitles =
        command
            ->add_option("--as-subtitles", words->subtitlesOf,
                         "Lay SubRip files on a new subtitle track of this edit")
            ->check(refuseEmpty)
            ->type_name("EDIT");
    command
        ->add_option("--clock", words->clock,
                     "What the times of subtitles count: media (from the first frame) or timecode")
        ->check(CLI::IsMember({"media", "timecode"}))
        ->needs(subtitles);
    command
        ->add_option("--encoding", words->encoding,
                     "Encoding of subtitles that are not UTF-8 (CP1250, GB18030 ...)")
        ->needs(subtitles);
    command
        ->add_option("--bin", words->bin,
                     "Put the new edits and logs into this bin; made if need be")
        ->check(refuseEmpty)
        ->type_name("BIN");
    command->footer("Prints the cookie and name of each edit made. A file that cannot be read is "
                    "reported and\nleaves nothing behind; the others go on.\n\n"
                    "  cutroom import cut_v3.otio\n  cutroom import cut_v3.otio --bin \"Cuts "
                    "v3\"\n  cutroom import --rate 23.976 reel1.edl\n"
                    "  cutroom import reel1.srt --as-subtitles \"Reel 1\"");
    command->callback([commands, words] {
        commands.action = [&options = commands.options, words] { return run(options, *words); };
    });
}

} // namespace cutroom::cli
