// A document of keys and values while it is being written. JSON and XML say the same because one
// function writes both through this.
#pragma once

#include "bins/BinData.h"
#include "platform/store/Cue.h"
#include "platform/store/EditPtr.h"

#include <string>
#include <string_view>
#include <vector>

namespace cutroom {

// What is begun is ended in reverse order. Within an object every key stands once; the entries of a
// list have none.
class iMetadataWriter {
public:
    virtual ~iMetadataWriter();

    // `key` is empty for an entry of a list.
    virtual void beginObject(std::string_view key) = 0;
    virtual void endObject() = 0;
    // `entry` is what one entry is called, where a format needs a name for it.
    virtual void beginList(std::string_view key, std::string_view entry) = 0;
    virtual void endList() = 0;
    virtual void add(std::string_view key, std::string_view text) = 0;
    virtual void add(std::string_view key, std::wstring_view text) = 0;
};

// Writes a bin: its name, then its tagged items, or all when none is tagged, in one list for each
// kind of asset. False, and nothing is written, for a bin without items.
//
//     "name", "Clips": [{attribute: value ..., "Locations": [...], "markers": [...]} ...], ...
bool writeBin(iMetadataWriter& out, const Kv::Ptr<BinData>& bin);

// Writes an edit as a bin of its name with it alone, and these markers for its own. False without
// edit or markers.
bool writeEdit(iMetadataWriter& out, const EditPtr& edit, const std::vector<Cue>& cues);

// The items of a bin that are exported, by index.
CUTROOM_API std::vector<unsigned> exportedItems(const BinData& bin);

} // namespace cutroom
