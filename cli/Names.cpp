#include "cli/Names.h"

#include "cli/Assets.h"
#include "export/AssetMetadataExporterBase.h"
#include "interchange/MarkerPlaces.h"
#include "interchange/Timeline.h"
#include "platform/base/Strings.h"
#include "platform/store/Edit.h"
#include "platform/store/EditManager.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace cutroom::cli {

Result<Cookie> findEditCookie(std::string_view text) {
    const auto found = findAsset(text, kEdits);
    if (!found)
        return found.status();
    return found->cookie;
}

Result<EditPtr> openEdit(std::string_view text) {
    const auto cookie = findEditCookie(text);
    if (!cookie)
        return cookie.status();
    Status why;
    EditPtr edit = EditManager::instance().open(*cookie, &why);
    if (edit)
        return edit;
    return why.ok() ? Status(StatusCode::notFound, std::string(text), "the edit cannot be opened")
                    : why;
}

std::string rateText(const Kv::FrameRate& rate) {
    return toText(std::round(rate.asDouble() * 1000) / 1000) + " fps";
}

std::string durationText(std::int64_t frames, const TimecodeFormat& format) {
    std::string text = timecodeText(frames, format);
    if (const std::int64_t day = framesPerDay(format); day > 0 && frames >= day)
        text.replace(0, 2, std::to_string(frames / day * 24 + leadingInt(text)));
    return text;
}

Result<double> parsePlace(std::string_view text, const EditPtr& edit) {
    const std::string written(text);
    if (text.find(':') != text.npos) {
        EditLabel label = edit->getVideoTimecodeLabel();
        if (!label.is_valid())
            label = EditLabel(kLabelVideoTimecode, {2, 1},
                              {edit->getFrameRate(), edit->getDropFrame()}, 0);
        bool drop = false;
        const TimecodeFormat& format = label.format();
        if (parseTimecode(text, format, &drop) && drop && !format.dropFrame &&
            format.rate.allowsDropFrame())
            return Status(StatusCode::wrongUsage, written,
                          "is drop frame; this edit counts without");
        if (const auto place = label.timeOf(written))
            return onDayOf({edit->getStartTime(), edit->getEndTime()}, *place, format);
        return Status(StatusCode::wrongUsage, written,
                      "no timecode of this edit, which counts " + rateText(edit->getFrameRate()) +
                          " from " + edit->getTimecode(0));
    }
    if (text.ends_with('f'))
        if (const auto frames = parseInt(text.substr(0, text.size() - 1)))
            return toSeconds(edit->getFrameRate().frameToFlicks(*frames));
    const auto digits = text.ends_with('s') ? text.substr(0, text.size() - 1) : text;
    if (const auto seconds = parseDouble(digits); seconds && isStorableTime(*seconds))
        return *seconds;
    return Status(StatusCode::wrongUsage, written,
                  "not a place: give a timecode (01:00:10:12), seconds (12.5) or frames (300f)");
}

Result<double> parsePlaceInside(std::string_view text, const EditPtr& edit) {
    auto place = parsePlace(text, edit);
    const double first = std::min(0.0, edit->getStartTime()); // what was slid may begin before 0
    const double last = edit->getEndTime();
    if (place && (*place < first - kTimeTolerance || *place > last + kTimeTolerance))
        return Status(StatusCode::wrongUsage, std::string(text),
                      "outside the edit, which runs from " + edit->getTimecode(first) + " to " +
                          edit->getTimecode(last));
    return place;
}

Result<std::wstring> parseName(const std::string& text) {
    auto name = toWideStrict(text);
    if (!name || name->empty())
        return Status(StatusCode::wrongUsage, text, "a name is UTF-8 text that is not empty");
    return std::move(*name);
}

Result<std::uint32_t> parseColour(std::string_view text) {
    if (const auto colour = markerColour(text))
        return *colour;
    return Status(StatusCode::wrongUsage, std::string(text),
                  "not a colour: give a name (red, green, blue, cyan, magenta, yellow, white, "
                  "black ...) or #rrggbb");
}

std::string colourText(std::uint32_t colour) {
    Cue cue;
    cue.setColour(colour);
    const auto name = AssetMetadataExporterBase::getMarkerColour(cue);
    return name.empty() ? format("#%06x", colour) : name;
}

} // namespace cutroom::cli
