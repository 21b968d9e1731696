// What every published value is, whatever its type.
#pragma once

#include "platform/messaging/NotifyMsgTypeDictionary.h"

#include <atomic>
#include <cstdint>

// The announcing side of a published value.
class CUTROOM_API ValServerBase {
public:
    // Told after the value changed.
    static constexpr int valChangedMsgType = NotifyMsgTypeDictionary::kValChanged;
    // Told before the value is changed in place, by the one that changes it.
    static constexpr int preValChangedMsgType = NotifyMsgTypeDictionary::kPreValChanged;

    virtual ~ValServerBase();
    // The number of registered listeners, of all message types; held at 65535. No lock.
    virtual std::uint16_t numClients() const noexcept = 0;
    // Tells the current value to the listeners of `valChangedMsgType`, in the order of their
    // registration.
    virtual void notifyValChanged() = 0;
    // The same for `preValChangedMsgType`.
    virtual void preNotifyValChanged() = 0;
};

// Keeps when a value was last published, so that an observer of several can tell which came last.
class CUTROOM_API LastValServer {
public:
    // Place of the last change in the order of all changes of the process; 0: never. Changes made
    // at the same moment on two threads may share a place. Any thread.
    std::uint64_t lastChange() const noexcept { return last_.load(std::memory_order_relaxed); }

protected:
    LastValServer() = default;
    LastValServer(const LastValServer&) noexcept {}
    LastValServer& operator=(const LastValServer&) noexcept { return *this; }
    ~LastValServer() = default;

    // Notes that the value is published now.
    void noteChange() noexcept;

private:
    std::atomic<std::uint64_t> last_{0};
};
