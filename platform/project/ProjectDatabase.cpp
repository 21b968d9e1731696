// Opening, closing and asking; changes are in ProjectDatabaseChanges.cpp.
#include "platform/project/ProjectDatabase.h"

#include "platform/base/Log.h"
#include "platform/files/Files.h"
#include "platform/project/ProjDbFields.h"

#include <algorithm>
#include <limits>

namespace cutroom {

namespace {

// Rows read under one hold of the lock.
constexpr std::size_t kPage = 256;
constexpr RecordTable::Number kLastNumber = std::numeric_limits<RecordTable::Number>::max();
// The fields by which assets are gathered and new edits named: few have such a text in them, and to
// read all takes long.
struct MarkedField {
    std::string_view name;
    std::string_view beginning;
};
constexpr MarkedField kMarkedFields[] = {
    {"tags", ""}, {"parent", ""}, {"name", projdb::kNewEditName}};
// Where more than one record of so many has a text, all are read in one go.
constexpr std::size_t kFewInAll = 4;

// A bit for each marked field in which the record has such a text.
std::uint8_t marksOf(const projdb::Record& record) {
    unsigned marks = 0;
    for (std::size_t i = 0; i < std::size(kMarkedFields); ++i) {
        const auto text = record.attributes.find(kMarkedFields[i].name);
        if (text != record.attributes.end() && text->second.starts_with(kMarkedFields[i].beginning))
            marks |= 1u << i;
    }
    return static_cast<std::uint8_t>(marks);
}

// Moves a damaged database away together with its log; what the log was about goes with it.
Status moveDatabaseAside(const std::string& path) {
    for (const char* const suffix : {"", "-wal"})
        if (fileExists(path + suffix))
            if (const Result<std::string> moved = moveAside(path + suffix); !moved)
                return moved.status();
    return removeFile(path + "-shm");
}

// What is read while a writer comes by may be of two states, so it is read again.
Result<RecordTable> openForReading(const std::string& path) {
    constexpr int kMostLooks = 10;
    for (int look = 1;; ++look) {
        const Result<FileInfo> before = fileSystem().stat(path);
        // Beside a log there is, or was, a writer whose last changes are in it.
        if (fileExists(path + "-wal"))
            return RecordTable::open(path, SqliteConnection::Mode::read);
        Result<RecordTable> table = RecordTable::open(path, SqliteConnection::Mode::copy);
        if (look == kMostLooks || isSameDatabase(before, path))
            return table;
    }
}

void logFailure(const Status& status) { LogBoth("%s\n", status.text().c_str()); }

} // namespace

bool isSameDatabase(const Result<FileInfo>& before, const std::string& path) {
    const Result<FileInfo> now = fileSystem().stat(path);
    return before && now && before->identity == now->identity &&
           before->modifiedNanos == now->modifiedNanos && !fileExists(path + "-wal");
}

ProjectDatabase& ProjectDatabase::instance() { return ProcessSingleton<ProjectDatabase>::get(); }

ProjectDatabase::~ProjectDatabase() {
    if (const Status status = close(); !status)
        logFailure(status);
}

Result<ProjectDatabase::Opened> ProjectDatabase::open(const std::string& path, bool readOnly,
                                                      Status* damage) {
    CriticalSection::Lock lock(lock_);
    Result<Opened> opened = openTable(path, readOnly, damage);
    if (!opened)
        return opened;
    Status loaded = loadEntries();
    if (loaded)
        return opened;
    forgetEntries();
    table_.reset();
    if (loaded.code() != StatusCode::damaged)
        return loaded;
    *damage = loaded;
    if (!readOnly)
        if (Status status = moveDatabaseAside(path); !status)
            return status;
    Result<RecordTable> table = readOnly ? RecordTable::open(path, SqliteConnection::Mode::memory)
                                         : RecordTable::open(path, SqliteConnection::Mode::create);
    if (!table)
        return table.status();
    table_.emplace(std::move(*table));
    return Opened::fresh;
}

Result<ProjectDatabase::Opened> ProjectDatabase::openTable(const std::string& path, bool readOnly,
                                                           Status* damage) {
    using Mode = SqliteConnection::Mode;
    const bool isThere = fileExists(path);
    const bool hasLog = fileExists(path + "-wal");
    if (isThere || !readOnly) {
        Result<RecordTable> table =
            readOnly ? openForReading(path) : RecordTable::open(path, Mode::create);
        if (table) {
            table_.emplace(std::move(*table));
            if (!isThere)
                return Opened::fresh;
            return hasLog && !readOnly ? Opened::interrupted : Opened::whole;
        }
        if (!readOnly && table.status().code() != StatusCode::damaged)
            return table.status();
        *damage = table.status();
    }
    if (!readOnly)
        if (Status status = moveDatabaseAside(path); !status)
            return status;
    Result<RecordTable> table = RecordTable::open(path, readOnly ? Mode::memory : Mode::create);
    if (!table)
        return table.status();
    table_.emplace(std::move(*table));
    return Opened::fresh;
}

Status ProjectDatabase::close() {
    CriticalSection::Lock lock(lock_);
    if (!table_)
        return {};
    Status status = commitLocked();
    if (Status closed = table_->close(); status.ok())
        status = closed;
    table_.reset();
    forgetEntries();
    changed_.clear();
    changes_.clear();
    return status;
}

void ProjectDatabase::leaveInterrupted() {
    CriticalSection::Lock lock(lock_);
    if (table_)
        table_->keepLog();
}

// --- memory ----------------------------------------------------------------------------------

projdb::Summary ProjectDatabase::summaryOf(const projdb::Record& record) {
    return {record.cookie,      record.kinds, record.videoTracks,
            record.audioTracks, record.start, record.end};
}

void ProjectDatabase::forgetEntries() {
    entries_.clear();
    marks_.clear();
    slots_.clear();
    forgetTexts();
    textBytesNeeded_ = 0;
    ++revision_;
}

void ProjectDatabase::setEntry(Slot slot, Number number, const projdb::Record& record) {
    if (slot == entries_.size()) {
        marks_.resize(slot + std::size_t{1});
        entries_.emplace_back();
        slots_.insert(record.cookie, slot);
    }
    entries_[slot] = {summaryOf(record), number};
    marks_[slot] = marksOf(record);
    if (number <= textsUpTo_)
        texts_.put(slot, record);
    ++revision_;
}

Status ProjectDatabase::loadEntries() {
    forgetEntries();
    return table_->readFrom(std::numeric_limits<Number>::min(), kLastNumber,
                            std::numeric_limits<std::int32_t>::max(),
                            [this](Number number, projdb::Record&& record) CUTROOM_REQUIRES(lock_) {
                                setEntry(static_cast<Slot>(entries_.size()), number, record);
                            });
}

// Closes the gaps of removed records. Texts are read again when they are next asked for.
void ProjectDatabase::compactEntries() {
    std::vector<Entry> kept;
    std::vector<std::uint8_t> keptMarks;
    kept.reserve(slots_.size());
    keptMarks.reserve(slots_.size());
    for (std::size_t i = 0; i < entries_.size(); ++i)
        if (entries_[i].number != 0) {
            kept.push_back(entries_[i]);
            keptMarks.push_back(marks_[i]);
        }
    forgetEntries();
    entries_ = std::move(kept);
    marks_ = std::move(keptMarks);
    slots_.reserve(entries_.size());
    for (std::size_t i = 0; i < entries_.size(); ++i)
        slots_.insert(entries_[i].summary.cookie, static_cast<Slot>(i));
}

// --- asking ----------------------------------------------------------------------------------

bool ProjectDatabase::isPresent(const Cookie& cookie) const {
    CriticalSection::Lock lock(lock_);
    return slots_.contains(cookie);
}

std::vector<bool> ProjectDatabase::arePresent(const CookieVec& cookies) const {
    CriticalSection::Lock lock(lock_);
    std::vector<bool> answers(cookies.size());
    for (std::size_t i = 0; i < cookies.size(); ++i)
        answers[i] = slots_.contains(cookies[i]);
    return answers;
}

std::vector<bool> ProjectDatabase::firstPresent(const CookieVec& cookies) const {
    CriticalSection::Lock lock(lock_);
    return slots_.firstOfEach(cookies);
}

std::size_t ProjectDatabase::count() const {
    CriticalSection::Lock lock(lock_);
    return slots_.size();
}

std::optional<projdb::Record> ProjectDatabase::find(const Cookie& cookie) {
    CriticalSection::Lock lock(lock_);
    const std::optional<Slot> slot = slots_.find(cookie);
    if (!slot)
        return std::nullopt;
    Result<std::optional<projdb::Record>> record = table_->read(entries_[*slot].number);
    if (!record) {
        logFailure(record.status());
        return std::nullopt;
    }
    return std::move(*record);
}

std::optional<projdb::Summary> ProjectDatabase::findSummary(const Cookie& cookie) const {
    CriticalSection::Lock lock(lock_);
    const std::optional<Slot> slot = slots_.find(cookie);
    return slot ? std::optional<projdb::Summary>(entries_[*slot].summary) : std::nullopt;
}

std::vector<projdb::Summary> ProjectDatabase::summaries() const {
    CriticalSection::Lock lock(lock_);
    std::vector<projdb::Summary> all;
    all.reserve(slots_.size());
    for (const Entry& entry : entries_)
        if (entry.number != 0)
            all.push_back(entry.summary);
    return all;
}

void ProjectDatabase::forEach(const std::function<bool(const projdb::Record&)>& visit) {
    Number after = 0;
    Number last = 0;
    {
        CriticalSection::Lock lock(lock_);
        last = entries_.empty() ? 0 : entries_.back().number;
        for (std::size_t i = entries_.size(); last == 0 && i > 0; --i)
            last = entries_[i - 1].number;
    }
    while (after < last) {
        std::vector<projdb::Record> page;
        {
            CriticalSection::Lock lock(lock_);
            if (!table_)
                return;
            const Status status =
                table_->readFrom(after, last, kPage, [&](Number number, projdb::Record&& record) {
                    after = number;
                    page.push_back(std::move(record));
                });
            if (!status)
                logFailure(status);
        }
        if (page.empty())
            return;
        for (const projdb::Record& record : page)
            if (isPresent(record.cookie) && !visit(record))
                return;
    }
}

// The numbers of the records whose field has a text that begins so, and maybe of some more; nothing
// when reading all records is as good.
std::optional<std::vector<ProjectDatabase::Number>>
ProjectDatabase::numbersHaving(std::string_view field, std::string_view beginning) const {
    const auto known = std::find_if(
        std::begin(kMarkedFields), std::end(kMarkedFields), [&](const MarkedField& marked) {
            return marked.name == field && beginning.starts_with(marked.beginning);
        });
    if (known == std::end(kMarkedFields))
        return std::nullopt;
    const unsigned mark = 1u << (known - std::begin(kMarkedFields));
    std::vector<Number> numbers;
    for (std::size_t i = 0; i < entries_.size(); ++i)
        if (entries_[i].number != 0 && (marks_[i] & mark) != 0)
            numbers.push_back(entries_[i].number);
    if (numbers.size() > slots_.size() / kFewInAll)
        return std::nullopt;
    return numbers;
}

Status ProjectDatabase::readPage(const std::vector<Number>& numbers, std::size_t& at,
                                 std::vector<projdb::Record>& page) {
    for (const std::size_t end = std::min(numbers.size(), at + kPage); table_ && at < end; ++at) {
        Result<std::optional<projdb::Record>> record = table_->read(numbers[at]);
        if (!record)
            return record.status();
        if (*record)
            page.push_back(std::move(**record));
    }
    return {};
}

void ProjectDatabase::forEachHaving(std::string_view field, std::string_view beginning,
                                    const std::function<bool(const projdb::Record&)>& visit) {
    std::optional<std::vector<Number>> numbers;
    {
        CriticalSection::Lock lock(lock_);
        numbers = numbersHaving(field, beginning);
    }
    if (!numbers)
        return forEach(visit);
    std::vector<projdb::Record> page;
    for (std::size_t at = 0; at < numbers->size();) {
        page.clear();
        {
            CriticalSection::Lock lock(lock_);
            if (!table_)
                return;
            if (const Status status = readPage(*numbers, at, page); !status)
                return logFailure(status);
        }
        for (const projdb::Record& record : page)
            if (isPresent(record.cookie) && !visit(record))
                return;
    }
}

} // namespace cutroom
