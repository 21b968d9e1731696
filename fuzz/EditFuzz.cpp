// Any bytes as the payload of an edit's file, or of its history's, behind a checksum that fits.
// What is read is sound, and written and read again it is the same. The first byte chooses.
#include "platform/base/Cookie.h"
#include "platform/files/CheckedFile.h"
#include "platform/store/EditFile.h"

#include <cstddef>
#include <cstdint>

namespace {

void tryEdit(const std::string& bytes) {
    const auto read = cutroom::EditFile::decode(bytes, "fuzz.edit");
    if (!read.ok())
        return;
    if (!cutroom::checkState(read->state).empty())
        __builtin_trap();
    const auto once = cutroom::EditFile::encode(Cookie('E', 1), 7, read->state);
    if (!once.ok())
        __builtin_trap();
    const auto again = cutroom::EditFile::decode(*once, "again.edit");
    if (!again.ok() || canonicalText(again->state) != canonicalText(read->state) ||
        *cutroom::EditFile::encode(Cookie('E', 1), 7, again->state) != *once)
        __builtin_trap();
}

void tryHistory(const std::string& bytes) {
    const auto read = cutroom::EditFile::decodeHistory(bytes, "fuzz.undo", 7);
    if (!read.ok())
        return;
    const std::string once = cutroom::EditFile::encodeHistory(Cookie('E', 1), 7, *read);
    const auto again = cutroom::EditFile::decodeHistory(once, "again.undo", 7);
    if (!again.ok() || cutroom::EditFile::encodeHistory(Cookie('E', 1), 7, *again) != once)
        __builtin_trap();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0)
        return 0;
    const std::string_view payload(reinterpret_cast<const char*>(data) + 1, size - 1);
    if (data[0] % 2 == 0)
        tryEdit(cutroom::CheckedFile::wrap("edit", 1, payload));
    else
        tryHistory(cutroom::CheckedFile::wrap("edit-undo", 2, payload));
    return 0;
}
