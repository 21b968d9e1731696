// The files of an edit: edits/<cookie>.edit holds its present state, edits/<cookie>.undo its
// history (docs/formats/edit.md). Internal to the store.
#pragma once

#include "platform/base/Cookie.h"
#include "platform/base/Status.h"
#include "platform/store/EditHistory.h"
#include "platform/store/EditState.h"

#include <cstdint>
#include <string>

namespace cutroom {

class EditFile {
public:
    struct Content {
        EditState state;
        std::uint64_t historyId = 0; // of the history's file that belongs to it; 0: none
    };

    // The bytes of the files. An edit of more segments than `decode` takes is `failed`; a history
    // leaves out its oldest steps instead.
    static Result<std::string> encode(const Cookie& cookie, std::uint64_t historyId,
                                      const EditState& state);
    static std::string encodeHistory(const Cookie& cookie, std::uint64_t historyId,
                                     const EditHistory& history);
    // Read what `file` holds. `damaged` with the place for what is not whole or not sound.
    CUTROOM_API static Result<Content> decode(std::string_view bytes, const std::string& file);
    // An empty history when the file belongs to another state of the edit.
    static Result<EditHistory> decodeHistory(std::string_view bytes, const std::string& file,
                                             std::uint64_t historyId);

    // The files in the open project; empty without one. `historyName` is relative to its folder.
    static std::string path(const Cookie& cookie);
    static std::string historyPath(const Cookie& cookie);
    static std::string name(const Cookie& cookie);
    static std::string historyName(const Cookie& cookie);
};

} // namespace cutroom
