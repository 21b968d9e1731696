#include "vob/VobModification.h"

#include "platform/store/Edit.h"

#include <algorithm>

VobModification::VobModification(const LightweightString<char>&) noexcept
    : type_(0), time_(0), markTime_(0) {}

bool VobModification::affectsTrack(const IdStamp& track) const noexcept {
    if (!hasTracks_)
        return false;
    return firstTrack_ == track ||
           std::find(moreTracks_.begin(), moreTracks_.end(), track) != moreTracks_.end();
}

void VobModification::addTracksOf(const VobModification& other) {
    addModifiedTrack(other.firstTrack_);
    moreTracks_.insert(moreTracks_.end(), other.moreTracks_.begin(), other.moreTracks_.end());
}

std::list<IdStamp> VobModification::getModifiedTracks() const {
    std::list<IdStamp> tracks(moreTracks_.begin(), moreTracks_.end());
    if (hasTracks_)
        tracks.push_front(firstTrack_);
    return tracks;
}

unsigned VobModification::getModifiedTrackTypes(const EditPtr& edit) const {
    unsigned types = 0;
    if (!edit)
        return types;
    for (const IdStamp& track : getModifiedTracks())
        if (edit->isValidChan(track))
            types |= edit->getChanType(track);
    return types;
}
