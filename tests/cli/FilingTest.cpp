// What a command made is kept and filed as a whole, or nothing of it.
#include "cli/Filing.h"
#include "tests/bins/BinProject.h"

using namespace cutroom;
using namespace cutroom::test;

namespace {

constexpr long kMostOperations = 200;

// A bin that holds one edit, and one that is to be made.
class Filed : public BinProject, public testing::WithParamInterface<bool> {
protected:
    Filed() {
        const Kv::Ptr<BinData> bin = newBin(L"Selects");
        bin->add({newEdit(L"old")});
        known_ = bin->getID();
        EXPECT_TRUE(bins().saveAll().ok());
    }

    // Files two new edits while operation number `at` fails; what was made.
    CookieVec file(long at, FaultyFiles::Span span, Status& kept) {
        CookieVec made;
        for (const wchar_t* name : {L"one", L"two"})
            made.push_back(makeEdit(1, 0, {25, 1}, name).getCookie());
        auto filing = cli::Filing::into(GetParam() ? "Selects" : "Fresh");
        EXPECT_TRUE(filing);
        files_.arm(at, span);
        kept = filing->keep(made);
        return made;
    }

    static CookieVec binsWith(const CookieVec& assets) {
        std::map<Cookie, BinSummary> all;
        bins().getAllBins(all);
        CookieVec found;
        for (const auto& [bin, summary] : all)
            if (bins().getData(bin)->contains(assets))
                found.push_back(bin);
        return found;
    }
    // How many of them there are, how many bins hold them all, how many bins there are.
    static std::vector<std::size_t> found(const CookieVec& made) {
        const auto there = std::count_if(made.begin(), made.end(), [](const Cookie& cookie) {
            return EditManager::instance().exists(cookie);
        });
        return {static_cast<std::size_t>(there), binsWith(made).size(), binsWith({}).size()};
    }

    Cookie known_;
};

} // namespace

TEST_P(Filed, WholeOrNotAtAllWhateverFails) {
    int failures = 0;
    for (long at = 0; at < kMostOperations; ++at) {
        Status kept;
        const CookieVec made = file(at, FaultyFiles::Span::once, kept);
        const bool struck = files_.struck();
        files_.disarm();
        failures += !kept.ok();
        const std::size_t fresh = kept.ok() && !GetParam();
        const auto expected = kept.ok() ? std::vector<std::size_t>{2, 1, 1 + fresh}
                                        : std::vector<std::size_t>{0, 0, 1};
        EXPECT_EQ(found(made), expected) << at;
        reopen();
        EXPECT_EQ(found(made), expected) << at << " opened again";
        EXPECT_EQ(bins().getData(known_)->items().size(), kept.ok() && GetParam() ? 3u : 1u) << at;
        if (!struck)
            break;
        // A failure that was made good leaves bins and edits.
        for (const Cookie& bin : kept.ok() ? binsWith(made) : CookieVec())
            if (bin != known_) {
                ASSERT_TRUE(bins().destroy(bin, "again").ok());
            }
        ASSERT_TRUE(EditManager::instance().deleteEdits(made, "again").ok());
    }
    EXPECT_GT(failures, 5);
    log_.lines.clear();
}

INSTANTIATE_TEST_SUITE_P(Bins, Filed, testing::Bool(),
                         [](const auto& row) { return row.param ? "Known" : "New"; });
