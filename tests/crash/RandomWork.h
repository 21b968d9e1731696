// Random work on edits, as a user might do it: one step of history for each change.
#pragma once

#include "platform/base/Status.h"
#include "platform/store/Edit.h"
#include "platform/store/EditManager.h"

#include <random>

namespace cutroom::test {

class RandomWork {
public:
    explicit RandomWork(unsigned seed) : random_(seed) {}

    // 0 to `below` - 1.
    int number(int below) { return static_cast<int>(random_() % static_cast<unsigned>(below)); }
    template <class T> const T& anyOf(const std::vector<T>& some) {
        return some[static_cast<std::size_t>(number(static_cast<int>(some.size())))];
    }

    // Cuts, markers, names and settings with a step of history each; now and then undo or redo.
    Status change(const EditPtr& edit) {
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
            mark(edit);
        else if (kind == 10)
            edit->setName(L"take " + std::to_wstring(number(1000)));
        else
            edit->setConfig("scene", number(1000));
        return {};
    }

private:
    // A cut somewhere within the edit, at a frame.
    Status cut(const EditPtr& edit) {
        const Kv::Ptr<Cel> cel =
            edit->get_edit_cel_p(anyOf(edit->getChans(kChanVideo | kChanAudio)));
        const Kv::FrameRate rate = edit->getFrameRate();
        const auto frames = static_cast<int>(toFlicks(edit->getEndTime()) / rate.frameToFlicks(1));
        const Flicks from = rate.frameToFlicks(number(frames + 1));
        const Flicks length = rate.frameToFlicks(1 + number(48));
        const TimeRange range(toSeconds(from), toSeconds(from + length));
        CelSegment segment;
        segment.start = from;
        segment.end = from + length;
        segment.material = Cookie('E', static_cast<std::uint64_t>(1 + number(20)));
        segment.detail.name = L"piece " + std::to_wstring(number(1000));
        if (cel->numSegments() > 400)
            cel->clear();
        switch (number(4)) {
        case 0:
            return cel->lift(range);
        case 1:
            return cel->remove(range);
        case 2:
            return cel->insertGap(from, length);
        default:
            return cel->overwrite(segment);
        }
    }
    void mark(const EditPtr& edit) {
        const std::vector<Cue> cues = edit->getCues().cues();
        if (cues.empty() || (cues.size() < 60 && number(2) == 0)) {
            Cue cue(number(1000) / 10.0, L"marker " + std::to_wstring(number(1000)));
            cue.setDescription(L"\u00e9\u4e2d");
            edit->addCue(cue);
            return;
        }
        Cue cue = anyOf(cues);
        cue.setName(L"changed " + std::to_wstring(number(1000)));
        if (number(2) == 0)
            edit->removeCue(cue.getExtID());
        else
            edit->changeCue(cue);
    }

    std::mt19937 random_;
};

} // namespace cutroom::test
