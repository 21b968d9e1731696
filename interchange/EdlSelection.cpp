#include "interchange/EdlSelection.h"

#include "platform/base/Strings.h"

#include <algorithm>

namespace cutroom {

namespace {

bool hasClips(const Track& track) {
    return std::any_of(track.items.begin(), track.items.end(), [](const Item& item) {
        return item.type == ItemType::clip || item.type == ItemType::nested;
    });
}

// Tells whether all of the track was read from an edit list. Only such picture tracks can go into
// one list together.
bool isListed(const Track& track) {
    return std::all_of(track.items.begin(), track.items.end(), [](const Item& item) {
        return item.type == ItemType::gap || item.type == ItemType::transition ||
               !item.channel.empty();
    });
}

std::string placesOf(const Timeline& timeline) {
    std::string all;
    int pictures = 0;
    for (const Track& track : timeline.tracks)
        if (track.kind == TrackKind::video) {
            const std::string place = "V" + toText(static_cast<long long>(++pictures));
            all += (all.empty() ? "" : ", ") + place;
            if (!track.name.empty() && track.name != place)
                all += " (" + track.name + ")";
        }
    return all;
}

// The track that `name` means; -1 when there is none.
int trackNamed(const Timeline& timeline, const std::string& name) {
    int pictures = 0;
    int sounds = 0;
    int byPlace = -1;
    for (std::size_t i = 0; i < timeline.tracks.size(); ++i) {
        const Track& track = timeline.tracks[i];
        if (!track.name.empty() && track.name == name)
            return static_cast<int>(i);
        const bool picture = track.kind == TrackKind::video;
        if (!picture && track.kind != TrackKind::audio)
            continue;
        const int number = picture ? ++pictures : ++sounds;
        if (name == (picture ? "V" : "A") + toText(static_cast<long long>(number)))
            byPlace = static_cast<int>(i);
    }
    return byPlace;
}

} // namespace

Result<std::vector<int>> edlTracksFor(const Timeline& timeline, const std::string& wanted,
                                      long& left) {
    const int chosen = wanted.empty() ? -1 : trackNamed(timeline, wanted);
    if (!wanted.empty() && chosen < 0)
        return Status(StatusCode::notFound, wanted, "the edit has no such track");
    std::vector<int> tracks;
    int pictures = 0;
    bool listed = true;
    const bool soundAlone =
        chosen >= 0 && timeline.tracks[static_cast<std::size_t>(chosen)].kind != TrackKind::video;
    for (int i = 0; i < static_cast<int>(timeline.tracks.size()); ++i) {
        const Track& track = timeline.tracks[static_cast<std::size_t>(i)];
        const bool picture = track.kind == TrackKind::video;
        const bool holdable = picture || track.kind == TrackKind::audio || isListed(track);
        const bool excluded = chosen >= 0 && i != chosen && (picture || soundAlone);
        if (!hasClips(track) && !(picture && isListed(track)))
            continue;
        left += !holdable;
        if (!holdable || excluded)
            continue;
        tracks.push_back(i);
        pictures += picture && hasClips(track);
        listed = listed && (!picture || isListed(track));
    }
    if (pictures > 1 && !listed)
        return Status(StatusCode::failed, timeline.name,
                      "has several picture tracks and an edit list holds one; choose it with "
                      "--track: " +
                          placesOf(timeline));
    return tracks;
}

} // namespace cutroom
