#include "interchange/EdlChannelsOut.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace cutroom {

namespace {

using Channels = std::set<EdlChannel>;

EdlEvent eventNamed(const std::string& channel) {
    EdlEvent event;
    event.channel = channel;
    return event;
}

// `text` with an AUD line for what it leaves out; nothing when it names other channels too.
std::optional<EdlChannelText> completed(const std::string& text, const Channels& channels,
                                        EdlDigits digits) {
    EdlChannelText result{text, {}};
    Channels named;
    if (text != "NONE")
        for (EdlChannel& channel : channelsOf(eventNamed(text), digits))
            named.insert(std::move(channel));
    if (!std::includes(channels.begin(), channels.end(), named.begin(), named.end()))
        return {};
    for (const EdlChannel& channel : channels) {
        if (named.contains(channel))
            continue;
        if (channel.kind != TrackKind::audio)
            return {};
        result.audio.push_back(channel.number);
    }
    return result;
}

} // namespace

EdlDigits edlDigitsOf(const std::vector<EdlEventOut>& events) {
    EdlList list;
    for (const EdlEventOut& each : events) {
        if (each.item)
            list.events.push_back(eventNamed(each.item->channel));
        const EdlChannel& first = *each.channels.begin();
        if (each.channels.size() == 1 && first.number < 10)
            list.events.push_back(eventNamed(first.name));
    }
    return audioDigits(list);
}

EdlChannelText edlChannelText(const std::set<EdlChannel>& channels, const std::string& written,
                              EdlDigits digits) {
    if (!written.empty())
        if (auto text = completed(written, channels, digits))
            return *text;
    const EdlChannel& first = *channels.begin();
    if (channels.size() == 1) {
        const bool ambiguous =
            first.kind == TrackKind::audio && first.number > 9 && digits != EdlDigits::oneNumber;
        if (ambiguous)
            return {"NONE", {first.number}};
        return {first.name == "A1" ? "A" : first.name, {}};
    }
    for (const char* const text : {"AA/V", "AA", "B", "A2/V", "V", "A", "A2"})
        if (auto found = completed(text, channels, digits))
            return *found;
    return {"NONE", completed("NONE", channels, digits).value_or(EdlChannelText()).audio};
}

} // namespace cutroom
