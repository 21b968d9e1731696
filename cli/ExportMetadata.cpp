// The writers of markers and metadata behind `cutroom export`.
#include "cli/Command.h"
#include "cli/ExportFormats.h"
#include "cli/Names.h"
#include "export/AssetMetadataCSVExporter.h"
#include "export/AssetMetadataJSONExporter.h"
#include "export/AssetMetadataSRTExporter.h"
#include "export/AssetMetadataSubtitlesExporter.h"
#include "export/AssetMetadataXMLExporter.h"
#include "export/CueTimecodes.h"
#include "platform/base/Strings.h"
#include "platform/base/Time.h"
#include "platform/store/Edit.h"

#include <algorithm>
#include <set>
#include <string>

namespace cutroom::cli {

namespace {

AssetMetadataSRTExporter::Clock srtClock(const ExportWords& words) {
    return words.clock == "media" ? AssetMetadataSRTExporter::Clock::media
                                  : AssetMetadataSRTExporter::Clock::timecode;
}

// Gives point markers an end: so many frames on, or where the next marker begins. They are in
// order.
Status giveEnds(std::vector<Cue>& cues, const std::string& duration, const EditPtr& edit) {
    if (duration.empty())
        return {};
    const auto frames = parseInt(duration);
    if (duration != "next" && (!frames || *frames < 1))
        return {StatusCode::wrongUsage, duration, "give a number of frames, or next"};
    for (std::size_t i = 0; i < cues.size(); ++i) {
        if (cues[i].hasEnd())
            continue;
        const double start = cues[i].getTime();
        double end = edit->getEndTime();
        if (frames)
            end = start + static_cast<double>(*frames) * edit->getCelResolution();
        else if (const auto next = std::upper_bound(
                     cues.begin(), cues.end(), start,
                     [](double time, const Cue& cue) { return time < cue.getTime(); });
                 next != cues.end())
            end = next->getTime();
        if (!isStorableTime(end))
            return {StatusCode::wrongUsage, duration, "too many frames"};
        if (end > start)
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

// The edit's markers, with the ends that were asked for.
Result<std::vector<Cue>> markersOf(const ExportWords& words, const EditPtr& edit) {
    std::vector<Cue> cues = edit->getCues().cues();
    if (const Status given = giveEnds(cues, words.pointDuration, edit); !given)
        return given;
    return cues;
}

bool anyEnds(const std::vector<Cue>& cues) {
    return std::any_of(cues.begin(), cues.end(), [](const Cue& cue) { return cue.hasEnd(); });
}

// What is written of the edit's markers and of nothing else.
Result<std::string> markersAs(const AssetMetadataExporterBase& exporter, const ExportWords& words,
                              const EditPtr& edit) {
    const auto cues = markersOf(words, edit);
    if (!cues)
        return cues.status();
    auto text = exporter.getText(edit, *cues);
    if (!text)
        return Status(StatusCode::failed, words.asset, "has no markers to export");
    return std::move(*text);
}

// The same for formats in which markers without an end have no place.
Result<std::string> subtitlesAs(const AssetMetadataExporterBase& exporter, const ExportWords& words,
                                const EditPtr& edit) {
    auto text = markersAs(exporter, words, edit);
    if (text.ok() && !anyEnds(*markersOf(words, edit)))
        note("none of the markers has an end, so no subtitle was written; "
             "--point-duration 50 (frames) or next gives them one");
    return text;
}

Result<std::string> binAs(const AssetMetadataExporterBase& exporter, const ExportWords& words,
                          const Kv::Ptr<BinData>& bin) {
    if (!words.pointDuration.empty())
        return Status(StatusCode::wrongUsage, "--point-duration",
                      "is for the markers of an edit; this is a bin");
    auto text = exporter.getText(bin);
    if (!text)
        return Status(StatusCode::failed, words.asset, "the bin is empty");
    return std::move(*text);
}

// Fields of markers that the project does not define have no column.
void noteUndefinedFields(const std::vector<Cue>& cues) {
    const Cue::Metadata defined = Cue::getCustomMetadataDefinitions();
    std::set<std::string> undefined;
    for (const Cue& cue : cues)
        for (const auto& [key, value] : cue.getCustomMetadata())
            if (std::none_of(defined.begin(), defined.end(),
                             [&key = key](const auto& field) { return field.first == key; }))
                undefined.insert(key);
    std::string names;
    for (const std::string& key : undefined)
        names += (names.empty() ? "" : ", ") + key;
    if (!names.empty())
        note("fields that the project does not define left out: " + names +
             "; `define cue.KEY NAME` in a session defines one");
}

// An edit without markers still has its attributes.
Result<std::string> assetsAs(const AssetMetadataExporterBase& exporter, const ExportWords& words,
                             const ExportSource& source) {
    if (source.bin)
        return binAs(exporter, words, source.bin);
    const auto cues = markersOf(words, source.edit);
    if (!cues)
        return cues.status();
    noteUndefinedFields(*cues);
    if (auto text = exporter.getText(source.edit, *cues))
        return std::move(*text);
    const Kv::Ptr<BinData> alone(new BinData(source.edit->getName()));
    alone->add(BinItem(source.edit));
    return exporter.getText(alone).value();
}

Result<std::string> trackAsSrt(const ExportWords& words, const EditPtr& edit) {
    const auto channel = subtitleTrack(edit, words.track);
    if (!channel)
        return channel.status();
    auto text = AssetMetadataSRTExporter::getText(edit, *channel, srtClock(words));
    if (!text)
        return Status(StatusCode::failed, words.track, "the track has no subtitles");
    return std::move(*text);
}

// Timecode begins again at midnight, and players show no subtitle that ends before it starts; nor
// one whose times have three digits of frames.
void noteClock(const ExportWords& words, const EditPtr& edit) {
    if (srtClock(words) != AssetMetadataSRTExporter::Clock::timecode)
        return;
    const TimecodeFormat format = CueTimecodes(edit).format();
    const double day = toSeconds(format.rate.frameToFlicks(framesPerDay(format)));
    const double start = edit->getStartTime(), end = edit->getEndTime();
    if (edit->getTimecode(end) < edit->getTimecode(start) || end - start >= day)
        note("the edit runs over midnight, where timecode begins again; --clock media counts on");
    if (format.rate.nominal() > 100)
        note("subtitles know no timecode of such a rate; --clock media counts milliseconds");
}

} // namespace

Result<std::string> writeSrt(const ExportWords& words, const ExportSource& source) {
    noteClock(words, source.edit);
    if (words.track.empty())
        return subtitlesAs(AssetMetadataSRTExporter(srtClock(words)), words, source.edit);
    if (!words.pointDuration.empty())
        return Status(StatusCode::wrongUsage, "--point-duration",
                      "is for markers; the subtitles of a track have ends");
    return trackAsSrt(words, source.edit);
}

Result<std::string> writeSubtitles(const ExportWords& words, const ExportSource& source) {
    return subtitlesAs(AssetMetadataSubtitlesExporter(), words, source.edit);
}

Result<std::string> writeJson(const ExportWords& words, const ExportSource& source) {
    return assetsAs(AssetMetadataJSONExporter(), words, source);
}

Result<std::string> writeXml(const ExportWords& words, const ExportSource& source) {
    return assetsAs(AssetMetadataXMLExporter(), words, source);
}

Result<std::string> writeCsv(const ExportWords& words, const ExportSource& source) {
    using Cells = AssetMetadataCSVExporter::Cells;
    const AssetMetadataCSVExporter exporter(words.spreadsheet ? Cells::guarded : Cells::exact);
    return source.bin ? binAs(exporter, words, source.bin)
                      : markersAs(exporter, words, source.edit);
}

} // namespace cutroom::cli
