#include "platform/embedded/LoopQueue.h"

#include <algorithm>
#include <utility>

namespace cutroom {

namespace {

std::size_t hashOf(const Event& event) noexcept {
    std::size_t hash = std::hash<LightweightString<char>>()(event.text);
    for (const std::size_t part :
         {std::hash<const EventHandler*>()(event.handler), static_cast<std::size_t>(event.type),
          static_cast<std::size_t>(event.keyCode), std::size_t{event.value}})
        hash = (hash ^ part) * 0x9E3779B97F4A7C15ull;
    return hash;
}

} // namespace

void LoopQueue::append(Item item) {
    Items one;
    one.push_back(std::move(item));
    if (!one.front().work)
        ++counts_[one.front().hash];
    items_.splice(items_.end(), one);
}

void LoopQueue::uncount(const Item& item) noexcept {
    if (item.work)
        return;
    const auto counted = counts_.find(item.hash);
    if (counted != counts_.end() && --counted->second == 0)
        counts_.erase(counted);
}

// The latest first: an event is most often repeated soon.
bool LoopQueue::waits(const Event& event, std::size_t hash) const {
    return counts_.contains(hash) &&
           std::any_of(items_.rbegin(), items_.rend(), [&](const Item& item) {
               return item.hash == hash && !item.work && item.event.sameAs(event);
           });
}

void LoopQueue::push(std::function<void()> work) { append({Event(), std::move(work), 0}); }

void LoopQueue::push(const Event& event) { append({event, nullptr, hashOf(event)}); }

bool LoopQueue::pushUnlessWaiting(const Event& event) {
    const std::size_t hash = hashOf(event);
    if (waits(event, hash))
        return false;
    append({event, nullptr, hash});
    return true;
}

LoopQueue::Items LoopQueue::take() noexcept {
    Items taken;
    if (!items_.empty()) {
        uncount(items_.front());
        taken.splice(taken.end(), items_, items_.begin());
    }
    return taken;
}

LoopQueue::Items LoopQueue::takeFor(const EventHandler* handler) noexcept {
    Items taken;
    for (auto item = items_.begin(); item != items_.end();) {
        const auto next = std::next(item);
        if (!item->work && item->event.handler == handler) {
            uncount(*item);
            taken.splice(taken.end(), items_, item);
        }
        item = next;
    }
    return taken;
}

LoopQueue::Items LoopQueue::takeAll() noexcept {
    counts_.clear();
    return std::exchange(items_, Items());
}

} // namespace cutroom
