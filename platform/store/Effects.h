// Effect graphs on edit points (transitions, speed effects, colour) and the templates they are made
// from.
#pragma once

#include "platform/base/Cookie.h"
#include "platform/base/IdStamp.h"
#include "platform/base/Ptr.h"
#include "platform/base/Strings.h"
#include "platform/base/Time.h"

#include <memory>
#include <optional>
#include <vector>

namespace cutroom {
template <class T> class ProcessSingleton;
}

// An effect graph: what happens at, or over, an edit point. A value, kept in its edit's table by
// id and named by the points that use it.
struct CUTROOM_API EffectGraph {
    IdStamp id;
    LightweightString<char> kind;       // "transition", "effect"
    LightweightString<wchar_t> name;    // as shown
    Cookie effectTemplate;              // what it was made from; invalid: none
    cutroom::Flicks inOffset = 0;       // how far a transition reaches before its point
    cutroom::Flicks outOffset = 0;      // and after it
    LightweightString<char> parameters; // JSON object text, or empty
    // A graph of the magic kind stands for the edit's own derived point and is matched by place.
    bool magic = false;

    bool isTransition() const noexcept { return kind == "transition"; }
    friend bool operator==(const EffectGraph&, const EffectGraph&) = default;
};

// A template: a named effect that graphs are made from. A value.
struct CUTROOM_API EffectTemplate {
    Cookie id; // kind 'X'
    LightweightString<wchar_t> name;
    LightweightString<char> kind;
    LightweightString<char> parameters;
};

// The templates there are: the built-in ones ("Dissolve", "Wipe", "Dip", "Speed", "Freeze", with
// fixed cookies) and those added since. One instance per process; any thread.
class CUTROOM_API EffectTemplateManager {
public:
    static EffectTemplateManager& instance();

    // The template of that name (exact), or with that id; nothing when there is none.
    std::optional<EffectTemplate> getTemplate(const LightweightString<wchar_t>& name) const;
    std::optional<EffectTemplate> getTemplate(const Cookie& id) const;
    std::vector<EffectTemplate> getTemplates() const;
    // Adds one (a fresh cookie when its own is invalid); an existing one of that name is replaced.
    Cookie addTemplate(EffectTemplate effect);

    EffectTemplateManager(const EffectTemplateManager&) = delete;
    EffectTemplateManager& operator=(const EffectTemplateManager&) = delete;

private:
    EffectTemplateManager();
    ~EffectTemplateManager();
    friend class cutroom::ProcessSingleton<EffectTemplateManager>;
    struct State;
    std::unique_ptr<State> state_;
};
