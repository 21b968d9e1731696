// Edit operations on real timelines: whatever a file brings, its parts make up the whole, its
// layers show what lay on top, and undo takes everything back.
#include "editops/EditCopy.h"
#include "editops/RangeCopy.h"
#include "platform/store/Editor.h"
#include "tests/interchange/Corpus.h"
#include "tests/interchange/ImportFixture.h"
#include "tests/support/Scale.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <random>

namespace {

using namespace cutroom;
using namespace cutroom::test;

class EditOpsCorpus : public ImportFixture, public testing::WithParamInterface<std::string> {
protected:
    void SetUp() override {
        const ImportReport report = import(corpus::folder() + GetParam());
        ASSERT_EQ(report.edits.size(), 1u);
        edit_ = EditPtr(report.edits[0].edit);
        ASSERT_TRUE(edit_);
        EXPECT_EQ(edit_->checkConsistency(), "");
        rate_ = edit_->getFrameRate();
        frames_ = frameOf(edit_, edit_->getEndTime());
        ASSERT_GT(frames_, 0);
        contents_ = edit_->canonicalContents();
    }
    void TearDown() override {
        if (edit_) {
            EXPECT_EQ(edit_->canonicalContents(), contents_) << "the source is left alone";
        }
        edit_.reset();
    }

    double at(std::int64_t frame) const { return toSeconds(rate_.frameToFlicks(frame)); }
    static EditModule whole(const EditPtr& edit) {
        EditModule module(edit);
        module.selectAll();
        return module;
    }
    EditModifier copyOf(std::int64_t from, std::int64_t to) const {
        EditModule module = whole(edit_);
        module.markAllAt(TimeRange(at(from), at(to)), true);
        return edcopy_general_copy_range(Cookie(), kLogTypeEdit, L"", module);
    }
    // Changes `edit` in one step, and checks that undo and redo give the states before and after
    // it.
    template <class Operation> static void performUndoably(const EditPtr& edit, Operation change) {
        EditManager& manager = EditManager::instance();
        const std::string before = edit->canonicalContents();
        manager.makeBackup(edit, "change");
        change();
        EXPECT_EQ(edit->checkConsistency(), "");
        const std::string after = edit->canonicalContents();
        ASSERT_TRUE(manager.undo(edit));
        EXPECT_EQ(edit->canonicalContents(), before);
        ASSERT_TRUE(manager.redo(edit));
        EXPECT_EQ(edit->canonicalContents(), after);
    }

    // Tells whether no transition has its point at the frame or reaches across it.
    bool isOutsideTransitions(std::int64_t frame) const {
        const Flicks time = rate_.frameToFlicks(frame);
        for (const IdStamp& channel : edit_->getChans()) {
            const Kv::Ptr<Cel> cel = edit_->get_edit_cel_p(channel);
            for (std::uint32_t i = 0; i < cel->get_num_events(); ++i) {
                const ChannelEvent event = cel->get_event(i);
                const auto graph = edit_->getEffectGraph(event.effectGraph);
                if (graph && graph->isTransition() && event.time - graph->inOffset <= time &&
                    time <= event.time + graph->outOffset)
                    return false;
            }
        }
        return true;
    }

    EditPtr edit_;
    Kv::FrameRate rate_;
    std::int64_t frames_ = 0;
    std::string contents_;
    std::mt19937 random_{20240229};
};

// Describes a point's effect without its id. A filter belongs to a clip, a transition to the point.
std::string effectOf(const EditPtr& edit, const IdStamp& id, bool transitions) {
    const auto graph = edit->getEffectGraph(id);
    if (!graph || graph->isTransition() != transitions)
        return {};
    return graph->kind + toUtf8(graph->name) + graph->effectTemplate.asString() + " -" +
           toText(toSeconds(graph->inOffset)) + "+" + toText(toSeconds(graph->outOffset)) +
           graph->parameters;
}

// Tells whether `b` only continues what `a` shows.
bool carriesOn(const EditPtr& edit, const CelSegment& a, const CelSegment& b) {
    const double moved =
        a.flags & kEventFreeze ? 0 : a.speed * static_cast<double>(b.start - a.start);
    const double apart = static_cast<double>(b.stripStart - a.stripStart) - moved;
    return a.end == b.start && a.material == b.material && a.speed == b.speed &&
           a.flags == b.flags && a.detail == b.detail &&
           effectOf(edit, a.inGraph, false) == effectOf(edit, b.inGraph, false) &&
           effectOf(edit, a.outGraph, false) == effectOf(edit, b.outGraph, false) &&
           effectOf(edit, a.outGraph, true).empty() && effectOf(edit, b.inGraph, true).empty() &&
           (!a.material.valid() || std::abs(apart) <= 2); // of rounding
}

// The clips and gaps of a list, contiguous ones as one. Filling is not told, at the end either.
std::string joined(const EditPtr& edit, const Cel& cel) {
    std::string text;
    const auto add = [&](const CelSegment& piece) {
        if (piece.flags & kEventPad)
            return;
        text += std::to_string(piece.start) + "+" + std::to_string(piece.end - piece.start) + "@" +
                std::to_string(piece.stripStart) + " x" + toText(piece.speed) + " " +
                piece.material.asString() + " " + std::to_string(piece.flags) + " " +
                toUtf8(piece.detail.name) + piece.detail.metadata;
        for (const IdStamp& graph : {piece.inGraph, piece.outGraph})
            text += " [" + effectOf(edit, graph, false) + "|" + effectOf(edit, graph, true) + "]";
        text += "\n";
    };
    std::optional<CelSegment> last;
    for (std::uint32_t i = 0; i < cel.numSegments(); ++i) {
        const CelSegment piece = cel.getSegment(i);
        if (last && carriesOn(edit, *last, piece)) {
            last->end = piece.end;
            last->outGraph = piece.outGraph;
            continue;
        }
        if (last)
            add(*last);
        last = piece;
    }
    if (last && (last->material.valid() || !last->detail.empty()))
        add(*last);
    return text;
}

std::string joined(const EditPtr& edit, unsigned types) {
    std::string text;
    for (const IdStamp& channel : edit->getChans(types))
        text += std::to_string(edit->getChanType(channel)) + "/" +
                std::to_string(edit->getChanSubtype(channel)) + "\n" +
                joined(edit, *edit->get_edit_cel_p(channel));
    return text;
}

TEST_P(EditOpsCorpus, TwoPartsBackToBackAreTheWhole) {
    constexpr unsigned kAll = kChanAllTypes & ~unsigned{kChanLevels};
    const std::string expected = joined(edit_, kAll);
    std::uniform_int_distribution<std::int64_t> frame(1, std::max<std::int64_t>(1, frames_ - 1));
    int found = 0;
    const long wanted = rounds(5, 50);
    for (int i = 0; i < 20 * wanted && found < wanted; ++i) {
        const std::int64_t cut = frame(random_);
        if (!isOutsideTransitions(cut))
            continue;
        ++found;
        SCOPED_TRACE("cut at frame " + std::to_string(cut));
        const EditModifier first = copyOf(0, cut), second = copyOf(cut, frames_);
        ASSERT_TRUE(first && second);
        EXPECT_LE(frameOf(first, first->getEndTime()), cut);
        EXPECT_LE(frameOf(second, second->getEndTime()), frames_ - cut);
        performUndoably(first, [&] {
            EditModule target = whole(first);
            target.setCurrentTime(at(cut));
            EXPECT_TRUE(Editor::apply(whole(second), target, kEditOverlay, 0).ok());
        });
        ASSERT_EQ(joined(first, kAll), expected);
        EXPECT_TRUE(EditManager::instance().discard({first.getCookie(), second.getCookie()}).ok());
    }
    EXPECT_GT(found, 0);
}

// What the topmost of some channels shows at a time: material, place in it, name. Empty: black.
std::string shownBy(const EditPtr& edit, const std::vector<IdStamp>& channels, double time) {
    for (auto channel = channels.rbegin(); channel != channels.rend(); ++channel) {
        const Kv::Ptr<Cel> cel = edit->get_edit_cel_p(*channel);
        const Cookie material = cel->get_strip_cookie(time);
        if (!material.valid())
            continue;
        const auto segment = static_cast<std::uint32_t>(cel->findSegment(toFlicks(time)));
        // Places are compared to a tenth of a microsecond, because a cut in a clip at another speed
        // is rounded.
        return material.asString() + "@" +
               std::to_string(std::lround(1e7 * cel->get_strip_time(time))) +
               toUtf8(cel->getSegment(segment).detail.name);
    }
    return {};
}

TEST_P(EditOpsCorpus, AFlatEditShowsTheTopmostClips) {
    const auto layers = edit_->getChans(kChanVideo, kSubNormal);
    const EditModifier flat = flatten(whole(edit_));
    ASSERT_TRUE(flat);
    EXPECT_EQ(flat->checkConsistency(), "");
    const auto channels = flat->getChans(kChanVideo, kSubNormal);
    ASSERT_EQ(channels.size(), std::min<std::size_t>(1, layers.size()));
    EXPECT_EQ(joined(flat, kChanAudio), joined(edit_, kChanAudio));
    const std::int64_t step = std::max<std::int64_t>(1, frames_ / rounds(100, frames_));
    const auto first = static_cast<std::int64_t>(random_() % static_cast<std::uint64_t>(step));
    for (std::int64_t frame = first; frame < frames_; frame += step) {
        const double middle = (at(frame) + at(frame + 1)) / 2;
        ASSERT_EQ(shownBy(flat, channels, middle), shownBy(edit_, layers, middle)) << frame;
    }
    const EditModifier copy = edcopy_general_copy(edit_.getCookie(), kLogTypeEdit);
    performUndoably(copy, [&] { EXPECT_TRUE(flattenEdit(copy, whole(copy), 3, 0).ok()); });
    EXPECT_EQ(joined(copy, kChanVideo | kChanAudio), joined(flat, kChanVideo | kChanAudio));
}

std::vector<std::string> allFiles() {
    std::vector<std::string> names = corpus::files("otio");
    const auto lists = corpus::files("edl");
    names.insert(names.end(), lists.begin(), lists.end());
    return names;
}

INSTANTIATE_TEST_SUITE_P(Files, EditOpsCorpus, testing::ValuesIn(allFiles()), [](const auto& file) {
    return file.param.substr(0, file.param.find('/')) + "_" + corpus::testName(file.param);
});

} // namespace
