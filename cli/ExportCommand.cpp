// cutroom export EDIT --format F
#include "cli/Command.h"
#include "cli/Names.h"
#include "export/AssetMetadataSRTExporter.h"
#include "platform/base/Strings.h"
#include "platform/store/Edit.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>

#include <unistd.h>

namespace cutroom::cli {

namespace {

struct ExportWords {
    std::string edit;
    std::string format;
    std::string output;
    std::string track; // a subtitle track instead of the markers
    std::string clock = "timecode";
    std::string pointDuration; // frames, or "next"; empty: points have no end

    AssetMetadataSRTExporter::Clock srtClock() const {
        return clock == "media" ? AssetMetadataSRTExporter::Clock::media
                                : AssetMetadataSRTExporter::Clock::timecode;
    }
};

// The exporters write files; without -o the file is a temporary one that is printed and removed.
class Target {
public:
    explicit Target(std::string path) : path_(std::move(path)) {}
    ~Target() {
        if (temporary_) {
            std::error_code ignored;
            std::filesystem::remove(path_, ignored);
        }
    }
    Status prepare() {
        if (!path_.empty())
            return {};
        std::error_code failure;
        path_ = (std::filesystem::temp_directory_path(failure) / "cutroom-XXXXXX").string();
        const int made = failure ? -1 : ::mkstemp(path_.data());
        if (made < 0)
            return {StatusCode::inputOutput, path_, "a temporary file cannot be made"};
        ::close(made);
        temporary_ = true;
        return {};
    }
    const std::string& path() const { return path_; }
    bool temporary() const { return temporary_; }

private:
    std::string path_;
    bool temporary_ = false;
};

Status printFile(const std::string& path) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"),
                                                               &std::fclose);
    if (!file)
        return {StatusCode::inputOutput, path, "cannot be read"};
    char buffer[65536];
    while (const std::size_t count = std::fread(buffer, 1, sizeof buffer, file.get()))
        print({buffer, count});
    return std::ferror(file.get()) ? Status(StatusCode::inputOutput, path, "cannot be read")
                                   : Status();
}

// Gives point markers an end: so many frames on, or where the next marker begins.
Status giveEnds(std::vector<Cue>& cues, const std::string& duration, const EditPtr& edit) {
    if (duration.empty())
        return {};
    const auto frames = parseInt(duration);
    if (duration != "next" && (!frames || *frames < 1))
        return {StatusCode::wrongUsage, duration, "give a number of frames, or next"};
    for (std::size_t i = 0; i < cues.size(); ++i) {
        if (cues[i].hasEnd())
            continue;
        double end = edit->getEndTime();
        if (frames)
            end = cues[i].getTime() + static_cast<double>(*frames) * edit->getCelResolution();
        else
            for (std::size_t next = cues.size(); next > i + 1; --next)
                if (cues[next - 1].getTime() > cues[i].getTime())
                    end = cues[next - 1].getTime();
        if (end > cues[i].getTime())
            cues[i].setEndTime(end);
    }
    return {};
}

Result<IdStamp> subtitleTrack(const EditPtr& edit, const std::string& name) {
    std::string known;
    for (const IdStamp& channel : edit->getChans(kChanSubtitle)) {
        const std::string own = toUtf8(edit->getChanDisplayName(channel));
        const std::string place = "S" + std::to_string(edit->getIndexWithinType(channel) + 1);
        if (name == own || name == place)
            return channel;
        known += (known.empty() ? "" : ", ") + place + (own == place ? "" : " (" + own + ')');
    }
    return Status(StatusCode::notFound, name,
                  known.empty() ? "the edit has no subtitle track"
                                : "no such subtitle track; there are " + known);
}

// The exporter tells only that it failed.
Status unwritable(const std::string& path) {
    std::error_code ignored;
    const auto folder = std::filesystem::path(path).parent_path();
    if (std::filesystem::is_directory(path, ignored))
        return {StatusCode::inputOutput, path, "cannot be written: it is a folder"};
    if (!folder.empty() && !std::filesystem::is_directory(folder, ignored))
        return {StatusCode::inputOutput, path, "cannot be written: its folder does not exist"};
    return {StatusCode::inputOutput, path, "cannot be written"};
}

Status writeMarkers(const ExportWords& words, const EditPtr& edit, const std::string& path) {
    std::vector<Cue> cues = edit->getCues().cues();
    if (cues.empty())
        return {StatusCode::failed, words.edit, "has no markers to export"};
    if (const Status given = giveEnds(cues, words.pointDuration, edit); !given)
        return given;
    if (!AssetMetadataSRTExporter(words.srtClock()).exportToFile(edit, cues, toWide(path)))
        return unwritable(path);
    if (std::none_of(cues.begin(), cues.end(), [](const Cue& cue) { return cue.hasEnd(); }))
        note("none of the markers has an end, so no subtitle was written; "
             "--point-duration 50 (frames) or next gives them one");
    return {};
}

Status writeTrack(const ExportWords& words, const EditPtr& edit, const std::string& path) {
    const auto channel = subtitleTrack(edit, words.track);
    if (!channel)
        return channel.status();
    if (edit->get_edit_cel_p(*channel)->numSegments() == 0)
        return {StatusCode::failed, words.track, "the track has no subtitles"};
    if (!AssetMetadataSRTExporter::exportToFile(edit, *channel, toWide(path), words.srtClock()))
        return unwritable(path);
    return {};
}

Status exportSrt(const ExportWords& words) {
    const auto edit = openEdit(words.edit);
    if (!edit)
        return edit.status();
    if (!isUtf8(words.output))
        return {StatusCode::wrongUsage, words.output, "not a UTF-8 path"};
    Target target(words.output);
    if (const Status ready = target.prepare(); !ready)
        return ready;
    const Status written = words.track.empty() ? writeMarkers(words, *edit, target.path())
                                               : writeTrack(words, *edit, target.path());
    return written.ok() && target.temporary() ? printFile(target.path()) : written;
}

} // namespace

void addExportCommand(Commands commands) {
    auto words = std::make_shared<ExportWords>();
    CLI::App* command =
        commands.app.add_subcommand("export", "Write an edit's markers or subtitles to a file");
    command->add_option("edit", words->edit, "Name or cookie")->required()->type_name("EDIT");
    command->add_option("--format", words->format, "srt: markers with an end become subtitles")
        ->required()
        ->check(CLI::IsMember({"srt"}));
    command->add_option("-o,--output", words->output, "The file (default: standard output)")
        ->type_name("FILE");
    command->add_option("--track", words->track, "A subtitle track instead of the markers (S1)")
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
    command->footer("  cutroom export \"Reel 1\" --format srt -o reel1.srt --clock media\n"
                    "  cutroom export \"Reel 1\" --format srt --point-duration next\n"
                    "  cutroom export \"Reel 1\" --format srt --track S1");
    command->callback([commands, words] {
        commands.action = [&options = commands.options, words] {
            return withProject(options, Workspace::Use::read,
                               [&](Workspace&) { return exportSrt(*words); });
        };
    });
}

} // namespace cutroom::cli
