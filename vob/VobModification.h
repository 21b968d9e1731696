// `VobModification`: the record of one or more changes of a viewed edit.
#pragma once

#include "platform/base/IdStamp.h"
#include "platform/base/Strings.h"
#include "platform/base/Time.h"
#include "platform/store/EditPtr.h"

#include <list>
#include <vector>

// Kinds of change (bits). Some always come together: a replaced module is marks and selection (20),
// with the time when it moved (22).
enum VobModificationType : unsigned {
    kVobTime = 2,
    kVobMarks = 4, // marks or cues
    kVobCuts = 8,  // selection of cuts
    kVobSelection = 16,
    kVobEditReplaced = 32,
    kVobViewEdits = 128,
    kVobStills = 256, // custom stills providers
    kVobBecameSource = 512,
    kVobBecameRecord = 1024,
    kVobBecamePlay = 2048,
    kVobLostSource = 4096,
    kVobLostRecord = 8192,
    kVobLostPlay = 16384,
    kVobImpendingRevision = 0x8000, // the edit is about to change to another revision
    kVobViewRegion = 0x10000,
    kVobLevelNodes = 0x20000, // selection of audio level nodes
    kVobSegments = 0x40000,   // selection of segments
    kVobSyncOff = 0x80000,    // multicam synchronisation was switched off
    kVobSyncOn = 0x100000,    // … on
    kVobCueFilter = 0x200000,
};

// A value. A record of type 0 says nothing.
class CUTROOM_API VobModification {
public:
    // The kinds `type`, without times (kNoTime) and tracks.
    VobModification(unsigned type) noexcept : type_(type) {}
    // Ignores the text: type 0, and both times 0 instead of kNoTime.
    explicit VobModification(const LightweightString<char>& text) noexcept;
    // Always empty.
    LightweightString<char> asString() const { return {}; }

    unsigned getType() const noexcept { return type_; }
    // Tells whether it says anything.
    bool valid() const noexcept { return type_ != 0; }
    void addModification(unsigned bits) noexcept { type_ |= bits; }
    void removeModification(VobModificationType bits) noexcept { type_ &= ~unsigned{bits}; }
    bool includes(VobModificationType bits) const noexcept { return (type_ & bits) != 0; }
    bool includesAnyOf(unsigned bits) const noexcept { return (type_ & bits) != 0; }

    // The current time, and the mark time, that go with the change, in seconds.
    double getTime() const noexcept { return time_; }
    void setTime(double seconds) noexcept { time_ = seconds; }
    double getMarkTime() const noexcept { return markTime_; }
    void setMarkTime(double seconds) noexcept { markTime_ = seconds; }

    // The channels concerned, in the order added; one may occur more than once.
    void addModifiedTrack(const IdStamp& track) {
        if (hasTracks_)
            moreTracks_.push_back(track);
        else
            firstTrack_ = track;
        hasTracks_ = true;
    }
    bool affectsTrack(const IdStamp& track) const noexcept;
    std::list<IdStamp> getModifiedTracks() const;
    bool hasModifiedTracks() const noexcept { return hasTracks_; }
    // The types of the channels concerned, together (EditChanType bits), in `edit`; 0 without edit.
    // Channels that the edit does not have count nothing.
    unsigned getModifiedTrackTypes(const EditPtr& edit) const;

    // Takes `other` in: the kinds, the tracks behind those here, and its mark time when none is
    // here. Nothing when `other` says nothing. The time stays.
    void merge(const VobModification& other) {
        if (!other.valid())
            return;
        type_ |= other.type_;
        if (markTime_ == kNoTime)
            markTime_ = other.markTime_;
        if (other.hasTracks_)
            addTracksOf(other);
    }

private:
    void addTracksOf(const VobModification& other); // which has some

    unsigned type_;
    // The tracks: most changes name one or none, and then nothing is allocated; a batch may name
    // very many, so the others lie densely.
    IdStamp firstTrack_;
    bool hasTracks_ = false;
    double time_ = kNoTime;
    double markTime_ = kNoTime;
    std::vector<IdStamp> moreTracks_;
};
