// The writers of markers and metadata behind `cutroom export`.
#include "cli/Command.h"
#include "cli/ExportFormats.h"
#include "cli/Names.h"
#include "export/AssetMetadataSRTExporter.h"
#include "platform/base/Strings.h"
#include "platform/store/Edit.h"

#include <algorithm>
#include <filesystem>

namespace cutroom::cli {

namespace {

AssetMetadataSRTExporter::Clock srtClock(const ExportWords& words) {
    return words.clock == "media" ? AssetMetadataSRTExporter::Clock::media
                                  : AssetMetadataSRTExporter::Clock::timecode;
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

Status writeMarkers(const ExportWords& words, const EditPtr& edit, const std::string& path) {
    std::vector<Cue> cues = edit->getCues().cues();
    if (cues.empty())
        return {StatusCode::failed, words.asset, "has no markers to export"};
    if (const Status given = giveEnds(cues, words.pointDuration, edit); !given)
        return given;
    if (!AssetMetadataSRTExporter(srtClock(words)).exportToFile(edit, cues, toWide(path)))
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
    if (!AssetMetadataSRTExporter::exportToFile(edit, *channel, toWide(path), srtClock(words)))
        return unwritable(path);
    return {};
}

} // namespace

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

Status writeSrt(const ExportWords& words, const ExportSource& source, const std::string& path) {
    return words.track.empty() ? writeMarkers(words, source.edit, path)
                               : writeTrack(words, source.edit, path);
}

} // namespace cutroom::cli
