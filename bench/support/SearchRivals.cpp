#include "bench/support/SearchRivals.h"

#include <sqlite3.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <utility>

namespace cutroom::bench {

namespace {

void require(bool done) {
    if (!done)
        std::abort();
}

void run(sqlite3* database, const char* sql) {
    require(sqlite3_exec(database, sql, nullptr, nullptr, nullptr) == SQLITE_OK);
}

} // namespace

SqliteTexts::SqliteTexts(const std::vector<SearchedRecord>& records, bool indexed)
    : indexed_(indexed) {
    require(sqlite3_open(":memory:", &database_) == SQLITE_OK);
    run(database_, indexed ? "CREATE VIRTUAL TABLE t USING fts5(name, note, scene, "
                             "tokenize='trigram')"
                           : "CREATE TABLE t(name, note, scene)");
    run(database_, "BEGIN");
    sqlite3_stmt* insert = nullptr;
    require(sqlite3_prepare_v2(database_, "INSERT INTO t(rowid, name, note, scene) VALUES(?,?,?,?)",
                               -1, &insert, nullptr) == SQLITE_OK);
    for (const SearchedRecord& record : records) {
        sqlite3_bind_int64(insert, 1, static_cast<sqlite3_int64>(record.cookie.id()));
        int column = 2;
        for (const std::string* field : {&record.name, &record.note, &record.scene})
            sqlite3_bind_text(insert, column++, field->data(), static_cast<int>(field->size()),
                              SQLITE_STATIC);
        require(sqlite3_step(insert) == SQLITE_DONE);
        sqlite3_reset(insert);
    }
    sqlite3_finalize(insert);
    run(database_, "COMMIT");
}

SqliteTexts::~SqliteTexts() { sqlite3_close(database_); }

std::vector<PlainItem> SqliteTexts::search(const std::string& pattern) const {
    const std::string wanted = indexed_ ? '"' + pattern + '"' : '%' + pattern + '%';
    sqlite3_stmt* query = nullptr;
    require(sqlite3_prepare_v2(database_,
                               indexed_ ? "SELECT rowid FROM t WHERE t MATCH ?1"
                                        : "SELECT rowid FROM t WHERE name LIKE ?1 OR note LIKE ?1 "
                                          "OR scene LIKE ?1",
                               -1, &query, nullptr) == SQLITE_OK);
    sqlite3_bind_text(query, 1, wanted.data(), static_cast<int>(wanted.size()), SQLITE_STATIC);
    std::vector<PlainItem> items;
    while (sqlite3_step(query) == SQLITE_ROW)
        items.emplace_back().asset =
            Cookie('E', static_cast<std::uint64_t>(sqlite3_column_int64(query, 0)));
    sqlite3_finalize(query);
    return items;
}

double SqliteTexts::bytes() const {
    sqlite3_stmt* query = nullptr;
    require(sqlite3_prepare_v2(database_,
                               "SELECT page_count * page_size FROM pragma_page_count, "
                               "pragma_page_size",
                               -1, &query, nullptr) == SQLITE_OK);
    require(sqlite3_step(query) == SQLITE_ROW);
    const double bytes = sqlite3_column_double(query, 0);
    sqlite3_finalize(query);
    return bytes;
}

GreppedFile::GreppedFile(const std::vector<SearchedRecord>& records, std::string path)
    : path_(std::move(path)) {
    std::ofstream out(path_);
    for (const SearchedRecord& record : records)
        out << record.name << '\t' << record.note << '\t' << record.scene << '\n';
    require(static_cast<bool>(out));
}

bool GreppedFile::isThere() { return std::system("command -v rg >/dev/null 2>&1") == 0; }

std::size_t GreppedFile::count(const std::string& pattern, bool wholeWords) const {
    const std::string command = std::string("rg --count --ignore-case --fixed-strings ") +
                                (wholeWords ? "--word-regexp " : "") + pattern + ' ' + path_;
    FILE* const pipe = ::popen(command.c_str(), "r");
    require(pipe != nullptr);
    unsigned long count = 0;
    if (std::fscanf(pipe, "%lu", &count) != 1)
        count = 0;
    ::pclose(pipe);
    return count;
}

} // namespace cutroom::bench
