// Changes of the project database, their transactions and their notices.
#include "platform/base/Log.h"
#include "platform/project/ProjectDatabase.h"

#include <algorithm>
#include <cmath>

namespace cutroom {

namespace {

// Fewer gaps than this are left alone.
constexpr std::size_t kLeastGaps = 1024;

} // namespace

Status ProjectDatabase::checkWritable(const Cookie& cookie) const {
    if (!table_)
        return Status(StatusCode::failed, cookie.asString(), "no project is open");
    if (!table_->isWritable())
        return Status(StatusCode::failed, cookie.asString(), "the project is open for reading");
    if (!cookie.valid())
        return Status(StatusCode::wrongUsage, cookie.asString(), "this is no asset");
    return batchFailure_;
}

// --- transactions ----------------------------------------------------------------------------

Status ProjectDatabase::beginWrite() {
    if (batchDepth_ == 0 || table_->inTransaction())
        return {};
    return table_->begin();
}

// A failure may have cost the whole transaction; then nothing of the batch counts any more.
Status ProjectDatabase::endWrite(Status status) {
    if (!status && batchDepth_ > 0 && !table_->inTransaction()) {
        batchFailure_ = status;
        revertLocked();
    }
    return status;
}

Status ProjectDatabase::commitLocked() {
    if (!batchFailure_)
        return std::exchange(batchFailure_, Status());
    if (!table_ || !table_->inTransaction())
        return {};
    Status status = table_->commit();
    if (!status)
        revertLocked();
    return status;
}

void ProjectDatabase::revertLocked() {
    if (!table_)
        return;
    table_->rollback();
    changed_.clear();
    changes_.clear();
    if (const Status status = loadEntries(); !status)
        LogBoth("%s\n", status.text().c_str());
}

void ProjectDatabase::beginBatch() {
    CriticalSection::Lock lock(lock_);
    ++batchDepth_;
}

Status ProjectDatabase::commitBatch() {
    Status status;
    Kv::Ptr<projdb::Changes> changes;
    {
        CriticalSection::Lock lock(lock_);
        if (batchDepth_ > 1)
            return {};
        status = commitLocked();
        changes = takeChanges();
    }
    tell(changes);
    return status;
}

Status ProjectDatabase::endBatch() {
    Status status;
    Kv::Ptr<projdb::Changes> changes;
    {
        CriticalSection::Lock lock(lock_);
        if (--batchDepth_ > 0)
            return {};
        status = commitLocked();
        changes = takeChanges();
    }
    tell(changes);
    return status;
}

void ProjectDatabase::revertBatch() {
    CriticalSection::Lock lock(lock_);
    batchFailure_ = Status();
    revertLocked();
}

// --- notices ---------------------------------------------------------------------------------

// What a record becomes in all, from what it was to be and what happens now.
void ProjectDatabase::note(const Cookie& cookie, Change change) {
    const auto found = changes_.find(cookie);
    if (found == changes_.end()) {
        changes_.emplace(cookie, change);
        changed_.push_back(cookie);
        return;
    }
    const bool wasNew = found->second == Change::added;
    if (wasNew && change == Change::removed)
        changes_.erase(found);
    else if (found->second == Change::removed)
        found->second = Change::modified;
    else if (!wasNew)
        found->second = change;
}

Kv::Ptr<projdb::Changes> ProjectDatabase::takeChanges() {
    const Kv::Ptr<projdb::Changes> taken = Kv::makePtr<projdb::Changes>();
    for (const Cookie& cookie : changed_) {
        const auto found = changes_.find(cookie);
        if (found == changes_.end())
            continue;
        CookieVec& list = found->second == Change::added      ? taken->added
                          : found->second == Change::modified ? taken->modified
                                                              : taken->removed;
        list.push_back(cookie);
        changes_.erase(found);
    }
    changed_.clear();
    changes_.clear();
    return taken;
}

void ProjectDatabase::tell(const Kv::Ptr<projdb::Changes>& changes) {
    if (!changes->empty())
        notifier_.issueNotification(NotifyMsg(changes), projdb::changedMsgType());
}

// --- records ---------------------------------------------------------------------------------

Status ProjectDatabase::put(const projdb::Record& record, Put how) {
    Status status;
    Kv::Ptr<projdb::Changes> changes;
    {
        CriticalSection::Lock lock(lock_);
        status = putLocked(record, how);
        if (!status || batchDepth_ > 0)
            return status;
        changes = takeChanges();
    }
    tell(changes);
    return status;
}

Status ProjectDatabase::putLocked(const projdb::Record& record, Put how) {
    if (Status status = checkWritable(record.cookie); !status)
        return status;
    if (!std::isfinite(record.start) || !std::isfinite(record.end))
        return Status(StatusCode::wrongUsage, record.cookie.asString(), "the extent is not finite");
    const std::optional<Slot> slot = slots_.find(record.cookie);
    if (slot && how == Put::insert)
        return Status(StatusCode::wrongUsage, record.cookie.asString(), "is there already");
    if (!slot && how == Put::update)
        return Status(StatusCode::notFound, record.cookie.asString(), "is not in the database");
    return slot ? updateRow(*slot, record) : insertRow(record);
}

Status ProjectDatabase::insertRow(const projdb::Record& record) {
    if (Status status = beginWrite(); !status)
        return endWrite(status);
    const Result<Number> number = table_->insert(record);
    if (!number)
        return endWrite(number.status());
    setEntry(static_cast<Slot>(entries_.size()), *number, record);
    note(record.cookie, Change::added);
    return {};
}

Status ProjectDatabase::updateRow(Slot slot, const projdb::Record& record) {
    const Number number = entries_[slot].number;
    const Result<std::optional<projdb::Record>> before = table_->read(number);
    if (before && *before && **before == record)
        return {};
    if (Status status = beginWrite(); !status)
        return endWrite(status);
    if (Status status = table_->update(number, record); !status)
        return endWrite(status);
    setEntry(slot, number, record);
    note(record.cookie, Change::modified);
    return {};
}

Status ProjectDatabase::remove(const Cookie& cookie) {
    Status status;
    Kv::Ptr<projdb::Changes> changes;
    {
        CriticalSection::Lock lock(lock_);
        status = removeLocked(cookie);
        if (!status || batchDepth_ > 0)
            return status;
        changes = takeChanges();
    }
    tell(changes);
    return status;
}

Status ProjectDatabase::removeLocked(const Cookie& cookie) {
    if (Status status = checkWritable(cookie); !status)
        return status;
    const std::optional<Slot> slot = slots_.find(cookie);
    if (!slot)
        return Status(StatusCode::notFound, cookie.asString(), "is not in the database");
    if (Status status = beginWrite(); !status)
        return endWrite(status);
    if (Status status = table_->remove(entries_[*slot].number); !status)
        return endWrite(status);
    entries_[*slot] = Entry();
    slots_.erase(cookie);
    texts_.remove(*slot);
    ++revision_;
    note(cookie, Change::removed);
    const std::size_t gaps = entries_.size() - slots_.size();
    if (gaps > kLeastGaps && gaps > entries_.size() / 2)
        compactEntries();
    return {};
}

Status ProjectDatabase::removeAllBut(CookieVec kept) {
    CriticalSection::Lock lock(lock_);
    if (!table_ || !table_->isWritable() || batchDepth_ == 0)
        return Status(StatusCode::wrongUsage, "", "records are removed as a whole in a batch only");
    std::sort(kept.begin(), kept.end());
    CookieVec gone;
    for (const Entry& entry : entries_)
        if (entry.number != 0 &&
            !std::binary_search(kept.begin(), kept.end(), entry.summary.cookie))
            gone.push_back(entry.summary.cookie);
    for (const Cookie& cookie : gone)
        if (Status status = removeLocked(cookie); !status)
            return status;
    return {};
}

} // namespace cutroom
