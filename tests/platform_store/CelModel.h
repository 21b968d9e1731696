// A slow and simple cut event list for comparison: one cell for each flick.
#pragma once

#include "platform/store/Cel.h"

#include <string>
#include <vector>

namespace cutroom::test {

struct CelModel {
    struct Cell {
        bool starts = false; // a segment begins here
        Cookie material;
        Flicks strip = 0;
        double speed = 1.0;
        std::wstring name;
    };
    Flicks start = 0;
    std::vector<Cell> cells;

    Flicks end() const { return start + static_cast<Flicks>(cells.size()); }
    bool has(Flicks time) const { return time >= start && time < end(); }
    Cell& at(Flicks time) { return cells[static_cast<std::size_t>(time - start)]; }

    void cutAt(Flicks time) {
        if (has(time))
            at(time).starts = true;
    }
    void lay(Flicks from, Flicks to, const CelSegment& what) {
        cover(from, to);
        cutAt(to);
        for (Flicks t = from; t < to; ++t)
            at(t) = {t == from, what.material,
                     what.stripStart + static_cast<Flicks>(what.speed) * (t - from), what.speed,
                     what.detail.name};
    }
    void gap(Flicks atTime, Flicks length) {
        if (cells.empty() || atTime > end())
            return;
        if (atTime < start) {
            start += length;
            return;
        }
        cutAt(atTime);
        cells.insert(cells.begin() + (atTime - start), static_cast<std::size_t>(length), Cell());
        lay(atTime, atTime + length, {});
    }
    void lift(Flicks from, Flicks to) {
        from = std::max(from, start);
        to = std::min(to, end());
        if (!cells.empty() && from < to)
            lay(from, to, {});
    }
    void remove(Flicks from, Flicks to) {
        if (cells.empty() || from >= to || from >= end())
            return;
        if (to <= start) {
            start -= to - from;
            return;
        }
        cutAt(to);
        const Flicks first = std::max(from, start);
        const Flicks last = std::min(to, end());
        cells.erase(cells.begin() + (first - start), cells.begin() + (last - start));
        if (from < start)
            start = from;
        if (cells.empty())
            start = 0;
    }
    std::vector<CelSegment> segments() const {
        std::vector<CelSegment> all;
        for (std::size_t i = 0; i < cells.size(); ++i) {
            const Cell& cell = cells[i];
            if (cell.starts) {
                CelSegment segment;
                segment.start = start + static_cast<Flicks>(i);
                segment.material = cell.material;
                segment.stripStart = cell.strip;
                segment.speed = cell.speed;
                segment.detail.name = cell.name;
                all.push_back(segment);
            }
            all.back().end = start + static_cast<Flicks>(i) + 1;
        }
        return all;
    }
    // Replaces everything by `all`, which touch one another.
    void set(const std::vector<CelSegment>& all) {
        cells.clear();
        start = all.empty() ? 0 : all.front().start;
        for (const CelSegment& segment : all)
            lay(segment.start, segment.end, segment);
    }

private:
    void cover(Flicks from, Flicks to) {
        if (cells.empty())
            start = from;
        if (from > end() && !cells.empty())
            fill(end(), from);
        if (to > end())
            cells.resize(static_cast<std::size_t>(to - start));
        if (to < start) {
            const Flicks old = start;
            cells.insert(cells.begin(), static_cast<std::size_t>(start - to), Cell());
            start = to;
            fill(to, old);
        }
        if (from < start) {
            cells.insert(cells.begin(), static_cast<std::size_t>(start - from), Cell());
            start = from;
        }
    }
    void fill(Flicks from, Flicks to) {
        if (to > end())
            cells.resize(static_cast<std::size_t>(to - start));
        for (Flicks t = from; t < to; ++t)
            at(t) = {t == from, Cookie(), t - from, 1.0, {}};
    }
};

} // namespace cutroom::test
