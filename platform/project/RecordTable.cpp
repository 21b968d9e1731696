#include "platform/project/RecordTable.h"

#include "platform/project/RecordBytes.h"

#include <tuple>
#include <utility>

namespace cutroom {

namespace {

// "cutr": tells our database from any other.
constexpr std::int64_t kApplicationID = 0x63757472;
constexpr std::int64_t kVersion = 1;

constexpr char kCreate[] = R"(
CREATE TABLE records (
    number INTEGER PRIMARY KEY AUTOINCREMENT,
    cookie TEXT NOT NULL UNIQUE,
    kinds INTEGER NOT NULL, log_type INTEGER NOT NULL,
    start REAL NOT NULL, "end" REAL NOT NULL,
    video_tracks INTEGER NOT NULL, audio_tracks INTEGER NOT NULL,
    created INTEGER NOT NULL, modified INTEGER NOT NULL,
    marker_types INTEGER NOT NULL,
    texts BLOB NOT NULL, checksum INTEGER NOT NULL);
PRAGMA application_id = 1668641906;
PRAGMA user_version = 1;
)";
static_assert(kApplicationID == 1668641906);

#define CUTROOM_RECORD_COLUMNS                                                                     \
    "cookie, kinds, log_type, start, \"end\", video_tracks, audio_tracks, created, modified, "     \
    "marker_types, texts, checksum"

constexpr char kInsert[] =
    "INSERT INTO records (" CUTROOM_RECORD_COLUMNS ") VALUES (?,?,?,?,?,?,?,?,?,?,?,?)";
constexpr char kUpdate[] =
    "UPDATE records SET (" CUTROOM_RECORD_COLUMNS ") = (?,?,?,?,?,?,?,?,?,?,?,?) WHERE number = ?";
constexpr char kRemove[] = "DELETE FROM records WHERE number = ?";
constexpr char kRead[] = "SELECT number, " CUTROOM_RECORD_COLUMNS " FROM records WHERE number = ?";
constexpr char kReadFrom[] = "SELECT number, " CUTROOM_RECORD_COLUMNS
                             " FROM records WHERE number > ? AND number <= ? ORDER BY number "
                             "LIMIT ?";
#undef CUTROOM_RECORD_COLUMNS

constexpr int kNumFields = 12;

std::uint32_t number32(const SqliteStatement& row, int column) {
    return static_cast<std::uint32_t>(row.number(column));
}

} // namespace

Result<RecordTable> RecordTable::open(const std::string& path, SqliteConnection::Mode mode) {
    const bool writable =
        mode == SqliteConnection::Mode::create || mode == SqliteConnection::Mode::memory;
    Result<SqliteConnection> connection = SqliteConnection::open(path, mode);
    if (!connection)
        return connection.status();
    RecordTable table(std::move(*connection));
    table.path_ = path;
    if (Status status = table.prepareFile(writable); !status)
        return status;
    if (Status status = table.prepareStatements(writable); !status)
        return status;
    return table;
}

Status RecordTable::prepareFile(bool writable) {
    if (writable)
        if (Status status =
                connection_.run("PRAGMA journal_mode = WAL; PRAGMA synchronous = FULL;");
            !status)
            return status;
    const Result<std::int64_t> tables = connection_.queryNumber(
        "SELECT count(*) FROM sqlite_master WHERE type = 'table' AND name = 'records'");
    if (!tables)
        return tables.status();
    if (*tables == 0 && writable) {
        const Result<std::int64_t> others =
            connection_.queryNumber("SELECT count(*) FROM sqlite_master");
        if (!others)
            return others.status();
        if (*others != 0)
            return Status(StatusCode::damaged, path_, "this is no project database");
        if (Status status = begin(); !status)
            return status;
        if (Status status = connection_.run(kCreate); !status)
            return status;
        return commit();
    }
    return checkFile();
}

Status RecordTable::checkFile() {
    const Result<std::int64_t> application = connection_.queryNumber("PRAGMA application_id");
    if (!application)
        return application.status();
    const Result<std::int64_t> version = connection_.queryNumber("PRAGMA user_version");
    if (!version)
        return version.status();
    if (*application != kApplicationID || *version < 1)
        return Status(StatusCode::damaged, path_, "this is no project database");
    if (*version > kVersion)
        return Status(StatusCode::failed, path_, "written by a later version");
    const Result<std::string> check = connection_.queryText("PRAGMA quick_check(1)");
    if (!check)
        return check.status();
    return *check == "ok" ? Status() : Status(StatusCode::damaged, path_, *check);
}

Status RecordTable::prepareStatements(bool writable) {
    const auto prepare = [&](std::optional<SqliteStatement>& target, const char* sql) -> Status {
        Result<SqliteStatement> statement = connection_.prepare(sql);
        if (!statement)
            return statement.status();
        target.emplace(std::move(*statement));
        return {};
    };
    for (const auto& [target, sql, forWriting] :
         {std::tuple(&insert_, kInsert, true), std::tuple(&update_, kUpdate, true),
          std::tuple(&remove_, kRemove, true), std::tuple(&read_, kRead, false),
          std::tuple(&readFrom_, kReadFrom, false)})
        if (writable || !forWriting)
            if (Status status = prepare(*target, sql); !status)
                return Status(StatusCode::damaged, path_, status.message());
    return {};
}

Status RecordTable::begin() { return connection_.run("BEGIN IMMEDIATE"); }
Status RecordTable::commit() { return connection_.run("COMMIT"); }

void RecordTable::rollback() {
    // Fails only when SQLite has rolled back by itself, which is what is wanted.
    if (inTransaction())
        static_cast<void>(connection_.run("ROLLBACK"));
}

void RecordTable::bindFields(SqliteStatement& statement, const projdb::Record& record) {
    const std::string texts = recordBytes(record);
    statement.bindText(1, record.cookie.asString());
    statement.bind(2, record.kinds);
    statement.bind(3, record.logType);
    statement.bindReal(4, record.start);
    statement.bindReal(5, record.end);
    statement.bind(6, record.videoTracks);
    statement.bind(7, record.audioTracks);
    statement.bind(8, record.created);
    statement.bind(9, record.modified);
    statement.bind(10, record.markerTypes);
    statement.bindBytes(11, texts);
    statement.bind(12, recordChecksum(record, texts));
}

Status RecordTable::runOnce(SqliteStatement& statement) {
    const bool done = statement.step() == SqliteStatement::Step::done;
    Status status = done ? Status() : connection_.failure();
    statement.reset();
    return status;
}

Result<RecordTable::Number> RecordTable::insert(const projdb::Record& record) {
    bindFields(*insert_, record);
    if (Status status = runOnce(*insert_); !status)
        return status;
    return connection_.lastInsertedNumber();
}

Status RecordTable::update(Number number, const projdb::Record& record) {
    bindFields(*update_, record);
    update_->bind(kNumFields + 1, number);
    return runOnce(*update_);
}

Status RecordTable::remove(Number number) {
    remove_->bind(1, number);
    return runOnce(*remove_);
}

Status RecordTable::damagedRow(Number number) const {
    return Status(StatusCode::damaged, path_, "record " + std::to_string(number) + " is damaged");
}

Result<projdb::Record> RecordTable::rowOf(const SqliteStatement& row) {
    projdb::Record record;
    const std::optional<Cookie> cookie = Cookie::fromString(row.text(1));
    const std::string_view texts = row.bytes(11);
    if (row.number(0) < 1 || !cookie || !readRecordBytes(texts, record))
        return damagedRow(row.number(0));
    record.cookie = *cookie;
    record.kinds = number32(row, 2);
    record.logType = static_cast<eLogType>(number32(row, 3));
    record.start = row.real(4);
    record.end = row.real(5);
    record.videoTracks = number32(row, 6);
    record.audioTracks = number32(row, 7);
    record.created = number32(row, 8);
    record.modified = number32(row, 9);
    record.markerTypes = number32(row, 10);
    if (recordChecksum(record, texts) != number32(row, 12))
        return damagedRow(row.number(0));
    return record;
}

Result<std::optional<projdb::Record>> RecordTable::read(Number number) {
    read_->bind(1, number);
    const SqliteStatement::Step step = read_->step();
    Result<std::optional<projdb::Record>> answer = std::optional<projdb::Record>();
    if (step == SqliteStatement::Step::failed) {
        answer = connection_.failure();
    } else if (step == SqliteStatement::Step::row) {
        Result<projdb::Record> record = rowOf(*read_);
        if (record)
            answer = std::optional<projdb::Record>(std::move(*record));
        else
            answer = record.status();
    }
    read_->reset();
    return answer;
}

Status RecordTable::readFrom(Number after, Number last, std::size_t limit,
                             const std::function<void(Number, projdb::Record&&)>& visit) {
    readFrom_->bind(1, after);
    readFrom_->bind(2, last);
    readFrom_->bind(3, static_cast<std::int64_t>(limit));
    Status status;
    SqliteStatement::Step step = readFrom_->step();
    for (; step == SqliteStatement::Step::row; step = readFrom_->step()) {
        Result<projdb::Record> record = rowOf(*readFrom_);
        if (!record) {
            status = record.status();
            break;
        }
        visit(readFrom_->number(0), std::move(*record));
    }
    if (step == SqliteStatement::Step::failed)
        status = connection_.failure();
    readFrom_->reset();
    return status;
}

Status RecordTable::close() {
    for (std::optional<SqliteStatement>* const statement :
         {&insert_, &update_, &remove_, &read_, &readFrom_})
        statement->reset();
    return connection_.close();
}

} // namespace cutroom
