#include "platform/store/Editor.h"

#include "StoreFixture.h"

#include <map>

using namespace cutroom;

namespace {

constexpr Flicks kTenth = kFlicksPerSecond / 10;

class EditorTest : public cutroom::test::StoreFixture {
protected:
    // Pieces of one second each: a letter names the material, '.' is black.
    static void lay(const EditPtr& edit, const IdStamp& channel, const std::string& pieces) {
        std::vector<CelSegment> segments;
        for (const char piece : pieces) {
            CelSegment segment;
            segment.start = static_cast<Flicks>(segments.size()) * kFlicksPerSecond;
            segment.end = segment.start + kFlicksPerSecond;
            segment.material =
                piece == '.' ? Cookie() : Cookie('E', static_cast<unsigned char>(piece));
            segment.detail.name = std::wstring(piece == '.' ? 0u : 1u, static_cast<wchar_t>(piece));
            segments.push_back(segment);
        }
        EXPECT_TRUE(edit->get_edit_cel_p(channel)->setSegments(segments).ok());
    }
    // What lies at each half second, in the letters of `lay`.
    static std::string shown(const EditPtr& edit, int channel = 0) {
        const Kv::Ptr<Cel> cel = edit->get_edit_cel_p(channel);
        EXPECT_EQ(edit->checkConsistency(), "");
        std::string text;
        for (double at = 0.25; at < cel->getEndTime() && cel->get_num_events() > 0; at += 0.5) {
            const Cookie material = cel->get_strip_cookie(at);
            text += material.valid() ? static_cast<char>(material.id()) : '.';
        }
        return text;
    }
    static EditModifier edit(int video, int audio, const std::string& first = {}) {
        EditModifier edit =
            manager().makeNewEdit(makeNewEditCookie(), static_cast<unsigned char>(video),
                                  static_cast<unsigned char>(audio), 0, Kv::FrameRate(25));
        if (!first.empty())
            lay(edit, edit->getId(0), first);
        return edit;
    }
    static IdStamp addGraph(const EditPtr& edit, const IdStamp& id, const std::wstring& name,
                            Flicks reach = 0) {
        return edit->setEffectGraph(
            {id, reach ? "transition" : "effect", name, {}, reach, reach, {}, false});
    }
    static void put(const EditPtr& edit, std::uint32_t index, const IdStamp& graph) {
        ChannelEvent event = video(edit)->get_event(index);
        event.effectGraph = graph;
        EXPECT_TRUE(video(edit)->setEvent(index, event).ok());
    }
    // Four clips. An effect on the second one, a transition of 0.4 s to either side on the cut to
    // the third, an effect on the out point of the last.
    static EditModifier withEffects() {
        EditModifier made = edit(1, 0, "abcd");
        const IdStamp effect = addGraph(made, {}, L"e");
        put(made, 2, effect);
        put(made, 4, addGraph(made, {}, L"t", 4 * kTenth));
        put(made, 7, effect);
        return made;
    }
    // "10:e 20:t4/4": place of each point with an effect, and how far a transition reaches, in
    // tenths of a second.
    static std::string effectsOf(const EditPtr& edit) {
        EXPECT_EQ(edit->checkConsistency(), "");
        std::string text;
        const Kv::Ptr<Cel> cel = video(edit);
        for (std::uint32_t i = 0; i < cel->get_num_events(); ++i) {
            const ChannelEvent event = cel->get_event(i);
            if (!event.effectGraph.valid())
                continue;
            const auto graph = edit->getEffectGraph(event.effectGraph);
            text += (text.empty() ? "" : " ") + std::to_string(event.time / kTenth) + ":" +
                    toUtf8(graph ? graph->name : L"lost");
            if (graph && graph->isTransition())
                text += std::to_string(graph->inOffset / kTenth) + "/" +
                        std::to_string(graph->outOffset / kTenth);
        }
        return text;
    }
    // Applies the stretch of `from`, all of it by default, to `to`.
    static void apply(const EditPtr& from, const EditPtr& to, int operation, double at = 0,
                      const TimeRange& stretch = {}) {
        EditModule source(from);
        if (stretch.size() > 0)
            source.markAllAt(stretch, true);
        EditModule target(to);
        target.setCurrentTime(at);
        EXPECT_TRUE(Editor::apply(source, target, operation, 0).ok());
    }
};

TEST_F(EditorTest, aWholeCopySharesItsListsUntilOneChanges) {
    const EditPtr from = edit(1, 0, std::string(200, 'a'));
    const EditPtr to = edit(0, 0);
    apply(from, to, kEditRebuild);
    EXPECT_EQ(&video(to)->getDetail(1), &video(from)->getDetail(1));
    EXPECT_TRUE(video(to)->sameContents(*video(from)));
    ASSERT_TRUE(video(to)->lift({0, 1}).ok());
    EXPECT_EQ(shown(from).front(), 'a');
}

TEST_F(EditorTest, overlayingLaysTheRegionAtTheCurrentTime) {
    const EditPtr from = edit(1, 1, "ab");
    const EditPtr to = edit(1, 1);
    struct Row {
        double at;
        const char* video;
        const char* audio; // the source's sound is empty: silence is laid
    };
    const Row rows[] = {{0, "aabbxxyyzz", "....334455"},
                        {1.5, "vvwaabbyzz", "112....455"},
                        {4, "vvwwxxyyaabb", "11223344...."},
                        {6, "vvwwxxyyzz..aabb", "1122334455......"}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.at);
        lay(to, to->getId(0), "vwxyz");
        lay(to, to->getId(1), "12345");
        apply(from, to, kEditOverlay, row.at);
        EXPECT_EQ(shown(to, 0), row.video);
        EXPECT_EQ(shown(to, 1), row.audio);
    }
}

TEST_F(EditorTest, effectsComeAlongAndKeepApartFromOthersOfThatId) {
    const EditPtr from = edit(1, 0, "abc");
    const IdStamp inside(1, 1, 1);
    const IdStamp outside(2, 2, 2);
    put(from, 2, addGraph(from, inside, L"theirs", 1));
    put(from, 4, addGraph(from, outside, L"theirs", 1));
    const EditPtr to = edit(1, 0);
    addGraph(to, inside, L"ours");
    apply(from, to, kEditOverlay, 0, TimeRange(0.0, 1.5));
    const IdStamp brought = video(to)->getSegment(1).inGraph;
    EXPECT_NE(brought, inside);
    EXPECT_EQ(to->getEffectGraph(brought)->name, L"theirs");
    EXPECT_EQ(to->getEffectGraph(inside)->name, L"ours");
    EXPECT_FALSE(to->getEffectGraph(outside));
}

TEST_F(EditorTest, aPieceKeepsTheEffectsOfItsClipsAndShortensTransitions) {
    struct Row {
        double from, to;
        const char* effects;
    };
    const EditPtr from = withEffects();
    for (const Row& row :
         {Row{0, 4, "10:e 20:t4/4 40:e"}, Row{1.5, 4, "0:e 5:t4/4 25:e"},
          Row{1.8, 4, "0:e 2:t2/4 22:e"}, Row{2, 4, "20:e"}, Row{2.2, 4, "18:e"},
          Row{0, 2.1, "10:e 20:t4/1"}, Row{0, 2, "10:e"}, Row{1.9, 2.1, "0:e 1:t1/1"},
          Row{0.5, 3.5, "5:e 15:t4/4 30:e"}, Row{-1, 9, "20:e 30:t4/4 50:e"}}) {
        SCOPED_TRACE(testing::Message() << row.from << " to " << row.to);
        for (const int operation : {kEditRebuild, kEditOverlay}) {
            const EditPtr to = edit(1, 0);
            apply(from, to, operation, 0, TimeRange(row.from, row.to));
            EXPECT_EQ(effectsOf(to), row.effects) << operation;
        }
    }
    EXPECT_EQ(effectsOf(from), "10:e 20:t4/4 40:e");
}

TEST_F(EditorTest, whatIsLaidOverPushesTransitionsAside) {
    const std::pair<double, const char*> rows[] = {
        {2.2, "10:e 20:t4/2 40:e"}, {1, "40:e"},
        {0.7, "17:e 20:t3/4 40:e"}, {3.2, "10:e 20:t4/4 32:e"},
        {4, "10:e 20:t4/4 40:e"},   {1.5, "10:e 40:e"}};
    for (const auto& [at, effects] : rows) {
        const EditPtr to = withEffects();
        apply(edit(1, 0, "z"), to, kEditOverlay, at);
        EXPECT_EQ(effectsOf(to), effects) << at;
    }
}

TEST_F(EditorTest, levelsGoWithTheirAudioChannels) {
    const EditPtr from = edit(0, 1, "ssss");
    const IdStamp levels = from->addLevelsChan(from->getId(0));
    constexpr Flicks kHalf = kFlicksPerSecond / 2;
    ASSERT_TRUE(from->setLevelNodes(levels, {{kHalf, 0}, {4 * kHalf, 0.75F}, {8 * kHalf, 0.25F}}));
    const EditPtr to = edit(0, 1);
    apply(from, to, kEditRebuild, 0, TimeRange(1.0, 3.0));
    const IdStamp copied = to->getLevelsChan(to->getId(0));
    const LevelNodes expected{{0, 0.25F}, {2 * kHalf, 0.75F}, {4 * kHalf, 0.5F}};
    EXPECT_EQ(to->getLevelNodes(copied), expected);
}

TEST_F(EditorTest, whatCannotBeAppliedLeavesTheTargetAlone) {
    const EditPtr from = edit(1, 0);
    const EditPtr to = edit(1, 0, "abc");
    EditModule source(from);
    EditModule target(to);
    EditModule none;
    const std::string before = to->canonicalContents();
    EXPECT_FALSE(Editor::apply(source, target, kEditOverlay, 0).ok()) << "nothing to take";
    EXPECT_FALSE(Editor::apply(source, target, 4, 0).ok());
    EXPECT_FALSE(Editor::apply(source, target, kEditRebuild, 1).ok());
    EXPECT_FALSE(Editor::apply(none, target, kEditRebuild, 0).ok());
    EXPECT_FALSE(Editor::apply(source, none, kEditRebuild, 0).ok());
    lay(from, from->getId(0), "x");
    target.setCurrentTime(kNoTime);
    EXPECT_FALSE(Editor::apply(source, target, kEditOverlay, 0).ok());
    EXPECT_EQ(to->canonicalContents(), before);
}

TEST_F(EditorTest, flatteningShowsTheTopmostPicture) {
    const std::pair<std::vector<std::string>, std::string> rows[] = {
        // the lowest layer first
        {{"abc", ".x."}, "aaxxcc"},
        {{"abc", "..", "y"}, "yybbcc"},
        {{"a", "..b", "...."}, "aa..bb.."},
        {{"aaaa", ".....q"}, "aaaaaaaa..qq"},
        {{"", "ab"}, "aabb"},
        {{"...", "..."}, "......"},
        {{"", ""}, ""}};
    for (const auto& [layers, flat] : rows) {
        SCOPED_TRACE(flat);
        const EditModifier layered = edit(static_cast<int>(layers.size()), 1);
        for (std::size_t i = 0; i < layers.size(); ++i)
            lay(layered, layered->getId(static_cast<int>(i)), layers[i]);
        EXPECT_FALSE(flattenEdit(layered, EditModule(layered), 2, 0).ok());
        ASSERT_TRUE(flattenEdit(layered, EditModule(layered), 3, 0).ok());
        EXPECT_EQ(layered->getNumChans(kChanVideo), 1);
        EXPECT_EQ(layered->getNumChans(kChanAudio), 1);
        EXPECT_EQ(shown(layered), flat);
    }
}

TEST_F(EditorTest, flatteningCutsNoClipUnderBlack) {
    const EditModifier layered = edit(2, 0, "a");
    lay(layered, layered->getId(1), "..x");
    ASSERT_TRUE(video(layered)->trim(1, kFlicksPerSecond).ok());
    ASSERT_TRUE(flattenEdit(layered, EditModule(layered), 3, 0).ok());
    EXPECT_EQ(video(layered)->numSegments(), 2u);
}

TEST_F(EditorTest, flatteningKeepsTheEffectsOfTheClips) {
    const EditModifier layered = withEffects();
    CelSegment above;
    above.start = 12 * kTenth;
    above.end = 15 * kTenth;
    above.material = Cookie('E', 9);
    ASSERT_TRUE(layered->get_edit_cel_p(layered->addChan(kChanVideo))->overwrite(above).ok());
    ASSERT_TRUE(flattenEdit(layered, EditModule(layered), 3, 0).ok());
    EXPECT_EQ(effectsOf(layered), "10:e 15:e 20:t4/4 40:e");
}

} // namespace
