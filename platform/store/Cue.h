// `Cue`, `CueList`, `CueFilter`: the markers of an edit.
#pragma once

#include "platform/base/IdStamp.h"
#include "platform/base/NumRange.h"
#include "platform/base/Strings.h"
#include "platform/base/Time.h"
#include "platform/store/Numbers.h"
#include "platform/store/Shared.h"

#include <cstdint>
#include <utility>
#include <vector>

// A marker: a moment, or a range when it has an end. Times in seconds on the edit. A value.
class CUTROOM_API Cue {
public:
    // A point cue at 0, visible and placed by a person, white, with a fresh external id.
    Cue();
    Cue(double time, LightweightString<wchar_t> name);
    Cue(const TimeRange& range, LightweightString<wchar_t> name);

    double getTime() const noexcept { return time_; }
    void setTime(double seconds) noexcept { time_ = seconds; }
    // kNoTime: a point cue.
    double getEndTime() const noexcept { return end_; }
    void setEndTime(double seconds) noexcept { end_ = seconds; }
    bool hasEnd() const noexcept { return end_ != kNoTime; }
    // Time and end in order; for a point cue [time, kNoTime].
    TimeRange getRange() const noexcept { return {time_, end_}; }
    // Moves time and end.
    void slide(double seconds) noexcept;

    const LightweightString<wchar_t>& getName() const noexcept { return name_; }
    void setName(LightweightString<wchar_t> name) { name_ = std::move(name); }
    const LightweightString<wchar_t>& getDescription() const noexcept { return description_; }
    void setDescription(LightweightString<wchar_t> text) { description_ = std::move(text); }
    // 24 bits, red in the high byte.
    std::uint32_t getColour() const noexcept { return colour_; }
    void setColour(std::uint32_t rgb) noexcept { colour_ = rgb & 0xFFFFFFu; }
    // CueFlag bits.
    unsigned getFlags() const noexcept { return flags_; }
    void setFlags(unsigned flags) noexcept { flags_ = flags; }
    bool hasFlag(CueFlag flag) const noexcept { return (flags_ & flag) != 0; }

    // The identity by which others know the cue; unique within an edit.
    const IdStamp& getExtID() const noexcept { return extId_; }
    void setExtID(const IdStamp& id) noexcept { extId_ = id; }
    // The channel it was placed on; the empty id: on the edit.
    const IdStamp& getChannel() const noexcept { return channel_; }
    void setChannel(const IdStamp& channel) noexcept { channel_ = channel; }

    // Custom metadata: the value of a field by its key, "" when unset; setting "" removes.
    using Metadata = std::vector<std::pair<LightweightString<char>, LightweightString<wchar_t>>>;
    const Metadata& getCustomMetadata() const noexcept { return custom_; }
    LightweightString<wchar_t> getCustomMetadata(const LightweightString<char>& key) const;
    void setCustomMetadata(const LightweightString<char>& key, LightweightString<wchar_t> value);
    // The fields that the open project defines for cues: key and display name, in project order.
    static Metadata getCustomMetadataDefinitions();
    // What came with the marker from another program: JSON object text, or empty.
    const LightweightString<char>& getImportedMetadata() const noexcept { return imported_; }
    void setImportedMetadata(LightweightString<char> json) { imported_ = std::move(json); }

    friend bool operator==(const Cue&, const Cue&) = default;

private:
    double time_ = 0;
    double end_ = kNoTime;
    std::uint32_t colour_ = 0xFFFFFF;
    unsigned flags_ = kCueVisible | kCueUser;
    IdStamp extId_;
    IdStamp channel_;
    LightweightString<wchar_t> name_;
    LightweightString<wchar_t> description_;
    Metadata custom_;
    LightweightString<char> imported_;
};

// Which cues a viewer shows: those with all bits of `wanted` and no bit outside `allowed`.
class CUTROOM_API CueFilter {
public:
    CueFilter(unsigned wanted, int allowed) noexcept : wanted_(wanted), allowed_(allowed) {}

    unsigned getWanted() const noexcept { return wanted_; }
    int getAllowed() const noexcept { return allowed_; }
    bool accepts(const Cue& cue) const noexcept;

    friend bool operator==(const CueFilter&, const CueFilter&) = default;

private:
    unsigned wanted_;
    int allowed_;
};

// The cues of an edit in ascending order of time; cues at one time keep the order of their adding.
// A value that copies share until one of them changes, so copying is O(1). As part of an edit it is
// guarded by the edit's lock and changed through the edit.
class CUTROOM_API CueList {
public:
    std::size_t getNumCuePoints() const noexcept { return cues().size(); }
    // `index` must be below the count.
    const Cue& getCuePoint(std::size_t index) const { return cues()[index]; }
    const std::vector<Cue>& cues() const noexcept { return *cues_; }

    // Inserts in order; gives the index. A time that is not storable is refused: SIZE_MAX.
    std::size_t addCuePoint(Cue cue);
    // Replaces the cue (it may move); false when there is none at `index` or a time is no time.
    bool setCuePoint(std::size_t index, Cue cue);
    bool deleteCue(std::size_t index);
    void deleteAllCues() noexcept { cues_ = {}; }
    // Index of the cue with that external id; SIZE_MAX when there is none.
    std::size_t find(const IdStamp& extId) const noexcept;
    // Index of the first cue later than `seconds`. O(log n).
    std::size_t nextAfter(double seconds) const noexcept;
    // Moves all cues.
    void slide(double seconds);

    friend bool operator==(const CueList&, const CueList&) = default;

private:
    cutroom::Shared<std::vector<Cue>> cues_;
};
