// Random runs of edit operations: whatever came before, each leaves a sound edit, what it makes is
// what it says, and undo and redo pass through every state that the run had.
#include "CopyFixture.h"
#include "editops/CueEdit.h"
#include "editops/CueLogs.h"
#include "editops/CueRegions.h"
#include "editops/EditCopy.h"
#include "editops/RangeCopy.h"
#include "editops/TrackGroups.h"
#include "editops/TransitionsEditor.h"
#include "editops/basics/StereoPairs.h"
#include "platform/store/Editor.h"
#include "platform/store/Effects.h"
#include "tests/support/Scale.h"
#include "vob/Vob.h"
#include "vob/VobManager.h"

#include <algorithm>
#include <random>

using namespace cutroom;
using namespace cutroom::test;

namespace {

constexpr int kStepsPerRun = 80; // fewer than a history holds

// Checks what must hold of any edit, without the store's own check: points in ascending order,
// pieces that touch and have a length, effects that exist, levels that belong to a sound channel.
void expectSound(const EditPtr& edit) {
    ASSERT_EQ(edit->checkConsistency(), "");
    double end = 0;
    for (const IdStamp& channel : edit->getChans()) {
        const Kv::Ptr<Cel> cel = edit->get_edit_cel_p(channel);
        for (std::uint32_t i = 0; i < cel->get_num_events(); ++i) {
            const ChannelEvent event = cel->get_event(i);
            ASSERT_EQ(event.isOut(), i % 2 == 1);
            if (i > 0) {
                const Flicks length = event.time - cel->get_event(i - 1).time;
                ASSERT_TRUE(event.isOut() ? length > 0 : length == 0) << i;
            }
            if (event.effectGraph.valid()) {
                ASSERT_TRUE(edit->getEffectGraph(event.effectGraph)) << i;
            }
        }
        if (cel->get_num_events() > 0 && edit->getChanSubtype(channel) != kSubDerived)
            end = std::max(end, cel->getEndTime());
        if (edit->getChanType(channel) == kChanLevels) {
            ASSERT_TRUE(edit->isValidChan(edit->getAudioChanForLevels(channel)));
        }
    }
    if (edit->getStartTime() >= 0) {
        ASSERT_DOUBLE_EQ(edit->getEndTime(), end);
    }
}

class EditOperations : public CopyFixture, public testing::WithParamInterface<int> {
protected:
    void SetUp() override {
        random_.seed(static_cast<unsigned>(GetParam()));
        edit_ = makeReel();
        other_ = makeReel();
        vob_ = VobManager::instance().createVob(edit_);
        vob_->setStatus(Vob::kStatusRecord);
    }
    int number(int below) { return static_cast<int>(random_() % static_cast<unsigned>(below)); }
    double time(int most = 120) { return number(most) / 25.0; }
    IdStamp anyChannel(unsigned types = kChanVideo | kChanAudio) {
        const auto channels = edit_->getChans(types);
        return channels.empty()
                   ? IdStamp()
                   : channels[static_cast<std::size_t>(number(static_cast<int>(channels.size())))];
    }
    std::uint32_t anyPoint(const Cel& cel) {
        return static_cast<std::uint32_t>(number(static_cast<int>(cel.get_num_events())));
    }
    // Some channels, some range, some time.
    EditModule anyModule(const EditPtr& edit) {
        EditModule module(edit);
        if (number(3) > 0)
            for (const IdStamp& channel : edit->getChans())
                module.selectChan(channel, number(4) > 0);
        const double from = time();
        if (number(4) > 0)
            module.markAllAt(TimeRange(from, from + time(60)), true);
        module.setCurrentTime(time());
        return module;
    }
    // Nothing of what was made stays, and nothing of it reached the edit.
    void expectMade(const EditPtr& made, bool changed = false) {
        ASSERT_TRUE(made);
        expectSound(made);
        if (!changed) {
            EXPECT_EQ(edit_->canonicalContents(), before_);
        }
        EXPECT_TRUE(manager().discard({made.getCookie()}).ok());
    }

    // --- what makes something new ----------------------------------------------------------------
    void copiesARange() {
        const eLogType types[] = {kLogTypeEdit, kLogTypeSyncGhost, kLogTypePrintGhost,
                                  kLogTypeSubclip};
        const EditModule module = anyModule(edit_);
        const TimeRange region = module.getMarkedRegion();
        const bool whole = number(4) == 0;
        const eLogType type = types[number(4)];
        const EditModifier copy = copyRange(module, type, whole);
        if (!whole && copy) {
            EXPECT_LE(copy->getEndTime(), region.getEnd() - region.getStart() + 1e-8);
            EXPECT_EQ(copy->getLogType(), type);
        }
        expectMade(copy);
    }
    // Every piece of a copy is the piece of the source at its place, filter and all.
    void copiesWhatLiesThere() {
        const double from = number(480) / 100.0, to = from + number(240) / 100.0 + 0.04;
        EditModule module(edit_);
        module.markAllAt(TimeRange(from, to), true);
        const EditModifier copy = edcopy_general_copy_range(Cookie(), kLogTypeEdit, L"", module);
        ASSERT_TRUE(copy);
        const auto filter = [&](const IdStamp& id) {
            const auto graph = edit_->getEffectGraph(id);
            return graph && !graph->isTransition() ? id : IdStamp();
        };
        const auto sources = edit_->getChans(kChanVideo | kChanAudio);
        const auto copies = copy->getChans(kChanVideo | kChanAudio);
        ASSERT_EQ(copies.size(), sources.size());
        for (std::size_t chan = 0; chan < copies.size(); ++chan) {
            const Kv::Ptr<Cel> list = edit_->get_edit_cel_p(sources[chan]);
            const Kv::Ptr<Cel> copied = copy->get_edit_cel_p(copies[chan]);
            const bool inside = list->get_num_events() && list->getStartTime() < to;
            const double end = inside ? std::min(to, list->getEndTime()) : from;
            EXPECT_NEAR(copied->get_num_events() ? copied->getEndTime() : 0,
                        std::max(end - from, 0.0), 1e-8);
            for (std::uint32_t i = 0; i < copied->numSegments(); ++i) {
                const CelSegment piece = copied->getSegment(i);
                const std::int64_t at = list->findSegment(piece.start + toFlicks(from));
                ASSERT_GE(at, 0);
                const CelSegment there = list->getSegment(static_cast<std::uint32_t>(at));
                EXPECT_LE(piece.end + toFlicks(from), there.end);
                EXPECT_EQ(piece.material, there.material);
                EXPECT_EQ(piece.stripStart - piece.start - toFlicks(from),
                          there.stripStart - there.start);
                EXPECT_EQ(filter(piece.inGraph), filter(there.inGraph));
            }
        }
        expectMade(copy);
    }
    void flattens() {
        const EditModule module = anyModule(edit_);
        const int layers = module.getNumSelectedChans(kChanVideo, kSubNormal);
        const int others = edit_->getNumChans(kChanVideo, kSubNormal) - layers;
        const EditModifier flat = flatten(module);
        ASSERT_TRUE(flat);
        EXPECT_EQ(flat->getNumChans(kChanVideo, kSubNormal), others + std::min(layers, 1));
        expectMade(flat);
    }
    void makesThingsOfCues() {
        const std::vector<NamedRegion> regions = getRegionsFromCues(edit_);
        const CookieVec logs = makeLogsUsingCuePoints(kLogTypeSubclip, EditModule(edit_));
        ASSERT_EQ(logs.size(), regions.size());
        double length = 0;
        for (std::size_t i = 0; i < logs.size(); ++i) {
            const double part = regions[i].range.getEnd() - regions[i].range.getStart();
            EXPECT_LE(EditPtr(logs[i])->getEndTime(), part + 1e-8);
            expectMade(EditPtr(logs[i]));
            length += part;
        }
        const EditModifier made = makeEditFromCues(edit_, edit_->getCues().cues(), number(4) > 0);
        ASSERT_TRUE(made);
        EXPECT_NEAR(made->getEndTime() - made->getStartTime(),
                    edit_->getNumChans(kChanVideo | kChanAudio, kSubNormal) ? length : 0, 1e-6);
        expectMade(made, true);
    }

    // --- what changes the edit -------------------------------------------------------------------
    void flattensInPlace() {
        EXPECT_TRUE(flattenEdit(EditModifier(edit_), anyModule(edit_), 3, 0).ok());
        if (edit_->getNumChans(kChanVideo) < 3)
            layPieces(edit_, edit_->addChan(kChanVideo), {{L"", number(40) + 1}, {L"n", 30, 4}});
    }
    void pairsAndGroups() {
        std::vector<IdStamp> some;
        for (const IdStamp& channel : edit_->getChans())
            if (number(2))
                some.push_back(channel);
        switch (number(3)) {
        case 0:
            return makeStereoPairs(edit_, number(2) ? std::vector<IdStamp>() : some);
        case 1:
            return edit_->groupChannels(some, number(2) == 0);
        default:
            return recreateTrackGroups(other_, edit_);
        }
    }
    void laysATransition() {
        const wchar_t* const names[] = {L"Dissolve", L"Wipe", L"Dip"};
        const IdStamp channel = anyChannel();
        const Kv::Ptr<Cel> cel = edit_->get_edit_cel_p(channel);
        if (!cel || cel->get_num_events() == 0)
            return;
        const ce_handle point = cel->getHandle(anyPoint(*cel));
        const Cookie effect = EffectTemplateManager::instance().getTemplate(names[number(3)])->id;
        const auto position = static_cast<trans_posn>(number(11));
        const int length = number(30);
        const EditModule module = anyModule(edit_);
        const auto region = TransitionsEditor::calcRegion(module, point, position, length);
        const Status laid = TransitionsEditor::apply(EditModifier(edit_), module, channel, point,
                                                     LastTransition(effect, position, length));
        EXPECT_EQ(laid.ok(), region.has_value()) << laid.text();
        if (!laid.ok()) {
            EXPECT_EQ(edit_->canonicalContents(), before_);
        }
    }
    // Makes cuts off the frame by an operation of the viewed edit, whose check repairs them.
    void cutsOffTheFrame() {
        const auto cut = [&](const EditModifier& edit) -> Status {
            for (int i = number(3) + 1; i > 0; --i)
                if (const Kv::Ptr<Cel> cel = edit->get_edit_cel_p(anyChannel()))
                    if (cel->get_num_events() > 1)
                        (void)cel->trim(anyPoint(*cel), number(40'000'000) - 20'000'000);
            return {};
        };
        EXPECT_TRUE(vob_->performEdit(cut, "cut").ok());
        for (const IdStamp& channel : edit_->getChans(kChanVideo | kChanAudio)) {
            const Kv::Ptr<Cel> cel = edit_->get_edit_cel_p(channel);
            const std::uint32_t off = cel->checkQuantisation(edit_->getFrameRate());
            EXPECT_TRUE(off == 0 || off + 1 == cel->get_num_events() ||
                        edit_->getChanSubtype(channel) == kSubDerived)
                << off << " of " << cel->get_num_events();
        }
    }
    void isLaidUpon() {
        const EditModule source = anyModule(number(3) ? other_ : edit_);
        EditModule target = anyModule(edit_);
        const TimeRange region = source.getMarkedRegion();
        const auto how = number(2) ? kEditOverlay : kEditRebuild;
        const Status laid = Editor::apply(source, target, how, 0);
        EXPECT_EQ(laid.ok(), how == kEditRebuild || region.getEnd() > region.getStart())
            << laid.text();
    }
    void slides() {
        const double by = (number(41) - 20) / 25.0;
        if (const Kv::Ptr<Cel> cel = edit_->get_edit_cel_p(anyChannel())) {
            EXPECT_TRUE(cel->slide(by).ok());
        }
        CueList cues = edit_->getCues();
        cues.slide(by);
        edit_->setCues(cues);
    }
    void isCutAndMarked() {
        if (const Kv::Ptr<Cel> cel = edit_->get_edit_cel_p(anyChannel())) {
            const double from = time();
            const TimeRange range(from, from + time(20) + 0.04);
            EXPECT_TRUE((number(2) ? cel->lift(range) : cel->remove(range)).ok());
        }
        if (edit_->getCues().getNumCuePoints() > 5)
            edit_->setCues(CueList());
        const double at = time();
        edit_->addCue(number(2) ? Cue(at, L"point") : Cue(TimeRange(at, at + time(30)), L"range"));
    }
    // Fills the edit again, when the run has left it bare.
    void isLaidAnew() {
        const IdStamp channel = anyChannel();
        if (!channel.valid())
            return;
        layPieces(edit_, channel,
                  {{L"p", number(50) + 1, number(9)},
                   {L"", number(9) + 1},
                   {L"q", number(50) + 1, number(9)},
                   {L"r", number(50) + 1}});
        EffectGraph filter;
        filter.kind = "effect";
        const Kv::Ptr<Cel> cel = edit_->get_edit_cel_p(channel);
        ChannelEvent point = cel->get_event(0);
        point.effectGraph = edit_->setEffectGraph(filter);
        EXPECT_TRUE(cel->setEvent(0, point).ok());
    }

    // Performs any operation, and keeps each state to compare with the steps of the history.
    void performAny() {
        using Self = EditOperations;
        static void (Self::*const operations[])() = {
            &Self::copiesARange,    &Self::copiesWhatLiesThere,
            &Self::flattens,        &Self::makesThingsOfCues,
            &Self::flattensInPlace, &Self::pairsAndGroups,
            &Self::laysATransition, &Self::cutsOffTheFrame,
            &Self::isLaidUpon,      &Self::slides,
            &Self::isCutAndMarked,  &Self::isLaidAnew};
        const int operation = number(static_cast<int>(std::size(operations)));
        SCOPED_TRACE(testing::Message() << "operation " << operation);
        manager().makeBackup(edit_);
        before_ = edit_->canonicalContents();
        if (manager().getHistory(edit_).size() > states_.size())
            states_.push_back(before_);
        ASSERT_EQ(states_.back(), before_);
        (this->*operations[operation])();
        expectSound(edit_);
    }
    void goBackAndForth() {
        states_.push_back(edit_->canonicalContents());
        const std::size_t last = states_.size() - 1;
        for (std::size_t i = last; i-- > 0;) {
            ASSERT_TRUE(manager().undo(edit_)) << i;
            ASSERT_EQ(edit_->canonicalContents(), states_[i]) << i;
        }
        EXPECT_FALSE(manager().undo(edit_));
        for (std::size_t i = 1; i <= last; ++i) {
            ASSERT_TRUE(manager().redo(edit_)) << i;
            ASSERT_EQ(edit_->canonicalContents(), states_[i]) << i;
        }
        EXPECT_FALSE(manager().redo(edit_));
    }

    std::mt19937 random_;
    EditPtr edit_, other_;
    Kv::Ptr<Vob> vob_;
    std::string before_;
    std::vector<std::string> states_;
};

TEST_P(EditOperations, LeaveASoundEditThatGoesBackAndForth) {
    for (int step = 0; step < kStepsPerRun; ++step) {
        SCOPED_TRACE(testing::Message() << "step " << step);
        ASSERT_NO_FATAL_FAILURE(performAny());
        if (HasFailure())
            return;
    }
    goBackAndForth();
}

INSTANTIATE_TEST_SUITE_P(Seeds, EditOperations,
                         testing::Range(0, static_cast<int>(rounds(6, 125))));

} // namespace
