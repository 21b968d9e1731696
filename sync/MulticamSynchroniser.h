// `MulticamSynchroniser`: the clips of a sync group, viewed together, and the sequence that cuts
// between them.
//
// The linked Vobs are the clips. Where they are viewed is kept in the sync group; markers set on
// one can be repeated on the others; how many are played at once is bounded. The synchroniser is a
// client too: it attaches itself to whichever Vob is the record machine, and with edit following on
// that Vob, which shows the sequence, stands where the sequence shows what the clips stand at:
//
//   camera 1   0 |-----------------------| 30        linked: camera 2 stands 5 later
//   camera 2     5 |---------------------| 35
//   sequence   0 |-- camera 1 from 10 --|4-- camera 2 from 19 --| 8
//
//   camera 1 moves to 15: camera 2 at 20, sequence at 5      sequence moves to 2: cameras at 12, 17
//
// A position on the sequence is looked for through every clip, since another clip than the one that
// was moved may be seen there. Of several, the one nearest to the sequence's time is taken.
//
// Owned by its maker, never counted; it is destroyed before the project closes. User-interface
// thread only.
#pragma once

#include "platform/store/Cue.h"
#include "sync/ClipMap.h"
#include "sync/SyncGroupData.h"
#include "sync/VobSynchroniser.h"

#include <cstdint>
#include <map>
#include <vector>

class CUTROOM_API MulticamSynchroniser final : public VobSynchroniser, public VobClient {
public:
    // The origin of the cue changes that it makes itself, and its name as a client.
    static constexpr char kName[] = "MulticamSynchroniser";

    // Links nothing yet; synchronisation is on. `followEdit`: with edit following. An empty `group`
    // is allowed, and then nothing is kept.
    MulticamSynchroniser(Kv::Ptr<SyncGroupData> group, bool followEdit);
    ~MulticamSynchroniser() override;

    const Kv::Ptr<SyncGroupData>& group() const noexcept { return group_; }
    // Whether the record viewer and the clips follow each other.
    void setEditFollowing(bool on) noexcept { editFollowing_ = on; }
    bool getEditFollowing() const noexcept { return editFollowing_; }

    // --- as a synchroniser ---------------------------------------------------------------------
    // The Vobs to play: with synchronisation off the linked Vob that is the source machine, if
    // any. With it on the first linked ones up to the limit; where the sequence is played along
    // (see `isSequencePlayed`) up to one less, and the record machine behind them. "One less" is
    // counted in 16 bits and 0 is no limit, so that a limit of 1 plays all clips then.
    LightweightVector<Kv::Ptr<Vob>> getSynchronisedVobs(unsigned which) override;
    // Switching on brings the clips into line and stores how they lie to each other. Then tells the
    // clients of every linked Vob 0x100000 (on) or 0x80000 (off). All this happens even when the
    // setting stays the same, except for a client that sets it again while it is being told.
    void setSyncEnabled(bool on) override;
    unsigned getCaps() const override { return kCapsMulticam; }
    // Hands a change of time on as the base does. Then, unless a synchroniser made it: keeps the
    // places of the clips in the group, has the record viewer follow, repeats markers; of a Vob
    // that plays too fast only the last.
    void handleModifications(iVobListener* listener, const EditModifications& editChanges,
                             const VobModification& change) override;

    // --- clips to each other -------------------------------------------------------------------
    // Brings the clips into line and stores how they lie to each other.
    void resync();
    // Moves every other clip to where it belongs while the current clip stands where it does. The
    // current clip: the source machine if it is linked, else the one moved last, else the first.
    void synchroniseSourceClips();
    // Stores, in the group, how much later than the first clip each one belongs.
    void persistClipSyncRelationships();
    // Takes the offsets of the linked clips from what the group has stored. Gives the number of
    // clips taken, the reference not counted; 0 when nothing is known of the reference.
    unsigned restoreClipSyncRelationships();

    // --- clips and the sequence ----------------------------------------------------------------
    // The stretch of the record viewer's edit that shows the moment at which the current clip
    // stands; when none does, the one nearest to where that viewer stands. Invalid when the edit
    // refers to no clip, and without edit.
    cutroom::ClipReference findClipReference();
    // Where the record viewer's edit shows that moment, in seconds; kNoTime when it does not.
    double findSyncPosForEdit();
    // Edit following is on, and the record viewer's edit refers to a clip.
    bool canSyncWithEdit();
    // Moves the record viewer to `findSyncPosForEdit`, when there is one and it stands elsewhere.
    void syncEditToClips();
    // Moves the clip that the record viewer's edit shows where it stands to that picture, and with
    // it, when synchronisation is on, the others. Nothing where no clip is shown.
    void syncClipsToEdit();
    // Moves a Vob without edit following. Nothing for null and when it stands there.
    void setCurrentTimeUnsynced(const Kv::Ptr<Vob>& vob, double seconds);

    // --- preferences, read and written at every call -------------------------------------------
    // The most clips to play at once; 0: no limit.
    static std::uint16_t getMaxConcurrentPlayers();
    static void setMaxConcurrentPlayers(std::uint16_t count);
    // For operations that cut between clips; not consulted here.
    static bool getPreserveSequenceAudio();
    static void setPreserveSequenceAudio(bool on);
    // Repeats changes of markers from clip to clip, those by undo and redo too.
    static bool getSharedMarkers();
    static void setSharedMarkers(bool on);

    // --- as a client of the record viewer ------------------------------------------------------
    // The clips follow a change of its time that no synchroniser made, as far as it may be handed
    // on, unless both are playing: then the transport moves each.
    void handleModifications(const EditModifications& editChanges,
                             const VobModification& change) override;
    const char* idstring() const override { return kName; }

protected:
    std::uint16_t getConcurrentPlaybackLimit() const override;
    iVobListener* makeListener(const Kv::Ptr<Vob>& vob) override;

private:
    class Switching;
    class FollowingOff;
    struct EditPosition;

    // The record machine, unless it is one of the clips; null when there is none.
    Kv::Ptr<Vob> recordViewer() const;
    // The configuration "multicam_sequence_playback_sync", edit following, and a record viewer.
    bool isSequencePlayed() const;
    const Client* currentClip() const;
    void keepPlaces(const Vob& told, const VobModification& change);
    void handleMarkerModifications(const Vob& told, const EditModifications& editChanges);
    // The changes that others made to the markers of a clip since it was last asked.
    std::vector<EditModification> takeCueChanges(const EditPtr& clip,
                                                 const EditModifications& editChanges);
    // The references of the edit that the synchroniser's own Vob shows.
    const std::vector<cutroom::ClipReference>& references();
    const Client* clientOfClip(const Cookie& clip) const;
    bool isFirstOnItsClip(const Vob& vob) const;
    EditPosition findPosition();

    Kv::Ptr<SyncGroupData> group_;
    bool editFollowing_;
    Vob* lastMoved_ = nullptr;            // compared with linked Vobs only
    int switchings_ = 0;                  // that are being carried out
    std::map<Cookie, CueList> knownCues_; // of each clip, as they were told of last
    cutroom::ClipMap map_;
};
