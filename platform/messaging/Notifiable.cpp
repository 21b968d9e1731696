#include "platform/messaging/Notifiable.h"

#include <utility>

Notifiable::~Notifiable() { endRegistrations(); }

void Notifiable::keepRegistration(Kv::Ptr<Guard> guard) {
    if (guard)
        guards_.push_back(std::move(guard));
}

void Notifiable::endRegistrations() noexcept {
    while (!guards_.empty()) {
        const Kv::Ptr<Guard> last = std::move(guards_.back());
        guards_.pop_back();
    }
}
