#include "interchange/ExportSources.h"

#include "interchange/ImportedJson.h"
#include "platform/base/Strings.h"
#include "platform/project/LogAttribute.h"
#include "platform/store/Edit.h"

namespace cutroom {

namespace {

ReferenceKind kindOf(const std::string& medium, const std::string& location) {
    if (medium == "generator")
        return ReferenceKind::generator;
    if (medium == "image sequence")
        return ReferenceKind::imageSequence;
    if (medium == "other")
        return ReferenceKind::other;
    return location.empty() ? ReferenceKind::missing : ReferenceKind::external;
}

MediaReference mediaOf(const Edit& log) {
    const Edit::Lock lock(log);
    MediaReference media;
    const auto locations = log.getMediaLocations();
    if (!locations.empty())
        media.location = toUtf8(locations.front());
    media.kind = kindOf(
        log.getConfig(LogAttribute(LogAttribute::sourceMedium).getID()).value_or(std::string()),
        media.location);
    media.name = toUtf8(log.getName());
    media.reel = log.getVideoReelId();
    media.rate.rate = log.getFrameRate();
    const EditLabel label = log.getVideoTimecodeLabel();
    media.dropFrame = label.is_valid() ? label.format().dropFrame : log.getDropFrame();
    media.raw = importedMember(log.getImportedMetadata(), kImportedMedia);
    // A log made for what a file plays of its media does not tell how much there is.
    if (!log.isImported() && media.kind == ReferenceKind::external)
        media.available = Span{toFlicks(log.getStartStripTime()),
                               toFlicks(log.getEndTime()) - toFlicks(log.getStartTime())};
    return media;
}

} // namespace

const ExportSources::Asset& ExportSources::find(const Cookie& played) {
    const auto [entry, isNew] = assets_.try_emplace(played);
    if (const EditPtr log = isNew ? EditPtr(played) : EditPtr()) {
        entry->second.known = true;
        entry->second.isEdit = log->getLogType() == kLogTypeEdit;
        if (!entry->second.isEdit)
            entry->second.media = mediaOf(*log);
    }
    return entry->second;
}

bool ExportSources::isEdit(const Cookie& played) { return find(played).isEdit; }

bool ExportSources::fill(const Cookie& played, const CelSegment& segment, Item& item) {
    const Asset& asset = find(played);
    const std::string_view raw = importedMember(segment.detail.metadata, kImportedMedia);
    const std::string location = toUtf8(segment.detail.media);
    if (!asset.known) {
        item.media.kind = location.empty() ? ReferenceKind::missing : ReferenceKind::external;
        item.media.location = location;
        item.media.name = item.name;
        item.media.raw = raw;
        return false;
    }
    item.media = asset.media;
    const std::string reel = importedText(importedMember(item.metadata, "edl"), "reel");
    if (item.media.reel.empty() && !reel.empty() && reel != "AX")
        item.media.reel = item.media.name;
    if (!raw.empty() && location == asset.media.location)
        item.media.raw = raw;
    if (!item.sourceRate.valid() && item.channel.empty()) // an edit list counts at its own rate
        item.sourceRate.rate = asset.media.rate.rate;
    return true;
}

} // namespace cutroom
