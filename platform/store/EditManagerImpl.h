// What the edit manager holds, for the sources that make up its operations. Internal to the store.
#pragma once

#include "platform/base/Annotations.h"
#include "platform/base/Locks.h"
#include "platform/store/EditFile.h"
#include "platform/store/EditImpl.h"
#include "platform/store/EditManager.h"

#include <cstdint>
#include <memory>
#include <unordered_map>
#include <vector>

class ProjectListener;

// What an edit was when a save of it began.
struct SavedEdit {
    Kv::Ptr<Edit> edit;
    cutroom::EditState state;
    cutroom::EditHistory history; // only when it is to be written
    bool writeHistory = false;
    bool setHistoryAside = false; // the file on disk is damaged
    std::uint64_t historyId = 0;
    std::uint64_t changes = 0;
};

struct EditManager::Impl {
    // The table holds one share of each open edit. An edit leaves it with the last handle, unless
    // it has changes that are not saved.
    mutable CriticalSection lock{LockRank::editManager};
    std::unordered_map<Cookie, Kv::Ptr<Edit>> table CUTROOM_GUARDED_BY(lock);
    Cookie clipboard CUTROOM_GUARDED_BY(lock);
    std::vector<ProjectListener*> listeners CUTROOM_GUARDED_BY(lock);
    // Counts deletions and closed projects: an edit that was read across one is looked for again.
    std::uint64_t removals CUTROOM_GUARDED_BY(lock) = 0;

    CriticalSection saving; // held for one whole save; taken before any edit's lock
    CookieVec undiscarded CUTROOM_GUARDED_BY(saving); // their files could not be removed yet
    Notifier notifier;
    ValServer<bool> mixerBypass;
    Kv::Ptr<Guard> projectExit;
    Kv::Ptr<Guard> databaseRebuilder;

    // The open edit of that cookie, or none.
    Kv::Ptr<Edit> find(const Cookie& cookie) const;
    std::vector<Kv::Ptr<Edit>> all() const;
    // Puts an edit into the table; gives the one that is there already when there is one.
    Kv::Ptr<Edit> enter(const Kv::Ptr<Edit>& edit);
    // The same for an edit that was read; empty when `removals` has changed since.
    Kv::Ptr<Edit> enterRead(const Kv::Ptr<Edit>& edit, std::uint64_t removalsBefore);
    static cutroom::Result<Kv::Ptr<Edit>> read(const Cookie& cookie);
    // Takes out what nobody holds and no save needs.
    void dropUnused();

    // What an edit that no file can hold does to a save of several.
    enum class TooLarge { failsAll, staysUnsaved };
    cutroom::Status saveAll(const std::vector<Kv::Ptr<Edit>>& edits, TooLarge tooLarge,
                            const std::function<void(double)>& progress = {});
    static SavedEdit beginSave(const Kv::Ptr<Edit>& edit);
    static void endSave(const SavedEdit& saved, bool recorded);
    static cutroom::Status putRecords(const std::vector<SavedEdit>& saved);
    // Reads the history when that has not been done; it stays not loaded when the system refuses.
    // Under the edit's lock.
    static void needHistory(Edit::Impl& edit);
    void tell(int notice, const Kv::Ptr<iObject>& object, const std::string& text) const;
    void tellListenersOfExit();
};
