#include "vob/VobModification.h"

#include "platform/store/Edit.h"

#include <algorithm>

VobModification::VobModification(const LightweightString<char>&) noexcept
    : type_(0), time_(0), markTime_(0) {}

bool VobModification::affectsTrack(const IdStamp& track) const noexcept {
    return std::find(tracks_.begin(), tracks_.end(), track) != tracks_.end();
}

unsigned VobModification::getModifiedTrackTypes(const EditPtr& edit) const {
    unsigned types = 0;
    if (!edit)
        return types;
    for (const IdStamp& track : tracks_)
        if (edit->isValidChan(track))
            types |= edit->getChanType(track);
    return types;
}
