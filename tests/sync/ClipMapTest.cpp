// Where a sequence shows a clip: by the material that both show, at any speed.
#include "sync/ClipMap.h"
#include "tests/vob/VobFixture.h"

using namespace cutroom;
using namespace cutroom::test;

namespace {

class ClipMapTest : public VobFixture {
protected:
    static EditPtr editWith(const std::vector<CelSegment>& segments, unsigned char video = 1) {
        const EditPtr edit = makeEdit(0, video, 1);
        EXPECT_TRUE(edit->get_edit_cel_p(0)->setSegments(segments).ok());
        return edit;
    }
    static CelSegment segment(double start, double end, double stripStart, double speed = 1,
                              const Cookie& material = Cookie('V', 7, 1)) {
        CelSegment made;
        made.start = toFlicks(start);
        made.end = toFlicks(end);
        made.stripStart = toFlicks(stripStart);
        made.speed = speed;
        made.material = material;
        return made;
    }
};

TEST_F(ClipMapTest, aSegmentRefersToTheStretchThatBothShow) {
    // 30 s of one material from 100 on, then 10 s of another.
    const EditPtr clip = editWith({segment(0, 30, 100), segment(30, 40, 0, 1, Cookie('V', 8, 1))});
    const struct {
        const char* what;
        CelSegment cut;
        double start, end, clipStart, clipEnd; // start == end: no reference
    } rows[] = {
        {"plain", segment(5, 15, 112), 5, 15, 12, 22},
        {"its sound", segment(5, 15, 112, 1, Cookie('S', 7, 2)), 5, 15, 12, 22},
        {"the second piece", segment(5, 15, 3, 1, Cookie('V', 8, 1)), 5, 12, 33, 40},
        {"double speed, to its end", segment(5, 15, 112, 2), 5, 14, 12, 30},
        {"half speed", segment(5, 15, 112, 0.5), 5, 15, 12, 17},
        {"backwards, from the end of frame 299", segment(5, 15, 112, -1), 5, 15, 11.96, 1.96},
        {"backwards between frames", segment(5, 15, 112.01, -1), 5, 15, 12.01, 2.01},
        {"fast backwards, to its start", segment(5, 15, 112, -2), 5, 11, 11.96, -0.04},
        {"the clip itself, backwards", segment(5, 15, 12, -1, clip.getCookie()), 5, 15, 11.96,
         1.96},
        {"a still", segment(5, 15, 112, 0), 5, 15, 12, 12},
        {"a still of another place", segment(5, 15, 99, 0), 0, 0, 0, 0},
        {"before it", segment(5, 15, 95), 10, 15, 0, 5},
        {"after it", segment(5, 15, 130), 0, 0, 0, 0},
        {"other material", segment(5, 15, 112, 1, Cookie('V', 9, 1)), 0, 0, 0, 0},
        {"the clip itself", segment(5, 15, 12, 1, clip.getCookie()), 5, 15, 12, 22},
    };
    for (const auto& row : rows) {
        ClipMap map;
        map.update(editWith({row.cut}), {clip});
        ASSERT_EQ(map.references().size(), row.start < row.end ? 1u : 0u) << row.what;
        if (map.references().empty())
            continue;
        const ClipReference& found = map.references().front();
        EXPECT_EQ(toSeconds(found.start), row.start) << row.what;
        EXPECT_EQ(toSeconds(found.end), row.end) << row.what;
        EXPECT_EQ(toSeconds(found.clipTimeAt(found.start)), row.clipStart) << row.what;
        EXPECT_EQ(toSeconds(found.clipTimeAt(found.end)), row.clipEnd) << row.what;
        const Flicks inside = found.start + toFlicks(2);
        EXPECT_EQ(found.editTimeOf(found.clipTimeAt(inside), inside), inside) << row.what;
        EXPECT_FALSE(found.editTimeOf(toFlicks(41), 0)) << row.what;
    }
}

TEST_F(ClipMapTest, aSequenceMadeWhereAnotherStoodIsReadAnew) {
    const EditPtr clip = editWith({segment(0, 30, 100)});
    ClipMap map;
    for (int i = 0; i < 20; ++i)
        for (const std::uint64_t material : {7u, 9u}) {
            EditPtr cut = editWith({segment(5, 15, 112, 1, Cookie('V', material, 1))});
            map.update(cut, {clip});
            EXPECT_EQ(map.references().size(), material == 7 ? 1u : 0u);
            const Cookie gone = cut.getCookie();
            cut.reset();
            EXPECT_TRUE(EditManager::instance().discard({gone}).ok());
        }
}

} // namespace
