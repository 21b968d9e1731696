// What is selected on the channels of a Vob: segments, unjoined cuts, audio level nodes.
#include "platform/store/CelEventPair.h"
#include "platform/store/Edit.h"
#include "vob/Vob.h"

#include <algorithm>

TrackSelections* Vob::getTrackSelections(const IdStamp& channel) {
    if (!edit_ || !edit_->isValidChan(channel))
        return nullptr;
    return &selections_.try_emplace(channel, edit_, channel).first->second;
}

const TrackSelections* Vob::findTrackSelections(const IdStamp& channel) const {
    const auto found = selections_.find(channel);
    return found == selections_.end() ? nullptr : &found->second;
}

// --- segments ------------------------------------------------------------------------------------

bool Vob::selectSegmentSilently(const CelEventPair& segment, bool on) {
    if (!edit_ || !segment.valid() || !(segment.getEdit() == edit_))
        return false;
    TrackSelections* const selections = getTrackSelections(segment.getChannel());
    return selections && selections->selectSegment(segment.first().getIndex(), on);
}

void Vob::selectSegment(const CelEventPair& segment, bool on) { selectSegments({segment}, on); }

void Vob::selectSegments(const LightweightVector<CelEventPair>& segments, bool on) {
    VobModification change(kVobSegments);
    // The events may have been renumbered within a change that is not told yet.
    for (auto& [channel, selections] : selections_)
        if (selections.verifySegments())
            change.addModifiedTrack(channel);
    for (const CelEventPair& segment : segments)
        if (selectSegmentSilently(segment, on) && !change.affectsTrack(segment.getChannel()))
            change.addModifiedTrack(segment.getChannel());
    if (change.hasModifiedTracks())
        addModification(change);
}

void Vob::toggleSegmentSelection(const CelEventPair& segment) {
    const Kv::Ptr<Vob> self = keepAlive();
    selectSegments({}, true); // follows a renumbering
    selectSegment(segment, !isSegmentSelected(segment));
}

void Vob::clearSelectedSegments() {
    if (dropSelectedSegments())
        addModification(kVobSegments);
}

bool Vob::dropSelectedSegments() {
    bool any = false;
    for (auto& [channel, selections] : selections_)
        any |= selections.clearSegments();
    return any;
}

bool Vob::isSegmentSelected(const CelEventPair& segment) const {
    if (!segment.valid() || !(segment.getEdit() == edit_))
        return false;
    const TrackSelections* const selections = findTrackSelections(segment.getChannel());
    return selections && selections->isSegmentSelected(segment.first().getIndex());
}

bool Vob::anySelectedSegments() const {
    return std::any_of(selections_.begin(), selections_.end(),
                       [](const auto& entry) { return entry.second.anySegments(); });
}

// --- unjoined cuts -------------------------------------------------------------------------------

void Vob::changeCut(const IdStamp& channel, bool changed) {
    if (changed)
        informCutSelected(channel);
}

void Vob::unjoinCut(const IdStamp& channel, const ce_handle& point, unsigned flags) {
    TrackSelections* const selections = getTrackSelections(channel);
    changeCut(channel, selections && selections->addCut(point, flags));
}

void Vob::toggleCut(const IdStamp& channel, const ce_handle& point, unsigned flags) {
    TrackSelections* const selections = getTrackSelections(channel);
    changeCut(channel, selections && selections->toggleCut(point, flags));
}

void Vob::rejoinCuts() {
    if (clearUnjoinedCuts())
        informCutSelected();
}

bool Vob::clearUnjoinedCuts() {
    bool any = false;
    for (auto& [channel, selections] : selections_)
        any |= selections.clearCuts();
    return any;
}

bool Vob::verifyUnjoinedCuts() {
    bool changed = false;
    for (auto& [channel, selections] : selections_)
        changed |= selections.verifyCuts();
    return changed;
}

unsigned Vob::getNumUnjoinedCuts() const {
    unsigned count = 0;
    for (const auto& [channel, selections] : selections_)
        count += selections.getUnjoinedCuts().size();
    return count;
}

void Vob::informCutSelected(const IdStamp& channel) {
    if (!edit_)
        return;
    VobModification change(kVobCuts);
    if (channel.valid())
        change.addModifiedTrack(channel);
    addModification(change);
}

// --- audio level nodes ---------------------------------------------------------------------------

void Vob::selectLevelNode(const IdStamp& levelsChannel, double seconds, bool on) {
    if (!edit_ || !cutroom::isStorableTime(seconds) ||
        isLevelNodeSelected(levelsChannel, seconds) == on)
        return;
    const cutroom::Flicks time = cutroom::toFlicks(seconds);
    if (on) {
        const LevelNodes nodes = edit_->getLevelNodes(levelsChannel);
        if (std::none_of(nodes.begin(), nodes.end(),
                         [&](const LevelNode& node) { return node.time == time; }))
            return;
        levelNodes_[levelsChannel].push_back(time);
    } else {
        std::vector<cutroom::Flicks>& times = levelNodes_[levelsChannel];
        std::erase(times, time);
        if (times.empty())
            levelNodes_.erase(levelsChannel);
    }
    VobModification change(kVobLevelNodes);
    change.addModifiedTrack(levelsChannel);
    addModification(change);
}

bool Vob::isLevelNodeSelected(const IdStamp& levelsChannel, double seconds) const {
    const auto found = levelNodes_.find(levelsChannel);
    if (found == levelNodes_.end() || !cutroom::isStorableTime(seconds))
        return false;
    const std::vector<cutroom::Flicks>& times = found->second;
    return std::find(times.begin(), times.end(), cutroom::toFlicks(seconds)) != times.end();
}

void Vob::clearSelectedLevelNodes() {
    if (deselectAllLevelNodes())
        addModification(kVobLevelNodes);
}

bool Vob::deselectAllLevelNodes() {
    const bool any = !levelNodes_.empty();
    levelNodes_.clear();
    return any;
}
