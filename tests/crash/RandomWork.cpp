#include "tests/crash/RandomWork.h"

namespace cutroom::test {

Status RandomWork::change(const EditPtr& edit) {
    EditManager& manager = EditManager::instance();
    const int kind = number(12);
    if (kind < 2) {
        (void)(kind == 0 ? manager.undo(edit) : manager.redo(edit)); // nothing to do is fine
        return {};
    }
    manager.makeBackup(edit, "step" + std::to_string(number(1000)));
    const EditModifier writing(edit);
    if (kind < 7)
        return cut(edit);
    if (kind < 10)
        return mark(edit);
    if (kind == 10)
        edit->setName(L"take " + std::to_wstring(number(1000)));
    else
        edit->setConfig("scene", number(1000));
    return {};
}

// A cut somewhere within the edit, at a frame.
Status RandomWork::cut(const EditPtr& edit) {
    const auto channels = edit->getChans(kChanVideo | kChanAudio);
    if (channels.empty())
        return {};
    const int channel = number(static_cast<int>(channels.size()));
    const Kv::Ptr<Cel> cel = edit->get_edit_cel_p(channels[static_cast<std::size_t>(channel)]);
    const Kv::FrameRate rate = edit->getFrameRate();
    const auto frames = static_cast<int>(toFlicks(edit->getEndTime()) / rate.frameToFlicks(1)) + 1;
    const Flicks from = rate.frameToFlicks(number(frames));
    const Flicks length = rate.frameToFlicks(1 + number(48));
    const TimeRange range(toSeconds(from), toSeconds(from + length));
    CelSegment segment;
    segment.start = from;
    segment.end = from + length;
    segment.material = Cookie('E', static_cast<std::uint64_t>(1 + number(20)));
    segment.detail.name = L"piece " + std::to_wstring(number(1000));
    switch (number(4)) {
    case 0:
        return cel->lift(range);
    case 1:
        return frames > 100 ? cel->remove(range) : cel->insertGap(from, length);
    case 2:
        return cel->numSegments() < 400 ? cel->insertGap(from, length) : cel->remove(range);
    default:
        return cel->overwrite(segment);
    }
}

Status RandomWork::mark(const EditPtr& edit) {
    const CueList cues = edit->getCues();
    const int count = static_cast<int>(cues.getNumCuePoints());
    if (count == 0 || (count < 60 && number(2) == 0)) {
        Cue cue(number(1000) / 10.0, L"marker " + std::to_wstring(number(1000)));
        cue.setDescription(L"\u00e9\u4e2d");
        edit->addCue(cue);
        return {};
    }
    Cue cue = cues.getCuePoint(static_cast<std::size_t>(number(count)));
    if (number(2) == 0) {
        edit->removeCue(cue.getExtID());
    } else {
        cue.setName(L"changed " + std::to_wstring(number(1000)));
        edit->changeCue(cue);
    }
    return {};
}

} // namespace cutroom::test
