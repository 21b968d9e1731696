#include "editops/TransitionsEditor.h"
#include "platform/embedded/EmbeddedHost.h"
#include "platform/host/StringTable.h"
#include "platform/prefs/EditorPreferences.h"
#include "platform/store/Edit.h"
#include "platform/store/Effects.h"
#include "tests/support/Edits.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace cutroom;
using namespace cutroom::test;

namespace {

class Transitions : public testing::Test {
protected:
    Transitions() : host_(EmbeddedHost::repeatable()) {}
    EmbeddedHost host_;
};

std::string show(const LastTransition& last) {
    const auto effect = EffectTemplateManager::instance().getTemplate(last.getFXID());
    return (effect         ? toUtf8(effect->name)
            : last.valid() ? "unknown"
                           : "invalid") +
           "|" + transPosnToString(last.getPosn()) + "|" + std::to_string(last.getLen());
}

} // namespace

TEST_F(Transitions, PositionsHaveTextsAndSomeHaveNone) {
    const ResId displays[] = {11692, 11695, 11687, 11696, 11697, 11698, 11690, 11691, 11693, 12713};
    for (int i = 0; i < 10; ++i) {
        const auto position = static_cast<trans_posn>(i);
        EXPECT_EQ(stringToTransPosn(transPosnToString(position)), i == 4 || i == 5 ? 10 : i);
        EXPECT_EQ(getDisplayString(position), resourceStrW(displays[i]));
        EXPECT_EQ(getTransPosnFromDisplayString(getDisplayString(position)), i);
    }
    for (const int none : {10, 11, -1}) {
        EXPECT_EQ(transPosnToString(static_cast<trans_posn>(none)), "eNone");
        EXPECT_EQ(getDisplayString(static_cast<trans_posn>(none)), L"");
        EXPECT_EQ(cutTypeToString(static_cast<cut_type>(none)), "ct_none");
    }
    for (const char* const wrong : {"", "efromhere", "CT_CUT", "ct_cut "}) {
        EXPECT_EQ(stringToTransPosn(wrong), kTransNone);
        EXPECT_EQ(getTransPosnFromDisplayString(toWide(wrong)), kTransNone);
        EXPECT_EQ(stringToCutType(wrong), kCutTypeNone);
    }
}

TEST_F(Transitions, TheLastOneIsReadFromTexts) {
    const std::string wipe = EffectTemplateManager::instance().getTemplate(L"Wipe")->id.asString();
    const struct {
        std::string text;
        const char* shown; // of one 25 long before
    } rows[] = {
        {"", "Dissolve|eCentredHere|25"},
        {wipe + ",eToHere,12", "Wipe|eToHere|12"},
        {wipe + ",eToHere,-3x", "Wipe|eToHere|-3"},
        {wipe + ",somewhere,", "Wipe|eNone|0"},
        {"nothing,eFromHere,1", "invalid|eFromHere|1"},
        {Cookie('X', 99).asString() + ",eFromHere,1", "unknown|eFromHere|1"},
        {wipe + ",eToHere", "Speed|eUseMark|25"},
        {wipe + ",eToHere,12,", "Speed|eUseMark|25"},
    };
    const Cookie speed = EffectTemplateManager::instance().getTemplate(L"Speed")->id;
    for (const auto& row : rows) {
        LastTransition last(speed, kTransUseMark, 25);
        last.restoreFrom(row.text);
        EXPECT_EQ(show(last), row.shown) << row.text;
    }
    EXPECT_EQ(show(LastTransition(std::string())), "Dissolve|eCentredHere|10");
    EXPECT_EQ(show(LastTransition(std::string("two,pieces"))), "invalid|eNone|10");
}

TEST_F(Transitions, TheLastOneIsRemembered) {
    EXPECT_EQ(show(LastTransition(0)), "Dissolve|eCentredHere|10");
    EXPECT_EQ(show(LastTransition(7)), "Dissolve|eCentredHere|7");
    LastTransition(EffectTemplateManager::instance().getTemplate(L"Wipe")->id, kTransToHere, 12)
        .persist();
    EXPECT_EQ(show(LastTransition(7)), "Wipe|eToHere|12");
    EditorPreferences::setPreference("Last transition", "too,many,pieces,here");
    EXPECT_EQ(show(LastTransition(7)), "invalid|eNone|7");
}

// --- at a cut ------------------------------------------------------------------------------------

namespace {

// A from 0 to 4 s, of the source's 10 s on; B from 4 to 6 s, of 20 s on at double speed, backwards;
// black to 8 s. The current time is 3, marked in at 4.4.
class TransitionAtACut : public Transitions {
protected:
    TransitionAtACut()
        : edit_(makeEdit(1, 0)), channel_(edit_->getId(0)), cel_(edit_->get_edit_cel_p(0)) {
        layPieces(edit_, channel_, {{L"A", 100, 250}, {L"B", 50, 500}, {L"", 50}});
        ChannelEvent b = cel_->get_event(2);
        b.speed = -2;
        EXPECT_TRUE(cel_->setEvent(2, b).ok());
        module_ = EditModule(edit_);
        module_.setCurrentTime(3);
        module_.setMark(channel_, 4.4, Kv::MarkTypes::In);
    }
    static std::string text(const std::optional<TimeRange>& range) {
        return range ? toText(range->getStart()) + "-" + toText(range->getEnd()) : "none";
    }
    std::string region(std::uint32_t point, trans_posn position, int length = 10) {
        return text(
            TransitionsEditor::calcRegion(module_, cel_->getHandle(point), position, length));
    }
    std::string needed(std::uint32_t point, trans_posn position, int length = 10) {
        return text(TransitionsEditor::calcRequiredSourceClipRegion(module_, cel_->getHandle(point),
                                                                    position, length));
    }
    bool lay(std::uint32_t point, const wchar_t* effect, trans_posn position, int length) {
        const auto found = EffectTemplateManager::instance().getTemplate(effect);
        return TransitionsEditor::apply(edit_, module_, channel_, cel_->getHandle(point),
                                        {found ? found->id : Cookie(), position, length})
            .ok();
    }

    EditModifier edit_;
    IdStamp channel_;
    Kv::Ptr<Cel> cel_;
    EditModule module_;
};

} // namespace

TEST_F(TransitionAtACut, LiesByItsPositionAndNeedsMoreOfTheSources) {
    const struct {
        trans_posn position;
        int length;
        const char *region, *ofA, *ofB;
    } rows[] = {
        {kTransFromHere, 10, "4-4.4", "10-14.4", "16-20"},
        {kTransCentredHere, 5, "3.92-4.12", "10-14.12", "16-20.16"},
        {kTransFromHere, 75, "4-7", "10-17", "14-20"}, // longer than B
        {kTransFromHere, 0, "none", "none", "none"},
        {kTransToHere, -5, "none", "none", "none"},
        {kTransUseMark, 0, "3-4.4", "10-14.4", "16-22"},
        {kTransToEnd, 0, "4-6", "10-16", "16-20"},
        {kTransCurrentSectionUnfolded, 0, "0-4", "10-14", "16-28"},
        {kTransMultipleSections, 0, "0-6", "10-16", "16-28"},
        {kTransSelectedSegments, 10, "none", "none", "none"},
        {kTransNone, 10, "none", "none", "none"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(region(1, row.position, row.length), row.region);
        EXPECT_EQ(region(2, row.position, row.length), row.region);
        EXPECT_EQ(needed(1, row.position, row.length), row.ofA);
        EXPECT_EQ(needed(2, row.position, row.length), row.ofB);
    }
}

TEST_F(TransitionAtACut, NeedsACutWithSomethingBesideIt) {
    EXPECT_EQ(region(0, kTransFromHere), "0-0.4"); // in from black
    EXPECT_EQ(region(5, kTransToHere), "7.6-8");
    for (const auto& [point, position] :
         {std::pair(0u, kTransFromStart), std::pair(5u, kTransToEnd),
          std::pair(5u, kTransMultipleSections), std::pair(77u, kTransFromHere),
          std::pair(3u, kTransUseMark),         // 6 is not between 3 and 4.4
          std::pair(3u, kTransCurrentSection)}) // the current time lies in A
        EXPECT_EQ(region(point, position), "none") << point << " " << position;
    module_.clearMarks();
    EXPECT_EQ(region(2, kTransUseMark), "none");
    module_.setMark(channel_, 5, Kv::MarkTypes::Out);
    EXPECT_EQ(region(2, kTransUseMark), "3-5");
    EXPECT_EQ(needed(4, kTransFromHere), "none"); // black
    ChannelEvent still = cel_->get_event(0);
    still.flags |= kEventFreeze;
    ASSERT_TRUE(cel_->setEvent(0, still).ok());
    EXPECT_EQ(needed(1, kTransFromHere), "10-10");
}

TEST_F(TransitionAtACut, IsLaidWhereItHasAPlace) {
    EXPECT_FALSE(lay(2, L"Speed", kTransToHere, 8));
    EXPECT_FALSE(lay(2, L"Wipe", kTransNone, 8));
    EXPECT_FALSE(lay(2, L"Unknown", kTransToHere, 8));
    EXPECT_FALSE(lay(77, L"Wipe", kTransToHere, 8));
    EXPECT_TRUE(edit_->getEffectGraphs().empty());
    EXPECT_TRUE(lay(1, L"Dip", kTransCentredHere, 5)); // goes on the in point beside it
    EXPECT_TRUE(lay(5, L"Wipe", kTransToHere, 4));     // the end: there is no in point
    const auto graph = edit_->getEffectGraph(cel_->get_event(2).effectGraph);
    ASSERT_TRUE(graph && cel_->get_event(5).effectGraph.valid());
    EXPECT_EQ(graph->name, L"Dip");
    EXPECT_EQ(graph->inOffset, 2 * kFlicksPerSecond / 25);
    EXPECT_EQ(graph->outOffset, 3 * kFlicksPerSecond / 25);
    EXPECT_EQ(show(LastTransition(0)), "Wipe|eToHere|4");
}

TEST_F(TransitionAtACut, HasOneTransitionAndLeavesNoneBehind) {
    const auto put = [&](std::uint32_t point, const char* kind) {
        EffectGraph graph;
        graph.kind = kind;
        return TransitionsEditor::put(edit_, channel_, cel_->getHandle(point), graph).ok();
    };
    // The points at the cut that have an effect, and how many effects the edit has.
    const auto held = [&] {
        std::string text;
        for (const std::uint32_t point : {1u, 2u})
            text += cel_->get_event(point).effectGraph.valid() ? std::to_string(point) : "-";
        return text + " of " + std::to_string(edit_->getEffectGraphs().size());
    };
    EXPECT_TRUE(lay(2, L"Dip", kTransToHere, 8));
    EXPECT_TRUE(put(1, "transition"));
    EXPECT_EQ(held(), "1- of 1");
    EXPECT_TRUE(lay(1, L"Wipe", kTransToHere, 4));
    EXPECT_EQ(held(), "-2 of 1");
    EXPECT_TRUE(put(1, "effect")); // of the clip before: both stay
    EXPECT_TRUE(lay(2, L"Dip", kTransToHere, 4));
    EXPECT_FALSE(put(77, "effect"));
    EXPECT_EQ(held(), "12 of 2");
}
