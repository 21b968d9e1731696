#include "platform/store/configb.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace {

auto lowerBound(auto& entries, const LightweightString<char>& key) {
    return std::lower_bound(
        entries.begin(), entries.end(), key,
        [](const auto& entry, const auto& wanted) { return entry.first < wanted; });
}

} // namespace

bool configb::in(const LightweightString<char>& key) const { return getString(key).has_value(); }

std::optional<LightweightString<char>>
configb::getString(const LightweightString<char>& key) const {
    const auto found = lowerBound(entries_, key);
    if (found == entries_.end() || found->first != key)
        return std::nullopt;
    return found->second;
}

std::optional<long long> configb::getInt(const LightweightString<char>& key) const {
    const auto text = getString(key);
    return text ? cutroom::parseInt(*text) : std::nullopt;
}

std::optional<double> configb::getDouble(const LightweightString<char>& key) const {
    const auto text = getString(key);
    return text ? cutroom::parseDouble(*text) : std::nullopt;
}

bool configb::set(const LightweightString<char>& key, const LightweightString<char>& value) {
    const auto found = lowerBound(entries_, key);
    if (found == entries_.end() || found->first != key) {
        entries_.emplace(found, key, value);
        return true;
    }
    if (found->second == value)
        return false;
    found->second = value;
    return true;
}

bool configb::set(const LightweightString<char>& key, int value) {
    return set(key, cutroom::toText(static_cast<long long>(value)));
}

bool configb::set(const LightweightString<char>& key, double value) {
    return set(key, cutroom::toText(value));
}

bool configb::remove(const LightweightString<char>& key) {
    const auto found = lowerBound(entries_, key);
    if (found == entries_.end() || found->first != key)
        return false;
    entries_.erase(found);
    return true;
}

bool configb::isViewState(const LightweightString<char>& key) {
    static constexpr std::array<std::string_view, 2> kOthers{"stripv_zoom", "SHOW_CEL_CUES"};
    return key.starts_with("BACKUP_") ||
           std::find(kOthers.begin(), kOthers.end(), key) != kOthers.end();
}

void configb::restoreContents(const configb& other) {
    Entries merged;
    for (const auto& entry : entries_)
        if (isViewState(entry.first))
            merged.push_back(entry);
    for (const auto& entry : other.entries_)
        if (!isViewState(entry.first))
            merged.push_back(entry);
    std::sort(merged.begin(), merged.end());
    entries_ = std::move(merged);
}
