#include "platform/project/MediaStatus.h"

#include "platform/base/Characters.h"
#include "platform/files/Files.h"
#include "platform/project/CurrentProject.h"

#include <array>
#include <optional>

namespace {

constexpr std::string_view kFileScheme = "file";

// The scheme of a URL ("file", "https"); empty for a path. One letter is a drive, no scheme.
std::string_view schemeOf(std::string_view location) noexcept {
    const std::size_t colon = location.find(':');
    if (colon == std::string_view::npos || colon < 2 || !cutroom::isLetter(location.front()))
        return {};
    for (const char c : location.substr(0, colon))
        if (!cutroom::isLetter(c) && !cutroom::isDigit(c) && c != '+' && c != '-' && c != '.')
            return {};
    return location.substr(colon + 1).starts_with("//") ? location.substr(0, colon)
                                                        : std::string_view();
}

// What lies between "//" and the next '/'.
std::string_view hostOf(std::string_view location, std::string_view scheme) noexcept {
    const std::string_view rest = location.substr(scheme.size() + 3);
    return rest.substr(0, rest.find('/'));
}

// The first `levels` names of an absolute path, or nothing when it has fewer.
std::string_view leadingNames(std::string_view path, int levels) noexcept {
    std::size_t at = 0;
    for (int i = 0; i < levels; ++i) {
        const std::size_t next = path.find('/', at + 1);
        const std::size_t end = next == std::string_view::npos ? path.size() : next;
        if (at >= path.size() || end <= at + 1)
            return {};
        at = end;
    }
    return path.substr(0, at);
}

std::string driveOfPath(std::string_view path) {
    if (path.size() >= 2 && cutroom::isLetter(path[0]) && path[1] == ':')
        return {cutroom::toCapital(path[0]), ':'};
    if (!path.starts_with('/'))
        return {};
    struct MountRule {
        std::string_view prefix;
        int levels; // names that the mount point has
    };
    static constexpr std::array<MountRule, 4> kRules = {
        {{"/Volumes/", 2}, {"/mnt/", 2}, {"/media/", 3}, {"/run/media/", 4}}};
    for (const MountRule& rule : kRules)
        if (path.starts_with(rule.prefix))
            if (const std::string_view mount = leadingNames(path, rule.levels); !mount.empty())
                return std::string(mount);
    return "/";
}

} // namespace

namespace cutroom {

std::string localPathOf(std::string_view location) {
    if (location.find('\0') != std::string_view::npos)
        return {};
    const std::string_view scheme = schemeOf(location);
    if (scheme.empty())
        return std::string(location);
    if (scheme != kFileScheme)
        return {};
    const std::string_view host = hostOf(location, scheme);
    if (!host.empty() && host != "localhost")
        return {};
    const std::optional<std::string> path =
        cutroom::percentDecoded(location.substr(scheme.size() + 3 + host.size()));
    return path && path->find('\0') == std::string::npos ? *path : std::string();
}

} // namespace cutroom

DriveID DriveID::of(std::string_view location) {
    DriveID drive;
    const std::string_view scheme = schemeOf(location);
    const std::string local = cutroom::localPathOf(location);
    if (!local.empty())
        drive.text_ = driveOfPath(local);
    else if (!scheme.empty() && scheme != kFileScheme)
        drive.text_ = std::string(scheme) + "://" + std::string(hostOf(location, scheme));
    return drive;
}

DriveID DriveID::fromString(std::string_view text) {
    DriveID drive;
    if (text != "0")
        drive.text_ = std::string(text);
    return drive;
}

MediaStatus& MediaStatus::instance() { return cutroom::ProcessSingleton<MediaStatus>::get(); }

MediaStatus::State MediaStatus::get(const std::string& location) {
    const std::string path = cutroom::localPathOf(location);
    if (path.empty())
        return State::unknown;
    {
        CriticalSection::Lock lock(lock_);
        if (const auto known = states_.find(location); known != states_.end())
            return known->second;
    }
    const std::string folder = CurrentProject::getFolder();
    const std::string whole = folder.empty() ? path : cutroom::joinPath(folder, path);
    const State state = cutroom::fileExists(whole) ? State::present : State::absent;
    CriticalSection::Lock lock(lock_);
    states_.insert_or_assign(location, state);
    return state;
}

void MediaStatus::forget(const std::string& location) {
    CriticalSection::Lock lock(lock_);
    states_.erase(location);
}

void MediaStatus::forgetAll() {
    CriticalSection::Lock lock(lock_);
    states_.clear();
}

std::size_t MediaStatus::size() const {
    CriticalSection::Lock lock(lock_);
    return states_.size();
}
