// A table on disk: named attributes, described fields, and records of text and numbers, as one
// checked file with a readable head and a packed body. Container files and record tables are made
// of it; docs/formats describes the bytes.
#pragma once

#include "platform/files/Files.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace cutroom {

// Type letters of fields.
inline constexpr char kTextField = 'a';   // UTF-8 text
inline constexpr char kDoubleField = 'f'; // double

// One table in memory. Reading keeps the records packed: a field is found when it is asked for. A
// value type; one thread at a time, or many readers.
class CUTROOM_API RecordFile {
public:
    struct Field {
        std::string name;
        char type;
    };
    struct Attribute {
        std::string name;
        std::string text;
    };

    // Whether the records of a table that is read are looked up by number, or only walked through.
    enum class Access { any, inOrder };

    // Reads and checks the file of this kind; the failure names file and byte offset. With
    // `inOrder` the records are checked by the `Walk` through them, and cannot be looked up.
    Status load(const std::string& path, std::string_view kind, Access access = Access::any);
    // Reads from memory.
    Status parse(std::string bytes, std::string_view kind, const std::string& file,
                 Access access = Access::any);
    // Writes crash-safely.
    Status save(const std::string& path, std::string_view kind, Backup backup = Backup::keep) const;
    // The bytes `save` writes.
    std::string bytes(std::string_view kind) const;
    // `failed` for what could not be read again: more than 2 GiB or 64 fields. `save` asks itself.
    Status check(const std::string& path) const;

    // Texts that belong to the file itself, by lower-case ASCII word (a container's "name"). Those
    // that nobody here knows are kept. Null when there is none.
    const std::string* property(std::string_view word) const noexcept;
    void setProperty(std::string_view word, std::string_view text);
    const std::vector<Attribute>& properties() const noexcept { return properties_; }

    const std::vector<Attribute>& attributes() const noexcept { return attributes_; }
    // Null when there is none of that name. Names and texts are any UTF-8.
    const std::string* attribute(std::string_view name) const noexcept;
    // Replaces the text of an attribute that is there.
    void setAttribute(std::string_view name, std::string_view text);

    const std::vector<Field>& fields() const noexcept { return fields_; }
    // -1 when there is none of that name.
    int findField(std::string_view name) const noexcept;
    // Only while there is no record; with more than 64 it cannot be saved. Gives the index.
    int addField(std::string_view name, char type);

    std::size_t size() const noexcept { return starts_.size() + unindexed_; }
    // Begins a record; its fields are set in the order of their indexes, each at most once, those
    // left out are absent. The record ends with the next `addRecord` or any other call.
    void addRecord();
    void setText(int field, std::string_view text);
    void setDouble(int field, double value);
    void reserve(std::size_t records, std::size_t bytes);

    // Tells whether a record has the field.
    bool has(std::size_t record, int field) const noexcept { return locate(record, field); }
    // A field of a record; `otherwise` when it is absent, of another type, or there is no such
    // record or field. Views live until the table changes.
    std::string_view text(std::size_t record, int field,
                          std::string_view otherwise = {}) const noexcept;
    double number(std::size_t record, int field, double otherwise = 0) const noexcept;

    // One field of a record.
    struct Value {
        std::string_view text; // of a text; empty when absent
        double number = 0;     // of a double
        bool isNumber = false; // a double is there
    };

    // Reads all records of a table from the first to the last, which is all that one read
    // `inOrder` is good for. Lives no longer than the table, which does not change meanwhile.
    class CUTROOM_API Walk {
    public:
        explicit Walk(const RecordFile& table);
        // The fields of the next record, by index; null behind the last one, or at one that is
        // damaged. Valid until the next call.
        const Value* next() noexcept;
        // Well when all was read and nothing follows; else names `file` and the byte offset.
        Status status(const std::string& file) const;

    private:
        friend class RecordFile;
        const char* afterFields(std::uint64_t mask) noexcept;

        const RecordFile& table_;
        const std::size_t records_;
        const char* at_; // of the next record, or of the damage
        const char* const end_;
        std::size_t begun_ = 0; // records
        bool damaged_ = false;
        std::uint64_t mask_ = 0; // of the fields that the last record has
        std::vector<Value> values_;
    };

private:
    struct Layout;
    Status parseHead(std::string_view payload, Layout& layout);
    Status parseLine(std::string_view line, Layout& layout);
    Status countRecords(const Layout& layout);
    Status indexRecords(const Layout& layout);
    void appendField(std::string name, char type);
    bool beginField(int field, char type);
    const char* locate(std::size_t record, int field) const noexcept;

    std::vector<Attribute> properties_;
    std::vector<Attribute> attributes_;
    std::vector<Field> fields_;
    std::uint64_t doubles_ = 0;         // a bit for each field that is one
    std::string body_;                  // packed records; in a table that was read the whole file
    std::size_t bodyStart_ = 0;         // of the first record in body_
    std::vector<std::uint32_t> starts_; // of each record in body_
    std::size_t unindexed_ = 0;         // records of a table that was read in order only
    int lastField_ = -1;                // set last in the record begun last
    bool tooLarge_ = false;             // records were refused
};

} // namespace cutroom
