// What a Vob writes of itself to the log.
#include "platform/base/Log.h"
#include "vob/Telling.h"
#include "vob/Vob.h"

void Vob::debug(const char* label) {
    const CriticalSection::Lock lock(clientLock_);
    LogBoth("Vob::debug() : %s     \n", label ? label : "NULL");
    LogBoth("Num clients : %d, Cookie %s, id %s, ptr %p\n", static_cast<int>(clients_.size()),
            cookie_.asString().c_str(), groupId_.c_str(), static_cast<void*>(this));
    LogBoth("{\n");
    for (std::size_t i = 0; i < clients_.size(); ++i) {
        VobClient* const client = clients_[i];
        LogBoth("    [%p] : %s (pri : %d) { ", static_cast<void*>(client), client->idstring(),
                static_cast<int>(client->getPriority()));
        try {
            client->debug();
        } catch (...) {
            cutroom::logFailedClient("Vob::debug()");
        }
        LogBoth(" }\n");
    }
    LogBoth("}\n");
}
