// What edits and logs take of one another beside the cut lists: configuration, cues, details of
// channels. Internal to the edit operations.
//
// The source must not be changed by another thread meanwhile; its lock and the copy's are never
// held together.
#pragma once

#include "platform/base/IdStamp.h"
#include "platform/store/EditPtr.h"

#include <map>
#include <span>

namespace cutroom {

// The channels of a copy by those of their source.
using ChannelPairs = std::map<IdStamp, IdStamp>;
// Pairs them type by type, the first with the first.
ChannelPairs pairChannels(const EditPtr& source, const EditPtr& copy);

// Gives `copy` the value of each key that the source has.
void copyConfigKeys(const EditPtr& source, const EditPtr& copy, std::span<const char* const> keys);

// Gives `copy` the source's cues that are visible, were placed by a person and are not transient,
// moved by `offset` seconds, as far as they begin within the copy (1e-6 s beyond an end counts as
// within). Each takes a fresh id; one that was placed on a channel stays on that channel's pair,
// else on the edit.
void copyCues(const EditPtr& source, const EditPtr& copy, double offset,
              const ChannelPairs& channels = {});

// Gives `copy`, whose channels are those of `source` one by one, all the rest that a copy of a
// range takes: labels (moved so that the number at `start` seconds of the source stands at 0),
// playback format, burnt-in timecode, names and groups of channels, the mix, the source-material
// value, the configuration that describes a log or its media, and the project's own attributes.
void copyDetails(const EditPtr& source, const EditPtr& copy, double start);

} // namespace cutroom
