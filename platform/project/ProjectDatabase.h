// `cutroom::ProjectDatabase`: the one database behind `projdb`. Table, memory and notices together.
#pragma once

#include "platform/base/Locks.h"
#include "platform/base/Status.h"
#include "platform/host/FileSystem.h"
#include "platform/host/ProcessLife.h"
#include "platform/messaging/Notifier.h"
#include "platform/project/CookieTable.h"
#include "platform/project/ProjDb.h"
#include "platform/project/ProjDbSearch.h"
#include "platform/project/RecordTable.h"
#include "platform/project/TextArena.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace cutroom {

// Tells whether no writer of the database has come by since `before` was taken of its file: the
// file's time and identity, and the log beside it, tell of one.
bool isSameDatabase(const Result<FileInfo>& before, const std::string& path);

// Any thread; the lock is held while the database is read or written, not while listeners are told
// or visitors run.
class ProjectDatabase {
public:
    // What `open` had to do.
    enum class Opened {
        whole,       // the records are those of the file
        interrupted, // so they are, but who wrote last did not close it: what was saved to other
                     // files just before its end may be missing
        fresh,       // there was no file, or a damaged one: there are no records
    };

    static ProjectDatabase& instance();

    // Opens the file. For writing, a missing one is made and a damaged one moved aside; for reading
    // only, such a one is replaced by a database in memory. `*damage` is set to what was wrong.
    Result<Opened> open(const std::string& path, bool readOnly, Status* damage);
    // Commits what is open, closes the file and forgets all records.
    Status close();
    // What the records say and what is saved differ: the file is left as an interrupted writer
    // leaves it, so that the next writer makes the records anew.
    void leaveInterrupted();

    bool isPresent(const Cookie& cookie) const;
    std::vector<bool> arePresent(const CookieVec& cookies) const;
    std::vector<bool> firstPresent(const CookieVec& cookies) const;
    std::size_t count() const;
    std::optional<projdb::Record> find(const Cookie& cookie);
    std::optional<projdb::Summary> findSummary(const Cookie& cookie) const;

    enum class Put { insert, update, either };
    Status put(const projdb::Record& record, Put how);
    Status remove(const Cookie& cookie);
    // Removes every record but those of `kept`; inside a batch only.
    Status removeAllBut(CookieVec kept);

    // In the order of insertion.
    std::vector<projdb::Summary> summaries() const;
    void forEach(const std::function<bool(const projdb::Record&)>& visit);
    // Passes over some or all of the records whose field has no text that begins so.
    void forEachHaving(std::string_view field, std::string_view beginning,
                       const std::function<bool(const projdb::Record&)>& visit);
    // One step of a search (see projdb::Search::next).
    void searchOn(projdb::Search::State& search, std::vector<projdb::Hit>& found);

    // One transaction and one notice from the first begin to the last end.
    void beginBatch();
    Status endBatch();
    Status commitBatch();
    // Undoes what the batch did so far and forgets its notice.
    void revertBatch();

    Notifier& notifier() noexcept { return notifier_; }

private:
    friend class ProcessSingleton<ProjectDatabase>;
    using Slot = CookieTable::Slot;
    using Number = RecordTable::Number;
    // What a record becomes in the notice of a batch.
    enum class Change { added, modified, removed };
    struct Entry {
        projdb::Summary summary;
        Number number = 0; // 0: the record is gone
    };

    ProjectDatabase() = default;
    ~ProjectDatabase();
    static projdb::Summary summaryOf(const projdb::Record& record);
    Result<Opened> openTable(const std::string& path, bool readOnly, Status* damage)
        CUTROOM_REQUIRES(lock_);
    Status loadEntries() CUTROOM_REQUIRES(lock_);
    std::optional<std::vector<Number>> numbersHaving(std::string_view field,
                                                     std::string_view beginning) const
        CUTROOM_REQUIRES(lock_);
    Status readPage(const std::vector<Number>& numbers, std::size_t& at,
                    std::vector<projdb::Record>& page) CUTROOM_REQUIRES(lock_);
    Status loadTexts() CUTROOM_REQUIRES(lock_);
    void compactEntries() CUTROOM_REQUIRES(lock_);
    void forgetEntries() CUTROOM_REQUIRES(lock_);
    void setEntry(Slot slot, Number number, const projdb::Record& record) CUTROOM_REQUIRES(lock_);
    Status checkWritable(const Cookie& cookie) const CUTROOM_REQUIRES(lock_);
    Status putLocked(const projdb::Record& record, Put how) CUTROOM_REQUIRES(lock_);
    Status removeLocked(const Cookie& cookie) CUTROOM_REQUIRES(lock_);
    Status insertRow(const projdb::Record& record) CUTROOM_REQUIRES(lock_);
    Status updateRow(Slot slot, const projdb::Record& record) CUTROOM_REQUIRES(lock_);
    Status beginWrite() CUTROOM_REQUIRES(lock_);
    Status endWrite(Status status) CUTROOM_REQUIRES(lock_);
    Status commitLocked() CUTROOM_REQUIRES(lock_);
    void revertLocked() CUTROOM_REQUIRES(lock_);
    void note(const Cookie& cookie, Change change) CUTROOM_REQUIRES(lock_);
    Kv::Ptr<projdb::Changes> takeChanges() CUTROOM_REQUIRES(lock_);
    void tell(const Kv::Ptr<projdb::Changes>& changes);
    void searchKinds(projdb::Search::State& search, std::vector<projdb::Hit>& found)
        CUTROOM_REQUIRES(lock_);
    Status searchTexts(projdb::Search::State& search, std::vector<projdb::Hit>& found)
        CUTROOM_REQUIRES(lock_);
    Status searchRows(projdb::Search::State& search, std::vector<projdb::Hit>& found)
        CUTROOM_REQUIRES(lock_);
    Status takeHit(Slot slot, const projdb::Search::State& search, std::vector<projdb::Hit>& found)
        CUTROOM_REQUIRES(lock_);
    void forgetTexts() CUTROOM_REQUIRES(lock_);

    mutable CriticalSection lock_{LockRank::database};
    std::optional<RecordTable> table_ CUTROOM_GUARDED_BY(lock_); // none: no project
    std::vector<Entry> entries_ CUTROOM_GUARDED_BY(lock_);       // by slot, numbers ascending
    std::vector<std::uint8_t> marks_ CUTROOM_GUARDED_BY(lock_);  // by slot, see `marksOf`
    CookieTable slots_ CUTROOM_GUARDED_BY(lock_);
    TextArena texts_ CUTROOM_GUARDED_BY(lock_);
    // The texts of the rows up to that number are in memory; from the first search on.
    Number textsUpTo_ CUTROOM_GUARDED_BY(lock_) = 0;
    // More bytes than this are needed for all texts, as was found when they were given up.
    std::size_t textBytesNeeded_ CUTROOM_GUARDED_BY(lock_) = 0;
    // Counts changes of what is there.
    std::uint64_t revision_ CUTROOM_GUARDED_BY(lock_) = 0;
    int batchDepth_ CUTROOM_GUARDED_BY(lock_) = 0;
    Status batchFailure_ CUTROOM_GUARDED_BY(lock_); // the first failure that cost the transaction
    std::vector<Cookie> changed_ CUTROOM_GUARDED_BY(lock_); // in the order of the first change
    std::unordered_map<Cookie, Change> changes_ CUTROOM_GUARDED_BY(lock_);
    Notifier notifier_;
};

} // namespace cutroom
