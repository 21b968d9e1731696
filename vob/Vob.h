// `Vob`: one edit opened for viewing and editing. Holds the edit, the module through which it is
// viewed (current time, marks, channel selection), the selections made on it, the visible region,
// its status and roles, and the clients that show it. Every change is a `VobModification`, told to
// the clients in order of priority.
//
// Held through `Kv::Ptr<Vob>`, made and kept by the `VobManager`. State is changed on the
// user-interface thread only, and clients are told there only. From any other thread one may open
// and close batches, add modifications, ask for the exact current time, inform (which posts), and
// drop the last share (the Vob is then destroyed on the user-interface thread).
//
// A Vob is without edit when its edit could be neither opened nor made, and after the project has
// closed. It then accepts no time, mark or selection, tells no change of them, and its time is
// kNoTime.
//
// Two locks: the client lock (recursive) is held while the client list changes and while clients
// are told; the pending lock guards the pending record and the change description and is never held
// while telling. What a client throws is logged and does not silence the others.
#pragma once

#include "platform/base/Locks.h"
#include "platform/host/ConsoleFocus.h"
#include "platform/host/PlayServer.h"
#include "platform/messaging/Event.h"
#include "platform/messaging/Notifiable.h"
#include "platform/messaging/NotifyMsg.h"
#include "platform/store/Cue.h"
#include "platform/store/EditModifications.h"
#include "platform/store/EditModule.h"
#include "vob/EventInfo.h"
#include "vob/TrackSelections.h"
#include "vob/VobClient.h"
#include "vob/VobModification.h"
#include "vob/iStillsProvider.h"
#include "vob/notify/ValServer.h"

#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <vector>

class CelEventPair;

namespace cutroom {
class EditReader;
class EventSearch;
struct EventMemory;
class Telling;
class VobPlayable;
} // namespace cutroom

class CUTROOM_API Vob : public Notifiable,
                        public EventHandler,
                        public ConsoleEventHandler,
                        public virtual Kv::InternalRefCount,
                        public virtual iObject,
                        public virtual iVirtual {
public:
    // Bits of the status, and of the eligibility for them.
    enum eStatus : unsigned {
        kStatusSource = 1, // is the source machine
        kStatusRecord = 2, // is the record machine; required for editing
        kStatusPlay = 4,   // is the play machine
        kStatusAll = 7,
    };
    // Which time the monitor shows.
    enum eMonitorPoint : int { kMonitorCurrent = 0, kMonitorMarkIn = 1, kMonitorMarkOut = 2 };
    enum eTrimViewType : int { kTrimViewOff = 0, kTrimViewSplit = 1, kTrimViewFull = 2 };
    // Bits of the console tab stops: where stepping from event to event stops.
    enum eTabStop : unsigned {
        kStopCuts = 1,
        kStopMarks = 2,
        kStopCues = 4,
        kStopCurrent = 8,
        kStopTransitionMidPoints = 64,
        kStopSecondCues = 128,
        kStopDefault = 143,
    };
    // Bits of the time change flags.
    enum eTimeChange : unsigned {
        kTimePreviewing = 2,
        kTimeByPlayback = 4, // only while such a change is being told
        kTimeTransient = 16,
        kTimeBySynchroniser = 64,
        kTimeSuspendsSync = 128,
    };
    // Bits of `transferClients`.
    enum eTransfer : unsigned { kTransferModule = 4, kTransferKeepRoles = 8 };

    static constexpr unsigned kNotFound = 0xFFFFFFFF;

    class InformerProxy; // one kind of telling

    // View the edit of `module`, the edit of a cookie, or an edit; a new empty edit when there is
    // none. An empty group id takes a fresh one.
    explicit Vob(const EditModule& module, LightweightString<char> groupId = {});
    explicit Vob(const Cookie& edit, LightweightString<char> groupId = {});
    explicit Vob(const EditPtr& edit, LightweightString<char> groupId = {});
    // Views the same edit through a copy of `other`'s module, in a group of its own. `other` null:
    // a new empty edit.
    explicit Vob(const Vob* other);
    // The same, in the same group. No clients, roles, pending changes or previewing are copied.
    Vob(const Vob& other);
    Vob& operator=(const Vob&) = delete;
    // Clients that are still attached become unattached; nobody is told.
    ~Vob() override;

    // --- identity ------------------------------------------------------------------------------
    const LightweightString<char>& getGroupId() const noexcept { return groupId_; }
    void setGroupId(const LightweightString<char>& id) { groupId_ = id; }
    // The number by which older programs know the group; -1: none.
    int getLegacyGroupId() const noexcept { return legacyGroupId_; }
    void setGroupId(unsigned legacyId) { legacyGroupId_ = static_cast<int>(legacyId); }
    // A fresh id for a Vob or group.
    static LightweightString<char> makeUniqueID();

    // --- the edit ------------------------------------------------------------------------------
    // Views `edit` instead (a new empty one when null), with the time, marks and selection stored
    // in it, or with those of the present module when `keepModule`. Keeps the roles; tells 32.
    void setEdit(const EditPtr& edit, bool keepModule);
    EditPtr getEdit() const { return edit_; }
    const Cookie& getCookie() const noexcept { return cookie_; }
    bool hasEdit() const noexcept { return static_cast<bool>(edit_); }
    const EditModule& getEditModule() const noexcept { return module_; }
    // Takes over a module. Of a module on another edit only the time and the marks, put on all
    // channels. Brings the audio mix into line with the selection. With `notify` tells 20, or 22
    // when the time moved.
    void setEditModule(const EditModule& module, bool notify);
    // Takes time, marks, region, cue events and channel selection as the edit stores them.
    void setupFromEdit();
    // The cookie of what the master view shows: the first view edit, else the edit.
    Cookie getMasterViewCookie() const;
    // Edits shown in place of, or beside, the edit. Tells 128 when they change.
    const std::vector<EditPtr>& getViewEdits() const noexcept { return viewEdits_; }
    void setViewEdits(std::vector<EditPtr> edits);
    // Tells 256 when they change.
    using StillsProviders = std::vector<Kv::Ptr<iStillsProvider>>;
    const StillsProviders& getCustomStillsProviders() const noexcept { return stills_; }
    void setCustomStillsProviders(StillsProviders providers);
    // Tells 0x8000: the edit is about to change to another revision.
    void informImpendingRevision();
    // Without edit, marked read-only by the permissions, or read-only itself.
    bool isReadOnly() const;
    // The record status, an edit, and not read-only.
    bool isEditable() const;
    // The edit has such a channel; with `selectedOnly` a selected one, with `withMaterial` one that
    // holds events.
    bool hasChanOfType(EditChanType type, bool selectedOnly, bool withMaterial) const;

    // --- time, in seconds ----------------------------------------------------------------------
    // kNoTime without edit. The exact time may be asked for on any thread.
    double getCurrentTime(EditModule::eAccuracy accuracy = EditModule::kAccuracyExact) const;
    // Moves the time (not rounded) and tells 2. Ignored without edit, when `seconds` is not finite,
    // and while another call of it is running on this Vob.
    void setCurrentTime(double seconds);
    // The same, with the time change flags being `flags` meanwhile.
    void setCurrentTime(double seconds, unsigned flags);
    // The same without telling.
    void storeCurrentTime(double seconds);
    // Where previewing began, when that was to be remembered; else kNoTime.
    double getOriginalTime() const noexcept { return originalTime_; }
    void setPreviewing(bool on, bool rememberTime);
    bool isPreviewing() const noexcept { return (getTimeChangeFlags() & kTimePreviewing) != 0; }
    // The mark that the monitor point names, when it is set; else the current time.
    double getMonitorTime() const;
    eMonitorPoint getMonitorPoint() const noexcept { return monitorPoint_; }
    void setMonitorPoint(eMonitorPoint point) noexcept { monitorPoint_ = point; }
    unsigned getTimeChangeFlags() const noexcept {
        return timeChangeFlags_.load(std::memory_order_relaxed);
    }
    void setTimeChangeFlags(unsigned flags) noexcept {
        timeChangeFlags_.store(flags, std::memory_order_relaxed);
    }
    void setTransientTimeChange(bool on) noexcept;

    // --- from event to event -------------------------------------------------------------------
    // The nearest event later, or earlier, than `seconds` (by more than the tolerance of times):
    // the cuts of the selected channels and, by the console tab stops, the marks of all channels,
    // the visible cues and the ends of their ranges (at least a frame away), the middles of
    // transitions, and the current time if `includeCurrent`. With unjoined cuts, unless
    // `ignoreUnjoined`, cuts count only from the unjoined cut nearest to `seconds` on, and marks at
    // their nearest frame. Without event, and without edit, the time is `seconds`.
    // O(log n) a channel; allocates nothing unless cuts are unjoined or the edit has changed.
    EventInfo getNextEvent(double seconds, bool ignoreUnjoined, bool includeCurrent);
    EventInfo getPrevEvent(double seconds, bool ignoreUnjoined, bool includeCurrent);
    // Move the current time to an event, of the whole edit for the first and the last one; tell
    // whether it moved.
    bool setTimeToNextEvent();
    bool setTimeToPrevEvent();
    bool setTimeToFirstEvent();
    bool setTimeToLastEvent();
    // The preference "Transitions stops": each search puts kStopTransitionMidPoints among the tab
    // stops, or takes it from them, accordingly.
    static bool getStopAtTransitionMidPoints();
    static void setStopAtTransitionMidPoints(bool on);

    // --- playing -------------------------------------------------------------------------------
    bool isPlaying() const noexcept { return playing_.load(std::memory_order_relaxed); }
    void setPlaying(bool on) noexcept { playing_.store(on, std::memory_order_relaxed); }
    // The machine that plays this Vob; not owned.
    AVMachine* getDevice() const noexcept { return device_; }
    void setDevice(AVMachine* device) noexcept { device_ = device; }
    // Joins or leaves what the transport moves.
    void registerWithPlayServer(bool on);
    IdStamp getPreviewTrackID() const noexcept { return previewTrack_; }
    void setPreviewTrackID(const IdStamp& track) noexcept { previewTrack_ = track; }
    unsigned char getNumVideoPreviews() const noexcept { return videoPreviews_; }
    void setNumVideoPreviews(unsigned char count) noexcept { videoPreviews_ = count; }

    // --- marks, in seconds; kNoTime: unset -----------------------------------------------------
    // Channel numbers index the edit's channel order; kChanAllSelected means all selected channels;
    // numbers of no channel change nothing. Each tells 4, also when nothing differs.
    void setMarkTime(int chan, double seconds, Kv::MarkTypes::MarkType type);
    // The empty id means all channels; a channel that the edit lacks changes nothing.
    void setMarkTime(const IdStamp& channel, double seconds, Kv::MarkTypes::MarkType type);
    void setMarkTime(const IdStamp& channel, const TimeRange& range);
    // The same without telling.
    void storeMarkTime(int chan, double seconds, Kv::MarkTypes::MarkType type);
    void storeMarkTime(const IdStamp& channel, double seconds, Kv::MarkTypes::MarkType type);
    void storeMarkTime(const IdStamp& channel, const TimeRange& range);
    // Puts the in mark at the current time.
    void setMarkToCurrent(int chan);
    // The in mark of the channel, when it is marked. For kChanAllSelected the first selected
    // channel that is marked, else channel 0.
    double getMarkTime(int chan) const;
    bool isMarkValid() const;
    bool isMarkValid(int chan) const;
    bool isMarkValid(const IdStamp& channel) const;
    // Clears both marks of the channel when it is selected, or of all selected channels.
    void invalidateMark(int chan);
    // Moves the time to a mark and leaves an in mark where the time was; with both marks set it
    // moves between them. `chan` is named as the modified track.
    void exchangeCurrentAndMark(int chan);
    // Trims the first channel that is popped at the kept mark (of type `type`) so that both marks
    // fall together, when some but not all selected channels are popped there.
    void alignMarks(Kv::MarkTypes::MarkType type);
    // Tells whether every marked channel (of the selected ones, with `selectedOnly`) has the same
    // marks.
    bool marksAligned(bool selectedOnly) const;
    // The preference "Behaviour : Advanced marks", read once per process.
    static bool allowAdvancedMarks();

    // --- cues ----------------------------------------------------------------------------------
    // Adds a cue to the edit and tells 4; false when the edit refuses it.
    bool addCue(const Cue& cue, const LightweightString<char>& origin = {});
    bool get_cel_cues_loaded() const noexcept { return celCuesLoaded_; }
    // Shows and hides cue events in the cut lists; remembered in the edit.
    void cel_cues_on();
    void cel_cues_off();
    const CueFilter& getVisibleCuesFilter() const noexcept { return cueFilter_; }
    // Tells 0x200000 when it changes.
    void setVisibleCuesFilter(const CueFilter& filter);

    // --- extents and region, in seconds --------------------------------------------------------
    // From the significant start to the significant end, of the edit or of the selected channels
    // (VobManager::getTotalDurationBySelection). 0 without edit and without selected channel.
    double getTotalDuration() const;
    const TimeRange& getEditExtents() const noexcept { return extents_; }
    // Takes the extents from the edit; a region that covered the old ones covers the new ones.
    void resetEditExtents();
    const TimeRange& getViewRegion() const noexcept { return viewRegion_; }
    // Shows `region`, moved and cut to the edit; what is narrower than a frame becomes two wide.
    // Remembered in the edit when it may be written. With `notify` tells 0x10000 when it changed.
    void setViewRegion(const TimeRange& region, bool notify);

    // --- channel selection; tells 16 when it changes -------------------------------------------
    // kChanAllSelected: all channels; kChanEnd: nothing.
    void setSelected(int chan, bool on);
    void setSelected(const IdStamp& channel, bool on); // the empty id: all channels
    void setSelected(EditChanType type, EditChanSubType subType, bool on);
    // Without telling, without constraint.
    void setSelectedRaw(const IdStamp& channel, bool on);
    // Selects channel `chan` and all after it, and no other.
    void setSelectedFrom(int chan);
    // Selects this channel and no other of its type; again: all of its type.
    void soloSelect(const IdStamp& channel);
    bool getSelected(int chan) const;
    bool getSelected(const IdStamp& channel) const;
    std::vector<IdStamp> getSelectedChans(unsigned types = kChanAllTypes,
                                          unsigned subTypes = kSubAll) const;
    IdStamp firstSelectedChannel(unsigned types = kChanAllTypes) const;
    // In logs with two or more channels, one without material of its own cannot be selected: gives
    // false for such a request, else `on`.
    bool constrainTrackSelection(const IdStamp& channel, bool on) const;
    // The edit has the channel, and toggling it would stand.
    bool canAlterTrackSelection(const IdStamp& channel) const;
    bool areLevelsBoundToAudio() const noexcept { return levelsBound_; }
    void setLevelsBoundToAudio(bool on) noexcept { levelsBound_ = on; }

    // --- selections on channels ----------------------------------------------------------------
    // Made on first request; null for a channel that the edit does not have. The pointer stays good
    // until another edit is viewed or the channel leaves it.
    TrackSelections* getTrackSelections(const IdStamp& channel);
    // Null also when nothing was ever selected on the channel.
    const TrackSelections* findTrackSelections(const IdStamp& channel) const;
    // Segments are named by their two points. Each tells 0x40000 once when something changed.
    void selectSegment(const CelEventPair& segment, bool on = true);
    void selectSegments(const LightweightVector<CelEventPair>& segments, bool on = true);
    void toggleSegmentSelection(const CelEventPair& segment);
    void clearSelectedSegments();
    bool isSegmentSelected(const CelEventPair& segment) const;
    bool anySelectedSegments() const;
    // Unjoined cuts. Each tells 8 when something changed.
    void unjoinCut(const IdStamp& channel, const ce_handle& point, unsigned flags = 0);
    void toggleCut(const IdStamp& channel, const ce_handle& point, unsigned flags = 0);
    void rejoinCuts();
    unsigned getNumUnjoinedCuts() const;
    // Tells 8 for a selection of cuts made on the track selections of `channel`.
    void informCutSelected(const IdStamp& channel = {});
    // Audio level nodes, by levels channel and time. Tells 0x20000 when something changed.
    void selectLevelNode(const IdStamp& levelsChannel, double seconds, bool on);
    bool isLevelNodeSelected(const IdStamp& levelsChannel, double seconds) const;
    bool anySelectedLevelNodes() const noexcept { return !levelNodes_.empty(); }
    void clearSelectedLevelNodes();

    // --- trimming ------------------------------------------------------------------------------
    bool isTrimming() const noexcept { return trimming_; }
    void setTrimming(bool on) noexcept { trimming_ = on; }
    eTrimViewType getTrimViewType() const noexcept { return trimViewType_; }
    void setTrimViewType(eTrimViewType type) noexcept { trimViewType_ = type; }
    // Stores the preference "Trimview enabled".
    static void setDefaultTrimViewType(eTrimViewType type);
    bool isTrimViewPossible() const;

    // --- status --------------------------------------------------------------------------------
    bool hasStatus(eStatus status) const noexcept { return (status_ & status) != 0; }
    bool canAcceptStatus(eStatus status) const noexcept { return (eligibility_ & status) != 0; }
    unsigned getStatus() const noexcept { return status_; }
    void setStatus(unsigned statuses) noexcept { status_ = statuses; }
    void setStatusEligibility(unsigned statuses) noexcept { eligibility_ = statuses; }
    unsigned getConsoleTabStops() const noexcept { return tabStops_.getValue(); }
    void setConsoleTabStops(unsigned stops);
    ValServer<unsigned>& getConsoleTabStopsServer() noexcept { return tabStops_; }

    // --- edit operations -----------------------------------------------------------------------
    // What changes an edit opened for writing; on failure it leaves it as it was.
    using EditOperation = std::function<cutroom::Status(const EditModifier&)>;
    // Has `operation` change the edit, then runs the subframe check; what both changed is told
    // together. Fails, doing nothing, unless the Vob is editable. Makes no step of the history.
    cutroom::Status performEdit(const EditOperation& operation,
                                const LightweightString<char>& description = {});
    // Finds video and audio channels with a cut off the frame boundaries of the edit (one at the
    // first or last event does not count), moves their cuts to frames, and reports them to the
    // user; what was repaired stands in the log. Configuration: "check_quantise" (1) switches the
    // check, "auto_fix_subframe_errors" (1) the repair, "disable_subframe_warnings" (0) the message
    // off. Derived channels are reported only.
    void checkQuantisation();

    // --- batches and telling (any thread) ------------------------------------------------------
    // Batches nest. See `VobModificationBatch`. An end without a beginning holds every later change
    // back until it is made up for.
    void beginModifications() noexcept;
    void endModifications();
    // Records a change; outside a batch it is told: at once on the user-interface thread, posted
    // from any other. A type of 0 tells what is pending.
    void addModification(const VobModification& change);
    // Forgets what is pending.
    void clearModifications();
    // Tell the clients, without regard to batches. From another thread they post; the two-argument
    // form then posts the edit's changes only.
    void informClients(const VobModification& change);
    void informClients(const EditModifications& editChanges, const VobModification& change);
    // Always post. Of several tracks only the first travels; the time is that of the arrival.
    void informClientsAsync(const VobModification& change);
    void informClientsAsync(const EditModifications& editChanges);
    void informFocusChanged(bool hasFocus);
    void informPlayStateChange(PlayStateNotifyType change);
    void informOtherEditAltered(const Cookie& edit, const EditModifications& changes);

    // User-interface thread from here on.
    // Brings regions and selections into line with a change of the edit, before clients hear of it.
    void preNotifyClients(const EditModifications& editChanges, const VobModification& change);
    // Says what the Vob is to report when the edit's own change arrives; adds `editChanges` to the
    // edit. Without edit changes the manager tells everybody at once.
    void setChangeDescription(const EditModifications& editChanges, VobModification change);
    EventHandler::eResult handleEvent(const Event& event) override;
    void handleConsoleFocus() override;

    // --- backup --------------------------------------------------------------------------------
    // A step of the edit's history; going back and forth. The last two always give true.
    void makeBackup();
    bool undoRequest();
    bool redoRequest();
    // How the edit is viewed, into its configuration and back, if it was stored. Only the Vob with
    // the role for that kind (or one on the clipboard) stores. Malformed values count as none.
    void storeBackupDetails();
    void restoreBackupDetails();

    // --- clients -------------------------------------------------------------------------------
    std::size_t getNumClients() const;
    std::size_t getNumClients(eClientManagementDetails details) const;
    // Null past the end.
    VobClient* getClientPtr(std::size_t index) const;
    bool isClient(const VobClient* client) const;
    // Index of a client; kNotFound when absent.
    unsigned findClient(const VobClient* client) const;
    // The first client whose `idstring` is `name`; null when there is none.
    VobClient* findClient(const LightweightString<char>& name) const;
    // The first client that is an `iImageViewClient` and the master; null when there is none.
    VobClient* findMasterClient() const;
    // By priority, higher first; equal ones keep their order.
    void sortClients();
    // Nothing when there is no such client.
    void sendMessageToClient(const LightweightString<char>& name,
                             const LightweightString<char>& message);
    // Moves every client of `from` to `to`. `flags`: eTransfer bits. Both are kept alive by the
    // caller.
    static void transferClients(Vob* from, Vob* to, unsigned flags);
    // A client is being added to some Vob at this moment.
    static bool isAddingClient() noexcept;
    // Writes the Vob and its clients to the log.
    void debug(const char* label);

protected:
    void onLastRelease() const noexcept override;

private:
    friend class VobManager;

    // Used by the manager. A null client only sorts; one that is not there is ignored.
    void addClient(VobClient* client);
    void removeClient(VobClient* client);
    // Tells every client but `subject` about it; the list may change meanwhile.
    void walkClients(VobClient* subject, void (VobClient::*notify)(VobClient*))
        CUTROOM_REQUIRES(clientLock_);
    static void transferRoles(Vob& from, Vob& to);
    // The one place where clients are told. Templates over the proxies, so that the calls within
    // are direct; used in one source file.
    template <class Proxy> void informClientsSafe(Proxy& proxy);
    template <class Proxy>
    void tellAll(Proxy& proxy, cutroom::Telling& telling) CUTROOM_REQUIRES(clientLock_);
    template <class Proxy>
    void tellChangedList(Proxy& proxy, cutroom::Telling& telling, std::size_t next)
        CUTROOM_REQUIRES(clientLock_);
    template <class Proxy> static void tellOne(Proxy& proxy, VobClient& client);
    void listWillChange() CUTROOM_REQUIRES(clientLock_);

    // A share for as long as clients, who may close the Vob, are told; empty while it is being
    // made.
    Kv::Ptr<Vob> keepAlive() noexcept { return refCount() > 0 ? this : nullptr; }
    void init();
    void destroyWhenTold() const noexcept;
    void takeEdit(const EditPtr& edit);
    void registerWithEdit();
    void releaseEdit();
    void handleProjectExit(const NotifyMsg& message);
    bool canMoveTo(double seconds) const noexcept;
    void moveTime(double seconds);
    void storeTime(double seconds);
    EventInfo findEvent(bool forward, double from, bool ignoreUnjoined, bool includeCurrent);
    void offerChannels(cutroom::EventSearch& search, const cutroom::EditReader& edit,
                       unsigned stops, bool marksToFrames, IdStamp& firstSelected);
    void offerCues(cutroom::EventSearch& search, const cutroom::EditReader& edit, unsigned stops);
    bool moveTimeTo(const EventInfo& event);
    bool setSelectedInternal(const IdStamp& channel, bool on);
    bool selectWithLevels(const IdStamp& channel, bool on);
    void tellSelection(bool changed, const IdStamp& channel = {});
    bool selectSegmentSilently(const CelEventPair& segment, bool on);
    void changeCut(const IdStamp& channel, bool changed);
    void updateAudioMix();
    void markAllAt(double seconds, Kv::MarkTypes::MarkType type);
    bool deselectAllLevelNodes();
    bool dropSelectedSegments();
    bool verifyUnjoinedCuts();
    bool clearUnjoinedCuts();
    void describe(const VobModification& change);
    void verifyTrackSelections();
    TimeRange editRange() const;
    TimeRange fitRegion(const TimeRange& region) const;
    bool validateViewRegion(const EditModifications& editChanges);
    void restoreViewRegion();
    void resynchroniseWithEdit();
    void followStructure(const EditModifications& editChanges);
    void followExtents();
    void followPoints();
    void followClipboard();
    // No batch is open and nothing waits to be told with the next change.
    bool isNothingPending() const noexcept {
        return batchDepth_.load() == 0 && pendingKinds_.load() == 0 && !anyPending_.load();
    }
    // Gives everything that is pending, and forgets it.
    VobModification takePending() CUTROOM_REQUIRES(pendingLock_);
    void tellPending();
    void tellReady(VobModification change);
    // The same on the user-interface thread, by a caller that keeps the Vob alive.
    void tellNow(const VobModification& change);
    void report(const EditModifications& editChanges, const VobModification& change);
    void handlePostedChange(const Event& event);
    VobModification takeDescription(const EditModifications& editChanges,
                                    const VobModification& change);
    bool holdsBackupRole() const;
    // Whatever the role; not without edit.
    void storeViewState();
    void storeChannelBackup(const IdStamp& channel);
    void restoreChannelBackup(const IdStamp& channel);

    // The members that every move reads lie together, since many Vobs may be moved at once.
    mutable CriticalSection clientLock_{LockRank::vobClients};
    std::vector<VobClient*> clients_ CUTROOM_GUARDED_BY(clientLock_);
    cutroom::Telling* tellings_ CUTROOM_GUARDED_BY(clientLock_) = nullptr; // innermost first
    EditPtr edit_;
    std::atomic<double> timeMirror_{kNoTime}; // the exact current time, for other threads
    std::atomic<int> batchDepth_{0};
    // Kinds added within a batch that came without track and mark time: most do, and need no lock.
    std::atomic<unsigned> pendingKinds_{0};
    std::atomic<unsigned> timeChangeFlags_{0};
    std::atomic<bool> anyPending_{false}; // pending_ says something
    std::atomic<bool> described_{false};  // description_ says something
    std::atomic<bool> playing_{false};
    bool settingTime_ = false;
    mutable bool diesAfterTelling_ = false; // user-interface thread

    bool celCuesLoaded_ = false;
    EditModule module_;
    std::map<IdStamp, TrackSelections> selections_;
    mutable CriticalSection pendingLock_{LockRank::vobPending};
    Cookie cookie_;
    LightweightString<char> groupId_;
    int legacyGroupId_ = -1;
    unsigned status_ = 0;
    unsigned eligibility_ = kStatusAll;
    bool trimming_ = false;
    unsigned char videoPreviews_ = 1;
    bool levelsBound_ = true;
    std::vector<EditPtr> viewEdits_;
    StillsProviders stills_;
    double originalTime_ = kNoTime;
    std::map<IdStamp, std::vector<cutroom::Flicks>> levelNodes_; // selected; no empty lists
    TimeRange extents_;
    TimeRange viewRegion_;
    eMonitorPoint monitorPoint_ = kMonitorCurrent;
    eTrimViewType trimViewType_ = kTrimViewSplit;
    IdStamp previewTrack_;
    VobModification pending_ CUTROOM_GUARDED_BY(pendingLock_){0};
    AVMachine* device_ = nullptr;
    ValServer<unsigned> tabStops_{kStopDefault};
    VobModification description_ CUTROOM_GUARDED_BY(pendingLock_){0};
    unsigned carried_ = 0; // changes that go with the next telling of the edit's own
    CueFilter cueFilter_{4, 0};

    std::unique_ptr<cutroom::VobPlayable> playable_;
    std::unique_ptr<cutroom::EventMemory> eventMemory_; // of edit_; never null
    Kv::Ptr<Guard> editRegistration_;
    mutable std::atomic<bool> dying_{false};
};
