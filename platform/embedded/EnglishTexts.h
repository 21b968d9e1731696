// The English texts of the string table.
#pragma once

#include "platform/host/StringTable.h"

namespace cutroom {

// Knows every number of ResourceIds.h. Any thread.
class CUTROOM_API EnglishTexts final : public iStringTable {
public:
    std::optional<LightweightString<wchar_t>> find(ResId id) const override;
    // Every number that the table knows, ascending.
    static LightweightVector<ResId> ids();
};

} // namespace cutroom
