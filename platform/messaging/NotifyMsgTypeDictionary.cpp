#include "platform/messaging/NotifyMsgTypeDictionary.h"

#include <cassert>

NotifyMsgTypeDictionary& NotifyMsgTypeDictionary::instance() {
    // Never destroyed: statics of others hold numbers from here.
    static NotifyMsgTypeDictionary& dictionary = *new NotifyMsgTypeDictionary;
    return dictionary;
}

NotifyMsgTypeDictionary::NotifyMsgTypeDictionary() {
    // In the order of their fixed numbers.
    for (const char* name : {"generalChange", "valChanged", "preValChanged"})
        intern(name);
    assert(intern("preValChanged") == kPreValChanged);
}

int NotifyMsgTypeDictionary::intern(std::string_view name) {
    const CriticalSection::Lock lock(lock_);
    const LightweightString<char> key(name);
    if (const auto known = types_.find(key); known != types_.end())
        return known->second;
    const int type = kFirstType + static_cast<int>(names_.size());
    names_.push_back(key);
    types_.emplace(key, type);
    return type;
}

LightweightString<char> NotifyMsgTypeDictionary::nameOf(int msgType) const {
    const CriticalSection::Lock lock(lock_);
    if (msgType < kFirstType || static_cast<std::size_t>(msgType - kFirstType) >= names_.size())
        return {};
    return names_[static_cast<std::size_t>(msgType - kFirstType)];
}
