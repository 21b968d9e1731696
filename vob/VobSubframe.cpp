// Edit operations performed through a Vob, and the check that keeps cuts on frame boundaries.
#include "platform/base/Log.h"
#include "platform/base/Timecode.h"
#include "platform/host/StringTable.h"
#include "platform/host/UserMessages.h"
#include "platform/prefs/Configuration.h"
#include "platform/project/CurrentProject.h"
#include "platform/store/Edit.h"
#include "vob/SubframeCheck.h"
#include "vob/Vob.h"

#include <optional>

using cutroom::Status;
using cutroom::StatusCode;

namespace {

bool checks() {
    static const auto& value =
        *new cutroom::ConfigValue<int>("check_quantise", 1); // never destroyed
    return value.get() != 0;
}

bool repairs() {
    static const auto& value =
        *new cutroom::ConfigValue<int>("auto_fix_subframe_errors", 1); // never destroyed
    return value.get() != 0;
}

bool warningsDisabled() {
    static const auto& value =
        *new cutroom::ConfigValue<int>("disable_subframe_warnings", 0); // never destroyed
    return value.get() != 0;
}

void replace(std::wstring& text, std::wstring_view what, const std::wstring& with) {
    if (const auto at = text.find(what); at != text.npos)
        text.replace(at, what.size(), with);
}

// The names of the channels that are edited together with `channel`, itself included.
std::wstring groupName(const Edit& edit, const IdStamp& channel) {
    const Edit::Lock lock(edit);
    const Kv::Ptr<ChannelGroupList> groups = edit.openObjectInternal();
    const std::size_t index = groups->find(channel);
    if (index == SIZE_MAX)
        return edit.getChanDisplayName(channel);
    std::wstring names;
    for (const IdStamp& member : groups->getGroupContents(index))
        names += (names.empty() ? L"" : L", ") + edit.getChanDisplayName(member);
    return names;
}

std::wstring describe(const Edit& edit, const IdStamp& channel, const ChannelEvent& event) {
    const cutroom::TimecodeFormat format{edit.getFrameRate(),
                                         CurrentProject::getDefaults().dropFrame};
    const std::string timecode =
        cutroom::timecodeText(format.rate.flicksToFrameFloor(event.time), format);
    std::wstring text = resourceStrW(cutroom::kResSubframeError);
    replace(text, L"$TIMECODE$", cutroom::toWide(timecode));
    replace(text, L"$NAME$", groupName(edit, channel)); // last: a name may hold anything
    return text;
}

// Moves all points to frames, then joins what that left in pieces.
void repair(Cel& cel, const Kv::FrameRate& rate) {
    for (const CelSimplify mode : {CelSimplify::quantise, CelSimplify::joinContinuous})
        if (cel.get_num_events() > 0)
            if (const Status status =
                    cel.simplify({cel.getStartTime(), cel.getEndTime()}, mode, rate);
                !status)
                LogBoth("Subframe edit not repaired: %s\n", status.message().c_str());
}

// The first point of a channel that is off its frame; nothing when that is the channel's first or
// last point.
std::optional<ChannelEvent> findOffFrame(const Edit& edit, const IdStamp& channel) {
    const Edit::Lock lock(edit);
    const Kv::Ptr<Cel> cel = edit.get_edit_cel_p(channel);
    const std::uint32_t index = cel ? cel->checkQuantisation(edit.getFrameRate()) : 0;
    if (index == 0 || index + 1 == cel->get_num_events())
        return std::nullopt;
    return cel->get_event(index);
}

// The line for the user when a channel has a cut off its frame, which is then repaired if so asked;
// empty when it has none.
std::wstring checkChannel(Edit& edit, const IdStamp& channel) {
    const std::optional<ChannelEvent> event = findOffFrame(edit, channel);
    if (!event)
        return {};
    if (repairs() && edit.getChanSubtype(channel) != kSubDerived)
        if (const Kv::Ptr<Cel> cel = edit.get_edit_cel_p(channel))
            repair(*cel, edit.getFrameRate());
    return describe(edit, channel, *event);
}

} // namespace

void cutroom::readSubframeWarnings() { warningsDisabled(); }

void Vob::checkQuantisation() {
    if (!edit_ || !checks())
        return;
    std::wstring report;
    {
        const EditModifier writing(edit_, "subframe repair");
        for (const IdStamp& channel : writing->getChans(kChanVideo | kChanAudio)) {
            const std::wstring line = checkChannel(*writing, channel);
            if (!line.empty())
                report += (report.empty() ? L"" : L"\n") + line;
        }
    }
    if (report.empty())
        return;
    if (!warningsDisabled())
        cutroom::showUserMessage(report, cutroom::kShowUntilDismissed);
    if (repairs())
        LogBoth("Note: Subframe edit automatically repaired.\n");
}

Status Vob::performEdit(const EditOperation& operation,
                        const LightweightString<char>& description) {
    if (!isEditable())
        return {StatusCode::failed, description, "the viewed edit cannot be edited"};
    const Kv::Ptr<Vob> self = keepAlive();
    const EditModifier writing(edit_, description);
    Status done = operation(writing);
    if (done)
        checkQuantisation();
    return done;
}
