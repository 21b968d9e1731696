// The project database: one record for each edit and log of the open project.
//
// Records lie in project.db (SQLite 3); cookies, kinds and, from the first search on, the
// lower-cased texts are also held in memory. What the database holds can be rebuilt from the
// project's other files. Any thread may call; one lock (rank database) guards it, which is not held
// while visitors and listeners run. Without an open project there are no records and changes fail.
#pragma once

#include "platform/base/Cookie.h"
#include "platform/base/Export.h"
#include "platform/base/Guard.h"
#include "platform/base/Object.h"
#include "platform/base/Ptr.h"
#include "platform/base/Status.h"
#include "platform/messaging/Callback.h"
#include "platform/messaging/NotifyMsg.h"
#include "platform/project/ProjDbRecord.h"
#include "platform/project/SearchCriteria.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string_view>
#include <vector>

namespace projdb {

// Tells whether the database holds a record of that cookie. Asks memory only.
CUTROOM_API bool isPresent(const Cookie& cookie);
// The same for many: the answers in the order of the cookies, under one lock.
CUTROOM_API std::vector<bool> arePresent(const CookieVec& cookies);
// The same, and true but for the first of equal cookies. Made for many: some nanoseconds each.
CUTROOM_API std::vector<bool> firstPresent(const CookieVec& cookies);
CUTROOM_API std::optional<Record> find(const Cookie& cookie);
CUTROOM_API std::optional<Summary> findSummary(const Cookie& cookie);
CUTROOM_API std::size_t count();

// Adds a record. Fails (`wrongUsage`) for an invalid cookie, one that is present, or an extent that
// is not finite.
[[nodiscard]] CUTROOM_API cutroom::Status insert(const Record& record);
// Replaces the record of that cookie; `notFound` when there is none. An equal record changes and
// tells nothing.
[[nodiscard]] CUTROOM_API cutroom::Status update(const Record& record);
// Inserts or updates.
[[nodiscard]] CUTROOM_API cutroom::Status put(const Record& record);
// `notFound` when there is none.
[[nodiscard]] CUTROOM_API cutroom::Status remove(const Cookie& cookie);

// Calls `visit` with each record, in the order of their insertion, until it answers false. Works
// on the records present at the start; one removed meanwhile is passed over.
CUTROOM_API void forEach(const std::function<bool(const Record&)>& visit);
// The same with what is held in memory of each record: reads no file, and does not ask whether a
// record is removed meanwhile.
CUTROOM_API void forEachSummary(const std::function<bool(const Summary&)>& visit);
// The same with the texts of the named fields only (`Record::getField`), in the order of the names.
// The texts hold until the visitor returns.
CUTROOM_API void forEach(const std::vector<std::string_view>& fields,
                         const std::function<bool(const std::vector<std::string>&)>& visit);
// Calls `visit` with each record that has a wanted kind and matches the text criteria, as
// `matchRecord` decides, in the order of insertion; all calls come when the whole search is done
// (ProjDbSearch.h gives results sooner).
CUTROOM_API void forEachMatch(const SearchCriteria& criteria,
                              const std::function<bool(const Summary&)>& visit);

// What changed, told as the object of a message of type `changedMsgType()`. A cookie stands in one
// list only, each list without duplicates in the order of the changes.
class CUTROOM_API Changes : public iObject {
public:
    ~Changes() override;
    CookieVec added;
    CookieVec modified;
    CookieVec removed;
    bool empty() const noexcept { return added.empty() && modified.empty() && removed.empty(); }
};

// "ProjectDatabaseChanged", interned.
CUTROOM_API int changedMsgType();
// `callback` is called with one message for each change, or for each outermost coalescer, on the
// thread that made it or closed the coalescer; until the guard is dropped.
[[nodiscard]] CUTROOM_API Kv::Ptr<Guard> addListener(CallbackPtr<NotifyMsg> callback);

} // namespace projdb

// Gathers the changes that its thread and others make during its life into one transaction, flushed
// once, and one notice. May be nested; the outermost one counts. A change is visible at once.
class CUTROOM_API ProjDbModificationCoalescer {
public:
    ProjDbModificationCoalescer();
    // Commits and tells. A failed commit is logged, and the records stay as they were before.
    ~ProjDbModificationCoalescer();
    ProjDbModificationCoalescer(const ProjDbModificationCoalescer&) = delete;
    ProjDbModificationCoalescer& operator=(const ProjDbModificationCoalescer&) = delete;

    // Commits now and gives the outcome; the destructor then commits what came later. Only the
    // outermost one commits.
    [[nodiscard]] cutroom::Status commit();
};
