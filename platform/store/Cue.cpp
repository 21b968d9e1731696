#include "platform/store/Cue.h"

#include "platform/project/CurrentProject.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace {

constexpr std::size_t kNotFound = std::numeric_limits<std::size_t>::max();

bool isStorable(const Cue& cue) {
    return cutroom::isStorableTime(cue.getTime()) &&
           (!cue.hasEnd() || cutroom::isStorableTime(cue.getEndTime()));
}

} // namespace

Cue::Cue() : extId_(IdStamp::make()) {}

Cue::Cue(double time, LightweightString<wchar_t> name)
    : time_(time), extId_(IdStamp::make()), name_(std::move(name)) {}

Cue::Cue(const TimeRange& range, LightweightString<wchar_t> name)
    : time_(range.getStart()), end_(range.getEnd()), extId_(IdStamp::make()),
      name_(std::move(name)) {}

void Cue::slide(double seconds) noexcept {
    time_ += seconds;
    if (hasEnd())
        end_ += seconds;
}

LightweightString<wchar_t> Cue::getCustomMetadata(const LightweightString<char>& key) const {
    const auto found = std::find_if(custom_.begin(), custom_.end(),
                                    [&](const auto& entry) { return entry.first == key; });
    return found == custom_.end() ? LightweightString<wchar_t>() : found->second;
}

void Cue::setCustomMetadata(const LightweightString<char>& key, LightweightString<wchar_t> value) {
    const auto found = std::find_if(custom_.begin(), custom_.end(),
                                    [&](const auto& entry) { return entry.first == key; });
    if (value.empty()) {
        if (found != custom_.end())
            custom_.erase(found);
    } else if (found != custom_.end()) {
        found->second = std::move(value);
    } else {
        custom_.emplace_back(key, std::move(value));
    }
}

bool CueFilter::accepts(const Cue& cue) const noexcept {
    const unsigned flags = cue.getFlags();
    return (flags & wanted_) == wanted_ && (flags & ~static_cast<unsigned>(allowed_)) == 0;
}

std::size_t CueList::addCuePoint(Cue cue) {
    if (!isStorable(cue))
        return kNotFound;
    const std::size_t index = nextAfter(cue.getTime());
    std::vector<Cue>& cues = cues_.write();
    cues.insert(cues.begin() + static_cast<std::ptrdiff_t>(index), std::move(cue));
    return index;
}

bool CueList::setCuePoint(std::size_t index, Cue cue) {
    if (index >= cues().size() || !isStorable(cue))
        return false;
    if (getCuePoint(index).getTime() == cue.getTime()) {
        cues_.write()[index] = std::move(cue);
    } else {
        deleteCue(index);
        addCuePoint(std::move(cue)); // where there is room for it now
    }
    return true;
}

bool CueList::deleteCue(std::size_t index) {
    if (index >= cues().size())
        return false;
    std::vector<Cue>& cues = cues_.write();
    cues.erase(cues.begin() + static_cast<std::ptrdiff_t>(index));
    return true;
}

std::size_t CueList::find(const IdStamp& extId) const noexcept {
    const auto found = std::find_if(cues().begin(), cues().end(),
                                    [&](const Cue& cue) { return cue.getExtID() == extId; });
    return found == cues().end() ? kNotFound : static_cast<std::size_t>(found - cues().begin());
}

std::size_t CueList::nextAfter(double seconds) const noexcept {
    const auto found =
        std::upper_bound(cues().begin(), cues().end(), seconds,
                         [](double time, const Cue& cue) { return time < cue.getTime(); });
    return static_cast<std::size_t>(found - cues().begin());
}

void CueList::slide(double seconds) {
    for (Cue& cue : cues_.write())
        cue.slide(seconds);
}

// The project's custom attributes for cues are those whose id begins with "cue."; the key of the
// field is what follows.
Cue::Metadata Cue::getCustomMetadataDefinitions() {
    static constexpr std::string_view kPrefix = "cue.";
    Metadata fields;
    for (const LogAttribute& attribute : CurrentProject::getCustomAttributes())
        if (const std::string id = attribute.getID(); id.starts_with(kPrefix))
            fields.emplace_back(id.substr(kPrefix.size()), attribute.getDisplayName());
    return fields;
}
