#include "sync/iVobSynchroniser.h"

iVobSynchroniser::~iVobSynchroniser() = default;

iVobSynchroniser::iVobListener::iOwner::~iOwner() = default;

iVobSynchroniser::iVobListener::iVobListener() = default;

iVobSynchroniser::iVobListener::~iVobListener() {
    if (owner_)
        owner_->listenerGoing(*this);
}
