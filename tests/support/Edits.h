// Edits in memory for tests, with channels laid from short descriptions.
#pragma once

#include "platform/base/FrameRate.h"
#include "platform/store/Edit.h"
#include "platform/store/EditManager.h"

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace cutroom::test {

// A piece of a channel: name, length in frames, first frame of its source; an empty name is black.
struct Piece {
    std::wstring name;
    int frames = 0;
    int sourceStart = 0;
};

// An edit of log type 2 with empty channels.
inline EditModifier makeEdit(int video, int audio, const Kv::FrameRate& rate = Kv::FrameRate(25),
                             const std::wstring& name = L"Test") {
    EditModifier edit =
        EditManager::instance().makeNewEdit(makeNewEditCookie(), static_cast<unsigned char>(video),
                                            static_cast<unsigned char>(audio), 0.0, rate);
    edit->setName(name);
    edit->setLogType(kLogTypeEdit);
    return edit;
}

// The material that `layPieces` gives a name.
inline Cookie materialOf(const std::wstring& name) {
    return name.empty() ? Cookie() : Cookie('V', std::hash<std::wstring>()(name), 1);
}

// Lays pieces one after the other on a channel; each name gets a material of its own, the same for
// the same name.
inline void layPieces(const EditPtr& edit, const IdStamp& channel,
                      const std::vector<Piece>& pieces) {
    const Kv::FrameRate rate = edit->getFrameRate();
    std::vector<CelSegment> segments;
    std::int64_t frame = 0;
    for (const Piece& piece : pieces) {
        CelSegment segment;
        segment.start = rate.frameToFlicks(frame);
        frame += piece.frames;
        segment.end = rate.frameToFlicks(frame);
        segment.stripStart = rate.frameToFlicks(piece.sourceStart);
        segment.material = materialOf(piece.name);
        segment.detail.name = piece.name;
        segments.push_back(segment);
    }
    if (const Status laid = edit->get_edit_cel_p(channel)->setSegments(segments); !laid)
        throw std::runtime_error(laid.text());
}

// Gives the edit a timecode that starts at `start`.
inline void setStartTimecode(const EditPtr& edit, const std::string& start,
                             bool dropFrame = false) {
    const TimecodeFormat format{edit->getFrameRate(), dropFrame};
    edit->setDropFrame(dropFrame);
    edit->addLabel(
        EditLabel(kLabelVideoTimecode, {2, 1}, format, parseTimecode(start, format).value()));
}

} // namespace cutroom::test
