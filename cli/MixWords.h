// Names and settings of an edit's audio mix, as the command and the session say them: channels by
// name or place, mixes "main", "bus1" to "bus125", outputs from 1.
#pragma once

#include "audio/AudioMixReader.h"
#include "audio/AudioMixWriter.h"
#include "platform/base/Status.h"
#include "platform/store/EditModifications.h"
#include "platform/store/EditPtr.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace cutroom::cli {

inline constexpr int kMostOutputs = 128;

std::string mixName(int mix);
// Tells whether a word is meant as a mix, not as a channel.
bool namesMix(std::string_view text);
// `wrongUsage` for what is no mix.
Result<signed char> parseMix(std::string_view text);
// Linear gain of 0 or more, "0.5", or decibels, "-6dB".
Result<float> parseGain(std::string_view text);
// 0 (left) to 1 (right), or "left", "centre", "right".
Result<float> parsePan(std::string_view text);
// The audio channel of that name, else of that place, "A2" or "2", as an index from 0; `notFound`
// for none, and for a name of several.
Result<unsigned char> findAudioChannel(std::string_view text, const EditPtr& edit);
// What names the channel of that index to `findAudioChannel`: "A2", or "2" where another channel is
// called A2.
std::string audioChannelWord(std::size_t place, const EditPtr& edit);

// One setting of a mix.
struct MixSetting {
    eAudioMixChange what = kMixChannelLevel;
    int target = 0;     // a channel for codes 1 to 5, else a mix
    int to = 0;         // the mix or output of a routing
    float value = 0.0f; // of a level or pan
    bool on = false;
    bool monitoring = false; // of a routing to an output

    bool differs(const AudioMixReader& reader) const;
    void apply(AudioMixWriter& writer) const;
};

// What a modification of the mix concerns: "level of A1", "outputs of bus2". The setting alone for
// an input whose channel has gone; "of another kind" for an unknown code.
std::string mixChangeText(const EditModification& change, const EditPtr& edit);

// The mixes that a channel feeds.
std::vector<signed char> mixesOf(const AudioMixReader& reader, unsigned char channel);
// The outputs, from 1, whose routing differs from the default: those that the main mix does not
// feed, or that another mix feeds.
inline constexpr bool kProgramme = false; // the routing of the programme
inline constexpr bool kMonitoring = true; // that for listening
std::vector<int> changedOutputs(const AudioMixReader& reader, signed char mix, bool monitoring);
// The mixes that somebody has touched, ascending.
std::vector<signed char> touchedMixes(const AudioMixReader& reader);

// One line a channel (its word, level, pan, "mute", "solo", mixes, name) and touched mix, tabs
// between.
std::string mixText(const EditPtr& edit);
// Every channel and touched mix. "others" tells whether the outputs that are not listed are fed.
std::string mixJson(const EditPtr& edit);

// Puts the edit's mix into a mix configuration file, beside what else the file holds. Fails without
// a mix, and when a file that is there cannot be read.
Status saveMix(const EditPtr& edit, const std::string& path);

} // namespace cutroom::cli
