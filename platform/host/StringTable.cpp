#include "platform/host/StringTable.h"

#include "platform/host/Host.h"

#include <utility>

cutroom::iStringTable::~iStringTable() = default;

LightweightString<wchar_t> resourceStrW(ResId id) {
    if (auto text = cutroom::Host::strings().find(id))
        return *std::move(text);
    return L"#" + std::to_wstring(id);
}

LightweightString<char> resourceStr(ResId id) { return cutroom::toUtf8(resourceStrW(id)); }

LightweightString<wchar_t> paddedResourceStrW(ResId id, const LightweightString<wchar_t>& before,
                                              const LightweightString<wchar_t>& after) {
    return before + resourceStrW(id) + after;
}
