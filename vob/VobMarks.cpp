// The in and out marks of a Vob.
#include "platform/host/TransitStatus.h"
#include "platform/prefs/EditorPreferences.h"
#include "platform/store/Edit.h"
#include "vob/TrimObj.h"
#include "vob/Vob.h"

#include <algorithm>
#include <cmath>

using Kv::MarkTypes::In;
using Kv::MarkTypes::MarkType;
using Kv::MarkTypes::Out;

namespace {

VobModification marksChanged(double seconds, const IdStamp& channel) {
    VobModification change(kVobMarks);
    change.setMarkTime(seconds);
    if (channel.valid())
        change.addModifiedTrack(channel);
    return change;
}

MarkType oppositeOf(MarkType type) { return type == In ? Out : In; }

// The first selected channel with a mark; the empty id when none has one.
IdStamp firstMarked(const EditModule& module) {
    const std::vector<IdStamp> selected = module.getSelectedChans();
    const auto marked = std::find_if(selected.begin(), selected.end(), [&](const IdStamp& channel) {
        return module.isMarked(channel);
    });
    return marked == selected.end() ? IdStamp() : *marked;
}

} // namespace

// --- storing -------------------------------------------------------------------------------------

// The preference is read only when a mark is set; clearing one never puts it on the wrong side of
// the other.
void Vob::markAllAt(double seconds, MarkType type) {
    module_.markAllAt(seconds, type, seconds == kNoTime || allowAdvancedMarks());
}

void Vob::storeMarkTime(const IdStamp& channel, double seconds, MarkType type) {
    if (!edit_ || !std::isfinite(seconds))
        return;
    if (!channel.valid()) {
        markAllAt(seconds, type);
        return;
    }
    module_.setMark(channel, seconds, type);
    if (levelsBound_ && edit_->isValidChan(channel) && edit_->getChanType(channel) == kChanAudio &&
        edit_->get_edit_cel_p(channel))
        module_.setMark(edit_->getLevelsChan(channel), seconds, type);
}

void Vob::storeMarkTime(const IdStamp& channel, const TimeRange& range) {
    if (!std::isfinite(range.getStart()) || !std::isfinite(range.getEnd()))
        return;
    storeMarkTime(channel, range.getStart(), In);
    storeMarkTime(channel, range.getEnd(), Out);
}

void Vob::storeMarkTime(int chan, double seconds, MarkType type) {
    if (!edit_)
        return;
    if (chan == kChanAllSelected) {
        for (const IdStamp& channel : module_.getSelectedChans())
            storeMarkTime(channel, seconds, type);
    } else if (const IdStamp channel = edit_->getId(chan); channel.valid()) {
        storeMarkTime(channel, seconds, type);
    }
}

// --- setting -------------------------------------------------------------------------------------

void Vob::setMarkTime(int chan, double seconds, MarkType type) {
    if (!edit_ || !std::isfinite(seconds))
        return;
    const IdStamp channel = edit_->getId(chan);
    if (chan != kChanAllSelected && !channel.valid())
        return;
    storeMarkTime(chan, seconds, type);
    addModification(marksChanged(seconds, channel));
}

void Vob::setMarkTime(const IdStamp& channel, double seconds, MarkType type) {
    if (!edit_ || !std::isfinite(seconds) || (channel.valid() && !edit_->isValidChan(channel)))
        return;
    storeMarkTime(channel, seconds, type);
    addModification(marksChanged(seconds, channel));
}

void Vob::setMarkTime(const IdStamp& channel, const TimeRange& range) {
    if (!edit_ || !std::isfinite(range.getStart()) || !std::isfinite(range.getEnd()) ||
        (channel.valid() && !edit_->isValidChan(channel)))
        return;
    storeMarkTime(channel, range);
    addModification(marksChanged(range.getStart(), channel));
}

void Vob::setMarkToCurrent(int chan) { setMarkTime(chan, getCurrentTime(), In); }

void Vob::invalidateMark(int chan) {
    if (!edit_)
        return;
    const IdStamp only = chan == kChanAllSelected ? IdStamp() : edit_->getId(chan);
    for (const IdStamp& channel : module_.getSelectedChans()) {
        if (chan != kChanAllSelected && channel != only)
            continue;
        storeMarkTime(channel, kNoTime, In);
        storeMarkTime(channel, kNoTime, Out);
    }
    addModification(marksChanged(kNoTime, only));
}

// --- asking --------------------------------------------------------------------------------------

double Vob::getMarkTime(int chan) const {
    if (!edit_)
        return kNoTime;
    IdStamp channel = edit_->getId(chan == kChanAllSelected ? 0 : chan);
    if (chan == kChanAllSelected)
        if (const IdStamp marked = firstMarked(module_); marked.valid())
            channel = marked;
    return module_.getMark(channel, In);
}

bool Vob::isMarkValid() const { return module_.isMarked(); }

bool Vob::isMarkValid(int chan) const {
    if (chan == kChanAllSelected)
        return firstMarked(module_).valid();
    return edit_ && isMarkValid(edit_->getId(chan));
}

bool Vob::isMarkValid(const IdStamp& channel) const { return edit_ && module_.isMarked(channel); }

bool Vob::marksAligned(bool selectedOnly) const {
    if (!edit_)
        return true;
    const std::vector<IdStamp> channels =
        selectedOnly ? module_.getSelectedChans() : edit_->getChans();
    const auto isMarked = [&](const IdStamp& channel) { return module_.isMarked(channel); };
    const auto first = std::find_if(channels.begin(), channels.end(), isMarked);
    return std::all_of(first, channels.end(), [&](const IdStamp& channel) {
        return !isMarked(channel) ||
               (module_.getMark(channel, In) == module_.getMark(*first, In) &&
                module_.getMark(channel, Out) == module_.getMark(*first, Out));
    });
}

bool Vob::allowAdvancedMarks() {
    static const auto& allowed = *new cutroom::OncePerProcess<bool>( // never destroyed
        [] { return EditorPreferences::getPreference("Behaviour : Advanced marks", false); });
    return allowed.get();
}

// --- with the current time, and with trimming ----------------------------------------------------

void Vob::exchangeCurrentAndMark(int chan) {
    if (!edit_)
        return;
    const Kv::Ptr<Vob> self = keepAlive();
    TransitStatus::manager().prepareToLocate();
    const double in = module_.getMark(In);
    const double out = module_.getMark(Out);
    const double before = getCurrentTime();
    if (in == kNoTime && out == kNoTime)
        return;

    VobModification change(kVobTime);
    if (in != kNoTime && out != kNoTime) {
        storeTime(before == in ? out : in);
    } else {
        module_.clearMarks();
        markAllAt(before, In);
        storeTime(in != kNoTime ? in : out);
        change.addModification(kVobMarks);
        change.setMarkTime(before);
    }
    if (const IdStamp channel = edit_->getId(chan); channel.valid())
        change.addModifiedTrack(channel);
    addModification(change);
}

//   before  kept |====popped====| ... target        after  target: the popped channel's cuts have
//           the other channels are joined there            moved by target - kept
void Vob::alignMarks(MarkType type) {
    const double in = module_.getMark(In);
    const double out = module_.getMark(Out);
    if (!edit_ || in == kNoTime || out == kNoTime)
        return;
    const MarkType kept = out < in ? oppositeOf(type) : type;
    const MarkType target = oppositeOf(kept);
    const double keptTime = module_.getMark(kept);
    const double targetTime = module_.getMark(target);

    TrimObj trim(*this);
    const std::vector<IdStamp> selected = module_.getSelectedChans();
    const auto isPopped = [&](const IdStamp& channel) { return trim.isPopped(channel, keptTime); };
    const auto first = std::find_if(selected.begin(), selected.end(), isPopped);
    if (first == selected.end() || std::all_of(selected.begin(), selected.end(), isPopped))
        return;

    const Kv::Ptr<Vob> self = keepAlive();
    const EditPtr edit = edit_;
    makeBackup();
    trim.setSnapChannel(*first);
    const bool trimmed = trim.trimFrames(targetTime - keptTime, true, false).ok();
    if (!trimmed || edit != edit_) // a client that was told may have exchanged the edit
        return;
    clearUnjoinedCuts();
    describe(VobModification(kVobMarks | kVobCuts));
    markAllAt(kNoTime, kept);
    markAllAt(targetTime, target);
    edit->addModification(kModTrimFinished, true);
}
