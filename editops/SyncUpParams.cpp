#include "editops/SyncUpParams.h"

#include "platform/base/Time.h"

#include <algorithm>
#include <limits>

namespace {

std::optional<std::int32_t> fitting(std::optional<long long> value) {
    if (!value || *value < std::numeric_limits<std::int32_t>::min() ||
        *value > std::numeric_limits<std::int32_t>::max())
        return std::nullopt;
    return static_cast<std::int32_t>(*value);
}

void read(const configb& config, const char* key, std::int32_t& into) {
    if (const auto value = fitting(config.getInt(key)))
        into = *value;
}

void read(const configb& config, const char* key, bool& into) {
    if (const auto value = config.getInt(key))
        into = *value != 0;
}

void read(const configb& config, const char* key, UserLabelSpec& into) {
    if (const auto text = config.getString(key))
        into = UserLabelSpec::fromString(*text).value_or(into);
}

// One end of the span, from that end of each shot; `isOuter` tells whether the first of two such
// ends lies further out than the second.
template <class IsOuter>
double chosen(std::int32_t rule, double picture, double sound, IsOuter isOuter) {
    const bool pictureIsOuter = isOuter(picture, sound);
    switch (rule) {
    case kSyncPicture:
        return picture;
    case kSyncSound:
        return sound;
    case kSyncUnion:
        return pictureIsOuter ? picture : sound;
    default:
        return pictureIsOuter ? sound : picture;
    }
}

} // namespace

LightweightString<char> UserLabelSpec::asString() const {
    return std::to_string(type) + '.' + std::to_string(mediumRoll.first) + '.' +
           std::to_string(mediumRoll.second);
}

std::optional<UserLabelSpec> UserLabelSpec::fromString(const LightweightString<char>& text) {
    const auto words = cutroom::split(text, '.');
    if (words.size() != 3)
        return std::nullopt;
    const auto type = fitting(cutroom::parseInt(words[0]));
    const auto medium = fitting(cutroom::parseInt(words[1]));
    const auto roll = fitting(cutroom::parseInt(words[2]));
    if (!type || !medium || !roll)
        return std::nullopt;
    return UserLabelSpec{*type, {*medium, *roll}};
}

synchup_params::synchup_params(const configb& config) {
    read(config, "synchup_startrule", startRule);
    read(config, "synchup_endrule", endRule);
    read(config, "synchup_part", part);
    read(config, "synchup_pixlabel", pictureLabel);
    read(config, "synchup_sndlabel", soundLabel);
    read(config, "synchup_sndoffset", soundOffset);
    dateCheckOff = config.getInt("synchup_ignoredate") == 0;
    read(config, "synchup_makeghost", makeGhost);
}

namespace cutroom {

std::optional<TimeRange> syncSpan(const TimeRange& picture, const TimeRange& sound,
                                  const synchup_params& params,
                                  const std::optional<TimeRange>& part) {
    double start = chosen(params.startRule, picture.getStart(), sound.getStart(),
                          [](double a, double b) { return a < b; });
    double end = chosen(params.endRule, picture.getEnd(), sound.getEnd(),
                        [](double a, double b) { return a > b; });
    if (part) {
        start = std::max(start, part->getStart());
        end = std::min(end, part->getEnd());
    }
    if (end - start <= kTimeTolerance)
        return std::nullopt;
    return TimeRange(start, end);
}

} // namespace cutroom
