#include "platform/store/Editor.h"

#include "StoreFixture.h"

#include <map>

using namespace cutroom;
using testing::ElementsAre;

namespace {

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
    // What lies at each half second, as `lay` takes it twice over.
    static std::string shown(const EditPtr& edit, const IdStamp& channel) {
        const Kv::Ptr<Cel> cel = edit->get_edit_cel_p(channel);
        EXPECT_EQ(cel->checkConsistency(), "");
        std::string text;
        for (double at = 0.25; at < cel->getEndTime() && cel->get_num_events() > 0; at += 0.5) {
            const Cookie material = cel->get_strip_cookie(at);
            text += material.valid() ? static_cast<char>(material.id()) : '.';
        }
        return text;
    }
    static EditModifier edit(int video, int audio) {
        return manager().makeNewEdit(makeNewEditCookie(), static_cast<unsigned char>(video),
                                     static_cast<unsigned char>(audio), 0, Kv::FrameRate(25));
    }
};

TEST_F(EditorTest, rebuildingTakesTheMarkedRegionAndAddsChannels) {
    const EditPtr from = edit(2, 1);
    const auto channels = from->getChans();
    lay(from, channels[0], "abcd");
    lay(from, channels[1], ".x");
    lay(from, channels[2], "ssss");
    EditModule source(from);
    source.markAllAt(TimeRange(0.5, 2.5), true);
    const EditPtr to = edit(1, 0);
    EditModule target(to);
    ASSERT_TRUE(Editor::apply(source, target, kEditRebuild, 0).ok());
    ASSERT_EQ(to->getNumChans(kChanVideo), 2);
    ASSERT_EQ(to->getNumChans(kChanAudio), 1);
    EXPECT_EQ(target.getNumSelectedChans(), 3);
    EXPECT_EQ(shown(to, to->getId(0)), "abbc");
    EXPECT_EQ(shown(to, to->getId(1)), ".xx");
    EXPECT_EQ(shown(to, to->getId(2)), "ssss");
    EXPECT_EQ(to->get_edit_cel_p(0)->getSegment(0).stripStart, kFlicksPerSecond / 2);
    EXPECT_EQ(to->get_edit_cel_p(0)->getSegment(1).detail.name, L"b");
    EXPECT_EQ(to->checkConsistency(), "");
}

TEST_F(EditorTest, aWholeCopySharesItsLists) {
    const EditPtr from = edit(1, 0);
    lay(from, from->getId(0), std::string(200, 'a'));
    const EditPtr to = edit(0, 0);
    EditModule target(to);
    ASSERT_TRUE(Editor::apply(EditModule(from), target, kEditRebuild, 0).ok());
    EXPECT_EQ(&to->get_edit_cel_p(0)->getDetail(1), &from->get_edit_cel_p(0)->getDetail(1));
    EXPECT_TRUE(to->get_edit_cel_p(0)->sameContents(*from->get_edit_cel_p(0)));
    ASSERT_TRUE(to->get_edit_cel_p(0)->lift({0, 1}).ok());
    EXPECT_EQ(shown(from, from->getId(0)).front(), 'a');
}

TEST_F(EditorTest, overlayingLaysTheRegionAtTheCurrentTime) {
    const EditPtr from = edit(1, 1);
    lay(from, from->getId(0), "ab");
    const EditPtr to = edit(1, 1);
    EditModule source(from);
    EditModule target(to);
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
        target.setCurrentTime(row.at);
        ASSERT_TRUE(Editor::apply(source, target, kEditOverlay, 0).ok());
        EXPECT_EQ(shown(to, to->getId(0)), row.video);
        EXPECT_EQ(shown(to, to->getId(1)), row.audio);
    }
}

TEST_F(EditorTest, effectsComeAlongAndKeepApartFromOthersOfThatId) {
    const EditPtr from = edit(1, 0);
    lay(from, from->getId(0), "abc");
    const IdStamp inside(1, 1, 1);
    const IdStamp outside(2, 2, 2);
    for (const IdStamp& id : {inside, outside})
        from->setEffectGraph({id, "transition", L"theirs", {}, 0, 0, {}, false});
    const Kv::Ptr<Cel> cel = from->get_edit_cel_p(0);
    for (const auto& [index, id] : std::map<std::uint32_t, IdStamp>{{2, inside}, {4, outside}}) {
        ChannelEvent event = cel->get_event(index);
        event.effectGraph = id;
        ASSERT_TRUE(cel->setEvent(index, event).ok());
    }
    const EditPtr to = edit(1, 0);
    to->setEffectGraph({inside, "effect", L"ours", {}, 0, 0, {}, false});
    EditModule source(from);
    source.markAllAt(TimeRange(0.0, 1.5), true);
    EditModule target(to);
    ASSERT_TRUE(Editor::apply(source, target, kEditOverlay, 0).ok());
    const IdStamp brought = to->get_edit_cel_p(0)->getSegment(1).inGraph;
    ASSERT_TRUE(brought.valid());
    EXPECT_NE(brought, inside);
    EXPECT_EQ(to->getEffectGraph(brought)->name, L"theirs");
    EXPECT_EQ(to->getEffectGraph(inside)->name, L"ours");
    EXPECT_FALSE(to->getEffectGraph(outside));
}

TEST_F(EditorTest, levelsGoWithTheirAudioChannels) {
    const EditPtr from = edit(0, 1);
    lay(from, from->getId(0), "ssss");
    const IdStamp levels = from->addLevelsChan(from->getId(0));
    ASSERT_TRUE(from->setLevelNodes(levels, {{0, 0.0F}, {4 * kFlicksPerSecond, 1.0F}}));
    EditModule source(from);
    source.markAllAt(TimeRange(1.0, 3.0), true);
    const EditPtr to = edit(0, 1);
    EditModule target(to);
    ASSERT_TRUE(Editor::apply(source, target, kEditRebuild, 0).ok());
    const LevelNodes nodes = to->getLevelNodes(to->getLevelsChan(to->getId(0)));
    const LevelNodes expected{{0, 0.25F}, {2 * kFlicksPerSecond, 0.75F}};
    EXPECT_EQ(nodes, expected);
}

TEST_F(EditorTest, whatCannotBeAppliedLeavesTheTargetAlone) {
    const EditPtr from = edit(1, 0);
    const EditPtr to = edit(1, 0);
    lay(to, to->getId(0), "abc");
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
    struct Row {
        std::vector<std::string> layers; // the lowest first
        std::string flat;
    };
    const Row rows[] = {
        {{"abc", ".x."}, "aaxxcc"},
        {{"abc", "..", "y"}, "yybbcc"},
        {{"a", "..b", "...."}, "aa..bb.."},
        {{"aaaa", ".....q"}, "aaaaaaaa..qq"},
        {{"", "ab"}, "aabb"},
        {{"...", "..."}, "......"},
        {{"", ""}, ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.flat);
        const EditModifier layered = edit(static_cast<int>(row.layers.size()), 1);
        lay(layered, layered->getChans(kChanAudio)[0], "s");
        for (std::size_t i = 0; i < row.layers.size(); ++i)
            lay(layered, layered->getId(static_cast<int>(i)), row.layers[i]);
        const EditModule all(layered);
        EXPECT_FALSE(flattenEdit(layered, all, 2, 0).ok());
        ASSERT_TRUE(flattenEdit(layered, all, 3, 0).ok());
        EXPECT_EQ(layered->getNumChans(kChanVideo), 1);
        EXPECT_EQ(layered->getNumChans(kChanAudio), 1);
        EXPECT_EQ(shown(layered, layered->getId(0)), row.flat);
        EXPECT_EQ(layered->checkConsistency(), "");
    }
}

TEST_F(EditorTest, aClipUnderBlackIsNotCutWhenFlattened) {
    const EditModifier layered = edit(2, 0);
    lay(layered, layered->getId(0), "a");
    lay(layered, layered->getId(1), "..x");
    ASSERT_TRUE(layered->get_edit_cel_p(0)->trim(1, kFlicksPerSecond).ok());
    ASSERT_TRUE(flattenEdit(layered, EditModule(layered), 3, 0).ok());
    EXPECT_EQ(layered->get_edit_cel_p(0)->numSegments(), 2u);
}

} // namespace
