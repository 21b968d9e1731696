// How others search a million texts: a table of SQLite with LIKE, its trigram index, and a program
// that looks through a file.
#pragma once

#include "bench/limits/Search.h"

#include <memory>
#include <string>

struct sqlite3;

namespace cutroom::bench {

// A database in memory. With `indexed` it has a trigram index of the notes and names, else a plain
// table.
class SqliteTexts {
public:
    SqliteTexts(const std::vector<SearchedRecord>& records, bool indexed);
    ~SqliteTexts();
    SqliteTexts(const SqliteTexts&) = delete;
    SqliteTexts& operator=(const SqliteTexts&) = delete;
    std::vector<PlainItem> search(const std::string& pattern) const;
    // Bytes of the whole database.
    double bytes() const;

private:
    sqlite3* database_ = nullptr;
    const bool indexed_;
};

// One line a record; the lines that hold a pattern, as ripgrep counts them. 0 when it is not there.
class GreppedFile {
public:
    GreppedFile(const std::vector<SearchedRecord>& records, std::string path);
    static bool isThere();
    std::size_t count(const std::string& pattern, bool wholeWords) const;

private:
    const std::string path_;
};

} // namespace cutroom::bench
