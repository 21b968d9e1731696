// `AudioMixWriter`: changes an edit's simple audio mix and tells exactly what changed.
#pragma once

#include "platform/aud/SimpleMixState.h"
#include "platform/base/Export.h"
#include "platform/base/IdStamp.h"
#include "platform/base/Ptr.h"
#include "platform/base/Strings.h"
#include "platform/store/EditPtr.h"

class KvIniFile;

// What of the mix changed: the detail of a modification of kind 27. The numbers are told to
// clients.
enum eAudioMixChange : unsigned {
    kMixChannelLevel = 1,
    kMixChannelPan = 2,
    kMixChannelSolo = 3,
    kMixChannelMute = 4,
    kMixChannelRouting = 5,
    kMixLevel = 6,
    kMixSolo = 7,
    kMixMute = 8,
    kMixRouting = 9,
};

// Keeps its edit open for modification; `description` labels what is changed through it. The first
// change makes the edit's mix when there is none. Each setter takes the edit's lock, compares first
// (floats bit by bit), and tells one modification of kind 27 with its code and the id of the
// channel or mix; an equal value, and one that the mix refuses (`Aud::SimpleMixState`), changes and
// tells nothing. Without an edit every call does nothing. One thread at a time.
class CUTROOM_API AudioMixWriter : public EditModifier {
public:
    AudioMixWriter(const EditPtr& edit, LightweightString<char> description);

    void setChannelLevel(unsigned char channel, float level);
    void setChannelPan(unsigned char channel, float pan);
    void setChannelMuteState(unsigned char channel, bool on);
    void setChannelSoloState(unsigned char channel, bool on);
    void setChannelRoutedToMix(unsigned char channel, signed char mix, bool on);
    void setMixLevel(signed char mix, float level);
    void setMixMuteState(signed char mix, bool on);
    void setMixSoloState(signed char mix, bool on);
    void setMixRoutedToOutput(signed char mix, signed char output, bool on, bool monitoring);

    // Takes over from a mix configuration file what the mix has room for, and tells a modification
    // of kind 27 without code and channel, whatever the file held.
    void loadFrom(const LightweightString<wchar_t>& path);
    void loadFrom(const KvIniFile& file);

    // The id of mix m, in which all three parts are m + 3: the main mix is (2, 2, 2).
    static IdStamp makeIDForMix(signed char mix) noexcept;
    // The mix of such an id: its tick count less 3.
    static signed char getMixFromID(const IdStamp& id) noexcept;

private:
    const Kv::Ptr<Aud::SimpleMixState>& getMix();
    IdStamp channelID(unsigned char channel) const;
    void informClients(eAudioMixChange code, const IdStamp& id);
    // Under the edit's lock: tells, when `isNew` says so of the mix and `set` has changed it.
    template <class IsNew, class Set>
    void change(eAudioMixChange code, const IdStamp& id, const IsNew& isNew, const Set& set);

    Kv::Ptr<Aud::SimpleMixState> mix_; // the edit's mix, empty until first needed
};
