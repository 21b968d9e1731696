#include "platform/host/Clock.h"

cutroom::iClock::~iClock() = default;
