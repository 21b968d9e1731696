// Verbs for what an edit carries beside its cuts: labels, configuration, effects, burnt-in
// timecode, metadata.
#include "cli/Names.h"
#include "cli/Permission.h"
#include "cli/Session.h"
#include "editops/TransitionsEditor.h"
#include "platform/base/Strings.h"
#include "platform/base/Timecode.h"
#include "platform/store/BurntIn.h"
#include "platform/store/CelEventPair.h"
#include "platform/store/Edit.h"
#include "platform/store/Effects.h"

#include <functional>
#include <utility>

namespace cutroom::cli {

namespace {

constexpr std::pair<eLabelType, std::string_view> kLabelNames[] = {
    {kLabelFrames, "frames"},
    {kLabelFeet, "feet"},
    {kLabelVideoTimecode, "video"},
    {kLabelAudioTimecode, "audio"},
    {kLabelKeycode, "keycode"},
    {kLabelTimecode24, "timecode24"},
    {kLabelTimecode25, "timecode25"},
    {kLabelTimecode30, "timecode30"},
    {kLabelInk, "ink"},
};

eLabelType takeLabelType(SessionWords& words) {
    const std::string& word = words.take("a kind of label");
    for (const auto& [type, name] : kLabelNames)
        if (word == name)
            return type;
    refuse(StatusCode::wrongUsage, word, "no such kind of label; `help label` tells them");
}

std::string labelName(eLabelType type) {
    for (const auto& [known, name] : kLabelNames)
        if (type == known)
            return std::string(name);
    return format("kind %d", type);
}

Kv::FrameRate takeRate(SessionWords& words) {
    const std::string& rate = words.take("a rate");
    const auto parsed = Kv::FrameRate::fromString(rate);
    if (!parsed)
        refuse(StatusCode::wrongUsage, rate, "not a frame rate");
    return *parsed;
}

void label(Session& session, SessionWords& words) {
    const eLabelType type = takeLabelType(words);
    const std::string& start = words.take("a start");
    TimecodeFormat format{session.edit()->getFrameRate(), false};
    MediumRoll roll{2, 1};
    while (!words.done()) {
        const auto& word = words.takeOneOf("a word", {"rate", "drop", "roll"});
        if (word == "drop")
            format.dropFrame = true;
        else if (word == "rate")
            format.rate = takeRate(words);
        else {
            roll.first = static_cast<std::int32_t>(words.takeInt("a medium", 0, 1000));
            roll.second = static_cast<std::int32_t>(words.takeInt("a roll", 0, 1000));
        }
    }
    std::optional<long long> frame;
    bool drop = false;
    if (start.find(':') == start.npos)
        frame = parseInt(start);
    else if (const auto parsed = parseTimecode(start, format, &drop))
        frame = *parsed;
    format.dropFrame |= drop && format.rate.allowsDropFrame();
    if (!frame)
        refuse(StatusCode::wrongUsage, start, "no place that such a label can show");
    session.editForChange()->addLabel(EditLabel(type, roll, format, *frame));
}

void listLabels(Session& session, SessionWords& words) {
    const double at = words.done() ? 0 : session.takePlace(words);
    for (const EditLabel& one : session.edit()->getLabels())
        session.say(
            "  " + labelName(one.type()) +
            format(" roll %d,%d ", one.get_MediumRoll().first, one.get_MediumRoll().second) +
            one.pointAt(at).removePadding());
}

void config(Session& session, SessionWords& words) {
    const EditPtr edit = session.edit();
    if (words.done()) {
        const Edit::Lock hold(*edit);
        for (const auto& [key, value] : edit->config().entries())
            session.say("  " + key + " = " + value);
        return;
    }
    const std::string key = words.take("a key");
    if (words.done()) {
        session.say("  " + key + " = " + edit->getConfig(key).value_or("(not set)"));
        return;
    }
    const EditModifier modifier = session.editForChange();
    if (words.takeIf("none"))
        modifier->removeConfig(key);
    else
        modifier->setConfig(key, words.take("a value"));
}

void transition(Session& session, SessionWords& words) {
    const IdStamp channel = session.takeChannel(words);
    const double at = session.takePlace(words);
    const std::string name = words.take("an effect template");
    const auto effect = EffectTemplateManager::instance().getTemplate(toWide(name));
    if (!effect)
        refuse(StatusCode::notFound, name, "no such effect template; `effects` lists them");
    EffectGraph graph;
    graph.kind = effect->kind;
    graph.name = effect->name;
    graph.effectTemplate = effect->id;
    graph.parameters = effect->parameters;
    graph.inOffset = session.takeLength(words, "a length before the cut");
    graph.outOffset = session.takeLength(words, "a length after the cut");
    const ce_handle point = session.edit()->get_edit_cel_p(channel)->find_ceh(at, 0);
    if (!point.valid())
        refuse(StatusCode::notFound, session.channelName(channel), "no cut lies there or later");
    require(TransitionsEditor::put(session.editForChange(), channel, point, graph));
}

void listEffects(Session& session, SessionWords&) {
    for (const EffectGraph& graph : session.edit()->getEffectGraphs())
        session.say("  " + graph.kind + " \"" + toUtf8(graph.name) + "\" " +
                    timeText(toSeconds(graph.inOffset)) + " + " +
                    timeText(toSeconds(graph.outOffset)));
    std::string templates;
    for (const auto& effect : EffectTemplateManager::instance().getTemplates())
        templates += (templates.empty() ? " " : ", ") + toUtf8(effect.name);
    session.say("  templates:" + templates);
}

// The name of a layout that is there.
LightweightString<wchar_t> takeLayout(SessionWords& words) {
    const std::string& name = words.take("a name");
    const auto known = BITCLayoutsManager::getLayoutNames();
    if (std::find(known.begin(), known.end(), toWide(name)) == known.end())
        refuse(StatusCode::notFound, name, "no layout of this name; `burn-in save` makes one");
    return toWide(name);
}

void burnIn(Session& session, SessionWords& words) {
    const auto& action =
        words.takeOneOf("a word", {"add", "clear", "save", "load", "default", "list"});
    BITCEffect set = session.edit()->getBITC();
    if (action == "list") {
        for (const auto& line : split(BITCLayoutsManager::asString(set), '\n'))
            session.say("  " + line);
    } else if (action == "save") {
        if (!BITCLayoutsManager::setLayout(toWide(words.take("a name")), set))
            refuse(StatusCode::wrongUsage, "name", "a layout needs a name on one line");
    } else if (action == "default") {
        BITCLayoutsManager::setProjectDefault(words.done() ? LightweightString<wchar_t>()
                                                           : takeLayout(words));
    } else {
        if (action == "load")
            set = BITCLayoutsManager::getLayout(takeLayout(words));
        else if (action == "clear")
            set = {};
        else {
            BITCLabel one;
            one.prefix = toWide(words.takeOr(""));
            set.addLabel(one);
            set.setEnabled(true);
        }
        session.editForChange()->setBITC(set);
    }
}

// What a property is to become; the edit is not touched before all words are known to be right.
std::function<void(Edit&)> takeProperty(const std::string& what, SessionWords& words) {
    if (what == "imported" || what == "drop")
        return [what, on = words.takeOnOff("on or off")](Edit& edit) {
            what == "drop" ? edit.setDropFrame(on) : edit.setImported(on);
        };
    if (what == "reel")
        return [reel = words.take("a reel")](Edit& edit) { edit.setVideoReelId(reel); };
    if (what == "media") {
        LightweightVector<LightweightString<wchar_t>> locations;
        while (!words.done())
            locations.push_back(toWide(words.take("a location")));
        return [locations](Edit& edit) { edit.setMediaLocations(locations); };
    }
    if (what == "log-type")
        return [type = static_cast<eLogType>(words.takeInt("a log type", 1, 1024))](Edit& edit) {
            edit.setLogType(type);
        };
    if (what == "original")
        return [number = static_cast<int>(words.takeInt("a number", 0, 1000))](Edit& edit) {
            edit.set_original_material(number);
        };
    return [rate = takeRate(words)](Edit& edit) { edit.setFrameRate(rate); };
}

void setFlag(Session& session, SessionWords& words) {
    const std::string what = words.takeOneOf(
        "what", {"read-only", "imported", "log-type", "original", "rate", "drop", "reel", "media"});
    if (what == "read-only") {
        const EditPtr edit = session.edit();
        require(marksAllow(edit.getCookie(), toUtf8(edit->getName())));
        edit->setReadOnly(words.takeOnOff("on or off"));
        return;
    }
    const auto change = takeProperty(what, words);
    change(*session.editForChange());
}

} // namespace

void addDetailVerbs(VerbTable& verbs) {
    verbs.heading("Labels, effects and the rest of an edit");
    verbs.add({"label",
               "video|audio|timecode24|timecode25|timecode30|frames|feet|keycode|ink START "
               "[rate R] [drop] [roll M R]",
               "numbers the edit from a start", label});
    verbs.add({"labels", "[T]", "lists the labels, as they show at a time", listLabels});
    verbs.add({"remove-labels", "", "removes all labels", [](Session& session, SessionWords&) {
                   session.editForChange()->remove_all_labels();
               }});
    verbs.add({"config", "[KEY [VALUE|none]]", "the edit's configuration", config});
    verbs.add(
        {"transition", "CHANNEL T TEMPLATE BEFORE AFTER", "puts an effect on a cut", transition});
    verbs.add({"effects", "", "lists the edit's effects and the templates", listEffects});
    verbs.add({"burn-in", "add [PREFIX] | clear | list | save NAME | load NAME | default [NAME]",
               "burnt-in timecode and its layouts", burnIn});
    verbs.add(
        {"set",
         "read-only|imported|drop on|off | log-type|original N | rate R | reel X | media X ...",
         "properties of the edit", setFlag});
}

} // namespace cutroom::cli
