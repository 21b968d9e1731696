// The file of a bin: a container file of version "2", and the forms before it
// (docs/formats/bin.md).
#pragma once

#include "bins/BinContents.h"
#include "platform/base/Status.h"
#include "platform/base/Strings.h"
#include "platform/files/KVContainerFile.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace cutroom {

// What a bin's file says of it.
struct BinFile {
    LightweightString<wchar_t> name;
    LightweightString<wchar_t> externalId;
    std::uint32_t created = 0; // seconds since 1970
    std::uint32_t modified = 0;
    BinContents contents;
    bool holdsUnknown = false; // more than is known here

    // Reads a file. Items of documents and edits that are not there are left out, and every later
    // item of one asset.
    static Result<BinFile> read(const LightweightString<wchar_t>& fileName);
};

// Writes a file, once.
class BinFileWriter {
public:
    BinFileWriter();

    // Makes sure that the file at `path` may be replaced: a damaged one is moved aside; a failure
    // when it cannot be looked at or comes from a later version. What it holds beyond what is
    // written here is kept. Before `fill`.
    Status replace(const std::string& path);
    // `name` and `externalId` in UTF-8.
    void fill(const std::string& name, const std::string& externalId, std::uint32_t created,
              std::uint32_t modified, const BinContents& contents);
    // The file that is replaced holds more than is written here.
    bool keepsUnknown() const noexcept { return keepsUnknown_; }
    Status save(const std::string& path) { return writer_.save(path); }
    // What `save` would write; fails as it would.
    Result<std::string> bytes(const std::string& path) {
        std::string all = writer_.bytes();
        const Status fits = writer_.check(path);
        return fits ? Result<std::string>(std::move(all)) : fits;
    }

private:
    std::unique_ptr<KVContainerFile::Reader> older_;
    KVContainerFile::Writer writer_;
    bool keepsUnknown_ = false;
};

} // namespace cutroom
