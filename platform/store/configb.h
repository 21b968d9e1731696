// `configb`: the configuration of one edit: named texts and numbers, persisted with it.
#pragma once

#include "platform/base/Export.h"
#include "platform/base/Strings.h"

#include <optional>
#include <utility>
#include <vector>

// An ordered map from key to text. Numbers are kept as text that reads back exactly. Setting marks
// the owning edit dirty when the value changes. Guarded by the edit's lock.
class CUTROOM_API configb {
public:
    // Tells whether `key` is present.
    bool in(const LightweightString<char>& key) const;
    // The value; nothing when absent (or, for numbers, when it is none).
    std::optional<LightweightString<char>> getString(const LightweightString<char>& key) const;
    std::optional<long long> getInt(const LightweightString<char>& key) const;
    std::optional<double> getDouble(const LightweightString<char>& key) const;
    // Sets; true when that changed anything.
    bool set(const LightweightString<char>& key, const LightweightString<char>& value);
    bool set(const LightweightString<char>& key, const char* value) {
        return set(key, LightweightString<char>(value));
    }
    bool set(const LightweightString<char>& key, int value);
    bool set(const LightweightString<char>& key, double value);
    // True when the key was there.
    bool remove(const LightweightString<char>& key);

    using Entries = std::vector<std::pair<LightweightString<char>, LightweightString<char>>>;
    // All entries in ascending order of key.
    const Entries& entries() const noexcept { return entries_; }
    // Keys that hold how an edit is viewed rather than what it is: the BACKUP_ keys,
    // "stripv_zoom", "SHOW_CEL_CUES". Undo and redo leave them alone.
    static bool isViewState(const LightweightString<char>& key);
    // Replaces everything but the view state.
    void restoreContents(const configb& other);

    friend bool operator==(const configb&, const configb&) = default;

private:
    Entries entries_;
};
