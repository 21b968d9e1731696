#include "platform/aud/MixText.h"

#include "platform/aud/SimpleMixState.h"
#include "platform/base/Strings.h"

#include <cmath>

namespace cutroom {

namespace {

constexpr std::string_view kNone = "none";

std::optional<signed char> numberFromText(std::string_view text, int least, int most) {
    const std::optional<long long> value = parseInt(text);
    if (!value || *value < least || *value > most)
        return std::nullopt;
    return static_cast<signed char>(*value);
}

} // namespace

std::string routingText(const std::vector<signed char>& routing) {
    if (routing.empty())
        return std::string(kNone);
    std::vector<std::string> pieces;
    for (const signed char one : routing)
        pieces.push_back(toText(static_cast<long long>(one)));
    return join(pieces, ",");
}

std::optional<std::vector<signed char>> routingFromText(std::string_view text, signed char least) {
    std::vector<signed char> routing;
    if (text == kNone)
        return routing;
    for (const std::string& piece : split(text, ',')) {
        const std::optional<signed char> one = numberFromText(piece, least, 127);
        if (!one || (!routing.empty() && *one <= routing.back()))
            return std::nullopt;
        routing.push_back(*one);
    }
    return routing;
}

std::optional<float> levelFromText(std::string_view text) {
    const std::optional<double> value = parseDouble(text);
    if (!value || !std::isfinite(static_cast<float>(*value)))
        return std::nullopt;
    return static_cast<float>(*value);
}

std::optional<float> panFromText(std::string_view text) {
    const std::optional<float> value = levelFromText(text);
    return value && *value >= 0.0f && *value <= 1.0f ? value : std::nullopt;
}

std::optional<bool> switchFromText(std::string_view text) {
    if (text != "0" && text != "1")
        return std::nullopt;
    return text == "1";
}

std::optional<signed char> mixFromText(std::string_view text) {
    return numberFromText(text, Aud::kMainMix, Aud::kLastMix);
}

} // namespace cutroom
