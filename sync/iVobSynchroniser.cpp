#include "sync/iVobSynchroniser.h"

#include <utility>

iVobSynchroniser::~iVobSynchroniser() = default;

iVobSynchroniser::iVobListener::iOwner::~iOwner() = default;

iVobSynchroniser::iVobListener::iVobListener() = default;

iVobSynchroniser::iVobListener::~iVobListener() { leaveOwner(); }

void iVobSynchroniser::iVobListener::leaveOwner() noexcept {
    if (iOwner* const owner = std::exchange(owner_, nullptr))
        owner->listenerGoing(*this);
}
