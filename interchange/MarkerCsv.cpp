// Markers in a table: a header names the columns, a row is a marker.
#include "interchange/CsvReader.h"
#include "interchange/MarkerReaders.h"
#include "platform/base/Strings.h"

#include <set>

namespace cutroom {

namespace {

using Text = std::optional<std::string> MarkerTexts::*;

struct Column {
    Text text = nullptr;
    std::string field; // key of a custom field
};

// What editors call the columns, in lower case. The names that the exporter writes come first.
struct KnownColumn {
    std::string_view name;
    Text text;
};
constexpr KnownColumn kKnown[] = {
    {"name", &MarkerTexts::name},
    {"description", &MarkerTexts::description},
    {"in", &MarkerTexts::in},
    {"out", &MarkerTexts::out},
    {"colour", &MarkerTexts::colour},
    {"marker name", &MarkerTexts::name},
    {"comment", &MarkerTexts::description},
    {"comments", &MarkerTexts::description},
    {"notes", &MarkerTexts::description},
    {"start", &MarkerTexts::in},
    {"timecode", &MarkerTexts::in},
    {"start timecode", &MarkerTexts::in},
    {"end", &MarkerTexts::out},
    {"end timecode", &MarkerTexts::out},
    {"duration", &MarkerTexts::duration},
    {"color", &MarkerTexts::colour},
};

struct Header {
    std::vector<Column> columns;
    std::vector<std::string> unknown;
    bool pointsEnd = false;

    bool has(Text text) const {
        for (const Column& column : columns)
            if (column.text == text)
                return true;
        return false;
    }
};

Header headerOf(const CsvRow& row) {
    const auto fields = markerFieldKeys();
    Header header;
    for (const std::string& cell : row.cells) {
        const std::string own(trim(cell));
        const std::string name = toLowerUtf8(own);
        Column column;
        for (const KnownColumn& known : kKnown)
            if (name == known.name && !header.has(known.text))
                column.text = known.text;
        // The exporter writes neither a duration nor a type, so a project's field of that name
        // comes first.
        const auto field = fields.find(own);
        if (field != fields.end() && (!column.text || column.text == &MarkerTexts::duration)) {
            column.text = nullptr;
            column.field = field->second;
        }
        // Lists with this column give points an out point that is their in point.
        const bool typed = name == "marker type" && column.field.empty();
        header.pointsEnd = header.pointsEnd || typed;
        if (!column.text && column.field.empty() && !own.empty() && !typed)
            header.unknown.push_back(own);
        header.columns.push_back(std::move(column));
    }
    return header;
}

MarkerTexts textsOf(const CsvRow& row, const Header& header) {
    MarkerTexts texts;
    texts.pointsEnd = header.pointsEnd;
    for (std::size_t i = 0; i < header.columns.size(); ++i) {
        const std::string value = i < row.cells.size() ? row.cells[i] : std::string();
        if (header.columns[i].text)
            texts.*header.columns[i].text = value;
        else if (!header.columns[i].field.empty())
            texts.fields.emplace_back(header.columns[i].field, value);
    }
    return texts;
}

} // namespace

Result<MarkerFile> readCsvMarkers(std::string_view text, const std::string& file,
                                  const MarkerTarget& target) {
    const auto rows = readCsv(text, file);
    if (!rows)
        return rows.status();
    if (rows->empty())
        return Status(StatusCode::damaged, file, "holds no table");
    if (rows->size() > kMostMarkers)
        return Status(StatusCode::damaged, file, "holds more than a million markers");
    const Header header = headerOf(rows->front());
    if (!header.has(&MarkerTexts::in))
        return Status(StatusCode::damaged, file,
                      "no column is called \"in\" (\"start\", \"timecode\"); the first row names "
                      "the columns",
                      rows->front().line);
    MarkerFile markers;
    if (!header.unknown.empty())
        markers.warnings.push_back("columns that no marker has: " + join(header.unknown, ", "));
    for (std::size_t i = 1; i < rows->size(); ++i) {
        const CsvRow& row = (*rows)[i];
        if (row.cells.size() > header.columns.size())
            return Status(StatusCode::damaged, file, "more cells than columns", row.line);
        auto marker = markerOf(textsOf(row, header), row.line, target, markers.warnings);
        if (!marker)
            return Status(marker.status().code(), file, marker.status().message(), row.line);
        markers.markers.push_back(std::move(*marker));
    }
    return markers;
}

} // namespace cutroom
