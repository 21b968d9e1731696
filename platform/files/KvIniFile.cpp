#include "platform/files/KvIniFile.h"

#include "platform/files/CheckedFile.h"
#include "platform/files/TextFile.h"

#include <algorithm>

using cutroom::Result;
using cutroom::Status;
using cutroom::StatusCode;

namespace {

constexpr std::string_view kHeadPrefix = "; cutroom ini ";
constexpr std::string_view kHead = "; cutroom ini 1\n";
constexpr std::string_view kTailPrefix = "; checksum ";
constexpr std::size_t kTailSize = kTailPrefix.size() + 9; // eight digits and a line feed

enum class Place { section, key, value };

bool isControl(char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }

// Whether the plain character would be read as something else at this place.
bool needsBackslash(char c, Place place, bool first, bool last) {
    if (c == '\\' || (c == ' ' && (first || last)))
        return true;
    if (place == Place::section)
        return c == ']';
    return place == Place::key && (c == '=' || (first && (c == '[' || c == ';' || c == '#')));
}

std::string escaped(std::string_view text, Place place) {
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '\n')
            out += "\\n";
        else if (c == '\t')
            out += "\\t";
        else if (isControl(c))
            out += cutroom::format("\\x%02x", static_cast<unsigned char>(c));
        else if (needsBackslash(c, place, i == 0, i + 1 == text.size()))
            (out += '\\') += c;
        else
            out += c;
    }
    return out;
}

int hexDigit(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    return c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
}

bool unescapeOne(std::string_view text, std::size_t& at, std::string& out) {
    const char c = text[at++];
    if (c == 'n' || c == 't') {
        out += c == 'n' ? '\n' : '\t';
        return true;
    }
    if (c != 'x') {
        out += c;
        return std::string_view("\\ ];#[=").find(c) != std::string_view::npos;
    }
    const int high = at + 1 < text.size() ? hexDigit(text[at]) : -1;
    const int low = high >= 0 ? hexDigit(text[at + 1]) : -1;
    out += static_cast<char>(high * 16 + low);
    at += 2;
    return low >= 0 && high < 8;
}

// Nothing for an unknown escape.
std::optional<std::string> unescaped(std::string_view text) {
    std::string out;
    for (std::size_t at = 0; at < text.size();) {
        if (text[at] != '\\')
            out += text[at++];
        else if (++at == text.size() || !unescapeOne(text, at, out))
            return std::nullopt;
    }
    return out;
}

std::string_view trimBlanks(std::string_view text) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t'))
        text.remove_prefix(1);
    const auto escapedEnd = [&] {
        std::size_t slashes = 0;
        while (slashes + 1 < text.size() && text[text.size() - 2 - slashes] == '\\')
            ++slashes;
        return slashes % 2 == 1;
    };
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t') && !escapedEnd())
        text.remove_suffix(1);
    return text;
}

// The position of the first `wanted` that is not escaped by a backslash.
std::size_t findPlain(std::string_view text, char wanted) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\\')
            ++i;
        else if (text[i] == wanted)
            return i;
    }
    return std::string_view::npos;
}

std::string tailFor(std::string_view before) {
    return std::string(kTailPrefix) + cutroom::format("%08x\n", cutroom::checksum(before));
}

// Checks the comments that a saved file begins and ends with, when either is there.
Status checkSeal(std::string_view text, const std::string& file) {
    const bool head = text.starts_with(kHeadPrefix);
    const std::size_t body = text.size() - std::min(text.size(), kTailSize);
    const bool tail = text.find("\n" + std::string(kTailPrefix)) != std::string_view::npos;
    if (!head && !tail)
        return {};
    if (text.size() >= kTailSize && text.substr(body) == tailFor(text.substr(0, body))) {
        if (text.starts_with(kHead))
            return {};
        if (head)
            return {StatusCode::failed, file, "was written by a later version", 1};
    }
    const auto lines = std::count(text.begin(), text.end(), '\n');
    return {StatusCode::damaged, file,
            "the checksum is wrong; take the first and the last line out of a file edited by hand",
            std::max<long>(lines, 1)};
}

} // namespace

KvIniFile::KvIniFile(const LightweightString<wchar_t>& path) {
    Result<std::string> narrow = cutroom::narrowPath(path);
    if (narrow)
        path_ = std::move(*narrow);
    else
        status_ = narrow.status();
}

KvIniFile::KvIniFile(std::string path) : path_(std::move(path)) {}

bool KvIniFile::load() {
    const Result<std::string> content = TextFile::load(path_);
    status_ = content ? parse(*content, path_) : content.status();
    return status_.ok();
}

bool KvIniFile::save() {
    status_ = TextFile::save(path_, text());
    return status_.ok();
}

Status KvIniFile::parse(std::string_view text, const std::string& file) {
    if (Status sealed = checkSeal(text, file); !sealed)
        return sealed;
    KvIniFile read;
    long number = 0;
    bool anything = text.starts_with(kHead);
    std::string section;
    for (std::size_t from = 0; from < text.size();) {
        const std::size_t end = std::min(text.find('\n', from), text.size());
        std::string_view line = text.substr(from, end - from);
        from = end + 1;
        ++number;
        if (line.ends_with('\r'))
            line.remove_suffix(1);
        line = trimBlanks(line);
        if (line.empty() || line.front() == ';' || line.front() == '#')
            continue;
        anything = true;
        if (Status taken = read.takeLine(line, section); !taken)
            return {taken.code(), file, taken.message(), number};
    }
    if (!anything)
        return {StatusCode::damaged, file, "holds neither a section nor a key", 1};
    sections_ = std::move(read.sections_);
    return {};
}

Status KvIniFile::takeLine(std::string_view line, std::string& section) {
    if (line.front() == '[') {
        line.remove_prefix(1);
        const std::size_t close = findPlain(line, ']');
        const std::optional<std::string> name =
            close + 1 == line.size() ? unescaped(line.substr(0, close)) : std::nullopt;
        if (!name)
            return {StatusCode::damaged, {}, "is no section"};
        section = *name;
        make(section);
        return {};
    }
    const std::size_t equals = findPlain(line, '=');
    if (equals == std::string_view::npos)
        return {StatusCode::damaged, {}, "is neither a section nor a key with a value"};
    const std::optional<std::string> key = unescaped(trimBlanks(line.substr(0, equals)));
    const std::optional<std::string> value = unescaped(trimBlanks(line.substr(equals + 1)));
    if (!key || !value)
        return {StatusCode::damaged, {}, "holds an unknown escape"};
    if (get(section, *key))
        return {StatusCode::damaged, {}, "the key \"" + *key + "\" stands twice"};
    set(section, *key, *value);
    return {};
}

std::string KvIniFile::text() const {
    std::string out(kHead);
    const auto append = [&](const Section& section) {
        for (const auto& [key, value] : section.values)
            out += escaped(key, Place::key) + " = " + escaped(value, Place::value) + "\n";
    };
    for (const Section& section : sections_)
        if (section.name.empty())
            append(section);
    for (const Section& section : sections_) {
        if (section.name.empty())
            continue;
        out += "[" + escaped(section.name, Place::section) + "]\n";
        append(section);
    }
    return out + tailFor(out);
}

const KvIniFile::Section* KvIniFile::find(std::string_view section) const noexcept {
    for (const Section& one : sections_)
        if (one.name == section)
            return &one;
    return nullptr;
}

KvIniFile::Section& KvIniFile::make(std::string_view section) {
    for (Section& one : sections_)
        if (one.name == section)
            return one;
    return sections_.emplace_back(Section{std::string(section), {}, {}});
}

std::vector<std::string> KvIniFile::sections() const {
    std::vector<std::string> names;
    for (const Section& one : sections_)
        names.push_back(one.name);
    return names;
}

std::vector<std::string> KvIniFile::keys(std::string_view section) const {
    std::vector<std::string> names;
    if (const Section* found = find(section))
        for (const auto& [key, value] : found->values)
            names.push_back(key);
    return names;
}

std::optional<std::string> KvIniFile::get(std::string_view section, std::string_view key) const {
    const Section* found = find(section);
    if (!found)
        return std::nullopt;
    const auto at = found->places.find(std::string(key));
    return at == found->places.end() ? std::nullopt
                                     : std::optional(found->values[at->second].second);
}

std::string KvIniFile::getText(std::string_view section, std::string_view key,
                               std::string_view otherwise) const {
    return get(section, key).value_or(std::string(otherwise));
}

long long KvIniFile::getInt(std::string_view section, std::string_view key,
                            long long otherwise) const {
    const std::optional<std::string> text = get(section, key);
    return text ? cutroom::parseInt(*text).value_or(otherwise) : otherwise;
}

double KvIniFile::getDouble(std::string_view section, std::string_view key,
                            double otherwise) const {
    const std::optional<std::string> text = get(section, key);
    return text ? cutroom::parseDouble(*text).value_or(otherwise) : otherwise;
}

bool KvIniFile::getBool(std::string_view section, std::string_view key, bool otherwise) const {
    const std::optional<std::string> text = get(section, key);
    if (!text)
        return otherwise;
    const std::string lower = cutroom::toLowerUtf8(*text);
    if (lower == "true" || lower == "yes" || lower == "1")
        return true;
    return lower == "false" || lower == "no" || lower == "0" ? false : otherwise;
}

void KvIniFile::set(std::string_view section, std::string_view key, std::string_view value) {
    const auto sound = [](std::string_view text) {
        return cutroom::isUtf8(text) ? std::string(text) : cutroom::toUtf8(cutroom::toWide(text));
    };
    Section& found = make(sound(section));
    std::string name = sound(key);
    const auto [at, added] = found.places.try_emplace(name, found.values.size());
    if (added)
        found.values.emplace_back(std::move(name), sound(value));
    else
        found.values[at->second].second = sound(value);
}

void KvIniFile::setInt(std::string_view section, std::string_view key, long long value) {
    set(section, key, cutroom::toText(value));
}
void KvIniFile::setDouble(std::string_view section, std::string_view key, double value) {
    set(section, key, cutroom::toText(value));
}
void KvIniFile::setBool(std::string_view section, std::string_view key, bool value) {
    set(section, key, value ? "true" : "false");
}

void KvIniFile::remove(std::string_view section, std::string_view key) {
    for (Section& one : sections_) {
        if (one.name != section)
            continue;
        std::erase_if(one.values, [&](const auto& entry) { return entry.first == key; });
        one.places.clear();
        for (std::size_t i = 0; i < one.values.size(); ++i)
            one.places.emplace(one.values[i].first, i);
    }
}

void KvIniFile::removeSection(std::string_view section) {
    std::erase_if(sections_, [&](const Section& one) { return one.name == section; });
}
