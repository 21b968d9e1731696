#include "platform/prefs/EditorPreferences.h"

#include "platform/base/Log.h"
#include "platform/files/Files.h"
#include "platform/files/KvIniFile.h"

#include <atomic>
#include <limits>
#include <optional>

using cutroom::Status;
using cutroom::StatusCode;

namespace {

constexpr std::string_view kSection = "preferences";

// Over all lives. Raised after a value has changed.
std::atomic<std::uint64_t> changes{0};

void noteChange() { changes.fetch_add(1, std::memory_order_release); }

} // namespace

struct EditorPreferences::State {
    CriticalSection writing; // puts writes in order; never taken under `lock`
    CriticalSection lock{LockRank::leaf};
    KvIniFile values CUTROOM_GUARDED_BY(lock);
    std::string path CUTROOM_GUARDED_BY(lock); // empty: memory only
    bool dirty CUTROOM_GUARDED_BY(lock) = false;

    std::optional<std::string> get(std::string_view key) {
        CriticalSection::Lock held(lock);
        return values.get(kSection, key);
    }
    void set(std::string_view key, std::string_view text) {
        CriticalSection::Lock held(lock);
        if (values.get(kSection, key) == text)
            return;
        values.set(kSection, key, text);
        dirty = true;
        noteChange();
    }
    Status write() CUTROOM_REQUIRES(writing) {
        std::string file, text;
        {
            CriticalSection::Lock held(lock);
            if (!dirty || path.empty())
                return {};
            file = path;
            text = values.text();
            dirty = false;
        }
        Status written = cutroom::writeFile(file, text);
        if (!written) {
            CriticalSection::Lock held(lock);
            dirty = true;
        }
        return written;
    }
};

EditorPreferences::EditorPreferences() : state_(std::make_unique<State>()) { noteChange(); }

EditorPreferences::~EditorPreferences() {
    CriticalSection::Lock writing(state_->writing);
    if (const Status written = state_->write(); !written)
        LogBoth("%s\n", written.text().c_str());
}

EditorPreferences& EditorPreferences::instance() {
    return cutroom::ProcessSingleton<EditorPreferences>::get();
}

bool EditorPreferences::getPreference(std::string_view key, bool otherwise) {
    const std::optional<std::string> text = instance().state_->get(key);
    if (text == "true" || text == "1")
        return true;
    return text == "false" || text == "0" ? false : otherwise;
}

int EditorPreferences::getPreference(std::string_view key, int otherwise) {
    const std::optional<std::string> text = instance().state_->get(key);
    const std::optional<long long> value = text ? cutroom::parseInt(*text) : std::nullopt;
    const bool fits = value && *value >= std::numeric_limits<int>::min() &&
                      *value <= std::numeric_limits<int>::max();
    return fits ? static_cast<int>(*value) : otherwise;
}

std::uint16_t EditorPreferences::getPreference(std::string_view key, std::uint16_t otherwise) {
    const int value = getPreference(key, -1);
    return value >= 0 && value <= 0xFFFF ? static_cast<std::uint16_t>(value) : otherwise;
}

double EditorPreferences::getPreference(std::string_view key, double otherwise) {
    const std::optional<std::string> text = instance().state_->get(key);
    return text ? cutroom::parseDouble(*text).value_or(otherwise) : otherwise;
}

std::string EditorPreferences::getPreference(std::string_view key, const char* otherwise) {
    return getPreference(key, std::string(otherwise));
}

std::string EditorPreferences::getPreference(std::string_view key, const std::string& otherwise) {
    return instance().state_->get(key).value_or(otherwise);
}

void EditorPreferences::setPreference(std::string_view key, bool value) {
    instance().state_->set(key, value ? "true" : "false");
}
void EditorPreferences::setPreference(std::string_view key, int value) {
    instance().state_->set(key, cutroom::toText(static_cast<long long>(value)));
}
void EditorPreferences::setPreference(std::string_view key, std::uint16_t value) {
    setPreference(key, static_cast<int>(value));
}
void EditorPreferences::setPreference(std::string_view key, double value) {
    instance().state_->set(key, cutroom::toText(value));
}
void EditorPreferences::setPreference(std::string_view key, const char* value) {
    instance().state_->set(key, value);
}
void EditorPreferences::setPreference(std::string_view key, const std::string& value) {
    instance().state_->set(key, value);
}

void EditorPreferences::removePreference(std::string_view key) {
    State& state = *instance().state_;
    CriticalSection::Lock lock(state.lock);
    if (!state.values.get(kSection, key))
        return;
    state.values.remove(kSection, key);
    state.dirty = true;
    noteChange();
}

std::uint64_t EditorPreferences::changeCount() {
    instance();
    return changes.load(std::memory_order_acquire);
}

Status EditorPreferences::open(const std::string& path) {
    State& state = *instance().state_;
    CriticalSection::Lock writing(state.writing);
    if (Status written = state.write(); !written)
        return written;
    KvIniFile file(path);
    const bool read = file.load();
    if (!read && file.status().code() != StatusCode::notFound)
        return file.status();
    CriticalSection::Lock lock(state.lock);
    state.values = std::move(file);
    state.path = path;
    state.dirty = false;
    noteChange();
    return {};
}

Status EditorPreferences::flush() {
    State& state = *instance().state_;
    CriticalSection::Lock writing(state.writing);
    return state.write();
}

Status EditorPreferences::close() {
    State& state = *instance().state_;
    CriticalSection::Lock writing(state.writing);
    const Status written = state.write();
    CriticalSection::Lock lock(state.lock);
    state.path.clear();
    return written;
}

bool EditorPreferences::isDirty() {
    State& state = *instance().state_;
    CriticalSection::Lock lock(state.lock);
    return state.dirty && !state.path.empty();
}
