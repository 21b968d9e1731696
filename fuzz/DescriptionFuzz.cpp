// Any bytes as the description of a document or a group, as a bin's file, or as the bins cache.
// What is read is written again, and must then be read as the same; what is refused says why. The
// first byte chooses.
#include "bins/AssetAssociationGroup.h"
#include "bins/BinFile.h"
#include "bins/BinsCache.h"
#include "bins/DescriptionFiles.h"
#include "bins/Document.h"
#include "fuzz/Require.h"
#include "platform/embedded/EmbeddedHost.h"
#include "platform/files/CheckedFile.h"
#include "platform/files/Files.h"
#include "platform/files/oledb.h"
#include "tests/support/TempFolder.h"

#include <cstddef>
#include <cstdint>

namespace {

using namespace cutroom;

const std::string& scratchFile() {
    static const test::TempFolder folder(test::TempFolder::inMemory());
    static const std::string path = folder / "scratch";
    return path;
}

void put(const std::string& bytes) { require(writeFile(scratchFile(), bytes, Backup::none).ok()); }

template <class Described> Status take(Described& into, std::string_view text) {
    const auto object = JSON::Element::parse(text, "fuzz.json", DescriptionFiles::readOptions());
    return object ? into.take(**object, "fuzz.json") : object.status();
}

template <class Described> std::string written(const Described& from) {
    JSON::Builder out(JSON::Layout::indented);
    from.write(out);
    return out.take();
}

template <class Described> void tryDescription(const std::string& text) {
    const auto first = Kv::makePtr<Described>();
    if (const Status read = take(*first, text); !read)
        return require(!read.message().empty());
    const std::string once = written(*first);
    const auto again = Kv::makePtr<Described>();
    require(take(*again, once).ok() && written(*again) == once);
}

// What is written of a bin that was read; empty when it was refused.
std::string passOn(const std::string& bytes) {
    put(bytes);
    const auto bin = BinFile::read(toWide(scratchFile()));
    if (!bin) {
        require(!bin.status().message().empty());
        return {};
    }
    BinFileWriter writer;
    writer.fill(toUtf8(bin->name), toUtf8(bin->externalId), bin->created, bin->modified,
                bin->contents);
    return writer.bytes(scratchFile()).value();
}

void tryBin(const std::string& payload) {
    const std::string once = passOn(CheckedFile::wrap(kContainerKind, 1, payload));
    require(once.empty() || passOn(once) == once);
}

void tryCache(const std::string& payload) {
    put(CheckedFile::wrap(kTableKind, 1, payload));
    const auto cache = readBinsCache(scratchFile());
    if (!cache)
        return require(!cache.status().message().empty());
    const std::string once = binsCacheBytes(*cache);
    put(once);
    const auto again = readBinsCache(scratchFile());
    require(again.ok() && binsCacheBytes(*again) == once);
}

constexpr void (*kForms[])(const std::string&) = {
    tryDescription<Document>, tryDescription<AssetAssociationGroup>, tryBin, tryCache};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0)
        return 0;
    static const EmbeddedHost host{EmbeddedHost::repeatable()};
    const std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);
    kForms[data[0] % std::size(kForms)](text);
    return 0;
}
