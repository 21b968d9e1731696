// `EditModule`: an edit together with its current time, the in and out mark per channel and the
// channel selection. The unit that a viewed edit holds and that edit operations take.
#pragma once

#include "platform/base/Cookie.h"
#include "platform/base/IdStamp.h"
#include "platform/base/NumRange.h"
#include "platform/base/Time.h"
#include "platform/store/EditPtr.h"
#include "platform/store/Numbers.h"

#include <cstdint>
#include <vector>

// A value; belongs to one thread. Keeps its edit open. Without an edit every query answers empty.
//
// A fresh module on an edit has its current time at 0, no marks, and every channel selected that is
// not derived. Channels that the edit has gained since the module was made are unselected and
// unmarked; channels that it has lost are ignored.
class CUTROOM_API EditModule {
public:
    enum eAccuracy {
        kAccuracyFrame = 0, // at the start of the frame that holds the time
        kAccuracyExact = 1, // as stored
    };

    EditModule() = default;
    explicit EditModule(const EditPtr& edit);
    explicit EditModule(const Cookie& edit);

    const EditPtr& getEdit() const noexcept { return edit_; }
    // The edit's cookie; invalid without edit.
    Cookie getEditID() const;
    bool valid() const noexcept { return static_cast<bool>(edit_); }

    double getCurrentTime(eAccuracy accuracy = kAccuracyExact) const;
    void setCurrentTime(double seconds) noexcept { currentTime_ = seconds; }

    // --- selection -----------------------------------------------------------------------------
    bool isSelected(const IdStamp& channel) const noexcept;
    // True when that changed anything.
    bool selectChan(const IdStamp& channel, bool on);
    void selectAll(bool on = true);
    // All channels of a mask of types and sub-types.
    void selectChans(unsigned types, unsigned subTypes, bool on);
    // Selected channels in the edit's channel order, and their number.
    std::vector<IdStamp> getSelectedChans(unsigned types = kChanAllTypes,
                                          unsigned subTypes = kSubAll) const;
    int getNumSelectedChans(unsigned types = kChanAllTypes, unsigned subTypes = kSubAll) const;
    // The first selected channel; the empty id when none is.
    IdStamp firstSelectedChannel(unsigned types = kChanAllTypes) const;
    // Bit i is set when channel index i (of the first 64) is selected.
    std::uint64_t getSelectedMask() const;
    void setSelectedMask(std::uint64_t mask);
    // Selects in this module what `other` selects in its own edit, channel by channel index.
    void makeSimilarTrackSelections(const EditModule& other);

    // --- one channel, in one look --------------------------------------------------------------
    struct ChannelState {
        double markIn = kNoTime;
        double markOut = kNoTime;
        bool selected = false;
        friend bool operator==(const ChannelState&, const ChannelState&) = default;
    };
    // `hint`: where the module may know the channel, which only makes this quick. For a module of
    // all channels that is the channel's index.
    ChannelState getChannelState(const IdStamp& channel, std::size_t hint) const noexcept;

    // --- marks ---------------------------------------------------------------------------------
    // kNoTime when unset.
    double getMark(const IdStamp& channel, Kv::MarkTypes::MarkType type) const noexcept;
    void setMark(const IdStamp& channel, double seconds, Kv::MarkTypes::MarkType type);
    // The first mark of that type that any selected channel (else any channel) carries.
    double getMark(Kv::MarkTypes::MarkType type) const;
    // Marks every channel. With `advanced` false the opposite mark of a channel is cleared when the
    // new one would lie on its wrong side (an in mark after the out mark, or the reverse).
    void markAllAt(double seconds, Kv::MarkTypes::MarkType type, bool advanced);
    // Marks every channel with a whole range; `advanced` as above (a range always stands).
    void markAllAt(const TimeRange& range, bool advanced);
    void clearMarks();
    // Tells whether any channel has a mark.
    bool isMarked() const;
    bool isMarked(const IdStamp& channel) const;
    // From the in mark to the out mark; a missing in mark is the start of the edit, a missing out
    // mark its end, both missing: the whole edit.
    TimeRange getMarkedRegion() const;
    // Takes `other`'s marks, moved by `offset` seconds, channel by channel index.
    void makeSimilarMarks(const EditModule& other, double offset);

    // Makes the marks and selections of levels channels follow the audio channels they belong to.
    void initLevelsFromAudio();

    friend bool operator==(const EditModule& a, const EditModule& b);

private:
    struct Channel : ChannelState {
        IdStamp id;
    };
    const Channel* find(const IdStamp& id) const noexcept;
    Channel& findOrAdd(const IdStamp& id);

    EditPtr edit_;
    double currentTime_ = 0;
    std::vector<Channel> channels_; // in the order first touched
};

CUTROOM_API bool operator==(const EditModule& a, const EditModule& b);
