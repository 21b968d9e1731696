// The steps of a history in its file (docs/formats/edit.md). A step says mostly what the step
// before says, so a long section is stored as the stretch in which it differs from that one.
// Internal to the store.
#pragma once

#include "platform/store/EditCodec.h"
#include "platform/store/EditHistory.h"

#include <cstddef>
#include <string>

namespace cutroom {

// Writes one step after the other, the oldest first.
class StepWriter {
public:
    // False, and nothing is written, when all steps together would be larger than `StepReader`
    // takes.
    bool add(const EditHistory::Step& step);
    const CelChunkWriter& chunks() const noexcept { return chunks_; }
    std::string take() { return out_.take(); }

private:
    CelChunkWriter chunks_;
    SectionWriter out_;
    std::string before_; // the sections of the last step in full
    std::size_t bytes_ = 0;
};

// Takes one step after the other into a history.
class StepReader {
public:
    StepReader(const CelChunks& chunks, DecodeTrouble& trouble, EditHistory& history)
        : chunks_(chunks), trouble_(trouble), history_(history) {}

    // False when the step is not sound, or one too many.
    bool take(std::string_view sections);

private:
    bool takePart(const Section& part, EditHistory::Step& step, StateReader& state,
                  SectionWriter& whole);
    bool tooMany(const char* place);

    const CelChunks& chunks_;
    DecodeTrouble& trouble_;
    EditHistory& history_;
    std::string before_;    // the sections of the last step in full
    std::size_t bytes_ = 0; // of all sections
};

} // namespace cutroom
