#include "editops/SyncUpMatch.h"

#include <algorithm>
#include <numeric>

namespace cutroom {

namespace {

// Sounds with labels in the order of their labels.
class SoundIndex {
public:
    SoundIndex(const CookieVec& sounds, const synchup_params& params) {
        for (const Cookie& sound : sounds) {
            LabelledShot shot =
                readLabelled(sound, kChanAudio, params.soundLabel, params.soundOffset);
            if (shot.label == kNoTime)
                unlabelled_ = true;
            else
                shots_.push_back(std::move(shot));
        }
        std::stable_sort(
            shots_.begin(), shots_.end(),
            [](const LabelledShot& a, const LabelledShot& b) { return a.label < b.label; });
        double last = -kNoTime;
        for (const LabelledShot& shot : shots_)
            ends_.push_back(last = std::max(last, shot.end()));
    }

    // The sounds that have a moment in common with the picture; the one that covers most of it
    // comes first.
    std::vector<const LabelledShot*> covering(const LabelledShot& picture) const {
        std::vector<const LabelledShot*> found;
        auto later =
            std::partition_point(shots_.begin(), shots_.end(), [&](const LabelledShot& shot) {
                return shot.label <= picture.end();
            });
        for (auto i = later - shots_.begin();
             i-- > 0 && ends_[static_cast<std::size_t>(i)] > picture.label;)
            if (const LabelledShot& shot = shots_[static_cast<std::size_t>(i)];
                shot.end() > picture.label && shot.shot != picture.shot)
                found.push_back(&shot);
        std::reverse(found.begin(), found.end());
        std::stable_sort(found.begin(), found.end(),
                         [&](const LabelledShot* a, const LabelledShot* b) {
                             return common(*a, picture) > common(*b, picture);
                         });
        return found;
    }
    bool allUnlabelled() const noexcept { return shots_.empty() && unlabelled_; }

private:
    static double common(const LabelledShot& a, const LabelledShot& b) {
        return std::min(a.end(), b.end()) - std::max(a.label, b.label);
    }

    std::vector<LabelledShot> shots_;
    std::vector<double> ends_; // for each sound, the latest end of it and all before it
    bool unlabelled_ = false;
};

SyncMatch matchOne(const LabelledShot& picture, const SoundIndex& sounds,
                   const synchup_params& params) {
    SyncMatch match;
    match.offset.refusal = kSyncNoOverlap;
    if (!picture.shot.valid())
        match.offset.refusal = kSyncNoShots;
    else if (picture.label == kNoTime || sounds.allUnlabelled())
        match.offset.refusal = kSyncNoLabels;
    if (!picture.shot.valid() || picture.label == kNoTime)
        return match;
    bool first = true;
    for (const LabelledShot* sound : sounds.covering(picture)) {
        const SyncOffset offset = offsetBetween(*sound, picture, params);
        if (first || !offset.refusal)
            match.offset = offset;
        first = false;
        if (offset.refusal)
            continue;
        match.sound = sound->shot;
        break;
    }
    return match;
}

} // namespace

std::vector<SyncMatch> matchSounds(const CookieVec& pictures, const CookieVec& sounds,
                                   const synchup_params& params) {
    const SoundIndex index(sounds, params);
    std::vector<SyncMatch> matches;
    matches.reserve(pictures.size());
    for (const Cookie& picture : pictures) {
        const LabelledShot shot =
            readLabelled(picture, kChanVideo, params.pictureLabel, params.soundOffset);
        matches.push_back(matchOne(shot, index, params));
        matches.back().picture = picture;
    }
    return matches;
}

} // namespace cutroom
