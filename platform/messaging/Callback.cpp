#include "platform/messaging/Callback.h"

namespace cutroom {

CallbackRoot::~CallbackRoot() = default;
void CallbackRoot::registrationBegun() noexcept {}
void CallbackRoot::registrationEnded() noexcept {}

} // namespace cutroom
