// Verbs for marks, cues and the visible region.
#include "cli/Names.h"
#include "cli/Session.h"
#include "platform/base/Strings.h"
#include "platform/store/Edit.h"

namespace cutroom::cli {

namespace {

using Kv::MarkTypes::MarkType;

MarkType takeMarkType(SessionWords& words) {
    return words.takeOneOf("in or out", {"in", "out"}) == "in" ? Kv::MarkTypes::In
                                                               : Kv::MarkTypes::Out;
}

void mark(Session& session, SessionWords& words) {
    const bool quiet = words.takeIf("quiet");
    const MarkType type = takeMarkType(words);
    const double seconds = words.takeIf("none") ? kNoTime : session.takePlace(words);
    const IdStamp channel = words.done() ? IdStamp() : session.takeChannel(words, true);
    if (quiet)
        session.viewer()->storeMarkTime(channel, seconds, type);
    else
        session.viewer()->setMarkTime(channel, seconds, type);
}

void markRange(Session& session, SessionWords& words) {
    const bool quiet = words.takeIf("quiet");
    const double from = session.takePlace(words);
    const double to = session.takePlace(words);
    const IdStamp channel = words.done() ? IdStamp() : session.takeChannel(words, true);
    if (quiet)
        session.viewer()->storeMarkTime(channel, TimeRange(from, to));
    else
        session.viewer()->setMarkTime(channel, TimeRange(from, to));
}

void tellMarks(Session& session, SessionWords&) {
    const EditModule& module = session.viewer()->getEditModule();
    for (const IdStamp& channel : session.edit()->getChans())
        session.say("  " + session.channelName(channel) +
                    (module.isSelected(channel) ? " selected" : "") + " in " +
                    timeText(module.getMark(channel, Kv::MarkTypes::In)) + " out " +
                    timeText(module.getMark(channel, Kv::MarkTypes::Out)));
    session.say(session.viewer()->marksAligned(false) ? "  aligned" : "  not aligned");
}

Cue takeCue(Session& session, SessionWords& words) {
    Cue cue;
    cue.setTime(session.takePlace(words));
    while (!words.done()) {
        const auto& word = words.takeOneOf(
            "a word", {"to", "name", "text", "colour", "flags", "channel", "field"});
        if (word == "to")
            cue.setEndTime(session.takePlace(words));
        else if (word == "name")
            cue.setName(toWide(words.take("a name")));
        else if (word == "text")
            cue.setDescription(toWide(words.take("a text")));
        else if (word == "colour")
            cue.setColour(require(parseColour(words.take("a colour"))));
        else if (word == "flags")
            cue.setFlags(static_cast<unsigned>(words.takeInt("bits", 0, 0xFFFF)));
        else if (word == "channel")
            cue.setChannel(session.takeChannel(words));
        else {
            const std::string key = words.take("a key");
            cue.setCustomMetadata(key, toWide(words.take("a value")));
        }
    }
    if (cue.hasEnd() && cue.getEndTime() < cue.getTime())
        refuse(StatusCode::wrongUsage, "to", "the cue would end before it begins");
    return cue;
}

void addCue(Session& session, SessionWords& words) {
    const Cue cue = takeCue(session, words);
    const EditModifier modifier = session.editForChange();
    if (!session.viewer()->addCue(cue))
        refuse(StatusCode::failed, "cue", "the edit refuses it");
}

Cue cueNumber(Session& session, SessionWords& words) {
    const CueList cues = session.edit()->getCues();
    const auto number =
        words.takeInt("a cue's number", 1,
                      std::max<long long>(static_cast<long long>(cues.getNumCuePoints()), 1));
    if (cues.getNumCuePoints() == 0)
        refuse(StatusCode::notFound, std::to_string(number), "the edit has no cues");
    return cues.getCuePoint(static_cast<std::size_t>(number - 1));
}

void changeCue(Session& session, SessionWords& words) {
    const Cue old = cueNumber(session, words);
    Cue fresh = takeCue(session, words);
    fresh.setExtID(old.getExtID());
    session.editForChange()->changeCue(fresh);
}

void listCues(Session& session, SessionWords&) {
    const CueList cues = session.edit()->getCues();
    for (std::size_t i = 0; i < cues.getNumCuePoints(); ++i) {
        const Cue& cue = cues.getCuePoint(i);
        std::string custom;
        for (const auto& [key, value] : cue.getCustomMetadata())
            custom += ' ' + key + '=' + toUtf8(value);
        session.say(format("  %zu ", i + 1) + timeText(cue.getTime()) +
                    (cue.hasEnd() ? "-" + timeText(cue.getEndTime()) : "") + ' ' +
                    colourText(cue.getColour()) + format(" flags %u ", cue.getFlags()) +
                    toUtf8(cue.getName()) +
                    (cue.getDescription().empty() ? "" : ": " + toUtf8(cue.getDescription())) +
                    (session.viewer()->getVisibleCuesFilter().accepts(cue) ? "" : " (hidden)") +
                    custom);
    }
}

void tellRegion(Session& session, SessionWords&) {
    const Kv::Ptr<Vob> vob = session.viewer();
    const auto text = [](const TimeRange& range) {
        return timeText(range.getStart()) + " to " + timeText(range.getEnd());
    };
    session.say("region " + text(vob->getViewRegion()) + ", extents " +
                text(vob->getEditExtents()));
}

} // namespace

void addMarkVerbs(VerbTable& verbs) {
    verbs.heading("Marks, cues and region");
    verbs.add({"mark", "[quiet] in|out T|none [CHANNEL|all]", "sets or clears a mark", mark});
    verbs.add({"mark-range", "[quiet] T T [CHANNEL|all]", "sets both marks", markRange});
    verbs.add({"mark-here", "CHANNEL|all", "puts the in mark at the current time",
               [](Session& session, SessionWords& words) {
                   session.viewer()->setMarkToCurrent(session.takeChannelNumber(words));
               }});
    verbs.add({"unmark", "CHANNEL|all", "clears the marks of selected channels",
               [](Session& session, SessionWords& words) {
                   session.viewer()->invalidateMark(session.takeChannelNumber(words));
               }});
    verbs.add({"exchange", "CHANNEL|all", "swaps current time and mark",
               [](Session& session, SessionWords& words) {
                   session.viewer()->exchangeCurrentAndMark(session.takeChannelNumber(words));
               }});
    verbs.add({"align", "in|out", "trims the popped channel so that the marks fall together",
               [](Session& session, SessionWords& words) {
                   session.viewer()->alignMarks(takeMarkType(words));
               }});
    verbs.add({"marks?", "", "tells each channel's marks and selection", tellMarks});
    verbs.add({"cue",
               "T [to T] [name N] [text X] [colour C] [flags N] [channel CH] [field K V] ...",
               "adds a cue", addCue});
    verbs.add({"change-cue",
               "N T [to T] [name N] [text X] [colour C] [flags N] [channel CH] [field K V] ...",
               "replaces cue N", changeCue});
    verbs.add({"remove-cue", "N", "removes cue N", [](Session& session, SessionWords& words) {
                   const Cue cue = cueNumber(session, words);
                   session.editForChange()->removeCue(cue.getExtID());
               }});
    verbs.add({"cues", "", "lists the cues", listCues});
    verbs.add({"show-cues", "on|off", "shows cue events in the cut lists",
               [](Session& session, SessionWords& words) {
                   if (words.takeOnOff("on or off"))
                       session.viewer()->cel_cues_on();
                   else
                       session.viewer()->cel_cues_off();
               }});
    verbs.add({"cue-filter", "WANTED ALLOWED", "which cues are visible, as flag bits",
               [](Session& session, SessionWords& words) {
                   const auto wanted = static_cast<unsigned>(words.takeInt("bits", 0, 0xFFFF));
                   session.viewer()->setVisibleCuesFilter(CueFilter(
                       wanted, static_cast<int>(words.takeInt("bits", -0x10000, 0xFFFF))));
               }});
    verbs.add({"region", "T T [quiet]", "shows a part of the edit",
               [](Session& session, SessionWords& words) {
                   const double from = session.takePlace(words);
                   const double to = session.takePlace(words);
                   session.viewer()->setViewRegion(TimeRange(from, to), !words.takeIf("quiet"));
               }});
    verbs.add({"region?", "", "tells the region and the extents", tellRegion});
    verbs.add({"extents", "", "takes the extents from the edit; a region that covered them follows",
               [](Session& session, SessionWords&) { session.viewer()->resetEditExtents(); }});
    verbs.add({"duration-by", "selection|edit", "what the total duration goes by",
               [](Session&, SessionWords& words) {
                   VobManager::setTotalDurationBySelection(
                       words.takeOneOf("what", {"selection", "edit"}) == "selection");
               }});
}

} // namespace cutroom::cli
