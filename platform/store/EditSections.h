// Sections: how the files of an edit are built up (docs/formats/edit.md). Internal to the store.
//
// A section is a tag of four ASCII characters, the length of its bytes as a varint, and the bytes.
// A reader passes over tags that it does not know and keeps them.
#pragma once

#include "platform/files/ByteStream.h"

#include <string>
#include <string_view>

namespace cutroom {

class SectionWriter {
public:
    void add(std::string_view tag, std::string_view bytes) {
        out_.raw(tag);
        out_.text(bytes);
    }
    void add(std::string_view tag, const ByteWriter& bytes) { add(tag, bytes.bytes()); }
    std::string take() { return out_.take(); }

private:
    ByteWriter out_;
};

struct Section {
    std::string_view tag;
    std::string_view bytes;
};

// Takes the sections of one text after another.
class SectionReader {
public:
    explicit SectionReader(std::string_view bytes) : in_(bytes) {}

    bool next(Section& section) {
        if (in_.atEnd())
            return false;
        section.tag = in_.raw(4);
        section.bytes = in_.text();
        return in_.ok();
    }
    bool ok() const noexcept { return in_.ok(); }
    std::size_t position() const noexcept { return in_.position(); }

private:
    ByteReader in_;
};

// Where reading failed, and why: the first failure counts.
class DecodeTrouble {
public:
    // `begin` is the first byte of the whole file.
    DecodeTrouble(std::string file, const char* begin) : file_(std::move(file)), begin_(begin) {}

    // Always false, for `return trouble.at(...)`.
    bool at(const char* place, std::string reason) {
        if (status_.ok())
            status_ = Status(StatusCode::damaged, file_, std::move(reason),
                             static_cast<long>((instead_ ? instead_ : place) - begin_));
        return false;
    }
    // True when the reader of `bytes` has read all that it should have.
    bool finished(const ByteReader& in, std::string_view bytes, const char* what) {
        return in.ok() ||
               at(bytes.data() + in.position(), std::string("a value is wrong in ") + what);
    }
    // From now on the place is this one, for what is read does not lie in the file; null ends that.
    void standIn(const char* place) noexcept { instead_ = place; }
    const Status& status() const noexcept { return status_; }

private:
    std::string file_;
    const char* begin_;
    const char* instead_ = nullptr;
    Status status_;
};

} // namespace cutroom
