// Edits of random pieces, cuts and gaps, at rates whose frames are no whole fractions of a second.
#pragma once

#include "tests/support/Edits.h"

#include <gtest/gtest.h>

#include <random>

namespace cutroom::test {

class RandomEdit {
public:
    RandomEdit(int round, int video, int audio)
        : random_(static_cast<unsigned>(round) + 1), rate_(rateOf(round)),
          edit_(makeEdit(video, audio, rate_, L"Random")) {
        const bool drop = rate_.allowsDropFrame();
        setStartTimecode(edit_, drop ? "10:03:07;11" : "10:03:07:11", drop);
        for (const IdStamp& channel : edit_->getChans())
            fill(channel);
    }

    const EditModifier& edit() const { return edit_; }
    int below(int most) { return static_cast<int>(random_() % static_cast<unsigned>(most)); }

private:
    static Kv::FrameRate rateOf(int round) {
        const Kv::FrameRate rates[] = {Kv::FrameRate(24000, 1001), Kv::FrameRate(25),
                                       Kv::FrameRate(30000, 1001), Kv::FrameRate(60000, 1001)};
        return rates[round % 4];
    }

    void fill(const IdStamp& channel) {
        edit_->setChanUserName(channel, L"Track");
        std::vector<Piece> pieces;
        for (int i = below(12) + 1; i > 0; --i)
            pieces.push_back({below(4) == 0 ? L"" : std::wstring(1, L'a' + below(5)),
                              below(5000) + 1, below(100000)});
        layPieces(edit_, channel, pieces);
        const Kv::Ptr<Cel> cel = edit_->get_edit_cel_p(channel);
        const auto frame = [&] { return rate_.frameToFlicks(below(20000)); };
        (void)cel->split(frame());
        (void)cel->insertGap(frame(), rate_.frameToFlicks(below(50) + 1));
        const double from = toSeconds(frame());
        (void)cel->remove(TimeRange(from, from + toSeconds(rate_.frameToFlicks(below(99) + 1))));
    }

    std::minstd_rand random_;
    const Kv::FrameRate rate_;
    EditModifier edit_;
};

} // namespace cutroom::test
