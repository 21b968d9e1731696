#include "tests/support/Edits.h"

#include <functional>
#include <stdexcept>

namespace cutroom::test {

EditModifier makeEdit(int video, int audio, const Kv::FrameRate& rate, const std::wstring& name) {
    EditModifier edit =
        EditManager::instance().makeNewEdit(makeNewEditCookie(), static_cast<unsigned char>(video),
                                            static_cast<unsigned char>(audio), 0.0, rate);
    edit->setName(name);
    edit->setLogType(kLogTypeEdit);
    return edit;
}

Cookie materialOf(const std::wstring& name) {
    return name.empty() ? Cookie() : Cookie('V', std::hash<std::wstring>()(name), 1);
}

void layPieces(const EditPtr& edit, const IdStamp& channel, const std::vector<Piece>& pieces) {
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

void setStartTimecode(const EditPtr& edit, const std::string& start, bool dropFrame) {
    const TimecodeFormat format{edit->getFrameRate(), dropFrame};
    edit->setDropFrame(dropFrame);
    edit->addLabel(
        EditLabel(kLabelVideoTimecode, {2, 1}, format, parseTimecode(start, format).value()));
}

} // namespace cutroom::test
