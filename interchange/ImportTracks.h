// Lays the tracks of a timeline on the channels of an edit.
#pragma once

#include "interchange/ImportSources.h"
#include "interchange/Timeline.h"
#include "platform/base/Cookie.h"
#include "platform/base/Status.h"
#include "platform/store/EditPtr.h"

#include <functional>
#include <vector>

namespace cutroom {

// What could not be laid, over all tracks of a file.
struct ImportLosses {
    long withoutLength = 0; // clips and gaps shorter than half a frame
    long transitions = 0;   // transitions that lie over no cut
    long disabledTracks = 0;
};

// What tracks need to know of the rest of the file.
struct ImportScene {
    const ImportSources& sources;
    const CookieVec& nested; // the edits that nested things play, as `Timeline::nested`
    ImportLosses& losses;
};

// Adds a channel to `edit` for each track, the lowest first, with all its items. A hole is black;
// what lies under a transition at the head or tail of a track is black with the flag kEventPad.
//
//   OTIO   |--in--|======clip A======|--out--|       transitions at head and tail
//   cel    |-pad--|--------A---------|--pad--|       graphs on the in points of A and the last pad
//
// `laid` is called after each track, whose items are then freed, since a long timeline is large. On
// failure the edit keeps what was laid by then.
Status layTracks(const EditPtr& edit, Timeline& timeline, const ImportScene& scene,
                 const std::function<void(const Track&)>& laid);

} // namespace cutroom
