#include "cli/Names.h"

#include "export/AssetMetadataExporterBase.h"
#include "interchange/Timeline.h"
#include "platform/base/Strings.h"
#include "platform/project/ProjDb.h"
#include "platform/store/Edit.h"
#include "platform/store/EditManager.h"

#include <vector>

namespace cutroom::cli {

namespace {

struct Named {
    std::string cookie;
    std::string name;
};

// All edits and logs whose name is `text`; failing that, whose name holds it, whatever the case.
std::vector<Named> candidatesFor(std::string_view text, bool* exact) {
    std::vector<Named> same;
    std::vector<Named> alike; // to nothing, every name would be
    const std::string lowered = toLowerUtf8(text);
    projdb::forEach({"cookie", "name"}, [&](const std::vector<std::string>& fields) {
        if (fields[1] == text)
            same.push_back({fields[0], fields[1]});
        else if (!text.empty() && toLowerUtf8(fields[1]).find(lowered) != std::string::npos)
            alike.push_back({fields[0], fields[1]});
        return true;
    });
    *exact = !same.empty();
    return same.empty() ? alike : same;
}

std::string listed(const std::vector<Named>& candidates) {
    constexpr std::size_t kMost = 8;
    std::string text;
    for (std::size_t i = 0; i < std::min(candidates.size(), kMost); ++i)
        text += (i ? ", " : "") + candidates[i].cookie + " \"" + candidates[i].name + '"';
    if (candidates.size() > kMost)
        text += format(" and %zu more", candidates.size() - kMost);
    return text;
}

} // namespace

Result<Cookie> findEditCookie(std::string_view text) {
    if (const auto cookie = Cookie::fromString(text);
        cookie && EditManager::instance().exists(*cookie))
        return *cookie;
    bool exact = false;
    const auto candidates = candidatesFor(text, &exact);
    if (exact && candidates.size() == 1)
        return Cookie(candidates.front().cookie);
    const std::string what(text);
    if (exact)
        return Status(StatusCode::notFound, what, "several have this name: " + listed(candidates));
    if (!candidates.empty())
        return Status(StatusCode::notFound, what,
                      "no edit has this name; near it: " + listed(candidates));
    return Status(StatusCode::notFound, what,
                  "no edit has this name or cookie; `cutroom list` shows what there is");
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

Result<double> parsePlace(std::string_view text, const EditPtr& edit) {
    const std::string written(text);
    if (text.find(':') != text.npos) {
        const EditLabel label = edit->getVideoTimecodeLabel();
        const TimecodeFormat format{edit->getFrameRate(), edit->getDropFrame()};
        const auto place = label.is_valid()
                               ? label.timeOf(written)
                               : EditLabel(kLabelVideoTimecode, {2, 1}, format, 0).timeOf(written);
        if (place)
            return *place;
        return Status(StatusCode::wrongUsage, written,
                      "no timecode of this edit, which counts like " + edit->getTimecode(0));
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
    const double length = edit->getEndTime();
    if (place && (*place < 0 || *place > length + kTimeTolerance))
        return Status(StatusCode::wrongUsage, std::string(text),
                      "outside the edit, which runs from " + edit->getTimecode(0) + " to " +
                          edit->getTimecode(length));
    return place;
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
