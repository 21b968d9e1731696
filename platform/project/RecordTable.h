// `cutroom::RecordTable`: the records as rows of project.db.
#pragma once

#include "platform/base/Status.h"
#include "platform/project/ProjDbRecord.h"
#include "platform/project/Sqlite.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace cutroom {

// Write-ahead log, flushed at every commit. A row has a number that rises with its insertion and
// stays with updates, and a checksum over its fields. One thread at a time.
class RecordTable {
public:
    using Number = std::int64_t;

    // Opens the file and makes the table in an empty one. `damaged` when SQLite's own check, or
    // what the file says of itself, fails; `failed` for a later version.
    static Result<RecordTable> open(const std::string& path, SqliteConnection::Mode mode);

    // False for a file opened for reading; then nothing below that changes it may be called.
    bool isWritable() const noexcept { return insert_.has_value(); }
    Status begin();
    Status commit();
    void rollback();
    // False when there is no transaction, or SQLite has ended it after a failure.
    bool inTransaction() const noexcept { return connection_.inTransaction(); }

    // Adds a row; gives its number.
    Result<Number> insert(const projdb::Record& record);
    Status update(Number number, const projdb::Record& record);
    Status remove(Number number);

    // The row, or nothing when it is not there; `damaged` when its checksum is wrong.
    Result<std::optional<projdb::Record>> read(Number number);
    // Calls `visit` with the rows numbered above `after` up to `last`, in order, at most `limit` of
    // them. `damaged` rows stop it.
    Status readFrom(Number after, Number last, std::size_t limit,
                    const std::function<void(Number, projdb::Record&&)>& visit);
    // Writes the log into the file and closes it.
    Status close();
    void keepLog() noexcept { connection_.keepLog(); }

private:
    explicit RecordTable(SqliteConnection connection) noexcept
        : connection_(std::move(connection)) {}
    Status prepareFile(bool writable);
    Status prepareStatements(bool writable);
    Status checkFile();
    void bindFields(SqliteStatement& statement, const projdb::Record& record);
    Status runOnce(SqliteStatement& statement);
    Result<projdb::Record> rowOf(const SqliteStatement& statement);
    Status damagedRow(Number number) const;

    SqliteConnection connection_;
    std::optional<SqliteStatement> insert_;
    std::optional<SqliteStatement> update_;
    std::optional<SqliteStatement> remove_;
    std::optional<SqliteStatement> read_;
    std::optional<SqliteStatement> readFrom_;
    std::string path_;
};

} // namespace cutroom
