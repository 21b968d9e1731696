// Flattening: several layers of picture become one.
#include "platform/store/CelStorage.h"
#include "platform/store/EditImpl.h"
#include "platform/store/Editor.h"
#include "platform/store/EditorPieces.h"

#include <algorithm>
#include <deque>

namespace cutroom {

namespace {

// Walks the segments of one layer that are not black, each by its events moved to edit time.
class Layer {
public:
    Layer(const Cel& cel, const GraphTable& graphs, CelStorage& result)
        : storage_(CelAccess::storage(cel)), offset_(CelAccess::offset(cel)), graphs_(graphs),
          details_(*storage_, result) {
        skipBlack();
    }

    bool done() const noexcept { return segment_ >= storage_->segments(); }
    // Of the present segment; only when not done.
    Flicks start() const noexcept { return storage_->starts[segment_] + offset_; }
    Flicks end() const noexcept { return storage_->events[2 * segment_ + 1].time + offset_; }

    // Moves on to the first segment that ends after `time`.
    void advance(Flicks time) {
        while (!done() && end() <= time) {
            ++segment_;
            skipBlack();
        }
    }
    // The part [from, to) of the present segment.
    EventPair part(Flicks from, Flicks to) {
        ChannelEvent in = storage_->events[2 * segment_];
        ChannelEvent out = storage_->events[2 * segment_ + 1];
        in.time += offset_;
        out.time += offset_;
        EventPair pair = trimmedPair(in, out, from, to);
        if (!graphs_.empty())
            keepClipEffects(pair, in, out, graphs_);
        details_.adopt(pair[0]);
        pair[1].detail = pair[0].detail;
        return pair;
    }

private:
    void skipBlack() noexcept {
        while (!done() && storage_->events[2 * segment_].isBlack())
            ++segment_;
    }

    Shared<CelStorage> storage_;
    Flicks offset_;
    const GraphTable& graphs_;
    DetailAdopter details_;
    std::size_t segment_ = 0;
};

// One list that shows, at every moment from `start` to `end`, the topmost layer that shows
// anything. Layers from the lowest to the topmost.
void flattenLayers(std::deque<Layer>& layers, Flicks start, Flicks end, CelStorage& result) {
    std::vector<ChannelEvent> events;
    for (Flicks at = start; at < end;) {
        Layer* shown = nullptr;
        Flicks next = end;
        for (auto layer = layers.rbegin(); layer != layers.rend() && !shown; ++layer) {
            layer->advance(at);
            if (layer->done())
                continue;
            if (layer->start() <= at)
                shown = &*layer;
            next = std::min(next, shown ? layer->end() : layer->start());
        }
        append(events, shown ? shown->part(at, next) : blackPair(at, next));
        at = next;
    }
    result.splice(0, 0, std::move(events));
}

} // namespace

Status flattenEdit(const EditModifier& edit, const EditModule& selection, int mode, int flags) {
    if (!edit)
        return {StatusCode::notFound, {}, "there is no edit to flatten"};
    if (mode != 3 || flags != 0)
        return {StatusCode::wrongUsage, {}, "there is no such way to flatten"};
    const Edit::Lock lock(*edit);
    std::vector<IdStamp> channels;
    for (const IdStamp& channel : edit->getChans(kChanVideo, kSubNormal))
        if (selection.isSelected(channel))
            channels.push_back(channel);
    if (channels.size() < 2)
        return {};
    CelStorage result;
    std::deque<Layer> layers;
    Flicks start = kMaxFlicks;
    Flicks end = -kMaxFlicks;
    unsigned celFlags = 0;
    for (const IdStamp& channel : channels) {
        const Kv::Ptr<Cel> cel = edit->get_edit_cel_p(channel);
        celFlags |= cel->getFlags();
        if (cel->get_num_events() == 0)
            continue;
        layers.emplace_back(*cel, *EditAccess::impl(*edit).state.graphs, result);
        start = std::min(start, cel->get_event(0).time);
        end = std::max(end, cel->get_event(cel->get_num_events() - 1).time);
    }
    flattenLayers(layers, start, end, result);
    layers.clear();
    const Kv::Ptr<Cel> flat = CelAccess::make(Shared<CelStorage>(std::move(result)), 0, celFlags);
    edit->set_edit_cel_p(channels.front(), *flat);
    for (std::size_t i = 1; i < channels.size(); ++i)
        edit->removeChan(channels[i], false);
    edit->addModification(kModFlattened, false);
    return {};
}

} // namespace cutroom
