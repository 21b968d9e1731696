#include "cli/MarkersIn.h"

#include "cli/Permission.h"
#include "cli/SubtitlesIn.h"
#include "platform/base/Strings.h"
#include "platform/store/Edit.h"
#include "platform/store/EditManager.h"

#include <algorithm>

namespace cutroom::cli {

namespace {

constexpr std::pair<const char*, MarkerFormat> kFormats[] = {{"csv", MarkerFormat::csv},
                                                             {"json", MarkerFormat::json},
                                                             {"srt", MarkerFormat::srt},
                                                             {"edl", MarkerFormat::edl}};

Result<MarkerFormat> formatOf(const MarkersInWords& words) {
    for (const auto& [name, format] : kFormats)
        if (words.format == name)
            return format;
    if (const auto format = markerFormatOf(words.file))
        return *format;
    return Status(StatusCode::wrongUsage, words.file,
                  "say what it is with --format (csv, json, srt, edl)");
}

MarkerConflict conflictOf(const std::string& word) {
    if (word == "replace")
        return MarkerConflict::replace;
    return word == "both" ? MarkerConflict::both : MarkerConflict::keep;
}

} // namespace

Result<MarkersInReport> addMarkers(const MarkersInWords& words, const EditPtr& edit) {
    const auto format = formatOf(words);
    if (!format)
        return format.status();
    const auto text = readText(words.file, words.encoding);
    if (!text)
        return text.status();
    const MarkerTarget target =
        markerTarget(edit, words.clock == "media" ? MarkerClock::media : MarkerClock::timecode);
    const auto file = readMarkers(*text, words.file, *format, target);
    if (!file)
        return file.status();
    if (Status may = mayChange(edit); !may)
        return may;
    MarkersInReport report;
    report.warnings = file->warnings;
    report.plan = planMarkers(edit->getCues(), *file, target.places, conflictOf(words.conflict));
    if (report.plan.behind > 0)
        report.warnings.push_back("markers behind the end of the edit: " +
                                  std::to_string(report.plan.behind));
    if (report.plan.changes()) {
        EditManager::instance().makeBackup(edit, "Import markers");
        EditModifier(edit, "Import markers")->setCues(report.plan.cues);
    }
    return report;
}

std::string textOf(const MarkerPlan& plan) {
    return format("%zu added, %zu replaced, %zu kept", plan.added, plan.replaced, plan.kept);
}

} // namespace cutroom::cli
