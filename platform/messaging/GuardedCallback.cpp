#include "platform/messaging/GuardedCallback.h"

cutroom::iGuardedCallback::~iGuardedCallback() = default;
