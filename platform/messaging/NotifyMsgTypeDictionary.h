// `NotifyMsgTypeDictionary`: message types by name.
#pragma once

#include "platform/base/Annotations.h"
#include "platform/base/Locks.h"
#include "platform/base/Strings.h"

#include <cstddef>
#include <string_view>
#include <unordered_map>
#include <vector>

// Gives each name one number for the life of the process, so that numbers may be kept in statics.
// Numbers begin at 1024: they never equal a notice that a notifier knows by a small number.
// Any thread; a leaf lock.
class CUTROOM_API NotifyMsgTypeDictionary {
public:
    static constexpr int kFirstType = 1024;
    // Types that every process knows under a fixed number.
    static constexpr int kGeneralChange = kFirstType;     // "generalChange"
    static constexpr int kValChanged = kFirstType + 1;    // "valChanged"
    static constexpr int kPreValChanged = kFirstType + 2; // "preValChanged"

    static NotifyMsgTypeDictionary& instance();

    // The number of `name`, made at the first asking.
    int intern(std::string_view name);
    // The name of an interned number; empty for any other.
    LightweightString<char> nameOf(int msgType) const;
    // The type of a message that says only that something changed.
    int generalChangeMsgType() const noexcept { return kGeneralChange; }

    NotifyMsgTypeDictionary(const NotifyMsgTypeDictionary&) = delete;
    NotifyMsgTypeDictionary& operator=(const NotifyMsgTypeDictionary&) = delete;

private:
    NotifyMsgTypeDictionary();

    mutable CriticalSection lock_{LockRank::leaf};
    std::unordered_map<LightweightString<char>, int> types_ CUTROOM_GUARDED_BY(lock_);
    LightweightVector<LightweightString<char>> names_ CUTROOM_GUARDED_BY(lock_);
};
