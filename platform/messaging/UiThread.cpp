#include "platform/messaging/UiThread.h"

#include <atomic>
#include <utility>

namespace cutroom {

iUiThread::~iUiThread() = default;

namespace {
std::atomic<iUiThread*> installed{nullptr};
} // namespace

iUiThread* installUiThread(iUiThread* thread) noexcept { return installed.exchange(thread); }
iUiThread* uiThread() noexcept { return installed.load(); }

bool isUiThread() noexcept {
    const iUiThread* const thread = uiThread();
    return !thread || thread->isUiThread();
}

void postToUiThread(std::function<void()> work) {
    if (iUiThread* const thread = uiThread())
        thread->post(std::move(work));
    else
        work();
}

} // namespace cutroom
