// `Edit`: one edit or log of the edit store, open in memory.
//
// Owned by the edit manager's table while open; kept open by `EditPtr`s. Guarded by one recursive
// lock of its own, which is not held while changes are told. Every operation takes the lock itself
// and may be called on any thread. References to parts (cels, cues, configuration) are to be used
// under `Edit::Lock` when other threads may change the edit.
//
// All changes take the same way: each is checked whole before anything changes, marks the edit
// dirty and is recorded; it is told when `addModification` is called with notification, or at the
// end of the outermost `EditModifier`. What is no UTF-8 in a text is saved as U+FFFD.
#pragma once

#include "platform/aud/SimpleMixState.h"
#include "platform/base/Cookie.h"
#include "platform/base/FrameRate.h"
#include "platform/base/Locks.h"
#include "platform/base/LogType.h"
#include "platform/base/Status.h"
#include "platform/messaging/Notifier.h"
#include "platform/store/BurntIn.h"
#include "platform/store/Cel.h"
#include "platform/store/ChannelGroups.h"
#include "platform/store/Cue.h"
#include "platform/store/EditLabel.h"
#include "platform/store/EditModifications.h"
#include "platform/store/EditPtr.h"
#include "platform/store/Effects.h"
#include "platform/store/Levels.h"
#include "platform/store/Subtitles.h"
#include "platform/store/configb.h"

#include <memory>
#include <optional>
#include <vector>

namespace cutroom {
struct EditState; // everything that undo restores; copies share their cels
class EditFile;
struct EditAccess;
} // namespace cutroom

class CUTROOM_API Edit : public Notifier, public Kv::InternalRefCount {
public:
    // Holds the edit's lock.
    class CUTROOM_API Lock {
    public:
        explicit Lock(const Edit& edit);
        ~Lock();
        Lock(const Lock&) = delete;
        Lock& operator=(const Lock&) = delete;

    private:
        const Edit& edit_;
    };

    ~Edit() override;

    // --- identity and state --------------------------------------------------------------------
    const Cookie& getCookie() const noexcept;
    LightweightString<wchar_t> getName() const;
    void setName(const LightweightString<wchar_t>& name);
    eLogType getLogType() const;
    void setLogType(eLogType type);
    Kv::FrameRate getFrameRate() const;
    void setFrameRate(const Kv::FrameRate& rate);
    bool getDropFrame() const;
    void setDropFrame(bool on);
    // Length of one frame in seconds.
    double getCelResolution() const;
    // For callers that offer changes; the store itself refuses none.
    bool isReadOnly() const;
    void setReadOnly(bool on);
    bool isDirty() const;
    void setDirty();
    // Counts up with every change; lets a saver see whether it saved the latest.
    std::uint64_t changeCount() const noexcept;
    // No channel holds an event.
    bool isEmpty() const;
    // Seconds since 1970.
    std::uint32_t getCreationTime() const;
    std::uint32_t getModificationTime() const;
    // Stamps creator and creation time with the present.
    void setCreationDetails();
    // Source material: 0 none, otherwise a number that copies inherit.
    int get_original_material() const;
    void set_original_material(int value);
    // Makes this edit stand for itself: `isCopy` keeps the link to its material, `keepLabels` its
    // labels' origin; (false, false) makes it no source material.
    void make_original(bool isCopy, bool keepLabels);
    // Drops the configuration keys that begin with "CACHE_" (what is rendered of the edit).
    void clear_cache_flags();
    bool isImported() const;
    void setImported(bool on);
    // A log that has sound channels only and was recorded so.
    bool isAudioOnlyRecording() const;
    // This edit is the clipboard: the configuration key "CLIPBOARD" is set.
    bool isClipboard() const;

    // --- extents, in seconds -------------------------------------------------------------------
    // First start and last end over all channels that are not derived; 0 and 0 when empty.
    double getStartTime() const;
    double getEndTime() const;
    // The same over segments with material; when there is none, the start and end time.
    double getSignificantStartTime() const;
    double getSignificantEndTime() const;
    double getStartStripTime() const;
    // How the edit was last left: current time, in and out mark (kNoTime: unset), shown region.
    double getStoredCurrentTime() const;
    double getStoredMark(Kv::MarkTypes::MarkType type) const;
    std::optional<TimeRange> getStoredViewRegion() const;

    // --- channels, in the edit's channel order -------------------------------------------------
    int getNumChans(unsigned types = kChanAllTypes, unsigned subTypes = kSubAll) const;
    std::vector<IdStamp> getChans(unsigned types = kChanAllTypes,
                                  unsigned subTypes = kSubAll) const;
    // The empty id past the end; kChanEnd for an id the edit does not have.
    IdStamp getId(int index) const;
    int getIdx(const IdStamp& channel) const;
    bool isValidChan(const IdStamp& channel) const { return getIdx(channel) != kChanEnd; }
    // Index among the channels of its own type; kChanEnd when absent.
    int getIndexWithinType(const IdStamp& channel) const;
    // The first and the next channel of a type; the empty id at the end.
    IdStamp getFirstChan(unsigned types) const;
    IdStamp getNextChan(const IdStamp& after, unsigned types) const;
    // The channel that a strip cookie ('V' or 'S' of this edit, index + 1 within the type) names.
    IdStamp getChanForStrip(const Cookie& strip) const;
    EditChanType getChanType(const IdStamp& channel) const;
    EditChanSubType getChanSubtype(const IdStamp& channel) const;
    // Adds a channel at the end of its type, with a fresh id unless one is given. The empty id
    // when the edit has that channel, and for what is not one type and one sub-type.
    IdStamp addChan(EditChanType type, EditChanSubType subType = kSubNormal,
                    const IdStamp& id = {});
    // `notify` tells the removal. False when the edit has no such channel. The levels channel of an
    // audio channel goes with it, and its input of the mix.
    bool removeChan(const IdStamp& channel, bool notify);
    void removeChans(unsigned types, unsigned subTypes);
    // "V1", "A2" … by type and index, or the user's own name.
    LightweightString<wchar_t> getChanDisplayName(const IdStamp& channel) const;
    LightweightString<wchar_t> getChanUserName(const IdStamp& channel) const;
    void setChanUserName(const IdStamp& channel, const LightweightString<wchar_t>& name);
    // What came with the channel from another program: JSON object text, or empty.
    LightweightString<char> getChanMetadata(const IdStamp& channel) const;
    void setChanMetadata(const IdStamp& channel, const LightweightString<char>& json);
    // The channel's cut event list; null for an unknown channel. The pointer stays good while the
    // edit is open and has the channel.
    Kv::Ptr<Cel> get_edit_cel_p(const IdStamp& channel) const;
    Kv::Ptr<Cel> get_edit_cel_p(int index) const { return get_edit_cel_p(getId(index)); }
    // Gives the channel the contents of `cel` by sharing. False for an unknown channel.
    bool set_edit_cel_p(const IdStamp& channel, const Cel& cel);
    bool hasStereoscopicVideo() const;
    double getSyncError(const IdStamp& channel) const;
    void setSyncError(const IdStamp& channel, double seconds);
    // The levels channel bound to an audio channel; the empty id when it has none.
    IdStamp getLevelsChan(const IdStamp& audioChannel) const;
    IdStamp getAudioChanForLevels(const IdStamp& levelsChannel) const;
    IdStamp addLevelsChan(const IdStamp& audioChannel);
    LevelNodes getLevelNodes(const IdStamp& levelsChannel) const;
    // Nodes are put in order; two at one time or a gain that is negative or no number: refused.
    bool setLevelNodes(const IdStamp& levelsChannel, LevelNodes nodes);
    SubtitleFont getSubtitleFont(const IdStamp& channel) const;
    void setSubtitleFont(const IdStamp& channel, const SubtitleFont& font);

    // --- groups of channels --------------------------------------------------------------------
    void groupChannels(const std::vector<IdStamp>& channels, bool on);
    // Objects bound to an edit by class; the channel group list is the one there is. Opening one
    // that is not bound gives an empty list. To change groups, bind a changed copy.
    Kv::Ptr<ChannelGroupList> openObjectInternal() const;
    void bindObjectToEdit(const Kv::Ptr<ChannelGroupList>& groups);

    // --- cues ----------------------------------------------------------------------------------
    CueList getCues() const;
    // Replaces all, unless a time is none; copies get their own ids. `notify` tells it (kModCues).
    void setCues(const CueList& cues, bool notify = true);
    // Each gives false when there is nothing to change, the time is no time, or (adding) the edit
    // has a cue of that external id; `origin` names who changed it. Told at once unless a modifier
    // is open.
    bool addCue(const Cue& cue, const LightweightString<char>& origin = {});
    bool changeCue(const Cue& cue, const LightweightString<char>& origin = {}); // by external id
    bool removeCue(const IdStamp& extId, const LightweightString<char>& origin = {});
    // Cue events shown in the cut lists.
    void celCuesOn();
    void celCuesOff();
    bool getCelCuesOn() const;

    // --- labels --------------------------------------------------------------------------------
    // Not valid when there is none.
    EditLabel getLabel(eLabelType type, MediumRoll mediumRoll) const;
    EditLabel getVideoTimecodeLabel() const;
    std::vector<EditLabel> getLabels() const;
    // Replaces one of the same kind, medium and roll. Ignores one that is not valid or of no kind.
    void addLabel(const EditLabel& label);
    void remove_all_labels();
    void adjust_all_labels_by_time(double seconds);
    // Adds the labels that the configuration holds and the edit lacks.
    void rebuildCachedLabels();
    // Writes every label into the configuration, as "label.<type>.<medium>.<roll>".
    void write_labels_to_config();
    // The timecode at `seconds`, by the video timecode label, else counted from 0.
    LightweightString<char> getTimecode(double seconds) const;

    // --- configuration and metadata ------------------------------------------------------------
    // Use under `Edit::Lock`. `config()` for reading; changes go through `setConfig`.
    const configb& config() const;
    std::optional<LightweightString<char>> getConfig(const LightweightString<char>& key) const;
    bool setConfig(const LightweightString<char>& key, const LightweightString<char>& value);
    bool setConfig(const LightweightString<char>& key, double value);
    bool setConfig(const LightweightString<char>& key, int value);
    bool removeConfig(const LightweightString<char>& key);
    LightweightString<char> getVideoMetadata() const;
    void setVideoMetadata(const LightweightString<char>& json);
    LightweightString<char> getAudioMetadata() const;
    void setAudioMetadata(const LightweightString<char>& json);
    // What came with the edit from another program: JSON object text, or empty.
    LightweightString<char> getImportedMetadata() const;
    void setImportedMetadata(const LightweightString<char>& json);
    void setVideoReelId(const LightweightString<char>& reel);
    LightweightString<char> getVideoReelId() const;
    // Paths or addresses of the media, in order.
    LightweightVector<LightweightString<wchar_t>> getMediaLocations() const;
    void setMediaLocations(const LightweightVector<LightweightString<wchar_t>>& locations);
    LightweightString<char> findSequencePlaybackFormat() const;
    void setSequencePlaybackFormat(const LightweightString<char>& format);

    // --- effects, burnt-in timecode, mix -------------------------------------------------------
    // Adds or replaces by id, without one under a fresh one. Gives the id; empty for a bad offset.
    IdStamp setEffectGraph(EffectGraph graph);
    std::optional<EffectGraph> getEffectGraph(const IdStamp& id) const;
    std::vector<EffectGraph> getEffectGraphs() const;
    bool removeEffectGraph(const IdStamp& id);
    BITCEffect getBITC() const;
    void setBITC(const BITCEffect& effect);
    // The edit's mix; null when it has none. Changed through the mix writer.
    Kv::Ptr<Aud::SimpleMixState> getAudioMix() const;
    void setAudioMix(const Kv::Ptr<Aud::SimpleMixState>& mix);

    // --- telling -------------------------------------------------------------------------------
    // Records a change; with `notify` the union of all recorded changes is told at once (posted to
    // the user-interface thread), otherwise at the end of the outermost modifier.
    void addModification(EditModificationType kind, bool notify);
    void addModification(const EditModifications& changes, bool notify);

    // --- the store's own -----------------------------------------------------------------------
    // Checks everything that always holds; empty text when it does.
    std::string checkConsistency() const;
    // The contents as canonical text (no times, no history, no view state), for comparison.
    LightweightString<char> canonicalContents() const;

private:
    friend class EditManager;
    friend class EditModifier;
    friend class Cel;
    friend class cutroom::EditFile;
    friend struct cutroom::EditAccess;
    friend class Lock;

    explicit Edit(const Cookie& cookie);

    // One more modifier, or one less; the last one tells what was collected.
    void beginWriting();
    void endWriting();
    // Tells changes on the user-interface thread; no lock is held.
    void tell(const EditModifications& changes);
    template <class T> bool setConfigValue(const LightweightString<char>& key, const T& value);

    struct Impl;
    std::unique_ptr<Impl> impl_;
};
