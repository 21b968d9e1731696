#include "platform/prefs/Configuration.h"

#include "platform/base/Strings.h"
#include "platform/files/Files.h"
#include "platform/files/KvIniFile.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>

namespace cutroom {

namespace {

constexpr std::string_view kSection = "config";

} // namespace

struct Configuration::State {
    mutable CriticalSection lock{LockRank::leaf};
    std::map<std::string, std::string, std::less<>> values CUTROOM_GUARDED_BY(lock);
    std::set<std::string, std::less<>> asked CUTROOM_GUARDED_BY(lock);
};

Configuration::Configuration() : state_(std::make_unique<State>()) {}
Configuration::~Configuration() = default;

Configuration& Configuration::instance() { return ProcessSingleton<Configuration>::get(); }

void Configuration::set(std::string_view key, std::string_view text) {
    CriticalSection::Lock lock(state_->lock);
    if (text.empty())
        state_->values.erase(std::string(key));
    else
        state_->values.insert_or_assign(std::string(key), std::string(text));
}

Status Configuration::load(const std::string& path) {
    KvIniFile file(path);
    if (!file.load())
        return file.status().code() == StatusCode::notFound ? Status() : file.status();
    for (const std::string& key : file.keys(kSection))
        set(key, file.getText(kSection, key));
    return {};
}

std::string Configuration::get(std::string_view key) const {
    CriticalSection::Lock lock(state_->lock);
    if (!state_->asked.contains(key))
        state_->asked.emplace(key);
    const auto at = state_->values.find(key);
    return at == state_->values.end() ? std::string() : at->second;
}

std::vector<std::string> Configuration::keysAsked() const {
    CriticalSection::Lock lock(state_->lock);
    return {state_->asked.begin(), state_->asked.end()};
}

int configInt(std::string_view key, int otherwise, int min, int max) {
    const std::optional<long long> value = parseInt(Configuration::instance().get(key));
    if (!value)
        return otherwise;
    return static_cast<int>(std::clamp<long long>(*value, min, std::max(min, max)));
}

double configDouble(std::string_view key, double otherwise, double min, double max) {
    const std::optional<double> value = parseDouble(Configuration::instance().get(key));
    if (!value || *value != *value) // no number
        return otherwise;
    return std::clamp(*value, min, std::max(min, max));
}

} // namespace cutroom
