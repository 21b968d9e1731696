#include "interchange/EdlTracks.h"

#include "platform/base/Strings.h"

#include <algorithm>
#include <set>

namespace cutroom {

namespace {

void addAudio(std::vector<EdlChannel>& channels, int number) {
    for (const EdlChannel& channel : channels)
        if (channel.kind == TrackKind::audio && channel.number == number)
            return;
    channels.push_back({TrackKind::audio, number, "A" + toText(static_cast<long long>(number))});
}

void addVideo(std::vector<EdlChannel>& channels) {
    channels.insert(channels.begin(), {TrackKind::video, 1, "V"});
}

// The digits behind "A"; none means track 1.
void addDigits(std::vector<EdlChannel>& channels, std::string_view digits, EdlDigits meaning) {
    if (digits.empty()) {
        addAudio(channels, 1);
    } else if (digits.size() == 1 ||
               (meaning == EdlDigits::oneNumber && digits.size() == 2 && digits[0] != '0')) {
        addAudio(channels, leadingInt(digits));
    } else {
        for (const char digit : digits)
            if (digit > '0')
                addAudio(channels, digit - '0');
    }
}

// Reads the whole text, or nothing: "A1234V", "AA/V", "V2", "B".
bool readChannels(std::string_view text, EdlDigits meaning, std::vector<EdlChannel>& channels) {
    while (!text.empty()) {
        const char kind = text.front();
        text.remove_prefix(1);
        const std::size_t length = std::min(text.find_first_not_of("0123456789"), text.size());
        const auto digits = text.substr(0, length);
        text.remove_prefix(length);
        if (kind == 'A' && digits.empty() && !text.empty() && text.front() == 'A') {
            text.remove_prefix(1);
            addAudio(channels, 1);
            addAudio(channels, 2);
        } else if (kind == 'A') {
            addDigits(channels, digits, meaning);
        } else if (kind == 'V' && digits.size() < 3) {
            addVideo(channels);
            channels.front().number = digits.empty() ? 1 : leadingInt(digits);
        } else if (kind == 'B' && digits.empty()) {
            addVideo(channels);
            addAudio(channels, 1);
        } else if (kind != '/' || !digits.empty()) {
            return false;
        }
    }
    return true;
}

} // namespace

EdlDigits audioDigits(const EdlList& list) {
    std::set<std::string_view> seen;
    for (const EdlEvent& event : list.events)
        seen.insert(event.channel);
    for (const std::string_view text : seen) {
        if (text.size() < 2 || text[0] != 'A' ||
            text.find_first_not_of("0123456789", 1) != text.npos)
            continue;
        const auto digits = text.substr(1);
        const bool above = digits.size() == 1 && digits > "4";
        const bool noSet = digits.size() == 2 && (digits[1] == '0' || digits[0] == digits[1]);
        if (above || noSet)
            return EdlDigits::oneNumber;
    }
    return EdlDigits::oneTrackEach;
}

std::vector<EdlChannel> channelsOf(const EdlEvent& event, EdlDigits digits) {
    std::vector<EdlChannel> channels;
    const bool none = event.channel == "NONE";
    if (!none && !readChannels(event.channel, digits, channels))
        channels.clear();
    for (const int number : event.audio)
        if (number > 0)
            addAudio(channels, number);
    for (EdlChannel& channel : channels)
        if (channel.kind == TrackKind::video && channel.number > 1)
            channel.name = "V" + toText(static_cast<long long>(channel.number));
    if (channels.empty())
        channels.push_back({TrackKind::other, 1, event.channel});
    return channels;
}

} // namespace cutroom
