#include "platform/store/Effects.h"

#include "platform/base/Locks.h"
#include "platform/host/ProcessLife.h"

#include <algorithm>

struct EffectTemplateManager::State {
    mutable CriticalSection lock{LockRank::leaf};
    std::vector<EffectTemplate> templates CUTROOM_GUARDED_BY(lock);
};

namespace {

// Fixed identities: preferences and edits name templates by cookie across runs.
std::vector<EffectTemplate> builtInTemplates() {
    return {
        {Cookie('X', 1), L"Dissolve", "transition", ""},
        {Cookie('X', 2), L"Wipe", "transition", ""},
        {Cookie('X', 3), L"Dip", "transition", ""},
        {Cookie('X', 4), L"Speed", "effect", ""},
        {Cookie('X', 5), L"Freeze", "effect", ""},
    };
}

} // namespace

EffectTemplateManager& EffectTemplateManager::instance() {
    return cutroom::ProcessSingleton<EffectTemplateManager>::get();
}

EffectTemplateManager::EffectTemplateManager() : state_(std::make_unique<State>()) {
    CriticalSection::Lock hold(state_->lock);
    state_->templates = builtInTemplates();
}

EffectTemplateManager::~EffectTemplateManager() = default;

std::optional<EffectTemplate>
EffectTemplateManager::getTemplate(const LightweightString<wchar_t>& name) const {
    CriticalSection::Lock hold(state_->lock);
    for (const EffectTemplate& candidate : state_->templates)
        if (candidate.name == name)
            return candidate;
    return std::nullopt;
}

std::optional<EffectTemplate> EffectTemplateManager::getTemplate(const Cookie& id) const {
    CriticalSection::Lock hold(state_->lock);
    for (const EffectTemplate& candidate : state_->templates)
        if (candidate.id == id)
            return candidate;
    return std::nullopt;
}

std::vector<EffectTemplate> EffectTemplateManager::getTemplates() const {
    CriticalSection::Lock hold(state_->lock);
    return state_->templates;
}

Cookie EffectTemplateManager::addTemplate(EffectTemplate effect) {
    if (!effect.id.valid())
        effect.id = Cookie::make('X');
    CriticalSection::Lock hold(state_->lock);
    std::erase_if(state_->templates, [&](const auto& old) { return old.name == effect.name; });
    state_->templates.push_back(effect);
    return effect.id;
}
