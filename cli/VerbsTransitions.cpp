// Verbs for cut types and transitions.
#include "cli/Session.h"
#include "editops/TransitionsEditor.h"
#include "platform/base/Strings.h"
#include "platform/store/Edit.h"
#include "platform/store/Effects.h"

namespace cutroom::cli {

namespace {

void tellCutType(Session& session, SessionWords& words) {
    const std::string& word = words.take("a cut type");
    const auto number = parseInt(word);
    const cut_type type = number && *number >= 0 && *number <= 100 ? static_cast<cut_type>(*number)
                                                                   : stringToCutType(word);
    session.say(format("  %d %s", type, cutTypeToString(type).c_str()));
}

// A number, a text form, or a text as the user sees it.
trans_posn takePosition(SessionWords& words) {
    const std::string& word = words.take("a position");
    if (const auto number = parseInt(word); number && *number >= 0 && *number <= kTransNone)
        return static_cast<trans_posn>(*number);
    trans_posn position = stringToTransPosn(word);
    if (position == kTransNone)
        position = getTransPosnFromDisplayString(toWide(word));
    if (position == kTransNone && word != transPosnToString(kTransNone))
        refuse(StatusCode::wrongUsage, word, "no such position; `transition-positions` lists them");
    return position;
}

void listPositions(Session& session, SessionWords&) {
    for (int number = 0; number <= kTransNone; ++number) {
        const auto position = static_cast<trans_posn>(number);
        session.say(format("  %d %s ", number, transPosnToString(position).c_str()) + '"' +
                    toUtf8(getDisplayString(position)) + '"');
    }
}

LastTransition takeTransition(SessionWords& words) {
    const std::string name = words.take("an effect template");
    const auto effect = EffectTemplateManager::instance().getTemplate(toWide(name));
    if (!effect)
        refuse(StatusCode::notFound, name, "no such effect template; `effects` lists them");
    const trans_posn position = takePosition(words);
    const auto length = words.takeInt("a length in frames", 0, 1'000'000);
    return {effect->id, position, static_cast<int>(length)};
}

void lastTransition(Session& session, SessionWords& words) {
    LastTransition last(0);
    if (words.left() > 1) {
        last = takeTransition(words);
        last.persist();
    } else if (!words.done()) {
        last = LastTransition(words.take("a text"));
    }
    const auto effect = EffectTemplateManager::instance().getTemplate(last.getFXID());
    session.say("  " + last.asString() + " " +
                (effect         ? '"' + toUtf8(effect->name) + '"'
                 : last.valid() ? "of an unknown effect"
                                : "without effect"));
}

// The cut at a time, or the next one.
ce_handle takeCut(Session& session, SessionWords& words, const IdStamp& channel) {
    const double at = session.takePlace(words);
    const Kv::Ptr<Cel> cel = session.edit()->get_edit_cel_p(channel);
    ce_handle point = cel->find_ceh(at, 0);
    if (!point.valid())
        point = cel->find_ceh(at, kEventOut);
    if (!point.valid())
        refuse(StatusCode::notFound, session.channelName(channel), "no cut lies there or later");
    return point;
}

std::string rangeText(const std::optional<TimeRange>& range) {
    return range ? timeText(range->getStart()) + " to " + timeText(range->getEnd()) : "none";
}

void tellRegion(Session& session, SessionWords& words) {
    const IdStamp channel = session.takeChannel(words);
    const ce_handle point = takeCut(session, words, channel);
    const trans_posn position = takePosition(words);
    const auto length = static_cast<int>(words.takeInt("a length in frames", 0, 1'000'000));
    const EditModule& module = session.viewer()->getEditModule();
    const ce_handle before = point.is_out_point() ? point : point.previous();
    const ce_handle after = point.is_out_point() ? point.next() : point;
    const auto needed = [&](const ce_handle& side) {
        return rangeText(
            TransitionsEditor::calcRequiredSourceClipRegion(module, side, position, length));
    };
    session.say("  region " +
                rangeText(TransitionsEditor::calcRegion(module, point, position, length)) +
                "; of the source before " + needed(before) + ", after " + needed(after));
}

void applyTransition(Session& session, SessionWords& words) {
    const IdStamp channel = session.takeChannel(words);
    const ce_handle point = takeCut(session, words, channel);
    const LastTransition transition = words.done() ? LastTransition(0) : takeTransition(words);
    const EditModifier modifier = session.editForChange();
    require(TransitionsEditor::apply(modifier, session.viewer()->getEditModule(), channel, point,
                                     transition));
}

} // namespace

void addTransitionVerbs(VerbTable& verbs) {
    verbs.heading("Transitions");
    verbs.add(
        {"cut-type", "TYPE", "tells number and text of a cut type, by one of them", tellCutType});
    verbs.add(
        {"transition-positions", "", "lists where a transition can be placed", listPositions});
    verbs.add({"last-transition", "[TEXT | TEMPLATE POSITION FRAMES]",
               "tells the transition applied last, or what a text says of one; sets it",
               lastTransition});
    verbs.add({"transition-region", "CHANNEL T POSITION FRAMES",
               "tells where a transition would lie, and what it needs of the sources", tellRegion});
    verbs.add({"apply-transition", "CHANNEL T [TEMPLATE POSITION FRAMES]",
               "puts a transition on a cut, like the last one unless told which", applyTransition});
}

} // namespace cutroom::cli
