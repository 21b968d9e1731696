// Random changes of an edit's cut event list, undone and redone, against a simple model.
#include "StoreFixture.h"
#include "tests/support/Scale.h"

#include <functional>
#include <limits>
#include <map>
#include <random>
#include <utility>

using namespace cutroom;

namespace {

#ifdef CUTROOM_SANITIZED
constexpr int kSteps = 1500;
#else
constexpr int kSteps = 10000;
#endif

// A slow and simple cut event list: one cell for each flick, without holes.
struct CelModel {
    struct Cell {
        bool starts = false; // a segment begins here
        CelSegment what;     // as it would be were it laid from here
    };
    std::map<Flicks, Cell> cells;

    Flicks start() const { return cells.begin()->first; }
    Flicks end() const { return cells.rbegin()->first + 1; }
    bool has(Flicks time) const { return cells.contains(time); }

    void cutAt(Flicks time) {
        if (has(time))
            cells[time].starts = true;
    }
    void lay(Flicks from, Flicks to, const CelSegment& what = {}) {
        if (!cells.empty() && from > end())
            put(end(), from, {});
        if (!cells.empty() && to < start())
            put(to, start(), {});
        put(from, to, what);
        cutAt(to);
    }
    // Moves all from `from` on.
    void shift(Flicks from, Flicks by) {
        std::map<Flicks, Cell> moved;
        for (auto& [time, cell] : cells)
            moved.emplace(time < from ? time : time + by, std::move(cell));
        cells = std::move(moved);
    }
    void gap(Flicks at, Flicks length) {
        if (cells.empty() || at > end())
            return;
        const bool within = at >= start();
        cutAt(at);
        shift(at, length);
        if (within)
            put(at, at + length, {});
    }
    void lift(Flicks from, Flicks to) {
        if (!cells.empty() && std::max(from, start()) < std::min(to, end()))
            lay(std::max(from, start()), std::min(to, end()));
    }
    void remove(Flicks from, Flicks to) {
        if (cells.empty() || from >= end())
            return;
        cutAt(to);
        cells.erase(cells.lower_bound(from), cells.lower_bound(to));
        shift(to, from - to);
    }
    std::vector<CelSegment> segments() const {
        std::vector<CelSegment> all;
        for (const auto& [time, cell] : cells) {
            if (cell.starts) {
                all.push_back(cell.what);
                all.back().start = time;
            }
            all.back().end = time + 1;
        }
        return all;
    }
    // Replaces everything by `all`, each of which begins where the one before ends.
    void set(const std::vector<CelSegment>& all) {
        cells.clear();
        for (const CelSegment& segment : all)
            lay(segment.start, segment.end, segment);
    }

private:
    void put(Flicks from, Flicks to, CelSegment what) {
        for (Flicks t = from; t < to; ++t) {
            cells[t] = {t == from, what};
            what.stripStart += static_cast<Flicks>(what.speed);
        }
    }
};

TimeRange seconds(Flicks from, Flicks to) { return {toSeconds(from), toSeconds(to)}; }

class Runner {
public:
    Runner(unsigned seed, const EditPtr& edit)
        : random_(seed), edit_(edit), cel_(edit->get_edit_cel_p(edit->getFirstChan(kChanVideo))) {
        cel_->clear();
    }

    void step() {
        const Flicks a = number(-60, 160);
        const Flicks b = a + number(1, 40);
        const std::function<void()> steps[] = {
            [&] { overwrite(a, b); },
            [&] {
                EXPECT_TRUE(cel_->insertGap(a, b - a).ok());
                model_.gap(a, b - a);
            },
            [&] {
                EXPECT_TRUE(cel_->lift(seconds(a, b)).ok());
                model_.lift(a, b);
            },
            [&] { remove(a, b); },
            [&] {
                EXPECT_EQ(cel_->split(a).ok(), model_.has(a));
                model_.cutAt(a);
            },
            [&] { trim(number(-12, 12)); },
            [&] { copyWithin(a, b, number(-60, 160)); },
            [&] { relabel(); },
            [&] { join(a, b); },
            [&] { keep(); },
            [&] { backup(); },
            [&] { backup(); },
            [&] { undo(number(1, 4)); },
            [&] { restore(future_, past_, EditManager::instance().redo(edit_)); },
        };
        steps[std::max<Flicks>(number(-2, std::ssize(steps) - 1), 0)](); // most often overwrites
        if (model_.cells.size() > 400)
            remove(100, 400);
    }

    void check() {
        ASSERT_EQ(cel_->checkConsistency(), "");
        expectSame(*cel_, model_.segments());
        const Flicks t = number(-70, 420);
        checkPoints(t);
        ASSERT_EQ(cel_->findSegment(t) >= 0, model_.has(t));
        const CelSegment& what = model_.has(t) ? model_.cells[t].what : CelSegment();
        ASSERT_EQ(cel_->get_strip_cookie(toSeconds(t)), what.material);
        const double strip = what.material.valid() ? toSeconds(what.stripStart) : kNoTime;
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
    // Look-ups by time against a walk over all points.
    void checkPoints(Flicks t) const {
        const std::uint32_t count = cel_->get_num_events();
        std::uint32_t earlier = 0;
        std::uint32_t notLater = 0;
        for (std::uint32_t i = 0; i < count; ++i) {
            earlier += cel_->get_event(i).time < t;
            notLater += cel_->get_event(i).time <= t;
        }
        ASSERT_EQ(cel_->nextAfter(t), notLater);
        ASSERT_EQ(cel_->lastBefore(t), std::int64_t{earlier} - 1);
        const auto found = [&](std::uint8_t flags) {
            const ce_handle handle = cel_->find_ceh(toSeconds(t), flags);
            return handle.valid() ? handle.getIndex() : count;
        };
        ASSERT_EQ(found(0), earlier + earlier % 2);
        ASSERT_EQ(found(kEventOut | kEventFreeze), std::min(earlier + 1 - earlier % 2, count));
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
        CelModel piece;
        piece.lay(from, to);
        for (const CelSegment& segment : model_.segments()) {
            const Flicks begin = std::max(from, segment.start);
            const Flicks end = std::min(to, segment.end);
            CelSegment part = segment;
            part.stripStart += static_cast<Flicks>(part.speed) * (begin - segment.start);
            if (begin < end)
                piece.lay(begin, end, part);
        }
        // Black behind the list begins anew, as black before it does.
        if (!model_.cells.empty() && model_.end() > from && model_.end() < to)
            piece.lay(model_.end(), to);
        EXPECT_TRUE(cel_->overwriteFrom(*cel_, from, to, at).ok());
        // Lays the last one first, so that the black between the piece and the list behind it
        // begins only once.
        const std::vector<CelSegment> pieces = piece.segments();
        for (auto segment = pieces.rbegin(); segment != pieces.rend(); ++segment)
            model_.lay(segment->start + at - from, segment->end + at - from, *segment);
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
    // Makes a step of history, unless the last one is of the same state.
    void backup() {
        EditManager::instance().makeBackup(edit_);
        if (edit_->changeCount() == backedUp_ && !past_.empty() && future_.empty())
            return;
        backedUp_ = edit_->changeCount();
        future_.clear();
        past_.push_back(model_);
        if (past_.size() > EditManager::kMaxSteps)
            past_.erase(past_.begin());
    }
    void undo(Flicks steps) {
        for (; steps > 0; --steps)
            restore(past_, future_, EditManager::instance().undo(edit_));
    }
    // Restores the last state of `from`, and adds the present one to `to`.
    void restore(std::vector<CelModel>& from, std::vector<CelModel>& to, bool done) {
        ASSERT_EQ(done, !from.empty());
        if (!done)
            return;
        to.push_back(std::exchange(model_, from.back()));
        from.pop_back();
        backedUp_ = ~std::uint64_t{0};
    }
    void keep() {
        kept_.emplace_back(cel_->copy(), model_.segments());
        if (kept_.size() > 8)
            kept_.erase(kept_.begin());
        const Flicks by = number(-20, 20);
        EXPECT_TRUE(cel_->slide(toSeconds(by)).ok());
        model_.shift(std::numeric_limits<Flicks>::min(), by);
    }
    void remove(Flicks from, Flicks to) {
        EXPECT_TRUE(cel_->remove(seconds(from, to)).ok());
        model_.remove(from, to);
    }

    std::mt19937 random_;
    const EditPtr edit_;
    const Kv::Ptr<Cel> cel_;
    CelModel model_;
    std::vector<CelModel> past_, future_; // the last is the next to be gone to
    std::uint64_t backedUp_ = ~std::uint64_t{0};
    std::vector<std::pair<Kv::Ptr<Cel>, std::vector<CelSegment>>> kept_;
};

using CelModelTest = cutroom::test::StoreFixture;

TEST_F(CelModelTest, randomChangesAgreeWithTheModel) {
    Runner runner(20261121, fresh());
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
