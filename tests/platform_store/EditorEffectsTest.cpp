// What becomes of the effects where edit operations cut.
#include "platform/store/Editor.h"

#include "StoreFixture.h"

using namespace cutroom;

namespace {

constexpr Flicks kTenth = kFlicksPerSecond / 10;

class EditorEffects : public cutroom::test::StoreFixture {
protected:
    // Four clips of a second. An effect on the second clip, a transition of 0.4 s to either side on
    // the cut to the third, an effect on the out point of the last.
    EditorEffects() : edit_(plain(4)) {
        const IdStamp effect = edit_->setEffectGraph({{}, "effect", L"e", {}, 0, 0, {}, false});
        const IdStamp dissolve =
            edit_->setEffectGraph({{}, "transition", L"t", {}, 4 * kTenth, 4 * kTenth, {}, false});
        put(2, effect);
        put(4, dissolve);
        put(7, effect);
    }
    static EditModifier plain(int clips) {
        EditModifier edit = manager().makeNewEdit(makeNewEditCookie(), 1, 0, 0, Kv::FrameRate(25));
        for (int i = 0; i < clips; ++i)
            lay(edit, i, i + 1, static_cast<std::uint64_t>(i) + 1);
        return edit;
    }
    void put(std::uint32_t index, const IdStamp& graph) {
        ChannelEvent event = video(edit_)->get_event(index);
        event.effectGraph = graph;
        EXPECT_TRUE(video(edit_)->setEvent(index, event).ok());
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

    EditModifier edit_;
};

TEST_F(EditorEffects, aPieceKeepsThoseOfItsClipsAndShortensTransitions) {
    struct Row {
        double from, to;
        const char* effects;
    };
    const Row rows[] = {{0, 4, "10:e 20:t4/4 40:e"},
                        {1.5, 4, "0:e 5:t4/4 25:e"},
                        {1.8, 4, "0:e 2:t2/4 22:e"},
                        {2, 4, "20:e"},
                        {2.2, 4, "18:e"},
                        {0, 2.1, "10:e 20:t4/1"},
                        {0, 2, "10:e"},
                        {1.9, 2.1, "0:e 1:t1/1"},
                        {0.5, 3.5, "5:e 15:t4/4 30:e"},
                        {-1, 9, "20:e 30:t4/4 50:e"}};
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << row.from << " to " << row.to);
        EditModule source{EditPtr(edit_)};
        source.markAllAt(TimeRange(row.from, row.to), true);
        const EditPtr rebuilt = plain(0);
        EditModule target(rebuilt);
        ASSERT_TRUE(Editor::apply(source, target, kEditRebuild, 0).ok());
        EXPECT_EQ(effectsOf(rebuilt), row.effects);
        const EditPtr overlaid = plain(0);
        EditModule other(overlaid);
        ASSERT_TRUE(Editor::apply(source, other, kEditOverlay, 0).ok());
        EXPECT_EQ(effectsOf(overlaid), row.effects);
    }
    EXPECT_EQ(effectsOf(edit_), "10:e 20:t4/4 40:e");
}

TEST_F(EditorEffects, whatIsLaidOverPushesTransitionsAside) {
    const std::pair<double, const char*> rows[] = {
        {2.2, "10:e 20:t4/2 40:e"}, {1, "40:e"},
        {0.7, "17:e 20:t3/4 40:e"}, {3.2, "10:e 20:t4/4 32:e"},
        {4, "10:e 20:t4/4 40:e"},   {1.5, "10:e 40:e"}};
    const EditPtr one = plain(1);
    for (const auto& [at, effects] : rows) {
        SCOPED_TRACE(at);
        const EditPtr copy = plain(0);
        EditModule target(copy);
        ASSERT_TRUE(Editor::apply(EditModule(EditPtr(edit_)), target, kEditRebuild, 0).ok());
        target.setCurrentTime(at);
        ASSERT_TRUE(Editor::apply(EditModule(one), target, kEditOverlay, 0).ok());
        EXPECT_EQ(effectsOf(copy), effects);
    }
}

TEST_F(EditorEffects, flatteningKeepsThoseOfTheClips) {
    edit_->addChan(kChanVideo);
    CelSegment above;
    above.start = 12 * kTenth;
    above.end = 15 * kTenth;
    above.material = Cookie('E', 9);
    ASSERT_TRUE(edit_->get_edit_cel_p(1)->overwrite(above).ok());
    ASSERT_TRUE(flattenEdit(edit_, EditModule(EditPtr(edit_)), 3, 0).ok());
    EXPECT_EQ(effectsOf(edit_), "10:e 15:e 20:t4/4 40:e");
}

TEST_F(EditorEffects, theMixFollowsAudioChannelsThatGo) {
    const EditModifier sound =
        manager().makeNewEdit(makeNewEditCookie(), 0, 3, 1, Kv::FrameRate(25));
    const auto mix = Kv::makePtr<Aud::SimpleMixState>(std::size_t{3});
    mix->setInputPan(2, 1.0F);
    sound->setAudioMix(mix);
    sound->removeChan(sound->getId(0), false);
    EXPECT_EQ(sound->getAudioMix()->getInputPan(1), 1.0F);
    EXPECT_EQ(sound->getAudioMix()->numInputs(), 2u);
    EXPECT_EQ(mix->getInputPan(2), 1.0F) << "a mix is replaced, never changed in place";
}

} // namespace
