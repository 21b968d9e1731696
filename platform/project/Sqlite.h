// A thin layer over SQLite 3: a connection, statements, and failures as `Status`.
#pragma once

#include "platform/base/Status.h"

#include <cstdint>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace cutroom {

class SqliteStatement;

// One connection, used by one thread at a time. Moves into new ones only.
class SqliteConnection {
public:
    enum class Mode {
        create, // for writing, made when it is not there
        read,   // for reading beside a writer
        copy,   // a copy in memory of a file that nobody writes at the moment; touches nothing
                // beside it, and stays as it is when a writer comes later
        memory, // an empty database that is gone with the connection
    };

    // Opens the file; `damaged` when it is no database.
    static Result<SqliteConnection> open(const std::string& path, Mode mode);
    SqliteConnection(SqliteConnection&& other) noexcept;
    ~SqliteConnection();

    // Runs one or more commands that answer nothing.
    Status run(const char* sql);
    Result<SqliteStatement> prepare(const char* sql);
    // The first column of the first row; 0, or the empty text, when there is no row.
    Result<std::int64_t> queryNumber(const char* sql);
    Result<std::string> queryText(const char* sql);
    // The failure that the last call on this connection met.
    Status failure() const;
    std::int64_t lastInsertedNumber() const noexcept;
    // Tells whether a transaction is open; after some failures SQLite has ended it by itself.
    bool inTransaction() const noexcept;
    // Waits for the log to be written into the file, then closes. Also done, unheard, on
    // destruction.
    Status close();
    // Leaves the write-ahead log beside the file on closing.
    void keepLog() noexcept;

private:
    SqliteConnection(sqlite3* handle, std::string path) noexcept;

    sqlite3* handle_;
    std::string path_;
};

// One prepared command. Moves into new ones only; must go before its connection.
class SqliteStatement {
public:
    enum class Step { row, done, failed };

    explicit SqliteStatement(sqlite3_stmt* handle) noexcept : handle_(handle) {}
    SqliteStatement(SqliteStatement&& other) noexcept;
    ~SqliteStatement();

    // Parameters count from 1. Text and bytes are copied.
    void bind(int index, std::int64_t value);
    void bindReal(int index, double value);
    void bindText(int index, std::string_view value);
    void bindBytes(int index, std::string_view value);
    Step step();
    // Ready for the next run with new parameters.
    void reset();

    // Columns count from 0; views hold until the next step.
    std::int64_t number(int column) const;
    double real(int column) const;
    std::string_view text(int column) const;
    std::string_view bytes(int column) const;

private:
    sqlite3_stmt* handle_;
};

} // namespace cutroom
