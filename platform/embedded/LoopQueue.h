// What waits for the user-interface thread: events and posted work in one order.
#pragma once

#include "platform/messaging/Event.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>
#include <unordered_map>

namespace cutroom {

// Has no lock: its owner holds one. Nothing that was posted is destroyed inside; it is handed out.
class CUTROOM_API LoopQueue {
public:
    // Posted work, or (without) an event.
    struct Item {
        Event event;
        std::function<void()> work;
        std::size_t hash = 0;
    };
    using Items = std::list<Item>;

    void push(std::function<void()> work);
    void push(const Event& event);
    // False, and nothing done, when an event that is `sameAs` this one waits.
    bool pushUnlessWaiting(const Event& event);
    // The oldest item; empty when nothing waits.
    Items take() noexcept;
    // All events for `handler`, in order.
    Items takeFor(const EventHandler* handler) noexcept;
    Items takeAll() noexcept;

    std::size_t size() const noexcept { return items_.size(); }
    bool empty() const noexcept { return items_.empty(); }

private:
    void append(Item item);
    void forget(const Item& item) noexcept;
    bool waits(const Event& event, std::size_t hash) const;

    Items items_;
    // The events that wait, by their hash, those of one hash in their order.
    std::unordered_map<std::size_t, std::list<const Item*>> waiting_;
};

} // namespace cutroom
