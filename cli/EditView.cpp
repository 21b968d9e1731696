#include "cli/EditView.h"

#include "cli/Names.h"
#include "export/AssetMetadataExporterBase.h"
#include "platform/base/Strings.h"
#include "platform/store/Edit.h"

#include <cmath>

namespace cutroom::cli {

namespace {

const char* kindOf(EditChanType type) {
    switch (type) {
    case kChanVideo:
        return "video";
    case kChanAudio:
        return "audio";
    case kChanSubtitle:
        return "subtitle";
    default:
        return "other";
    }
}

// Turns the segments of one channel into items.
class TrackReader {
public:
    TrackReader(const Edit& edit, Flicks start)
        : edit_(edit), rate_(edit.getFrameRate()), start_(start) {}

    std::vector<ItemView> read(const Cel& cel) {
        const std::uint32_t count = cel.numSegments();
        for (std::uint32_t i = 0; i < count; ++i) {
            const CelSegment segment = cel.getSegment(i);
            if (i == 0 && segment.start > start_)
                addGap(segment.start);
            addTransition(segment.inGraph, segment.start);
            if ((segment.flags & kEventPad) == 0)
                addSegment(segment);
            if (i + 1 == count)
                addTransition(segment.outGraph, segment.end);
        }
        return std::move(items_);
    }

private:
    std::int64_t frame(Flicks time) const { return rate_.flicksToFrameNearest(time - start_); }

    // What lies before a channel's first event.
    void addGap(Flicks end) {
        ItemView gap;
        gap.type = ItemView::Type::gap;
        gap.duration = frame(end);
        items_.push_back(std::move(gap));
    }

    void addSegment(const CelSegment& segment) {
        ItemView item;
        item.type = segment.material.valid() ? ItemView::Type::clip : ItemView::Type::gap;
        item.name = toUtf8(segment.detail.name);
        for (const auto& line : segment.detail.lines)
            item.name += (item.name.empty() ? "" : " / ") + toUtf8(line);
        item.start = frame(segment.start);
        item.duration = frame(segment.end) - item.start;
        item.sourceStart = rate_.flicksToFrameNearest(sourceStart(segment));
        item.media = toUtf8(segment.detail.media);
        if (item.type == ItemView::Type::clip && segment.material.type() != 'T')
            item.source = convertCookie(segment.material, 'E').asString();
        item.speed = (segment.flags & kEventFreeze) ? 0.0 : segment.speed;
        item.enabled = (segment.flags & kEventDisabled) == 0;
        items_.push_back(std::move(item));
    }

    // Where the media that is seen begins: a backward clip reads towards it.
    static Flicks sourceStart(const CelSegment& segment) {
        if (!(segment.speed < 0))
            return segment.stripStart;
        const auto length = static_cast<double>(segment.end - segment.start);
        return segment.stripStart + std::llround(length * segment.speed);
    }

    void addTransition(const IdStamp& id, Flicks cut) {
        const auto graph = id.valid() ? edit_.getEffectGraph(id) : std::nullopt;
        if (!graph || !graph->isTransition())
            return;
        ItemView item;
        item.type = ItemView::Type::transition;
        item.name = toUtf8(graph->name);
        item.start = frame(cut - graph->inOffset);
        item.duration = frame(cut + graph->outOffset) - item.start;
        items_.push_back(std::move(item));
    }

    const Edit& edit_;
    const Kv::FrameRate rate_;
    const Flicks start_;
    std::vector<ItemView> items_;
};

MarkerView describeCue(const EditPtr& edit, const Cue& cue) {
    MarkerView marker;
    marker.id = cue.getExtID().asString();
    marker.name = toUtf8(cue.getName());
    marker.description = toUtf8(cue.getDescription());
    marker.start = cue.getTime();
    marker.colour = colourText(cue.getColour());
    marker.startTimecode = AssetMetadataExporterBase::getCueTimecode(edit, cue.getTime());
    if (cue.hasEnd()) {
        marker.end = cue.getEndTime();
        marker.endTimecode = AssetMetadataExporterBase::getCueTimecode(edit, cue.getEndTime());
    }
    return marker;
}

} // namespace

EditView describe(const EditPtr& edit) {
    const Edit::Lock hold(*edit);
    const Flicks start = toFlicks(edit->getStartTime());
    const Flicks end = toFlicks(edit->getEndTime());
    EditView view;
    view.id = edit->getCookie().asString();
    view.name = toUtf8(edit->getName());
    view.logType = edit->getLogType();
    view.format = {edit->getFrameRate(), edit->getDropFrame()};
    view.startTimecode = edit->getTimecode(toSeconds(start));
    view.durationFrames = view.format.rate.flicksToFrameNearest(end - start);
    view.durationSeconds = toSeconds(end - start);
    for (const IdStamp& channel :
         edit->getChans(kChanAllTypes & ~static_cast<unsigned>(kChanLevels),
                        kSubAll & ~static_cast<unsigned>(kSubDerived)))
        view.tracks.push_back({channel.asString(), kindOf(edit->getChanType(channel)),
                               toUtf8(edit->getChanDisplayName(channel)),
                               TrackReader(*edit, start).read(*edit->get_edit_cel_p(channel))});
    const CueList cues = edit->getCues();
    for (const Cue& cue : cues.cues())
        view.markers.push_back(describeCue(edit, cue));
    return view;
}

} // namespace cutroom::cli
