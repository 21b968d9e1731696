#include "interchange/MarkerImport.h"

#include "export/SubtitleText.h"

#include <algorithm>
#include <deque>
#include <map>
#include <optional>
#include <tuple>
#include <utility>

namespace cutroom {

namespace {

// Words joined by single blanks, and arrows as short as where they would read as times: what
// subtitles show of a text, in however many lines.
std::wstring words(std::wstring_view text) {
    std::wstring joined;
    bool pending = false;
    for (const wchar_t c : text) {
        if (c <= L' ' || c == L'\x7F' || c == L'\x85' || c == L'\u2028' || c == L'\u2029') {
            pending = !joined.empty();
            continue;
        }
        if (std::exchange(pending, false))
            joined += L' ';
        joined += c;
    }
    return withShortArrows(joined);
}

std::wstring shownText(const Cue& cue) {
    std::wstring text = words(cue.getDescription());
    return text.empty() ? words(cue.getName()) : text;
}

// The edit's markers; each is matched with at most one of the file's.
class Existing {
public:
    Existing(const std::vector<Cue>& cues, const MarkerPlaces& places) : places_(places) {
        taken_.resize(cues.size());
        for (std::size_t i = 0; i < cues.size(); ++i) {
            const std::int64_t frame = places.frameAt(cues[i].getTime());
            equal_[{frame, cues[i].getName(), cues[i].getDescription()}].push_back(i);
            named_[{frame, cues[i].getName(), {}}].push_back(i);
            shown_[{frame, shownText(cues[i]), {}}].push_back(i);
        }
    }

    // The index of one with the same description too; of one of the same name or shown text.
    std::optional<std::size_t> takeEqual(const MarkerRead& read) {
        return read.saidName ? take(equal_, read, read.cue.getName(), read.cue.getDescription())
                             : std::nullopt;
    }
    std::optional<std::size_t> takeSame(const MarkerRead& read) {
        return read.saidName ? take(named_, read, read.cue.getName(), {})
                             : take(shown_, read, words(read.cue.getName()), {});
    }

private:
    using Key = std::tuple<std::int64_t, std::wstring, std::wstring>;
    using Places = std::map<Key, std::deque<std::size_t>>;

    std::optional<std::size_t> take(Places& among, const MarkerRead& read, std::wstring text,
                                    std::wstring description) {
        const auto found = among.find(
            {places_.frameAt(read.cue.getTime()), std::move(text), std::move(description)});
        if (found == among.end())
            return std::nullopt;
        std::deque<std::size_t>& indexes = found->second;
        while (!indexes.empty()) {
            const std::size_t index = indexes.front();
            indexes.pop_front();
            if (!taken_[index]) {
                taken_[index] = true;
                return index;
            }
        }
        return std::nullopt;
    }

    const MarkerPlaces& places_;
    std::vector<bool> taken_;
    Places equal_;
    Places named_;
    Places shown_;
};

// Takes over what the file says. A place that already has the file's timecode is kept, since it may
// be more exact; so is the end.
void takeOver(Cue& cue, const MarkerRead& read, const MarkerPlaces& places) {
    if (read.saidEnd) {
        const bool sameEnd =
            cue.hasEnd() && read.cue.hasEnd() &&
            places.frameAt(cue.getEndTime()) == places.frameAt(read.cue.getEndTime());
        if (!sameEnd)
            cue.setEndTime(std::max(read.cue.getEndTime(), cue.getTime()));
    }
    if (read.saidDescription)
        cue.setDescription(read.cue.getDescription());
    if (read.saidColour)
        cue.setColour(read.cue.getColour());
    for (const std::string& field : read.fields)
        cue.setCustomMetadata(field, read.cue.getCustomMetadata(field));
}

// For each of the file's markers, the index of the cue with which it is matched.
using Matches = std::vector<std::optional<std::size_t>>;

Matches match(const CueList& cues, const MarkerFile& file, const MarkerPlaces& places) {
    Existing existing(cues.cues(), places);
    Matches matches;
    for (const MarkerRead& read : file.markers)
        matches.push_back(existing.takeEqual(read));
    for (std::size_t i = 0; i < matches.size(); ++i)
        if (!matches[i])
            matches[i] = existing.takeSame(file.markers[i]);
    return matches;
}

} // namespace

MarkerPlan planMarkers(const CueList& cues, const MarkerFile& file, const MarkerPlaces& places,
                       MarkerConflict conflict) {
    MarkerPlan plan;
    std::vector<Cue> all = cues.cues();
    Matches matches(file.markers.size());
    if (conflict != MarkerConflict::both)
        matches = match(cues, file, places);
    for (std::size_t i = 0; i < matches.size(); ++i) {
        const MarkerRead& read = file.markers[i];
        const std::optional<std::size_t> same = matches[i];
        if (!same) {
            all.push_back(read.cue);
            ++plan.added;
            plan.behind += places.isBehind(read.cue.getTime()) ? 1 : 0;
            continue;
        }
        Cue changed = all[*same];
        if (conflict == MarkerConflict::replace)
            takeOver(changed, read, places);
        if (changed == all[*same])
            ++plan.kept;
        else
            ++plan.replaced;
        all[*same] = std::move(changed);
    }
    std::stable_sort(all.begin(), all.end(),
                     [](const Cue& a, const Cue& b) { return a.getTime() < b.getTime(); });
    for (const Cue& cue : all) // each goes to the end, which costs nothing
        plan.cues.addCuePoint(cue);
    return plan;
}

} // namespace cutroom
