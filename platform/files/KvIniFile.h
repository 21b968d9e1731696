// Small strict ini files: sections of keys with text values.
//
// A saved file begins and ends with comments that carry version and checksum; a file without both
// is taken as written by hand. Backslash escapes keep any text.
#pragma once

#include "platform/base/Status.h"
#include "platform/base/Strings.h"

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

// Sections and keys keep their order; a key stands once in its section. A value type, one thread at
// a time. Keys before the first section belong to the section "".
class CUTROOM_API KvIniFile {
public:
    KvIniFile() = default;
    // For the file at `path`; nothing is read before `load`.
    explicit KvIniFile(const LightweightString<wchar_t>& path);
    explicit KvIniFile(std::string path);

    // Reads the file. False, with the reason in `status`, when it cannot be read or is damaged (a
    // line that is neither section, key nor comment; a key twice; a wrong checksum): the content
    // stays as it was.
    bool load();
    // Writes the file crash-safely; false with the reason in `status`.
    bool save();
    const cutroom::Status& status() const noexcept { return status_; }
    // From and to memory; `file` is for messages.
    cutroom::Status parse(std::string_view text, const std::string& file);
    std::string text() const;

    std::vector<std::string> sections() const;
    std::vector<std::string> keys(std::string_view section) const;
    // Nothing when it is not there.
    std::optional<std::string> get(std::string_view section, std::string_view key) const;
    // What is given when the key is missing or its text is no such value.
    std::string getText(std::string_view section, std::string_view key,
                        std::string_view otherwise = {}) const;
    long long getInt(std::string_view section, std::string_view key, long long otherwise = 0) const;
    double getDouble(std::string_view section, std::string_view key, double otherwise = 0) const;
    bool getBool(std::string_view section, std::string_view key, bool otherwise = false) const;

    // Text that is not well-formed UTF-8 is kept with U+FFFD for each bad part.
    void set(std::string_view section, std::string_view key, std::string_view value);
    void setInt(std::string_view section, std::string_view key, long long value);
    void setDouble(std::string_view section, std::string_view key, double value);
    void setBool(std::string_view section, std::string_view key, bool value);
    void remove(std::string_view section, std::string_view key);
    void removeSection(std::string_view section);
    bool empty() const noexcept { return sections_.empty(); }

private:
    struct Section {
        std::string name;
        std::vector<std::pair<std::string, std::string>> values;
        std::unordered_map<std::string, std::size_t> places; // of a key in values
    };
    const Section* find(std::string_view section) const noexcept;
    Section& make(std::string_view section);
    cutroom::Status takeLine(std::string_view line, std::string& section);

    std::string path_;
    cutroom::Status status_;
    std::vector<Section> sections_;
};
