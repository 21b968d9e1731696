// The history of a Vob's edit, and how the edit is viewed, kept in the edit's configuration.
#include "platform/base/Strings.h"
#include "platform/host/Redraw.h"
#include "platform/store/Edit.h"
#include "platform/store/EditManager.h"
#include "vob/Vob.h"

#include <optional>

using Kv::MarkTypes::In;
using Kv::MarkTypes::Out;

namespace {

constexpr char kCurrent[] = "BACKUP_CURRENT";
constexpr char kMark1[] = "BACKUP_MARK1";
constexpr char kMark2[] = "BACKUP_MARK2";
constexpr char kChanSel[] = "BACKUP_CHAN_SEL";
constexpr char kCuts[] = "BACKUP_CUTS_";
constexpr char kSegments[] = "BACKUP_SEGS_";
constexpr char kMarkIn[] = "BACKUP_MARK_IN_";
constexpr char kMarkOut[] = "BACKUP_MARK_OUT_";
constexpr char kRangeStart[] = "BACKUP_RANGE_START";
constexpr char kRangeEnd[] = "BACKUP_RANGE_END";

std::string channelKey(const char* key, const IdStamp& channel) { return key + channel.asString(); }

void setOrRemove(Edit& edit, const std::string& key, const std::string& value) {
    if (value.empty())
        edit.removeConfig(key);
    else
        edit.setConfig(key, value);
}

std::string markText(double mark) { return mark == kNoTime ? "" : cutroom::toText(mark); }

// A time as stored; nothing when it is absent or makes no sense.
std::optional<double> readTime(const Edit& edit, const std::string& key) {
    const auto text = edit.getConfig(key);
    const auto time = text ? cutroom::parseDouble(*text) : std::nullopt;
    return time && (*time == kNoTime || cutroom::isStorableTime(*time)) ? time : std::nullopt;
}

std::string readText(const Edit& edit, const std::string& key) {
    return edit.getConfig(key).value_or(std::string());
}

} // namespace

// --- history -------------------------------------------------------------------------------------

void Vob::makeBackup() {
    if (const EditPtr edit(cookie_); edit)
        EditManager::instance().makeBackup(edit);
}

bool Vob::undoRequest() {
    const Glib::UpdateDeferrer deferred;
    if (const EditPtr edit(cookie_); edit)
        EditManager::instance().undo(edit);
    return true;
}

bool Vob::redoRequest() {
    const Glib::UpdateDeferrer deferred;
    if (const EditPtr edit(cookie_); edit)
        EditManager::instance().redo(edit);
    return true;
}

// --- storing -------------------------------------------------------------------------------------

bool Vob::holdsBackupRole() const {
    if (edit_->getLogType() != kLogTypeEdit)
        return hasStatus(kStatusSource);
    return hasStatus(kStatusRecord) || edit_->isClipboard();
}

void Vob::storeBackupDetails() {
    if (edit_ && holdsBackupRole())
        storeViewState();
}

void Vob::storeViewState() {
    edit_->setConfig(kCurrent, getCurrentTime());
    edit_->setConfig(kMark1, cutroom::toText(module_.getMark(In)));
    edit_->setConfig(kMark2, cutroom::toText(module_.getMark(Out)));
    edit_->setConfig(kChanSel,
                     cutroom::toText(static_cast<unsigned long long>(module_.getSelectedMask())));
    if (edit_->getLogType() == kLogTypeEdit) {
        for (const IdStamp& channel : edit_->getChans())
            storeChannelBackup(channel);
        edit_->setConfig(kRangeStart, viewRegion_.getStart());
        edit_->setConfig(kRangeEnd, viewRegion_.getEnd());
    }
    edit_->setDirty();
}

void Vob::storeChannelBackup(const IdStamp& channel) {
    const TrackSelections* const selections = findTrackSelections(channel);
    setOrRemove(*edit_, channelKey(kCuts, channel),
                selections ? selections->getUnjoinedCuts().asString() : std::string());
    setOrRemove(*edit_, channelKey(kSegments, channel),
                selections ? selections->segmentsAsString() : std::string());
    setOrRemove(*edit_, channelKey(kMarkIn, channel), markText(module_.getMark(channel, In)));
    setOrRemove(*edit_, channelKey(kMarkOut, channel), markText(module_.getMark(channel, Out)));
}

// --- restoring -----------------------------------------------------------------------------------

void Vob::restoreBackupDetails() {
    if (!edit_ || !edit_->getConfig(kCurrent)) // never stored: all is as it should be
        return;
    if (const auto time = readTime(*edit_, kCurrent); time && *time != kNoTime)
        storeTime(*time);
    if (const auto mask = cutroom::parseUnsigned(readText(*edit_, kChanSel)))
        module_.setSelectedMask(*mask);
    if (edit_->getLogType() != kLogTypeEdit) {
        for (const auto& [key, type] : {std::pair(kMark1, In), std::pair(kMark2, Out)})
            if (const auto mark = readTime(*edit_, key))
                markAllAt(*mark, type);
        return;
    }
    for (const IdStamp& channel : edit_->getChans())
        restoreChannelBackup(channel);
    const auto start = readTime(*edit_, kRangeStart);
    const auto end = readTime(*edit_, kRangeEnd);
    if (start && end)
        setViewRegion({*start, *end}, false);
}

void Vob::restoreChannelBackup(const IdStamp& channel) {
    module_.setMark(channel, readTime(*edit_, channelKey(kMarkIn, channel)).value_or(kNoTime), In);
    module_.setMark(channel, readTime(*edit_, channelKey(kMarkOut, channel)).value_or(kNoTime),
                    Out);
    const std::string cutsText = readText(*edit_, channelKey(kCuts, channel));
    const std::string segmentsText = readText(*edit_, channelKey(kSegments, channel));
    if (cutsText.empty() && segmentsText.empty() && !findTrackSelections(channel))
        return;
    TrackSelections& selections = *getTrackSelections(channel);
    UnjoinedCuts cuts;
    cuts.fromString(cutsText, edit_->get_edit_cel_p(channel).get());
    for (unsigned short i = cuts.size(); i > 0; --i)
        if (!cuts.getHandleRef(static_cast<unsigned short>(i - 1)).valid())
            cuts.erase(static_cast<unsigned short>(i - 1));
    selections.setCuts(cuts);
    selections.segmentsFromString(segmentsText);
}
