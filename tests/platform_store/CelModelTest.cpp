// Random changes of a cut event list against the simple model.
#include "CelModel.h"
#include "tests/support/Scale.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

using namespace cutroom;
using cutroom::test::CelModel;

namespace {

#ifdef CUTROOM_SANITIZED
constexpr int kSteps = 1500;
#else
constexpr int kSteps = 10000;
#endif

TimeRange seconds(Flicks from, Flicks to) { return {toSeconds(from), toSeconds(to)}; }

class Runner {
public:
    explicit Runner(unsigned seed) : random_(seed), cel_(Kv::makePtr<Cel>()) {}

    void step() {
        const Flicks a = number(-60, 160);
        const Flicks b = a + number(1, 40);
        switch (number(0, 11)) {
        case 0:
        case 1:
        case 2:
            overwrite(a, b);
            break;
        case 3:
            EXPECT_TRUE(cel_->insertGap(a, b - a).ok());
            model_.gap(a, b - a);
            break;
        case 4:
            EXPECT_TRUE(cel_->lift(seconds(a, b)).ok());
            model_.lift(a, b);
            break;
        case 5:
            EXPECT_TRUE(cel_->remove(seconds(a, b)).ok());
            model_.remove(a, b);
            break;
        case 6:
            EXPECT_EQ(cel_->split(a).ok(), model_.has(a));
            model_.cutAt(a);
            break;
        case 7:
            trim(number(-12, 12));
            break;
        case 8:
            copyWithin(a, b, number(-60, 160));
            break;
        case 9:
            relabel();
            break;
        case 10:
            join(a, b);
            break;
        default:
            keep();
        }
        if (model_.end() - model_.start > 400)
            shorten();
    }

    void check() {
        ASSERT_EQ(cel_->checkConsistency(), "");
        expectSame(*cel_, model_.segments());
        const Flicks t = number(-70, 420);
        const std::int64_t found = cel_->findSegment(t);
        ASSERT_EQ(found >= 0, model_.has(t));
        if (found < 0)
            return;
        const CelModel::Cell& cell = model_.at(t);
        ASSERT_EQ(cel_->get_strip_cookie(toSeconds(t)), cell.material);
        const double strip = cell.material.valid() ? toSeconds(cell.strip) : kNoTime;
        ASSERT_EQ(cel_->get_strip_time(toSeconds(t)), strip);
    }
    // Copies made on the way are as they were.
    void checkCopies() const {
        for (const auto& [copy, segments] : kept_)
            expectSame(*copy, segments);
    }

private:
    Flicks number(Flicks from, Flicks to) {
        return std::uniform_int_distribution<Flicks>(from, to)(random_);
    }
    static void expectSame(const Cel& cel, const std::vector<CelSegment>& segments) {
        ASSERT_EQ(cel.numSegments(), segments.size());
        for (std::uint32_t i = 0; i < segments.size(); ++i)
            ASSERT_EQ(cel.getSegment(i), segments[i]) << "segment " << i;
    }
    void overwrite(Flicks from, Flicks to) {
        constexpr double speeds[] = {1.0, 1.0, 2.0, -1.0};
        CelSegment segment;
        segment.start = from;
        segment.end = to;
        segment.material = Cookie('E', static_cast<std::uint64_t>(number(1, 3)));
        segment.stripStart = number(0, 3) * 10;
        segment.speed = speeds[number(0, 3)];
        if (number(0, 1) == 0)
            segment.detail.name = L"clip " + std::to_wstring(number(0, 3));
        EXPECT_TRUE(cel_->overwrite(segment).ok());
        model_.lay(from, to, segment);
    }
    void trim(Flicks by) {
        const auto before = model_.segments();
        if (before.empty())
            return;
        auto after = before;
        const auto cut = static_cast<std::size_t>(number(0, static_cast<Flicks>(before.size())));
        if (cut > 0)
            after[cut - 1].end += by;
        if (cut < after.size()) {
            after[cut].start += by;
            after[cut].stripStart += static_cast<Flicks>(after[cut].speed) * by;
        }
        const bool possible = (cut == 0 || after[cut - 1].end > after[cut - 1].start) &&
                              (cut == after.size() || after[cut].end > after[cut].start);
        const auto point = static_cast<std::uint32_t>(cut == 0 ? 0 : 2 * cut - 1);
        EXPECT_EQ(cel_->trim(point, by).ok(), possible);
        if (possible)
            model_.set(after);
    }
    void copyWithin(Flicks from, Flicks to, Flicks at) {
        CelModel source = model_;
        CelModel piece;
        piece.lay(from, to, {});
        for (const CelSegment& segment : source.segments()) {
            const Flicks begin = std::max(from, segment.start);
            const Flicks end = std::min(to, segment.end);
            CelSegment part = segment;
            part.stripStart += static_cast<Flicks>(part.speed) * (begin - segment.start);
            if (begin < end)
                piece.lay(begin, end, part);
        }
        // Black behind the list begins anew, as black before it does.
        if (source.end() > from && source.end() < to && !source.cells.empty())
            piece.lay(source.end(), to, {});
        EXPECT_TRUE(cel_->overwriteFrom(*cel_, from, to, at).ok());
        for (CelSegment segment : piece.segments()) {
            segment.start += at - from;
            segment.end += at - from;
            model_.lay(segment.start, segment.end, segment);
        }
    }
    void relabel() {
        auto segments = model_.segments();
        if (segments.empty())
            return;
        const auto i =
            static_cast<std::size_t>(number(0, static_cast<Flicks>(segments.size()) - 1));
        EventDetail detail;
        detail.name = L"named " + std::to_wstring(number(0, 5));
        const Cookie material = number(0, 3) == 0 ? Cookie() : Cookie('E', 7);
        EXPECT_TRUE(cel_->setDetail(static_cast<std::uint32_t>(i), detail).ok());
        cel_->setStripCookie(static_cast<std::uint32_t>(i), material);
        segments[i].detail = detail;
        segments[i].material = material;
        model_.set(segments);
    }
    void join(Flicks from, Flicks to) {
        std::vector<CelSegment> joined;
        for (const CelSegment& next : model_.segments()) {
            const bool inside = next.start >= from && next.start <= to;
            CelSegment* last = joined.empty() ? nullptr : &joined.back();
            const bool runsOn =
                last && last->material == next.material && last->detail == next.detail &&
                (!next.material.valid() ||
                 (last->speed == next.speed &&
                  next.stripStart == last->stripStart + static_cast<Flicks>(last->speed) *
                                                            (last->end - last->start)));
            if (inside && runsOn)
                last->end = next.end;
            else
                joined.push_back(next);
        }
        EXPECT_TRUE(cel_->simplify(seconds(from, to), CelSimplify::joinContinuous, {}).ok());
        model_.set(joined);
    }
    void keep() {
        kept_.emplace_back(cel_->copy(), model_.segments());
        if (kept_.size() > 8)
            kept_.erase(kept_.begin());
        const Flicks by = number(-20, 20);
        EXPECT_TRUE(cel_->slide(toSeconds(by)).ok());
        model_.start += model_.cells.empty() ? 0 : by;
    }
    void shorten() {
        EXPECT_TRUE(cel_->remove(seconds(100, 100 + 300)).ok());
        model_.remove(100, 400);
    }

    std::mt19937 random_;
    Kv::Ptr<Cel> cel_;
    CelModel model_;
    std::vector<std::pair<Kv::Ptr<Cel>, std::vector<CelSegment>>> kept_;
};

TEST(CelModelTest, randomChangesAgreeWithTheModel) {
    Runner runner(20261121);
    const long steps = cutroom::test::rounds(kSteps, 1'000'000);
    RecordProperty("steps", std::to_string(steps));
    for (long i = 0; i < steps; ++i) {
        runner.step();
        runner.check();
        if (i % 100 == 0)
            runner.checkCopies();
        if (HasFatalFailure() || HasNonfatalFailure())
            FAIL() << "at step " << i;
    }
    runner.checkCopies();
}

} // namespace
