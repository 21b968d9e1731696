#include "platform/embedded/Autosave.h"

#include "platform/base/Log.h"
#include "platform/prefs/EditorPreferences.h"
#include "platform/store/EditManager.h"

namespace cutroom {

// Counts changes of edits as changes of anything else.
Autosave::Autosave(iEventLoop& loop)
    : loop_(loop), edits_(EditManager::instance().registerNotification(
                       makeCallback<NotifyMsg>([](const NotifyMsg&) { Savers::noteChange(); }),
                       kNoticeModifications)),
      changes_(Savers::addListener(
          makeCallback<NotifyMsg>([this](const NotifyMsg&) { noteChange(); }))) {
    if (Savers::takeChanges() != 0)
        noteChange();
}

Autosave::~Autosave() = default;

// Saving is left to the loop, because a change is told in the middle of an operation.
void Autosave::noteChange() {
    if (Savers::changes() >= kChanges)
        timer_ = loop_.addTimer(0, 0, [this] { save(); });
    else if (!timer_)
        timer_ = loop_.addTimer(kSeconds, 0, [this] { save(); });
}

void Autosave::save() {
    Savers::takeChanges();
    timer_.reset();
    bool failed = false;
    for (const Status& saved : {EditManager::instance().flushChanges(false), Savers::saveAll(),
                                EditorPreferences::flush()})
        if (!saved) {
            failed = true;
            LogBoth("autosave: %s\n", saved.text().c_str());
        }
    if (failed)
        timer_ = loop_.addTimer(kSeconds, 0, [this] { save(); });
}

} // namespace cutroom
