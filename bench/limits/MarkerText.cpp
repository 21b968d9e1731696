#include "bench/limits/MarkerText.h"

namespace cutroom::bench {

namespace {

constexpr long kRate = 25;

void appendTwo(std::string& out, long value) {
    out += static_cast<char>('0' + value / 10 % 10);
    out += static_cast<char>('0' + value % 10);
}

void appendClock(std::string& out, long seconds) {
    appendTwo(out, seconds / 3600);
    out += ':';
    appendTwo(out, seconds / 60 % 60);
    out += ':';
    appendTwo(out, seconds % 60);
}

long frameOf(double seconds) { return static_cast<long>(seconds * kRate + 0.5); }

void appendJson(std::string& out, std::string_view text) {
    out += '"';
    std::size_t plain = 0;
    for (std::size_t i = 0; i < text.size(); ++i)
        if (text[i] == '"' || text[i] == '\\') {
            out.append(text, plain, i - plain);
            out += '\\';
            plain = i;
        }
    out.append(text, plain);
    out += '"';
}

void appendXml(std::string& out, std::string_view text) {
    for (const char c : text)
        if (c == '&')
            out += "&amp;";
        else if (c == '<')
            out += "&lt;";
        else if (c == '>')
            out += "&gt;";
        else
            out += c;
}

} // namespace

std::vector<PlainMarker> plainMarkers(std::size_t count) {
    static constexpr const char* kTexts[] = {"Check the sky", "Fade \"in\" & out", "Ton prüfen",
                                             "Remove the boom at the left edge"};
    static constexpr const char* kColours[] = {"red", "green", "white", "yellow"};
    std::vector<PlainMarker> markers(count);
    for (std::size_t i = 0; i < count; ++i) {
        PlainMarker& marker = markers[i];
        marker.start = static_cast<double>(i) / kRate;
        marker.end = marker.start + 2;
        marker.name = "Marker " + std::to_string(i + 1);
        marker.description = kTexts[i % 4];
        marker.colour = kColours[i / 4 % 4];
    }
    return markers;
}

void appendTimecode(std::string& out, double seconds) {
    const long frame = frameOf(seconds);
    appendClock(out, frame / kRate);
    out += ':';
    appendTwo(out, frame % kRate);
}

void appendSubtitleTime(std::string& out, double seconds) {
    const long frame = frameOf(seconds);
    appendClock(out, frame / kRate);
    const long milliseconds = frame % kRate * 1000 / kRate;
    out += ',';
    out += static_cast<char>('0' + milliseconds / 100);
    appendTwo(out, milliseconds);
}

std::string plainJson(const std::vector<PlainMarker>& markers) {
    const auto begin = [](std::string& out, const char* key) {
        out += "                    \"";
        out += key;
        out += "\": ";
    };
    const auto times = [&](std::string& out, const char* key, double seconds) {
        begin(out, key);
        out += '"';
        appendTimecode(out, seconds);
        out += "\",\n";
    };
    std::string out;
    for (const PlainMarker& marker : markers) {
        out += "                {\n";
        begin(out, "name");
        appendJson(out, marker.name);
        out += ",\n";
        begin(out, "description");
        appendJson(out, marker.description);
        out += ",\n";
        times(out, "in", marker.start);
        times(out, "out", marker.end);
        begin(out, "colour");
        appendJson(out, marker.colour);
        out += "\n                },\n";
    }
    return out;
}

std::string plainXml(const std::vector<PlainMarker>& markers) {
    const auto begin = [](std::string& out, const char* name) {
        out += "                    <";
        out += name;
        out += '>';
    };
    const auto end = [](std::string& out, const char* name) {
        out += "</";
        out += name;
        out += ">\n";
    };
    std::string out;
    for (const PlainMarker& marker : markers) {
        out += "                <marker>\n";
        begin(out, "name");
        appendXml(out, marker.name);
        end(out, "name");
        begin(out, "description");
        appendXml(out, marker.description);
        end(out, "description");
        begin(out, "in");
        appendTimecode(out, marker.start);
        end(out, "in");
        begin(out, "out");
        appendTimecode(out, marker.end);
        end(out, "out");
        begin(out, "colour");
        appendXml(out, marker.colour);
        end(out, "colour");
        out += "                </marker>\n";
    }
    return out;
}

std::string plainSrt(const std::vector<PlainMarker>& markers) {
    std::string out;
    for (std::size_t i = 0; i < markers.size(); ++i) {
        if (i != 0)
            out += '\n';
        out += std::to_string(i + 1);
        out += '\n';
        appendSubtitleTime(out, markers[i].start);
        out += " --> ";
        appendSubtitleTime(out, markers[i].end);
        out += '\n';
        for (const char c : markers[i].description)
            out += c < ' ' && c >= 0 ? ' ' : c;
        out += '\n';
    }
    return out;
}

} // namespace cutroom::bench
