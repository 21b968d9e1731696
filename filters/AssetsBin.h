// `cutroom::AssetsBin`: a dynamic bin of all assets of some kinds.
#pragma once

#include "filters/FilterBinData.h"
#include "platform/project/ProjDb.h"

#include <string_view>

class Document;

namespace cutroom {

// Records of the database that have a wanted kind (what lies on the clipboard never), in the order
// in which they came into the project, at their start; then documents, in the order of their
// cookies. Any thread, as `FilterBinData`.
class CUTROOM_API AssetsBin final : public FilterBinData {
public:
    // Chooses documents; null: none.
    using DocumentTest = bool (*)(const Document& document);

    // The bin's cookie follows from `key`. `kinds`: eRecordKind bits.
    AssetsBin(const LightweightString<wchar_t>& name, std::string_view key, unsigned kinds,
              DocumentTest documents = nullptr);
    ~AssetsBin() override;

    bool isDynamic() const override;

protected:
    Items gather() const override;
    std::optional<BinItem> itemOf(const Cookie& asset) const override;

private:
    const unsigned kinds_;
    const DocumentTest documents_;
};

// Calls `visit` with each record that has a wanted kind and does not lie on the clipboard, until it
// answers false.
CUTROOM_API void forEachOfKinds(unsigned kinds,
                                const std::function<bool(const projdb::Summary&)>& visit);

} // namespace cutroom
