// Container files: a name, a permanent flag, named attributes, and items with described fields.
#pragma once

#include "platform/base/Cookie.h"
#include "platform/base/Strings.h"
#include "platform/files/RecordFile.h"

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

class CUTROOM_API KVContainerFile {
public:
    class Writer;

    // One entry of a field description, which ends with an entry whose name is null or empty.
    struct ItemField {
        const char* name;
        char type; // 'a' text, 'f' double
    };

    // The cookie that a container's file name (without folder and extension) spells; the invalid
    // cookie when it spells none.
    static Cookie getCookieFromFilename(const LightweightString<wchar_t>& fileName);

    // Reads one file, whole, when constructed. Then immutable: any thread.
    class CUTROOM_API Reader {
    public:
        // `inOrder`: of items only `forEachItem` is wanted, which then checks them too.
        using Access = cutroom::RecordFile::Access;
        explicit Reader(const LightweightString<wchar_t>& fileName, Access access = Access::any);
        explicit Reader(const std::string& fileName, Access access = Access::any);

        // False when the file could not be read or is damaged; `status` tells why, and everything
        // below answers as for an empty file.
        bool valid() const noexcept { return status_.ok(); }
        const cutroom::Status& status() const noexcept { return status_; }

        // UTF-8; empty when the file has none.
        std::string getName() const;
        bool getPermanent() const;

        bool hasAttribute(std::string_view name) const noexcept;
        std::string getAttribute(std::string_view name, std::string_view otherwise = {}) const;
        // The whole text as a decimal integer; `otherwise` when absent or no such number.
        long long getIntAttribute(std::string_view name, long long otherwise = 0) const;

        // Tells whether the file holds a property, an attribute or an item field beyond those
        // named: something that `Writer::keepUnknown` would keep.
        bool holdsMoreThan(const ItemField* fields,
                           const std::vector<std::string_view>& attributes) const;

        // The index of an item field by name; -1 when the file lacks it.
        int getFieldIndex(std::string_view name) const noexcept;
        std::size_t getNumItems() const noexcept { return table_.size(); }
        // A field of an item; `otherwise` when the index is negative or out of range, the field
        // absent or of the other type. Views live as long as the reader.
        std::string_view getText(std::size_t item, int field,
                                 std::string_view otherwise = {}) const noexcept {
            return table_.text(item, field, otherwise);
        }
        double getDouble(std::size_t item, int field, double otherwise = 0) const noexcept {
            return table_.number(item, field, otherwise);
        }
        // Hands the fields of each item, by index, to `take`, in the file's order. The failure
        // tells which item is damaged: those before it were handed over.
        using Value = cutroom::RecordFile::Value;
        template <class Take> cutroom::Status forEachItem(const Take& take) const {
            cutroom::RecordFile::Walk walk(table_);
            while (const Value* const values = walk.next())
                take(values);
            return walk.status(file_);
        }
        std::size_t getNumFields() const noexcept { return table_.fields().size(); }

    private:
        friend class Writer;
        void open(const std::string& fileName, Access access);

        std::string file_;
        cutroom::RecordFile table_;
        cutroom::Status status_;
    };

    // Collects one file's content and saves it. One thread at a time.
    class CUTROOM_API Writer {
    public:
        explicit Writer(const ItemField* fields);

        // UTF-8.
        void setName(std::string_view name);
        void setPermanent(bool permanent);
        // A later text for the same name replaces the earlier one.
        void addAttribute(std::string_view name, std::string_view text);
        // Keeps what `older` has and this writer is not given by the time of `save`: attributes and
        // properties, and of an item with the same text in field 0 the fields that are not
        // described here. So what a later version wrote survives being saved by this one. Of the
        // attributes in `known` nothing is kept: not writing them means to have none. Called before
        // the first item; `older` must live as long as the writer.
        void keepUnknown(const Reader& older, std::vector<std::string_view> known = {});

        // Begins an item whose field 0 is `text`.
        void addItem(std::string_view text);
        // The other fields of the item begun last, by rising index; those left out are absent.
        void setField(int field, std::string_view text) { table_.setText(field, text); }
        void setField(int field, double value) { table_.setDouble(field, value); }
        void reserve(std::size_t items) { table_.reserve(items, items * 64); }

        // Writes crash-safely; the failure names the file.
        cutroom::Status save(const LightweightString<wchar_t>& fileName);
        cutroom::Status save(const std::string& fileName);
        // The bytes that `save` writes, for a group commit.
        std::string bytes();
        // Why `save` would refuse what was collected by then: it could not be read again.
        cutroom::Status check(const std::string& fileName) const { return table_.check(fileName); }

    private:
        struct Kept {
            int from; // field of the older file
            int to;   // field here
        };
        void finish();
        void finishItem();

        cutroom::RecordFile table_;
        const Reader* older_ = nullptr;
        std::vector<std::string_view> knownAttributes_;
        std::vector<Kept> keptFields_;
        std::unordered_map<std::string_view, std::size_t> olderItems_; // by field 0
    };
};

namespace cutroom {

// The kind of checked file that containers are.
inline constexpr std::string_view kContainerKind = "container";

} // namespace cutroom
