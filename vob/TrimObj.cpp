#include "vob/TrimObj.h"

#include "platform/base/Time.h"
#include "platform/store/Edit.h"
#include "vob/Vob.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

// The events to be trimmed: one for each cut among the unjoined points (the out point of a cut
// stands for the in point beside it), in ascending order.
std::vector<std::uint32_t> cutsToTrim(const UnjoinedCuts& cuts, const Cel& cel) {
    std::vector<std::uint32_t> events;
    for (unsigned short i = 0; i < cuts.size(); ++i) {
        const ce_handle& point = cuts.getHandleRef(i);
        if (!point.valid())
            continue;
        const std::uint32_t index = point.getIndex();
        events.push_back(index > 0 && !cel.get_event(index).isOut() ? index - 1 : index);
    }
    std::sort(events.begin(), events.end());
    events.erase(std::unique(events.begin(), events.end()), events.end());
    return events;
}

// Moves the cuts one by one, the one in front first so that none bumps into the next; takes back
// what was moved when one cannot.
cutroom::Status trimAll(Cel& cel, std::vector<std::uint32_t> events, cutroom::Flicks by) {
    if (by > 0)
        std::reverse(events.begin(), events.end());
    for (std::size_t done = 0; done < events.size(); ++done) {
        cutroom::Status status = cel.trim(events[done], by);
        if (status)
            continue;
        while (done > 0)
            if (!cel.trim(events[--done], -by))
                break;
        return status;
    }
    return {};
}

} // namespace

TrimObj::TrimObj(Vob& vob) : vob_(vob) {}

bool TrimObj::isTrimViewPossible() const {
    const std::vector<IdStamp> channels = vob_.getSelectedChans();
    return std::any_of(channels.begin(), channels.end(), [&](const IdStamp& channel) {
        const TrackSelections* const selections = vob_.findTrackSelections(channel);
        return selections && !selections->getUnjoinedCuts().empty();
    });
}

bool TrimObj::isPopped(const IdStamp& channel, double seconds) const {
    const TrackSelections* const selections = vob_.findTrackSelections(channel);
    return selections && selections->getUnjoinedCuts().numSelectionsBeforeTime(seconds) % 2 == 1;
}

IdStamp TrimObj::getSnapChannel() const {
    if (snap_.valid())
        return snap_;
    for (const IdStamp& channel : vob_.getSelectedChans()) {
        const TrackSelections* const selections = vob_.findTrackSelections(channel);
        if (selections && !selections->getUnjoinedCuts().empty())
            return channel;
    }
    return {};
}

double TrimObj::getNearestCutTime(double seconds) const {
    const TrackSelections* const selections = vob_.findTrackSelections(getSnapChannel());
    if (!selections)
        return kNoTime;
    const UnjoinedCuts& cuts = selections->getUnjoinedCuts();
    const int nearest = cuts.getNearestHandle(seconds);
    return nearest < 0 ? kNoTime
                       : cuts.getHandleRef(static_cast<unsigned short>(nearest)).get_edit_time();
}

cutroom::Status TrimObj::trimFrames(double amount, bool inSeconds, bool rejoin) {
    const IdStamp channel = getSnapChannel();
    const EditPtr edit = vob_.getEdit();
    TrackSelections* const selections = vob_.getTrackSelections(channel);
    if (!edit || !selections)
        return cutroom::Status(cutroom::StatusCode::failed, "trim", "no channel has unjoined cuts");
    const double seconds = inSeconds ? amount : amount * edit->getCelResolution();
    if (!cutroom::isStorableTime(seconds))
        return cutroom::Status(cutroom::StatusCode::wrongUsage, "trim", "no such time");

    const EditModifier writing(edit, "trim");
    const Kv::Ptr<Cel> cel = edit->get_edit_cel_p(channel);
    const cutroom::Status status =
        trimAll(*cel, cutsToTrim(selections->getUnjoinedCuts(), *cel), cutroom::toFlicks(seconds));
    if (status && rejoin)
        selections->clearCuts();
    return status;
}
