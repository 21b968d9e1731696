// `UnjoinedCut` and `UnjoinedCuts`: the edit points of one channel that are selected for trimming.
#pragma once

#include "editops/basics/Vector.h"
#include "platform/base/IdStamp.h"
#include "platform/base/Strings.h"
#include "platform/store/Cel.h"

class IndexIndependentEventList;

// Bits of an unjoined cut's flags. A constrained side does not follow when the cut is trimmed.
enum UnjoinedCutFlag : unsigned {
    kCutConstrainOut = 1, // the clip before the cut keeps its end
    kCutConstrainIn = 2,  // the clip after the cut keeps its start
    kCutConstraints = kCutConstrainOut | kCutConstrainIn,
};

// One selected edit point. A value.
struct CUTROOM_API UnjoinedCut {
    UnjoinedCut() = default;
    // Takes the effect graph's id from a valid handle; the zero id from an invalid one.
    explicit UnjoinedCut(const ce_handle& point, unsigned cutFlags = 0);

    ce_handle handle;
    IdStamp effectGraph;
    unsigned flags = 0;
    IdStamp second; // free for the user of the record

    friend bool operator==(const UnjoinedCut&, const UnjoinedCut&) = default;
};

// The list, in the order of `ce_handle::operator>`; a handle occurs at most once. A value; belongs
// to the thread of its viewed edit, and reads handles under the rules of `Cel`.
class CUTROOM_API UnjoinedCuts : public Vector<UnjoinedCut> {
public:
    // Inserts in order, unless the list is full. An invalid handle is ignored; of a handle that is
    // there only the flags are replaced.
    void addHandle(const ce_handle& handle, unsigned flags);
    // Nothing when the handle is not there.
    void deleteHandle(const ce_handle& handle);
    // Adds a handle that is absent (with `flags`), erases one that is there.
    void toggleHandle(const ce_handle& handle, unsigned flags);

    // The index of a handle; -1 when it is not there. Linear.
    int getIndexFor(const ce_handle& handle) const;
    bool isMember(const ce_handle& handle) const { return getIndexFor(handle) >= 0; }
    // `index` must be below the count.
    ce_handle getHandle(unsigned short index) const { return (*this)[index].handle; }
    ce_handle& getHandleRef(unsigned short index) { return (*this)[index].handle; }
    const ce_handle& getHandleRef(unsigned short index) const { return (*this)[index].handle; }

    // The flags of a member, 0 for any other handle or an index past the end.
    unsigned getFlag(const ce_handle& handle) const;
    unsigned getFlag(unsigned short index) const;
    // Sets (`on`) or clears the bits `flags` of one record; nothing past the end.
    void setFlag(unsigned short index, unsigned flags, bool on);
    // Records whose flags share a bit with `mask`.
    bool anyMatching(unsigned mask) const;
    unsigned short numMatching(unsigned mask) const;
    // Takes the constraint bits away from every record.
    void clearTrimConstraints();

    // The number of valid records before `seconds` by more than 1e-6; counting ends at the first
    // that is not.
    unsigned short numSelectionsBeforeTime(double seconds) const;
    // Tells whether a point lies between the two cuts of an unjoined pair: an odd number of
    // selections lies before it. An out point is looked at 0.0001 s early. False for an invalid
    // handle.
    bool isPopped(const ce_handle& handle) const;
    // Index of the record nearest to `seconds` (the later of two equally near); -1 when empty.
    int getNearestHandle(double seconds) const;

    // The event indices in list order, in decimal, joined by ",".
    LightweightString<char> asString() const;
    // Replaces the list by what `asString` wrote: each piece's leading digits are an event index of
    // `cel`, kept in the order of the text, flags 0. Empty text or a null cel: an empty list.
    void fromString(const LightweightString<char>& text, Cel* cel);

    // Replaces the list by the points that `events` finds again; flags 0. Those gone are dropped.
    void buildFrom(IndexIndependentEventList& events);
    // Makes each record's handle anew on the channel's present list: the point with the record's
    // effect graph, else the point at the record's index. Records without a point are dropped.
    void reEstablish(const Cookie& edit, const IdStamp& channel);
};
