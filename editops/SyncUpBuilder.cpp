#include "editops/SyncUpBuilder.h"

#include "editops/CopyKinds.h"
#include "editops/CopyLog.h"
#include "editops/CopyMetadata.h"
#include "editops/CopyNames.h"
#include "editops/SyncUpChannel.h"
#include "editops/SyncUpLabels.h"
#include "editops/UnfinishedEdit.h"
#include "platform/host/StringTable.h"
#include "platform/store/Edit.h"
#include "platform/store/EditManager.h"

#include <map>
#include <optional>
#include <vector>

namespace cutroom {

namespace {

constexpr unsigned kShownSubTypes = kSubAll & ~static_cast<unsigned>(kSubDerived);

// What describes the picture, and what the sound.
constexpr const char* kPictureKeys[] = {"scene",
                                        "shot",
                                        "who",
                                        "description",
                                        "notes",
                                        "reelid",
                                        "24P_reel",
                                        "camreel",
                                        "cam_date",
                                        "lab_reel",
                                        "comp_reel",
                                        "frame_rate",
                                        "compression format",
                                        "frame_based",
                                        "pulldown",
                                        "sequence",
                                        "Source Format",
                                        "Aspect Ratio",
                                        "media_date",
                                        "take",
                                        "source_medium",
                                        "Manufacturer",
                                        "CameraModel",
                                        "stripv_width",
                                        "stripv_height"};
constexpr const char* kSoundKeys[] = {"reelid1", "AudioInputSampleRate"};

bool hasMix(const EditPtr& edit) {
    const Kv::Ptr<Aud::SimpleMixState> mix = edit->getAudioMix();
    return mix && mix->valid();
}

// Sets one input of a mix as another mix has it.
void copyInput(const Aud::SimpleMixState& from, int input, Aud::SimpleMixState& to, int as) {
    constexpr int kMost = static_cast<int>(Aud::kMaxInputs);
    if (input >= kMost || as >= kMost)
        return;
    const auto source = static_cast<unsigned char>(input), target = static_cast<unsigned char>(as);
    to.setInputLevel(target, from.getInputLevel(source));
    to.setInputPan(target, from.getInputPan(source));
    to.setInputMuteState(target, from.getInputMuteState(source));
    to.setInputSoloState(target, from.getInputSoloState(source));
    for (int mix = Aud::kMainMix; mix <= Aud::kLastMix; ++mix)
        to.setInputRoutedToMix(target, static_cast<signed char>(mix),
                               from.getInputRoutedToMix(source, static_cast<signed char>(mix)));
}

// A shot and where its time 0 lies on the picture's timeline, in seconds.
struct Shot {
    EditPtr edit;
    double at = 0;
    ChannelPairs made = {}; // the log's channel for each of its own

    TimeRange range() const {
        return TimeRange(edit->getStartTime(), edit->getEndTime()).shifted(at);
    }
};

// The whole frames of a stretch, as flicks; nothing when it holds none.
struct Frames {
    Flicks from = 0;
    Flicks to = 0;
};
std::optional<Frames> framesOf(const TimeRange& span, const Kv::FrameRate& rate) {
    if (!rate.valid() || !isStorableTime(span.getStart()) || !isStorableTime(span.getEnd()))
        return std::nullopt;
    const Flicks tolerance = toFlicks(kTimeTolerance);
    const Flicks from = toFlicks(span.getStart()) - tolerance;
    const Flicks to = toFlicks(span.getEnd()) + tolerance;
    const Frames frames{rate.frameToFlicks(rate.flicksToFrameFloor(from) + 1),
                        rate.frameToFlicks(rate.flicksToFrameFloor(to))};
    return frames.from < frames.to ? std::optional(frames) : std::nullopt;
}

// The part of the picture shot that is wanted; nothing when all is.
std::optional<TimeRange> partOf(const EditPtr& picture, const synchup_params& params) {
    if (!params.part)
        return std::nullopt;
    if (params.partStart != params.partEnd)
        return TimeRange(params.partStart, params.partEnd);
    const double in = picture->getStoredMark(Kv::MarkTypes::In);
    const double out = picture->getStoredMark(Kv::MarkTypes::Out);
    return TimeRange(in == kNoTime ? picture->getStartTime() : in,
                     out == kNoTime ? picture->getEndTime() : out);
}

class Builder {
public:
    Builder(Shot picture, Shot sound, const Frames& frames, const synchup_params& params)
        : picture_(std::move(picture)), sound_(std::move(sound)), frames_(frames), params_(params) {
    }

    // The cookie of what was built; invalid, with nothing left behind, when that failed.
    Cookie build(SyncContents contents) {
        UnfinishedEdit making(EditManager::instance().makeNewEdit(makeNewEditCookie(), 0, 0, 0,
                                                                  picture_.edit->getFrameRate()));
        if (!making)
            return {};
        log_ = making.get();
        if (!addChannels(contents))
            return {};
        describe();
        if (contents == SyncContents::described)
            describeFully();
        finish();
        return making.finish().getCookie();
    }

private:
    SyncPlace placeOf(const Shot& shot) const {
        return {shot.at - toSeconds(frames_.from), frames_.to - frames_.from};
    }

    bool add(Shot& shot, unsigned types) {
        for (const IdStamp& channel : shot.edit->getChans(types, kShownSubTypes)) {
            const IdStamp made = addSyncedChannel(log_, shot.edit, channel, placeOf(shot));
            if (!made.valid())
                return false;
            shot.made[channel] = made;
        }
        return true;
    }

    // Recorded sound comes before the picture's own, the picture before that of the sound shot.
    bool addChannels(SyncContents contents) {
        if (!add(picture_, kChanVideo) || !add(sound_, kChanAudio))
            return false;
        if (contents != SyncContents::allChannels)
            return !picture_.made.empty() && !sound_.made.empty();
        constexpr unsigned kOthers = kChanSubtitle | kChanOther;
        return add(picture_, kChanAudio) && add(sound_, kChanVideo) && add(picture_, kOthers) &&
               add(sound_, kOthers) && log_->getNumChans() > 0;
    }

    void describe() {
        log_->setName(picture_.edit->getName());
        log_->setFrameRate(picture_.edit->getFrameRate());
        log_->setDropFrame(picture_.edit->getDropFrame());
        log_->setVideoMetadata(picture_.edit->getVideoMetadata());
        log_->setAudioMetadata(sound_.edit->getAudioMetadata());
        addLabels();
        log_->write_labels_to_config();
        bringMix();
    }

    // Each channel is mixed as in its shot; what the channels feed is mixed as in the sound shot,
    // whose channels come first.
    void bringMix() {
        if (!hasMix(sound_.edit) && !hasMix(picture_.edit))
            return;
        const auto mix = hasMix(sound_.edit)
                             ? Kv::makePtr<Aud::SimpleMixState>(*sound_.edit->getAudioMix())
                             : Kv::makePtr<Aud::SimpleMixState>(std::size_t{0});
        if (hasMix(picture_.edit))
            for (const auto& [channel, made] : picture_.made)
                if (log_->getChanType(made) == kChanAudio)
                    copyInput(*picture_.edit->getAudioMix(),
                              picture_.edit->getIndexWithinType(channel), *mix,
                              log_->getIndexWithinType(made));
        log_->setAudioMix(mix);
    }

    void addLabels() {
        for (EditLabel label : picture_.edit->getLabels()) {
            label.adjustByTime(toSeconds(frames_.from) - picture_.at);
            log_->addLabel(label);
        }
        const bool apart = !(params_.soundLabel == params_.pictureLabel);
        for (EditLabel label : sound_.edit->getLabels()) {
            const bool named = apart && label.type() == params_.soundLabel.type &&
                               label.get_MediumRoll() == params_.soundLabel.mediumRoll;
            if (!named && log_->getLabel(label.type(), label.get_MediumRoll()).is_valid())
                continue;
            label.adjustByTime(toSeconds(frames_.from) - sound_.at);
            log_->addLabel(label);
        }
    }

    void describeFully() {
        copyConfigKeys(picture_.edit, log_, kPictureKeys);
        copyConfigKeys(sound_.edit, log_, kSoundKeys);
        copyCues(picture_.edit, log_, placeOf(picture_).at, picture_.made);
        copyCues(sound_.edit, log_, placeOf(sound_).at, sound_.made);
        group();
    }

    // The groups of the sound shot, as channels of the log.
    std::vector<std::vector<IdStamp>> soundGroups() const {
        const Edit::Lock lock(*sound_.edit);
        const auto list = sound_.edit->openObjectInternal();
        std::vector<std::vector<IdStamp>> groups(list->size());
        for (std::size_t i = 0; i < groups.size(); ++i)
            for (const IdStamp& channel : list->getGroupContents(i))
                if (const auto made = sound_.made.find(channel); made != sound_.made.end())
                    groups[i].push_back(made->second);
        return groups;
    }

    // The sound's groups, and the eyes of a stereoscopic picture.
    void group() {
        for (const auto& members : soundGroups())
            if (members.size() > 1)
                log_->groupChannels(members, true);
        if (picture_.edit->hasStereoscopicVideo())
            log_->groupChannels(log_->getChans(kChanVideo, kSubNormal | kSubStereoRight), true);
    }

    void finish() {
        log_->make_original(false, false);
        log_->setLogType(params_.makeGhost ? kLogTypeSyncGhost : kLogTypeEdit);
        const auto suffix = makeEditNameSuffix(kResSyncGhost);
        if (params_.makeGhost) {
            const EditLabel timecode = picture_.edit->getVideoTimecodeLabel();
            edcopy_make_sync_ghost(log_, suffix, timecode.get_abs_posn() == 0);
        } else {
            edit_modify_name(log_, suffix);
            log_->setConfig(kCopyKindKey, kCopyFlattened);
        }
        log_->setCreationDetails();
        log_->addModification(kModMetadata, true);
    }

    Shot picture_;
    Shot sound_;
    Frames frames_;
    const synchup_params& params_;
    EditModifier log_;
};

Cookie refuse(const char* why) {
    setCopyLog("%s", why);
    return {};
}

} // namespace

Cookie buildSynced(const Cookie& first, const Cookie& second, double offset,
                   const synchup_params& params, SyncContents contents) {
    Shot sound{EditPtr(convertCookie(first, 'E')), offset};
    Shot picture{EditPtr(convertCookie(second, 'E')), 0};
    if (!sound.edit || !picture.edit)
        return refuse(kSyncNoShots);
    if (!isStorableTime(offset) || sound.edit->isEmpty() || picture.edit->isEmpty())
        return refuse(kSyncNoOverlap);
    if (sound.edit->getNumChans(kChanVideo) > 0 && picture.edit->getNumChans(kChanVideo) == 0) {
        std::swap(sound.edit, picture.edit);
        sound.at = -offset;
    }
    const auto span =
        syncSpan(picture.range(), sound.range(), params, partOf(picture.edit, params));
    const auto frames = span ? framesOf(*span, picture.edit->getFrameRate()) : std::nullopt;
    if (!frames)
        return refuse(kSyncNoOverlap);
    const Cookie made =
        Builder(std::move(picture), std::move(sound), *frames, params).build(contents);
    return made.valid() ? made : refuse(kSyncNoOverlap);
}

} // namespace cutroom
