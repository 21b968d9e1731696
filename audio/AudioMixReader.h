// `AudioMixReader`: reads an edit's simple audio mix without ever making one.
#pragma once

#include "platform/aud/SimpleMixState.h"
#include "platform/base/Export.h"
#include "platform/base/Ptr.h"
#include "platform/store/EditPtr.h"

// A value that keeps its edit open. Each query takes the edit's lock and asks the edit afresh; any
// thread. Channels are 0-based indices of the edit's audio channels; mix -1 is the main mix.
// Without an edit or a valid mix the answers are the defaults named.
class CUTROOM_API AudioMixReader {
public:
    explicit AudioMixReader(const EditPtr& edit);

    // The edit has a valid mix.
    bool valid() const;
    // Linear gain; 1.0.
    float getChannelLevel(unsigned char channel) const;
    // 0 left to 1 right; 0.5.
    float getChannelPan(unsigned char channel) const;
    // False.
    bool getChannelMuteState(unsigned char channel) const;
    bool getChannelSoloState(unsigned char channel) const;
    // True exactly for mix -1.
    bool getChannelRoutedToMix(unsigned char channel, signed char mix) const;
    // Linear gain; 1.0.
    float getMixLevel(signed char mix) const;
    // False.
    bool getMixMuteState(signed char mix) const;
    bool getMixSoloState(signed char mix) const;
    // The routing for listening with `monitoring`, else that of the programme; true exactly for
    // mix -1.
    bool getMixRoutedToOutput(signed char mix, signed char output, bool monitoring) const;
    // False.
    bool anyChannelSolo() const;
    bool anyMixSolo() const;

private:
    template <class Answer, class Query> Answer ask(Answer otherwise, const Query& query) const;

    EditPtr edit_;
};
