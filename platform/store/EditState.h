// `EditState`: everything about an edit that undo restores and a file holds. Internal to the store.
#pragma once

#include "platform/aud/SimpleMixState.h"
#include "platform/base/FrameRate.h"
#include "platform/base/LogType.h"
#include "platform/store/BurntIn.h"
#include "platform/store/Cel.h"
#include "platform/store/ChannelGroups.h"
#include "platform/store/Cue.h"
#include "platform/store/EditLabel.h"
#include "platform/store/Effects.h"
#include "platform/store/Levels.h"
#include "platform/store/Shared.h"
#include "platform/store/Subtitles.h"
#include "platform/store/configb.h"

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace cutroom {

// Sections of a file that a later version wrote: tag and bytes, kept and written again.
using UnknownSections = std::vector<std::pair<std::string, std::string>>;

struct EditChannel {
    IdStamp id;
    EditChanType type = kChanVideo;
    EditChanSubType subType = kSubNormal;
    LightweightString<wchar_t> userName;
    LightweightString<char> metadata;
    Kv::Ptr<Cel> cel; // never null
    double syncError = 0;
    IdStamp levelsOf; // the audio channel of a levels channel
    Shared<LevelNodes> nodes;
    SubtitleFont font;
    UnknownSections unknown;
};

// Long texts that seldom change.
struct EditTexts {
    LightweightString<char> video;
    LightweightString<char> audio;
    LightweightString<char> imported;
    LightweightString<char> playbackFormat;
    LightweightVector<LightweightString<wchar_t>> mediaLocations;

    friend bool operator==(const EditTexts&, const EditTexts&) = default;
};

// Moved, never copied; `snapshot` makes a second one that shares what is large, in O(channels).
struct EditState {
    LightweightString<wchar_t> name;
    eLogType logType = kLogTypeEdit;
    Kv::FrameRate rate{25, 1};
    bool dropFrame = false;
    bool readOnly = false;
    bool imported = false;
    bool celCues = false;
    bool labelsFromMaterial = false;
    std::int32_t originalMaterial = 0;
    std::uint32_t created = 0;
    std::uint32_t modified = 0;
    std::vector<EditChannel> channels; // by type, within a type in the order added
    CueList cues;
    Shared<std::vector<EditLabel>> labels;
    Shared<configb> config;
    Shared<EditTexts> texts;
    Shared<std::map<IdStamp, EffectGraph>> graphs;
    BITCEffect burntIn;
    Kv::Ptr<ChannelGroupList> groups; // may be null
    Kv::Ptr<Aud::SimpleMixState> mix; // may be null
    UnknownSections unknown;

    EditState() = default;
    EditState(EditState&&) noexcept = default;
    EditState& operator=(EditState&&) noexcept = default;

    // A copy with lists, groups and mix of its own that share their contents.
    EditState snapshot() const;
    EditChannel* find(const IdStamp& channel) noexcept;
    const EditChannel* find(const IdStamp& channel) const noexcept;
    // First start and last end over the channels that are not derived; false when all are empty.
    bool extents(double& start, double& end) const;

private:
    EditState(const EditState&) = default; // shares its lists, see snapshot
};

// The state as canonical text: equal for equal contents, whatever is shared.
std::string canonicalText(const EditState& state);
// Everything that always holds of a state; empty text when it does.
std::string checkState(const EditState& state);

} // namespace cutroom
