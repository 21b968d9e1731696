// The stored form of an edit's state (docs/formats/edit.md). Internal to the store.
#pragma once

#include "platform/store/CelCodec.h"
#include "platform/store/EditSections.h"
#include "platform/store/EditState.h"

#include <optional>

namespace cutroom {

// The storages that the lists of a file refer to by number.
using CelChunks = std::vector<Shared<CelStorage>>;

// Appends the sections of a state; its lists refer to `chunks` by number.
void encodeState(SectionWriter& out, const EditState& state, CelChunkWriter& chunks);

// Takes one section of a state. True when its contents are sound, or when its tag is not one of a
// state's; then it is kept in the state's `unknown`.
class StateReader {
public:
    StateReader(const CelChunks& chunks, DecodeTrouble& trouble)
        : chunks_(chunks), trouble_(trouble) {}

    bool take(const Section& section);
    // The state, checked as a whole. `end` is the place to name when it is not sound.
    std::optional<EditState> finish(const char* end);

private:
    bool head(std::string_view bytes);
    bool channel(std::string_view bytes);
    bool channelHead(EditChannel& channel, std::string_view bytes);
    bool channelList(EditChannel& channel, std::string_view bytes);
    bool channelNodes(EditChannel& channel, std::string_view bytes);
    bool cues(std::string_view bytes);
    bool labels(std::string_view bytes);
    bool config(std::string_view bytes);
    bool texts(std::string_view bytes);
    bool graphs(std::string_view bytes);
    bool burntIn(std::string_view bytes);
    bool groups(std::string_view bytes);
    bool mix(std::string_view bytes);

    const CelChunks& chunks_;
    DecodeTrouble& trouble_;
    EditState state_;
    bool hasHead_ = false;
};

} // namespace cutroom
