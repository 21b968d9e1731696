#include "platform/host/PlayServer.h"

AVMachine::~AVMachine() = default;

namespace cutroom {

iPlayable::~iPlayable() = default;
iPlayServer::~iPlayServer() = default;

} // namespace cutroom
