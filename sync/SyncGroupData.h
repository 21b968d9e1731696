// `SyncGroupData`: a sync group: a bin of clips that were recorded at the same time, where each is
// viewed, and how they lie to each other.
//
// Its cookie is of kind 'M'; the bin manager makes, loads, saves and tells of it as of any bin.
// Any thread, as a bin; it is changed by synchronisers, on the user-interface thread.
#pragma once

#include "bins/BinData.h"

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

class CUTROOM_API SyncGroupData final : public BinData {
public:
    // A kind of change of its own: a clip was moved by itself, out of line with the others.
    static constexpr unsigned kModClipMovedAlone = 4096;

    // Where a clip is viewed, in its own seconds; kNoTime: no mark.
    struct ClipPlace {
        Cookie clip;
        double time = 0.0;
        double markIn = kNoTime;
        double markOut = kNoTime;
    };
    // How much later than the first clip each one stands at the same moment, in seconds.
    using Relationships = std::vector<std::pair<Cookie, double>>;

    // Empty; the manager gives it its cookie.
    SyncGroupData() = default;
    ~SyncGroupData() override;

    // A new, empty group of that name under the bin manager; saved with the next `saveAll`.
    static Kv::Ptr<SyncGroupData> make(const LightweightString<wchar_t>& name);
    // The group of that cookie; empty when there is none.
    static Kv::Ptr<SyncGroupData> open(const Cookie& group);

    // Clips only: edits and logs.
    using BinData::canAccomodate;
    bool canAccomodate(CookieType type) const override;

    // The clips in the order of the items.
    CookieVec clips() const;
    // Copies the places into the items of those clips where one of the three values differs, and
    // tells once: with `movedAlone` a record of kind 4096, then one of kind 128 with the clips
    // whose items changed, which may be none. Makes the group dirty only when an item changed, or
    // `movedAlone`.
    void takePlaces(const std::vector<ClipPlace>& places, bool movedAlone);

    // Stores the relationships ("SYNCED_SOURCES" in the group's file) in place of those before.
    void storeRelationships(const Relationships& relationships);
    // Those stored last; what cannot be read of them is left out.
    Relationships relationships() const;

private:
    bool takePlace(const ClipPlace& place);
};

namespace cutroom {

// The text in which relationships are kept, and back: "<cookie>=<seconds>" joined by '|', numbers
// in the shortest form that reads back exactly. Entries without a cookie or a storable number, and
// later ones of one clip, are left out.
std::string relationshipsText(const SyncGroupData::Relationships& relationships);
SyncGroupData::Relationships readRelationships(std::string_view text);

} // namespace cutroom
