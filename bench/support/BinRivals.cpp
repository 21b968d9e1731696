#include "bench/support/BinRivals.h"

#include <nlohmann/json.hpp>
#include <sqlite3.h>

#ifdef CUTROOM_RIVAL_RAPIDJSON
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#endif
#ifdef CUTROOM_RIVAL_SIMDJSON
#include <simdjson.h>
#endif

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

namespace cutroom::bench {

namespace {

void require(bool done) {
    if (!done)
        std::abort();
}

void writeFlushed(const std::string& path, std::string_view bytes) {
    const int file = ::open(path.c_str(), O_CREAT | O_TRUNC | O_WRONLY, 0666);
    require(file >= 0 &&
            ::write(file, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()));
    require(::fsync(file) == 0 && ::close(file) == 0);
}

std::string readWhole(const std::string& path) {
    std::ifstream in(path, std::ios::binary | std::ios::ate);
    std::string bytes(static_cast<std::size_t>(in.tellg()), '\0');
    in.seekg(0);
    in.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    require(static_cast<bool>(in));
    return bytes;
}

PlainItem itemOf(std::string_view cookie, double time, double in, double out, double x, double y) {
    return {Cookie(cookie), time, in, out, static_cast<float>(x), static_cast<float>(y), false, {}};
}

// --- nlohmann
// --------------------------------------------------------------------------------------

void saveNlohmann(const std::vector<PlainItem>& items, const std::string& path) {
    auto all = nlohmann::json::array();
    for (const PlainItem& item : items)
        all.push_back({{"cookie", item.asset.asString()},
                       {"time", item.time},
                       {"in", item.markIn},
                       {"out", item.markOut},
                       {"x", item.x},
                       {"y", item.y}});
    writeFlushed(path, nlohmann::json{{"items", std::move(all)}}.dump());
}

std::vector<PlainItem> loadNlohmann(const std::string& path) {
    const auto all = nlohmann::json::parse(readWhole(path));
    std::vector<PlainItem> items;
    for (const auto& one : all["items"])
        items.push_back(itemOf(one["cookie"].get_ref<const std::string&>(), one["time"], one["in"],
                               one["out"], one["x"], one["y"]));
    return items;
}

// --- SQLite
// ----------------------------------------------------------------------------------------

void saveSqlite(const std::vector<PlainItem>& items, const std::string& path) {
    ::unlink(path.c_str());
    sqlite3* db = nullptr;
    sqlite3_stmt* insert = nullptr;
    require(sqlite3_open(path.c_str(), &db) == SQLITE_OK);
    require(sqlite3_exec(db,
                         "BEGIN; CREATE TABLE items (cookie TEXT, time REAL, mark_in REAL, "
                         "mark_out REAL, x REAL, y REAL)",
                         nullptr, nullptr, nullptr) == SQLITE_OK);
    require(sqlite3_prepare_v2(db, "INSERT INTO items VALUES (?,?,?,?,?,?)", -1, &insert,
                               nullptr) == SQLITE_OK);
    for (const PlainItem& item : items) {
        const std::string cookie = item.asset.asString();
        sqlite3_bind_text(insert, 1, cookie.data(), static_cast<int>(cookie.size()), SQLITE_STATIC);
        int column = 2;
        for (const double value : {item.time, item.markIn, item.markOut,
                                   static_cast<double>(item.x), static_cast<double>(item.y)})
            sqlite3_bind_double(insert, column++, value);
        require(sqlite3_step(insert) == SQLITE_DONE);
        sqlite3_reset(insert);
    }
    sqlite3_finalize(insert);
    require(sqlite3_exec(db, "COMMIT", nullptr, nullptr, nullptr) == SQLITE_OK);
    sqlite3_close(db);
}

std::vector<PlainItem> loadSqlite(const std::string& path) {
    sqlite3* db = nullptr;
    sqlite3_stmt* select = nullptr;
    require(sqlite3_open(path.c_str(), &db) == SQLITE_OK);
    require(sqlite3_prepare_v2(db, "SELECT * FROM items", -1, &select, nullptr) == SQLITE_OK);
    std::vector<PlainItem> items;
    while (sqlite3_step(select) == SQLITE_ROW) {
        const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(select, 0));
        items.push_back(itemOf(text, sqlite3_column_double(select, 1),
                               sqlite3_column_double(select, 2), sqlite3_column_double(select, 3),
                               sqlite3_column_double(select, 4), sqlite3_column_double(select, 5)));
    }
    sqlite3_finalize(select);
    sqlite3_close(db);
    return items;
}

// --- RapidJSON
// -------------------------------------------------------------------------------------

#ifdef CUTROOM_RIVAL_RAPIDJSON
void saveRapidJson(const std::vector<PlainItem>& items, const std::string& path) {
    rapidjson::StringBuffer text;
    rapidjson::Writer<rapidjson::StringBuffer> out(text);
    out.StartObject();
    out.Key("items");
    out.StartArray();
    for (const PlainItem& item : items) {
        const std::string cookie = item.asset.asString();
        out.StartObject();
        out.Key("cookie");
        out.String(cookie.data(), static_cast<rapidjson::SizeType>(cookie.size()));
        out.Key("time");
        out.Double(item.time);
        out.Key("in");
        out.Double(item.markIn);
        out.Key("out");
        out.Double(item.markOut);
        out.Key("x");
        out.Double(static_cast<double>(item.x));
        out.Key("y");
        out.Double(static_cast<double>(item.y));
        out.EndObject();
    }
    out.EndArray();
    out.EndObject();
    writeFlushed(path, {text.GetString(), text.GetSize()});
}

std::vector<PlainItem> loadRapidJson(const std::string& path) {
    std::string text = readWhole(path);
    rapidjson::Document all;
    all.ParseInsitu(text.data());
    std::vector<PlainItem> items;
    for (const auto& one : all["items"].GetArray()) {
        const auto& cookie = one["cookie"];
        items.push_back(itemOf({cookie.GetString(), cookie.GetStringLength()},
                               one["time"].GetDouble(), one["in"].GetDouble(),
                               one["out"].GetDouble(), one["x"].GetDouble(), one["y"].GetDouble()));
    }
    return items;
}
#endif

// --- simdjson
// --------------------------------------------------------------------------------------

#ifdef CUTROOM_RIVAL_SIMDJSON
std::vector<PlainItem> loadSimdJson(const std::string& path) {
    const auto text = simdjson::padded_string::load(path);
    simdjson::ondemand::parser parser;
    auto all = parser.iterate(text);
    std::vector<PlainItem> items;
    for (auto one : all["items"].get_array()) {
        // In the order in which the file has them.
        const std::string_view cookie = one["cookie"].get_string();
        const double in = one["in"], out = one["out"], time = one["time"];
        const double x = one["x"], y = one["y"];
        items.push_back(itemOf(cookie, time, in, out, x, y));
    }
    return items;
}
#endif

} // namespace

std::vector<BinRival> binRivals() {
    std::vector<BinRival> rivals = {{"SQLite", saveSqlite, loadSqlite},
                                    {"nlohmann", saveNlohmann, loadNlohmann}};
#ifdef CUTROOM_RIVAL_SIMDJSON
    rivals.push_back({"simdjson", nullptr, loadSimdJson}); // what nlohmann wrote, keys sorted
#endif
#ifdef CUTROOM_RIVAL_RAPIDJSON
    rivals.push_back({"RapidJSON", saveRapidJson, loadRapidJson});
#endif
    return rivals;
}

} // namespace cutroom::bench
