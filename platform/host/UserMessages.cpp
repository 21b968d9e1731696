#include "platform/host/UserMessages.h"

#include "platform/host/Host.h"

namespace cutroom {

iUserMessages::~iUserMessages() = default;

void showUserMessage(const LightweightString<wchar_t>& text, int display) {
    Host::messages().show(text, display);
}

} // namespace cutroom
