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
        waiting_[one.front().hash].push_back(&one.front());
    items_.splice(items_.end(), one);
}

void LoopQueue::forget(const Item& item) noexcept {
    const auto known = item.work ? waiting_.end() : waiting_.find(item.hash);
    if (known == waiting_.end())
        return;
    auto& alike = known->second; // the oldest goes first, so it is found at once
    if (const auto found = std::find(alike.begin(), alike.end(), &item); found != alike.end())
        alike.erase(found);
    if (alike.empty())
        waiting_.erase(known);
}

bool LoopQueue::waits(const Event& event, std::size_t hash) const {
    const auto known = waiting_.find(hash);
    return known != waiting_.end() &&
           std::any_of(known->second.begin(), known->second.end(),
                       [&](const Item* item) { return item->event.sameAs(event); });
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
        forget(items_.front());
        taken.splice(taken.end(), items_, items_.begin());
    }
    return taken;
}

LoopQueue::Items LoopQueue::takeFor(const EventHandler* handler) noexcept {
    Items taken;
    for (auto item = items_.begin(); item != items_.end();) {
        const auto next = std::next(item);
        if (!item->work && item->event.handler == handler) {
            forget(*item);
            taken.splice(taken.end(), items_, item);
        }
        item = next;
    }
    return taken;
}

LoopQueue::Items LoopQueue::takeAll() noexcept {
    waiting_.clear();
    return std::exchange(items_, Items());
}

} // namespace cutroom
