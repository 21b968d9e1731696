#include "platform/host/EventLoop.h"

cutroom::iEventLoop::~iEventLoop() = default;
