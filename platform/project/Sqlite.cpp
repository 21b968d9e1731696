#include "platform/project/Sqlite.h"

#include <sqlite3.h>

#include <system_error>
#include <utility>

namespace cutroom {

namespace {

// How long a reader waits for a writer's checkpoint, in milliseconds.
constexpr int kBusyMilliseconds = 5000;

StatusCode codeOf(int result) noexcept {
    switch (result & 0xFF) {
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
    case SQLITE_SCHEMA:
        return StatusCode::damaged;
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
        return StatusCode::locked;
    case SQLITE_IOERR:
    case SQLITE_FULL:
    case SQLITE_CANTOPEN:
    case SQLITE_READONLY:
    case SQLITE_PERM:
        return StatusCode::inputOutput;
    default:
        return StatusCode::failed;
    }
}

// The path as a file URI, so that options can follow. SQLite takes all but these as they are.
std::string uriOf(const std::string& path, const char* options) {
    std::string uri = "file:";
    for (const char c : path)
        uri += c == '%' ? "%25" : c == '?' ? "%3F" : c == '#' ? "%23" : std::string(1, c);
    return uri + options;
}

constexpr int kCommon = SQLITE_OPEN_FULLMUTEX | SQLITE_OPEN_URI;

int openMemory(sqlite3** handle) {
    return sqlite3_open_v2(":memory:", handle, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr);
}

// On failure the handle, if any, tells what is wrong.
int openCopy(const std::string& path, sqlite3** handle) {
    sqlite3* file = nullptr;
    int result = sqlite3_open_v2(uriOf(path, "?immutable=1").c_str(), &file,
                                 kCommon | SQLITE_OPEN_READONLY, nullptr);
    if (result != SQLITE_OK) {
        *handle = file;
        return result;
    }
    result = openMemory(handle);
    if (result == SQLITE_OK) {
        sqlite3_backup* const copying = sqlite3_backup_init(*handle, "main", file, "main");
        if (copying)
            sqlite3_backup_step(copying, -1); // its failure is given again by the next
        result = copying ? sqlite3_backup_finish(copying) : sqlite3_errcode(*handle);
    }
    sqlite3_close_v2(file);
    return result;
}

int openHandle(const std::string& path, SqliteConnection::Mode mode, sqlite3** handle) {
    using Mode = SqliteConnection::Mode;
    switch (mode) {
    case Mode::create:
        return sqlite3_open_v2(uriOf(path, "").c_str(), handle,
                               kCommon | SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr);
    case Mode::read:
        return sqlite3_open_v2(uriOf(path, "").c_str(), handle, kCommon | SQLITE_OPEN_READONLY,
                               nullptr);
    case Mode::copy:
        return openCopy(path, handle);
    case Mode::memory:
        return openMemory(handle);
    }
    return SQLITE_MISUSE;
}

std::string_view viewOf(const void* data, int size) {
    return data ? std::string_view(static_cast<const char*>(data), static_cast<std::size_t>(size))
                : std::string_view();
}

} // namespace

SqliteConnection::SqliteConnection(sqlite3* handle, std::string path) noexcept
    : handle_(handle), path_(std::move(path)) {}

SqliteConnection::SqliteConnection(SqliteConnection&& other) noexcept
    : handle_(std::exchange(other.handle_, nullptr)), path_(std::move(other.path_)) {}

SqliteConnection::~SqliteConnection() { sqlite3_close_v2(handle_); }

Result<SqliteConnection> SqliteConnection::open(const std::string& path, Mode mode) {
    sqlite3* handle = nullptr;
    const int result = openHandle(path, mode, &handle);
    SqliteConnection connection(handle, path);
    if (result != SQLITE_OK)
        return handle ? connection.failure()
                      : Status(StatusCode::inputOutput, path, sqlite3_errstr(result));
    // SQLite may open for reading only what it cannot open for writing.
    if (mode == Mode::create && sqlite3_db_readonly(handle, "main") != 0)
        return Status(StatusCode::inputOutput, path, "cannot open for writing");
    sqlite3_extended_result_codes(handle, 1);
    sqlite3_busy_timeout(handle, kBusyMilliseconds);
    return connection;
}

Status SqliteConnection::failure() const {
    const StatusCode code = codeOf(sqlite3_errcode(handle_));
    std::string message = sqlite3_errmsg(handle_);
    if (const int cause = sqlite3_system_errno(handle_);
        cause != 0 && code == StatusCode::inputOutput) // a full disk, say
        message += ": " + std::generic_category().message(cause);
    return Status(code, path_, std::move(message));
}

bool SqliteConnection::inTransaction() const noexcept {
    return sqlite3_get_autocommit(handle_) == 0;
}

std::int64_t SqliteConnection::lastInsertedNumber() const noexcept {
    return sqlite3_last_insert_rowid(handle_);
}

Status SqliteConnection::run(const char* sql) {
    return sqlite3_exec(handle_, sql, nullptr, nullptr, nullptr) == SQLITE_OK ? Status()
                                                                              : failure();
}

Result<SqliteStatement> SqliteConnection::prepare(const char* sql) {
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v3(handle_, sql, -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr) !=
        SQLITE_OK)
        return failure();
    return SqliteStatement(statement);
}

Result<std::int64_t> SqliteConnection::queryNumber(const char* sql) {
    Result<SqliteStatement> statement = prepare(sql);
    if (!statement)
        return statement.status();
    const SqliteStatement::Step step = statement->step();
    if (step == SqliteStatement::Step::failed)
        return failure();
    return step == SqliteStatement::Step::row ? statement->number(0) : std::int64_t{0};
}

Result<std::string> SqliteConnection::queryText(const char* sql) {
    Result<SqliteStatement> statement = prepare(sql);
    if (!statement)
        return statement.status();
    const SqliteStatement::Step step = statement->step();
    if (step == SqliteStatement::Step::failed)
        return failure();
    return step == SqliteStatement::Step::row ? std::string(statement->text(0)) : std::string();
}

Status SqliteConnection::close() {
    if (!handle_)
        return {};
    const int result = sqlite3_close(handle_);
    if (result != SQLITE_OK)
        return failure();
    handle_ = nullptr;
    return {};
}

void SqliteConnection::keepLog() noexcept {
    if (handle_)
        sqlite3_db_config(handle_, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
}

SqliteStatement::SqliteStatement(SqliteStatement&& other) noexcept
    : handle_(std::exchange(other.handle_, nullptr)) {}

SqliteStatement::~SqliteStatement() { sqlite3_finalize(handle_); }

void SqliteStatement::bind(int index, std::int64_t value) {
    sqlite3_bind_int64(handle_, index, value);
}
void SqliteStatement::bindReal(int index, double value) {
    sqlite3_bind_double(handle_, index, value);
}
void SqliteStatement::bindText(int index, std::string_view value) {
    sqlite3_bind_text64(handle_, index, value.data(), value.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
}
void SqliteStatement::bindBytes(int index, std::string_view value) {
    sqlite3_bind_blob64(handle_, index, value.data(), value.size(), SQLITE_TRANSIENT);
}

SqliteStatement::Step SqliteStatement::step() {
    switch (sqlite3_step(handle_)) {
    case SQLITE_ROW:
        return Step::row;
    case SQLITE_DONE:
        return Step::done;
    default:
        return Step::failed;
    }
}

void SqliteStatement::reset() {
    sqlite3_reset(handle_);
    sqlite3_clear_bindings(handle_);
}

std::int64_t SqliteStatement::number(int column) const {
    return sqlite3_column_int64(handle_, column);
}
double SqliteStatement::real(int column) const { return sqlite3_column_double(handle_, column); }
std::string_view SqliteStatement::text(int column) const {
    const unsigned char* const data = sqlite3_column_text(handle_, column);
    return viewOf(data, sqlite3_column_bytes(handle_, column));
}
std::string_view SqliteStatement::bytes(int column) const {
    const void* const data = sqlite3_column_blob(handle_, column);
    return viewOf(data, sqlite3_column_bytes(handle_, column));
}

} // namespace cutroom
