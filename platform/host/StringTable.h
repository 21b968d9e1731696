// Texts shown to the user, by resource number. The numbers stand in ResourceIds.h; the texts are
// the host's, so an embedder can speak another language.
#pragma once

#include "platform/base/Strings.h"
#include "platform/host/ResourceIds.h"

#include <optional>

namespace cutroom {

class CUTROOM_API iStringTable {
public:
    virtual ~iStringTable();
    // The text of `id`; nothing when the table does not know it. Any thread; the answer for a
    // number does not change while the table is installed.
    virtual std::optional<LightweightString<wchar_t>> find(ResId id) const = 0;
};

} // namespace cutroom

// The text of a resource. One that no table knows is "#" and its number ("#10015"): visible,
// harmless, and told apart from every other. Any thread.
CUTROOM_API LightweightString<wchar_t> resourceStrW(ResId id);
// The same as UTF-8.
CUTROOM_API LightweightString<char> resourceStr(ResId id);
// The text of a resource between `before` and `after`.
CUTROOM_API LightweightString<wchar_t> paddedResourceStrW(ResId id,
                                                          const LightweightString<wchar_t>& before,
                                                          const LightweightString<wchar_t>& after);
