// Record tables: named parameters, named text fields, records.
#pragma once

#include "platform/base/Strings.h"
#include "platform/files/RecordFile.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// One table, in memory and in a file of its own. A value type; one thread at a time.
class CUTROOM_API oledb {
public:
    // An empty table.
    oledb() = default;

    // Reads the file in place of what is here; the failure names file and byte offset, and leaves
    // an empty table.
    cutroom::Status open(const LightweightString<wchar_t>& fileName);
    cutroom::Status open(const std::string& fileName);
    // Rewrites the whole file crash-safely. No backup is kept: what is in a table can be rebuilt.
    cutroom::Status save(const LightweightString<wchar_t>& fileName) const;
    cutroom::Status save(const std::string& fileName) const;
    // The bytes that `save` writes, for a group commit.
    std::string bytes() const;

    // Named texts of the table as a whole; nothing when missing.
    std::optional<std::string> getParameter(std::string_view name) const;
    void setParameter(std::string_view name, std::string_view text);

    // Only while there is no record. Gives the index.
    int addField(std::string_view name) { return table_.addField(name, cutroom::kTextField); }
    // -1 when the table lacks it.
    int findField(std::string_view name) const noexcept { return table_.findField(name); }
    std::size_t getNumFields() const noexcept { return table_.fields().size(); }

    // Begins a record; `setField` fills it, by rising field index.
    void addRecord() { table_.addRecord(); }
    void setField(int field, std::string_view text) { table_.setText(field, text); }
    std::size_t getNumRecords() const noexcept { return table_.size(); }
    // The text of a field; empty when it was not set or there is no such record or field. The view
    // lives until the table changes.
    std::string_view getField(std::size_t record, int field) const noexcept {
        return table_.text(record, field);
    }
    // The same for all fields of a record at once, by index.
    void getFields(std::size_t record, std::vector<std::string_view>& texts) const;

private:
    cutroom::RecordFile table_;
};

namespace cutroom {

// The kind of checked file that record tables are.
inline constexpr std::string_view kTableKind = "table";

} // namespace cutroom
