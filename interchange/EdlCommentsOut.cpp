#include "interchange/EdlCommentsOut.h"

#include "interchange/EdlComments.h"
#include "interchange/EdlMarkersOut.h"
#include "interchange/ImportedJson.h"
#include "platform/base/Strings.h"

#include <algorithm>
#include <functional>
#include <utility>

namespace cutroom {

namespace {

void forEachComment(std::string_view facts, const std::function<void(const std::string&)>& visit) {
    forEachImportedEntry(importedMember(facts, "comments"), [&](std::string_view raw) {
        visit(importedText("{\"c\":" + std::string(raw) + "}", "c"));
    });
}

// A kept comment as a line; those that stood without an asterisk stand so again.
std::string lineOf(const std::string& text) {
    return (isBareEdlComment(text) ? "" : "* ") + edlOneLine(text);
}

std::string effectName(const Item& transition) {
    if (!transition.name.empty())
        return edlOneLine(transition.name);
    const std::string& type = transition.transitionType;
    const bool shown = type == "SMPTE_Dissolve" || (type.size() == 4 && type[0] == 'W');
    return shown ? std::string() : edlOneLine(type);
}

class Comments {
public:
    Comments(const EdlEventOut& event, EdlReels& reels) : event_(event), reels_(reels) {}

    std::vector<std::string> take(std::string_view outgoing) {
        if (event_.transition)
            namesOfTransition(outgoing);
        else if (event_.item)
            name(*event_.item, "FROM CLIP NAME:");
        if (event_.item)
            source(*event_.item);
        else
            forEachComment(event_.facts, [&](const std::string& text) {
                if (!event_.transition ||
                    !(text.starts_with("FROM CLIP NAME:") || text.starts_with("EFFECT")))
                    lines_.push_back(lineOf(text));
            });
        return std::move(lines_);
    }

private:
    void add(const std::string& text) { lines_.push_back("* " + text); }

    void namesOfTransition(std::string_view outgoing) {
        const std::string from = !outgoing.empty() ? importedText(outgoing, "clip_name")
                                 : event_.outgoing ? event_.outgoing->name
                                                   : std::string();
        if (!edlOneLine(from).empty())
            add("FROM CLIP NAME:  " + edlOneLine(from));
        if (event_.item)
            name(*event_.item, "TO CLIP NAME:");
        if (const std::string effect = effectName(*event_.transition); !effect.empty())
            add("EFFECT NAME: " + effect);
    }

    // Writes the clip's name, unless an event of an edit list got it from its reel alone.
    void name(const Item& item, const std::string& key) {
        const std::string text = edlOneLine(item.name);
        bool said = item.channel.empty() || text != item.media.reel;
        for (const std::string_view facts : {event_.facts, edlRest(event_.facts)})
            forEachComment(facts, [&](const std::string& comment) {
                said = said || comment.starts_with(key);
            });
        if (!text.empty() && said)
            add(key + "  " + text);
    }

    // The reel in full, the file, and whatever else the list said below the event.
    void source(const Item& item) {
        const bool isGenerator = item.media.kind == ReferenceKind::generator;
        reelTold_ = !reels_.isShort(item);
        fileTold_ = item.media.location.empty() || isGenerator;
        std::vector<std::string> kept;
        const auto keep = [&](const std::string& text) {
            if (holds(item, text))
                kept.push_back(text);
        };
        forEachComment(event_.facts, keep);
        if (!event_.goesOn)
            forEachComment(edlRest(event_.facts), keep);
        const char* const generated =
            event_.transition ? "TO CLIP IS A GENERATOR" : "FROM CLIP IS A GENERATOR";
        if (isGenerator && std::find(kept.begin(), kept.end(), generated) == kept.end())
            add(generated);
        if (!reelTold_)
            add("REEL: " + edlOneLine(item.media.reel));
        if (!fileTold_)
            add("SOURCE FILE: " + edlOneLine(item.media.location));
        for (const std::string& text : kept)
            lines_.push_back(lineOf(text));
    }

    // Tells whether a comment of the list that was read still holds; those that are written anew
    // do not count.
    bool holds(const Item& item, const std::string& text) {
        for (const char* const key : {"FROM CLIP NAME:", "TO CLIP NAME:", "REEL:"})
            if (text.starts_with(key))
                return false;
        if (text.starts_with("EFFECT NAME:") || text.starts_with("EFFECTS NAME"))
            return !event_.transition && !wasTransition();
        if (const auto is = text.find(" IS CLIP ");
            text.starts_with("REEL ") && is != std::string::npos) {
            const bool same = trim(std::string_view(text).substr(5, is - 5)) == item.media.reel &&
                              trim(std::string_view(text).substr(is + 9)) == item.name;
            reelTold_ = reelTold_ || same;
            return same;
        }
        for (const std::string_view key :
             {"SOURCE FILE:", "TO CLIP:", "TO FILE:", "FROM CLIP:", "FROM FILE:"}) {
            if (!text.starts_with(key))
                continue;
            const auto value = trim(std::string_view(text).substr(key.size()));
            const bool ofOther = event_.transition && key[0] == 'F';
            const bool same = !ofOther && value == item.media.location;
            fileTold_ = fileTold_ || same;
            return same || ofOther || value.empty();
        }
        return true;
    }

    // The effect of a cut or key is the clip's own.
    bool wasTransition() const {
        const std::string kind = importedText(event_.facts, "transition");
        return kind.starts_with('D') || kind.starts_with('W');
    }

    const EdlEventOut& event_;
    EdlReels& reels_;
    bool reelTold_ = false;
    bool fileTold_ = false;
    std::vector<std::string> lines_;
};

} // namespace

std::vector<std::string> edlCommentsOf(const EdlEventOut& event, std::string_view outgoing,
                                       EdlReels& reels) {
    return Comments(event, reels).take(outgoing);
}

std::vector<std::string> edlHeaderOf(const Timeline& timeline) {
    std::vector<std::string> lines;
    forEachComment(importedMember(timeline.metadata, "edl"),
                   [&](const std::string& text) { lines.push_back(lineOf(text)); });
    return lines;
}

} // namespace cutroom
