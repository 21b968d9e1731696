#include "interchange/OtioOutput.h"

#include "interchange/ImportedJson.h"
#include "platform/base/Strings.h"
#include "platform/files/JsonBuilder.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace cutroom::otio {

namespace {

std::string numberText(double value) {
    std::string text = toText(std::isfinite(value) ? value : 0.0);
    if (text.find_first_of(".e") == text.npos)
        text += ".0";
    return text;
}

// The rate as it was read, else as exact as a double is.
std::string rateText(const RateRead& rate) {
    const auto written = parseDouble(rate.literal);
    return numberText(written && std::isfinite(*written) ? *written : rate.rate.asDouble());
}

// "Inf", "inf" and "nan" outside of strings become "Infinity" and "NaN".
std::string withCommonWords(std::string_view json) {
    std::string text;
    text.reserve(json.size() + 16);
    bool quoted = false;
    for (std::size_t at = 0; at < json.size(); ++at) {
        const char c = json[at];
        const std::string_view rest = json.substr(at);
        if (quoted && c == '\\') {
            text += json.substr(at, 2);
            ++at;
            continue;
        }
        quoted = quoted != (c == '"');
        const bool word = !quoted && (rest.starts_with("Inf") || rest.starts_with("inf"));
        if (word) {
            text += "Infinity";
            at += rest.starts_with("Infinity") ? 7 : 2;
        } else if (!quoted && rest.starts_with("nan")) {
            text += "NaN";
            at += 2;
        } else {
            text += c;
        }
    }
    return text;
}

bool mayHoldWords(std::string_view json) {
    return json.find("Inf") != json.npos || json.find("inf") != json.npos ||
           json.find("nan") != json.npos;
}

} // namespace

void Output::separate() {
    if (!empty_.empty()) {
        if (!empty_.back())
            text_ += ',';
        empty_.back() = false;
        text_ += '\n';
        text_.append(empty_.size() * 4, ' ');
    }
}

void Output::key(std::string_view key) {
    separate();
    text_ += '"';
    text_ += key;
    text_ += "\": ";
}

void Output::open(char bracket) {
    text_ += bracket;
    empty_.push_back(true);
}

void Output::close(char bracket) {
    const bool empty = empty_.back();
    empty_.pop_back();
    if (!empty) {
        text_ += '\n';
        text_.append(empty_.size() * 4, ' ');
    }
    text_ += bracket;
}

void Output::beginObject(std::string_view schema) {
    separate();
    open('{');
    add("OTIO_SCHEMA", schema);
}

void Output::beginObject(std::string_view name, std::string_view schema) {
    key(name);
    open('{');
    if (!schema.empty())
        add("OTIO_SCHEMA", schema);
}

void Output::endObject() { close('}'); }

void Output::beginArray(std::string_view name) {
    key(name);
    open('[');
}

void Output::endArray() { close(']'); }

void Output::add(std::string_view name, std::string_view text) {
    key(name);
    text_ += '"';
    JSON::appendEscaped(text_, text);
    text_ += '"';
}

void Output::add(std::string_view name, double number) {
    key(name);
    text_ += numberText(number);
}

void Output::addBool(std::string_view name, bool value) {
    key(name);
    text_ += value ? "true" : "false";
}

void Output::addRaw(std::string_view name, std::string_view json, std::string_view otherwise) {
    key(name);
    splice(json.empty() ? otherwise : json);
}

void Output::addRaw(std::string_view json) {
    separate();
    splice(json);
}

void Output::splice(std::string_view json) {
    if (mayHoldWords(json))
        text_ += withCommonWords(json);
    else
        text_ += json;
}

void Output::addMembers(std::string_view object) {
    forEachImported(object,
                    [this](std::string_view name, std::string_view text) { addRaw(name, text); });
}

void Output::addTime(std::string_view name, Flicks time, const RateRead& rate) {
    key(name);
    text_ += timeText(time, rate);
}

void Output::addRange(std::string_view name, const Span& range, const RateRead& rate) {
    key(name);
    text_ += rangeText(range, rate);
}

std::string Output::take() {
    text_ += '\n';
    return std::move(text_);
}

std::string timeText(double value, const RateRead& rate) {
    return R"({"OTIO_SCHEMA":"RationalTime.1","rate":)" + rateText(rate) + R"(,"value":)" +
           numberText(value) + '}';
}

std::string rangeText(const Span& range, const RateRead& rate) {
    return R"({"OTIO_SCHEMA":"TimeRange.1","duration":)" + timeText(range.duration, rate) +
           R"(,"start_time":)" + timeText(range.start, rate) + '}';
}

std::string timeText(Flicks time, const RateRead& rate) {
    // More bits than a double has, so that whole frames come out whole.
    const long double value = static_cast<long double>(time) * rate.rate.num() /
                              (static_cast<long double>(rate.rate.den()) * kFlicksPerSecond);
    return timeText(static_cast<double>(value), rate);
}

} // namespace cutroom::otio
