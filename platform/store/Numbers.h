// The table of every number by which the edit store is known: channel types and sub-types, mark
// types, notices, kinds of change, flag bits. All are persisted or told to clients; none may
// change.
#pragma once

#include <cstdint>

// Types of channel (bits, so that masks of types can be asked for).
enum EditChanType : unsigned {
    kChanVideo = 1,
    kChanAudio = 2,
    kChanLevels = 4,   // level nodes of one audio channel
    kChanSubtitle = 8, // texts with times and one font
    kChanOther = 16,
    kChanAllTypes = 0xFFFF,
};

// Sub-types of channel (bits).
enum EditChanSubType : unsigned {
    kSubNormal = 1,
    kSubStereoRight = 2, // the right-eye picture of a stereoscopic pair
    kSubMatte = 4,
    kSubDerived = 8, // made for the editor's own use (levels, rendered results); never shown
    kSubAll = 0xFFFF,
};

// Channel numbers with a meaning of their own; all others index the edit's channel order over all
// types, from 0.
inline constexpr int kChanEnd = 32768;         // the end of the channel list
inline constexpr int kChanAllSelected = 65535; // all selected channels

namespace Kv::MarkTypes {
enum MarkType { In = 1, Out = 2 };
}

// Bits of a cel's flag word.
enum CelFlag : unsigned {
    kCelHasMaterial = 1, // the channel was recorded or cut into; channels of logs without it cannot
                         // be selected
    kCelLocked = 2,
};

// Bits of `ChannelEvent::flags`.
enum ChannelEventFlag : std::uint8_t {
    kEventOut = 1, // the out point of a segment; otherwise its in point
    kEventDisabled = 2,
    kEventFreeze = 4,
    kEventPad = 8, // black beneath a transition at the end of a channel; no gap of its own
};

// Bits of a cue's flag word.
enum CueFlag : unsigned {
    kCueSecondKind = 1, // navigation stops at these under tab-stop bit 128, at all others under 4
    kCueVisible = 2,
    kCueUser = 4, // placed by a person; with kCueVisible it travels into copies
    kCueSubtitle = 8,
    kCueReview = 16,
    kCueTransient = 32, // never travels
};

// Kinds of label.
enum eLabelType : int {
    kLabelNone = 0,
    kLabelFrames = 1,
    kLabelFeet = 2,
    kLabelVideoTimecode = 3, // the timecode of the edit or its picture
    kLabelAudioTimecode = 4,
    kLabelKeycode = 5,
    kLabelTimecode24 = 6,
    kLabelTimecode25 = 7,
    kLabelTimecode30 = 8,
    kLabelInk = 9,
};

// Notices of the edit manager (`EditManager::registerNotification`).
enum eEditManagerNotice : int {
    kNoticeProjectExit = 16,
    kNoticePrepareForDeletion = 20, // text: the cookies, joined by blanks
    kNoticeDeletion = 21,           // the same
    kNoticeModifications = 22,      // object: an `EditModificationNotice`
};

// Kinds of change to an edit. Bits 0 to 63 of `EditModifications::kinds`.
enum EditModificationType : int {
    kModNone = 0,
    kModEventsAdded = 1,   // cuts laid
    kModEventsRemoved = 2, // cuts lifted
    kModName = 3,
    kModCues = 4,   // detail: see eCueChange
    kModGroups = 5, // channel groups
    kModLevelNodes = 6,
    kModEventsTrimmed = 7, // points moved
    kModChannelsAdded = 8,
    kModChannelsRemoved = 9,
    kModDeleted = 10,   // the edit goes
    kModRestored = 11,  // undo, redo: contents replaced as a whole
    kModFlattened = 12, // contents replaced by an operation
    kModTrimFinished = 13,
    kModGeneral = 14,
    kModConfiguration = 15,
    kModLogType = 16,
    kModOriginalMaterial = 17,
    kModLabels = 18,
    kModBurntIn = 19, // burnt-in timecode
    kModReadOnly = 20,
    kModStartTime = 21, // the edit begins elsewhere
    kModLength = 22,    // the edit ends elsewhere
    kModMedia = 23,     // where the media lies, or whether it is there
    kModSubtitles = 24,
    kModChannelNames = 25,
    kModMetadata = 26, // what a log or bin shows of the edit; recorded once on every new copy
    kModAudioMix = 27, // detail: the code of what changed
    kModEffects = 28,
    kModImported = 29,
    kModSyncErrors = 30,
    kModStripInfo = 31,
};

// Detail of kModCues.
enum eCueChange : unsigned { kCueAdded = 1, kCueChanged = 2, kCueRemoved = 3 };
