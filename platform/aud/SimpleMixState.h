// `Aud::SimpleMixState`: the simple audio mix of an edit.
//
// Input channels feed mixes, mixes feed outputs. An input is the 0-based index of an audio channel
// of the edit; mix -1 is the main mix, 0 to 124 the further ones; outputs count from 0. Levels are
// linear gain, pan is 0 (left) to 1 (right). The edit that carries the mix owns it and guards it by
// the edit's lock.
#pragma once

#include "platform/base/Export.h"
#include "platform/base/Object.h"
#include "platform/base/Ptr.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

class KvIniFile;

namespace Aud {

inline constexpr signed char kMainMix = -1;
inline constexpr signed char kLastMix = 124;
inline constexpr std::size_t kMaxInputs = 256;

// Counted and copyable; a copy has a count of its own. What was never set has its default: level
// 1.0, pan 0.5, neither muted nor soloed, every input routed to the main mix alone, the main mix
// alone routed to every output.
//
// Setters answer whether the value is taken (also when it equals the present one). Refused, leaving
// everything as it was: levels that are not finite, pans outside 0 to 1, mixes outside -1 to 124,
// negative outputs, and everything while the mix is not valid.
class CUTROOM_API SimpleMixState : public virtual Kv::InternalRefCount {
public:
    // The type tag with which the mix is stored.
    static constexpr char kTypeTag[] = "Aud__SimpleMixState_R1";

    // No mix yet: not valid.
    SimpleMixState() = default;
    // A valid mix of `numInputs` inputs with defaults.
    explicit SimpleMixState(std::size_t numInputs);

    // Tells whether the mix has been initialised.
    bool valid() const noexcept { return valid_; }
    // Makes it valid, with at least `numInputs` inputs; what is set stays.
    void initialise(std::size_t numInputs);
    // The inputs that the mix has; setting a further one adds those before it.
    std::size_t numInputs() const noexcept { return inputs_.size(); }

    float getInputLevel(unsigned char input) const noexcept;
    float getInputPan(unsigned char input) const noexcept;
    bool getInputMuteState(unsigned char input) const noexcept;
    bool getInputSoloState(unsigned char input) const noexcept;
    bool getInputRoutedToMix(unsigned char input, signed char mix) const noexcept;
    bool setInputLevel(unsigned char input, float level);
    bool setInputPan(unsigned char input, float pan);
    bool setInputMuteState(unsigned char input, bool on);
    bool setInputSoloState(unsigned char input, bool on);
    bool setInputRoutedToMix(unsigned char input, signed char mix, bool on);

    float getMixLevel(signed char mix) const noexcept;
    bool getMixMuteState(signed char mix) const noexcept;
    bool getMixSoloState(signed char mix) const noexcept;
    // With `monitoring` the routing for listening, else that of the programme; they are apart.
    bool getMixRoutedToOutput(signed char mix, signed char output, bool monitoring) const noexcept;
    bool setMixLevel(signed char mix, float level);
    bool setMixMuteState(signed char mix, bool on);
    bool setMixSoloState(signed char mix, bool on);
    bool setMixRoutedToOutput(signed char mix, signed char output, bool on, bool monitoring);

    bool anyInputSolo() const noexcept;
    bool anyMixSolo() const noexcept;

    // Adjusts the inputs after the edit's audio channel at `input` has gone; the others keep their
    // settings.
    void removeInput(unsigned char input);

    // The stored form, described in docs/formats/mix.md: the type tag, the number of inputs, then
    // one line for each input and mix that is not at its defaults. Only of a valid mix.
    std::string asString() const;
    // Reads it; nothing when the tag, a line or a value is wrong. Lines of later versions (their
    // first word unknown) are kept and written again.
    static std::optional<SimpleMixState> fromString(std::string_view text);

    // Writes the mix as the sections of a mix configuration file (docs/formats/mix.md) in place of
    // those of another mix; other sections stay.
    void writeConfigurationInformation(KvIniFile& file) const;
    // Takes over what a mix configuration file holds and this mix has room for: the inputs that
    // exist here, every mix, each value that lies in its range. Nothing of a file of a later
    // version. Answers whether the file holds a mix configuration that it understands.
    bool retrieveCompatibleConfigurationInformation(const KvIniFile& file);

    // Levels and pans are equal to the bit.
    friend bool operator==(const SimpleMixState& a, const SimpleMixState& b) noexcept {
        return a.valid_ == b.valid_ && a.inputs_ == b.inputs_ && a.mixes_ == b.mixes_ &&
               a.unknown_ == b.unknown_;
    }

private:
    static bool isSame(float a, float b) noexcept {
        return std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b);
    }
    // Routings that differ from the default, in ascending order.
    using Routing = std::vector<signed char>;
    struct Input {
        float level = 1.0f;
        float pan = 0.5f;
        bool mute = false;
        bool solo = false;
        Routing toMixes;
        bool operator==(const Input& b) const noexcept {
            return isSame(level, b.level) && isSame(pan, b.pan) && mute == b.mute &&
                   solo == b.solo && toMixes == b.toMixes;
        }
    };
    struct Mix {
        float level = 1.0f;
        bool mute = false;
        bool solo = false;
        Routing toOutputs;
        Routing toMonitors;
        bool operator==(const Mix& b) const noexcept {
            return isSame(level, b.level) && mute == b.mute && solo == b.solo &&
                   toOutputs == b.toOutputs && toMonitors == b.toMonitors;
        }
    };
    const Input& input(unsigned char index) const noexcept;
    const Mix& mix(signed char index) const noexcept;
    Input* inputToSet(unsigned char index);
    Mix* mixToSet(signed char index);
    void dropDefaultMix(signed char index);
    static void setRouting(Routing& routing, signed char to, bool differs);
    bool readLine(const std::string& line);
    bool readInput(const std::vector<std::string>& words);
    bool readMix(const std::vector<std::string>& words);
    void takeInput(const KvIniFile& file, unsigned char index);
    void takeMix(const KvIniFile& file, signed char index);

    bool valid_ = false;
    std::vector<Input> inputs_;
    std::map<signed char, Mix> mixes_; // only those that are not at their defaults
    std::vector<std::string> unknown_; // lines of later versions
};

} // namespace Aud
