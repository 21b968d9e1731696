// Any bytes as an ini file. What is read is written again and must then be read as the same.
#include "platform/base/Strings.h"
#include "platform/files/KvIniFile.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    KvIniFile ini;
    if (!cutroom::isUtf8(text) || !ini.parse(text, "fuzz.ini").ok())
        return 0; // files are checked to be UTF-8 before
    const std::string once = ini.text();
    KvIniFile again;
    if (!again.parse(once, "again.ini").ok() || again.text() != once)
        __builtin_trap();
    return 0;
}
