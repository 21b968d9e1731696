// The user-interface thread, as the lower layers see it. The host installs it.
#pragma once

#include "platform/base/Export.h"

#include <functional>

namespace cutroom {

class CUTROOM_API iUiThread {
public:
    virtual ~iUiThread();
    // Tells whether the calling thread is the user-interface thread. Any thread.
    virtual bool isUiThread() const noexcept = 0;
    // Runs `work` on the user-interface thread later, in the order of posting, never inside this
    // call. Any thread. What `work` throws is the loop's to log.
    virtual void post(std::function<void()> work) = 0;
};

// Installs `thread` (null: none); gives the one before. The caller keeps it alive until it is
// replaced, and replaces it while no other thread uses it.
CUTROOM_API iUiThread* installUiThread(iUiThread* thread) noexcept;
// The one in force; null when there is none.
CUTROOM_API iUiThread* uiThread() noexcept;

// Tells whether this is the user-interface thread; without an installed one, every thread is.
CUTROOM_API bool isUiThread() noexcept;
// Posts to the user-interface thread; without an installed one, runs `work` at once.
CUTROOM_API void postToUiThread(std::function<void()> work);

} // namespace cutroom
