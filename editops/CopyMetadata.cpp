#include "editops/CopyMetadata.h"

#include "editops/TrackGroups.h"
#include "platform/project/CurrentProject.h"
#include "platform/store/Edit.h"

#include <algorithm>

namespace cutroom {

namespace {

// The keys that describe a log, in the order of their copying.
constexpr const char* kLogKeys[] = {"scene",
                                    "shot",
                                    "who",
                                    "description",
                                    "notes",
                                    "reelid",
                                    "reelid1",
                                    "24P_reel",
                                    "camreel",
                                    "cam_date",
                                    "lab_reel",
                                    "comp_reel",
                                    "frame_rate",
                                    "AudioInputSampleRate",
                                    "compression format",
                                    "frame_based",
                                    "pulldown",
                                    "sequence",
                                    "Source Format",
                                    "Aspect Ratio",
                                    "media_date",
                                    "take",
                                    "source_medium"};

// Those that describe its media.
constexpr const char* kMediaKeys[] = {"METADATA_CORE",  "METADATA_BUFFERFORMAT",
                                      "METADATA_VIDEO", "METADATA_VIDEOSEQUENCE",
                                      "stripv_width",   "stripv_height"};

// How far beyond an end of the copy a cue may lie, in seconds: 1e-6, and the rounding error of a
// time that was moved.
constexpr double kTolerance = 1e-6 + 1e-9;

configb configurationOf(const Edit& edit) {
    const Edit::Lock lock(edit);
    return edit.config();
}

void copyCustomAttributes(const Edit& source, Edit& copy) {
    const configb values = configurationOf(source);
    for (const LogAttribute& attribute : CurrentProject::getCustomAttributes()) {
        const auto value = values.getString(attribute.getID());
        if (value && !value->empty() && attribute.isApplicableTo(source.getLogType()) &&
            attribute.isApplicableTo(copy.getLogType()))
            copy.setConfig(attribute.getID(), *value);
    }
}

void copyLabels(const Edit& source, Edit& copy, double start) {
    copy.remove_all_labels();
    for (const EditLabel& label : source.getLabels())
        if (label.is_valid())
            copy.addLabel(label);
    copy.adjust_all_labels_by_time(start);
}

void copyBurntIn(const Edit& source, Edit& copy) {
    const BITCEffect shown = source.getBITC();
    BITCEffect fresh;
    for (const BITCLabel& label : shown.labels())
        fresh.addLabel(label);
    fresh.setEnabled(shown.enabled());
    copy.setBITC(fresh);
}

bool travels(const Cue& cue) {
    return cue.hasFlag(kCueVisible) && cue.hasFlag(kCueUser) && !cue.hasFlag(kCueTransient);
}

} // namespace

ChannelPairs pairChannels(const EditPtr& source, const EditPtr& copy) {
    ChannelPairs pairs;
    for (const EditChanType type :
         {kChanVideo, kChanAudio, kChanLevels, kChanSubtitle, kChanOther}) {
        const auto from = source->getChans(type);
        const auto to = copy->getChans(type);
        for (std::size_t i = 0; i < std::min(from.size(), to.size()); ++i)
            pairs[from[i]] = to[i];
    }
    return pairs;
}

void copyConfigKeys(const EditPtr& source, const EditPtr& copy, std::span<const char* const> keys) {
    const configb values = configurationOf(*source);
    for (const char* key : keys)
        if (const auto value = values.getString(key))
            copy->setConfig(key, *value);
}

void copyCues(const EditPtr& source, const EditPtr& copy, double offset,
              const ChannelPairs& channels) {
    const double start = copy->getStartTime();
    const double end = copy->getEndTime();
    const double first = std::min(start, end) - kTolerance;
    const double last = std::max(start, end) + kTolerance;
    CueList cues = copy->getCues();
    constexpr double kSurely = 1; // seconds; a cue this far outside is out whatever rounding does
    const CueList all = source->getCues();
    for (const Cue& own : all.cues()) {
        const double place = own.getTime() + offset;
        if (!travels(own) || place < first - kSurely || place > last + kSurely)
            continue;
        Cue cue = own;
        cue.setExtID(IdStamp::make());
        const auto pair = channels.find(cue.getChannel());
        const bool stays = pair != channels.end() && copy->isValidChan(pair->second);
        cue.setChannel(stays ? pair->second : IdStamp());
        if (offset != 0)
            cue.slide(offset);
        if (cue.getTime() >= first && cue.getTime() <= last)
            cues.addCuePoint(cue);
    }
    copy->setCues(cues, false);
}

void copyDetails(const EditPtr& source, const EditPtr& copy, double start) {
    copy->setDropFrame(source->getDropFrame());
    copy->setSequencePlaybackFormat(source->findSequencePlaybackFormat());
    copyBurntIn(*source, *copy);
    copyLabels(*source, *copy, start);
    for (const auto& [from, to] : pairChannels(source, copy))
        copy->setChanUserName(to, source->getChanUserName(from));
    recreateTrackGroups(source, copy);
    if (const Kv::Ptr<Aud::SimpleMixState> mix = source->getAudioMix(); mix && mix->valid())
        copy->setAudioMix(Kv::makePtr<Aud::SimpleMixState>(*mix));
    copy->set_original_material(source->get_original_material());
    copyConfigKeys(source, copy, kLogKeys);
    copyCustomAttributes(*source, *copy);
    copyConfigKeys(source, copy, kMediaKeys);
}

} // namespace cutroom
