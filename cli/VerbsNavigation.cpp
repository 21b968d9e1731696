// Verbs that step from event to event, and that keep cuts on frames.
#include "cli/Session.h"
#include "platform/base/Strings.h"

namespace cutroom::cli {

namespace {

void step(Session& session, SessionWords& words) {
    const auto move =
        words.takeChoice<bool (Vob::*)()>("where to", {{"next", &Vob::setTimeToNextEvent},
                                                       {"previous", &Vob::setTimeToPrevEvent},
                                                       {"first", &Vob::setTimeToFirstEvent},
                                                       {"last", &Vob::setTimeToLastEvent}});
    if (!(session.viewer().get()->*move)())
        session.say("  no event there");
}

void tellEvent(Session& session, SessionWords& words) {
    const bool next = words.takeOneOf("a direction", {"next", "previous"}) == "next";
    const Kv::Ptr<Vob> vob = session.viewer();
    double from = vob->getCurrentTime();
    bool ignoreUnjoined = false;
    bool withCurrent = false;
    while (!words.done()) {
        const auto& word = words.takeOneOf("a word", {"from", "ignore-unjoined", "with-current"});
        if (word == "from")
            from = session.takePlace(words);
        else if (word == "with-current")
            withCurrent = true;
        else
            ignoreUnjoined = true;
    }
    const EventInfo event = next ? vob->getNextEvent(from, ignoreUnjoined, withCurrent)
                                 : vob->getPrevEvent(from, ignoreUnjoined, withCurrent);
    session.say((event.found() ? "  event at " + timeText(event.time) : "  no event") + " from " +
                timeText(event.startTime) +
                (event.channel.valid() ? ", " + session.channelName(event.channel)
                                       : ", no channel is selected"));
}

void transitionStops(Session& session, SessionWords& words) {
    if (words.done())
        session.say(Vob::getStopAtTransitionMidPoints() ? "  on" : "  off");
    else
        Vob::setStopAtTransitionMidPoints(words.takeOnOff("on or off"));
}

// A word as it is written in a line.
std::string quoted(const std::string& word) {
    if (!word.empty() && word.find_first_of(" \t\"\\#") == word.npos)
        return word;
    std::string text = "\"";
    for (const char c : word) {
        if (c == '"' || c == '\\')
            text += '\\';
        text += c;
    }
    return text + '"';
}

// The rest of a line as a line of its own.
std::string takeLine(SessionWords& words) {
    std::vector<std::string> line;
    while (!words.done())
        line.push_back(quoted(words.take("a verb")));
    return join(line, " ");
}

void perform(Session& session, SessionWords& words) {
    const std::string line = takeLine(words);
    require(session.viewer()->performEdit(
        [&](const EditModifier&) { return session.runNested(line); }, line));
}

} // namespace

void addNavigationVerbs(VerbTable& verbs) {
    verbs.heading("From event to event");
    verbs.add({"step", "next|previous|first|last",
               "moves the time to an event: a cut, and what the tab stops name", step});
    verbs.add({"event?", "next|previous [from T] [ignore-unjoined] [with-current]",
               "tells the event before or after a time", tellEvent});
    verbs.add({"tab-stops?", "", "tells where stepping stops, as bits",
               [](Session& session, SessionWords&) {
                   session.say(format("  tab stops %u", session.viewer()->getConsoleTabStops()));
               }});
    verbs.add({"transition-stops", "[on|off]",
               "whether stepping stops in the middle of transitions", transitionStops});
    verbs.add({"check-frames", "", "looks for cuts off the frame, and moves them to frames",
               [](Session& session, SessionWords&) {
                   const EditModifier modifier = session.editForChange();
                   session.viewer()->checkQuantisation();
               }});
    verbs.add({"perform", "VERB ...",
               "has a verb change the record viewer's edit, then looks for cuts off the frame",
               perform});
}

} // namespace cutroom::cli
