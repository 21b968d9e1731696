#include "platform/embedded/Autosave.h"

#include "platform/base/Log.h"
#include "platform/prefs/EditorPreferences.h"
#include "platform/store/EditManager.h"

namespace cutroom {

Autosave::Autosave(iEventLoop& loop)
    : loop_(loop), registration_(EditManager::instance().registerNotification(
                       makeCallback<NotifyMsg>([this](const NotifyMsg&) { noteChange(); }),
                       kNoticeModifications)) {}

Autosave::~Autosave() = default;

// Saving waits for the loop: a change is told in the middle of what somebody is doing.
void Autosave::noteChange() {
    ++changes_;
    if (changes_ == kChanges)
        timer_ = loop_.addTimer(0, 0, [this] { save(); });
    else if (!timer_)
        timer_ = loop_.addTimer(kSeconds, 0, [this] { save(); });
}

void Autosave::save() {
    changes_ = 0;
    timer_.reset();
    Status saved = EditManager::instance().flushChanges(false);
    if (saved.ok())
        saved = EditorPreferences::flush();
    if (saved)
        return;
    LogBoth("autosave: %s\n", saved.text().c_str());
    timer_ = loop_.addTimer(kSeconds, 0, [this] { save(); });
}

} // namespace cutroom
