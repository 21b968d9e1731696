#include "platform/base/Cookie.h"
#include "platform/base/IdSource.h"
#include "platform/base/IdStamp.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <set>
#include <unordered_set>

namespace {

static_assert(sizeof(Cookie) == 16 && std::is_trivially_copyable_v<Cookie>);

TEST(CookieTest, TextIsKindThirteenDigitsAndIndex) {
    EXPECT_EQ(Cookie('V', ~0ull, 2).asString(), "VFZZZZZZZZZZZZ.2");
    EXPECT_EQ(Cookie('V', 33, 254).asString(), "V0000000000011.254");
    EXPECT_EQ(Cookie('V', 33, 254).asString(false), "V0000000000011");
    EXPECT_EQ(Cookie('G', 31).asWString(), L"G000000000000Z");
    EXPECT_EQ(Cookie().asString(), "I");
}

RC_GTEST_PROP(CookieTest, TextRoundTrips, (std::uint64_t id, std::uint8_t index)) {
    const auto type = *rc::gen::inRange('A', static_cast<char>('Z' + 1));
    const Cookie cookie(type, id, index);
    RC_ASSERT(Cookie::fromString(cookie.asString()) == cookie);
    RC_ASSERT(Cookie(cookie.asString()) == cookie);
}

TEST(CookieTest, EveryOtherTextIsRefused) {
    // Wrong length, more than 64 bits, no kind, no digits, no identity, something left over, no
    // index, paths.
    for (const char* text : {"",
                             "E",
                             "E000000000000",
                             "E00000000000000",
                             "EG000000000000",
                             "EG0000000000000",
                             "e0000000000000",
                             "/0000000000000",
                             "EZ000000000000",
                             "E000000000000a",
                             "E000000000000I",
                             "E000000000000U",
                             "I0000000000000",
                             "II",
                             "I ",
                             "E0000000000000 ",
                             " E0000000000000",
                             "E0000000000000.",
                             "E0000000000000.01",
                             "E0000000000000.255",
                             "E0000000000000.256",
                             "E0000000000000.-1",
                             "E0000000000000.1 ",
                             "E../../../../00",
                             "E00000/0000000"}) {
        EXPECT_EQ(Cookie::fromString(text), std::nullopt) << text;
        EXPECT_FALSE(Cookie(std::string_view(text)).valid()) << text;
    }
    EXPECT_EQ(Cookie::fromString(std::string_view("E0000000000000\0", 15)), std::nullopt);
    EXPECT_EQ(Cookie::fromString("I"), Cookie());
}

TEST(CookieTest, ThereIsOneInvalidCookie) {
    for (const char kind : {'I', '/', 'a'})
        EXPECT_EQ(Cookie(kind, 7, 3), Cookie());
    EXPECT_EQ(convertCookie(Cookie(), 'S', 1), Cookie());
    EXPECT_EQ(convertCookie(Cookie('E', 9), 'S', 1), Cookie('S', 9, 1));
}

TEST(CookieTest, OrderIsByKindThenIdentityThenIndex) {
    const CookieVec sorted = {{'A', 9},        {'E', 1, 0}, {'E', 1, 7}, {'E', 1},
                              {'E', ~0ull, 0}, Cookie(),    {'V', 0}};
    for (std::size_t i = 0; i < sorted.size(); ++i)
        for (std::size_t j = 0; j < sorted.size(); ++j) {
            EXPECT_EQ(Cookie::compare(sorted[i], sorted[j]), int(i > j) - int(i < j));
            EXPECT_EQ(sorted[i] < sorted[j], i < j);
        }
}

TEST(CookieTest, HashesOfNeighboursSpread) {
    std::set<std::size_t> buckets;
    for (std::uint64_t id = 0; id < 1024; ++id)
        buckets.insert(std::hash<Cookie>()(Cookie('E', id)) % 1024);
    EXPECT_GT(buckets.size(), 550u); // 647 for a random function
}

TEST(IdStampTest, TextRoundTripsAndNothingElseIsRead) {
    EXPECT_EQ(IdStamp().asString(), "0.0.0");
    EXPECT_EQ(IdStamp(2, 0x1f, 0xffffffff).asString(), "2.1f.ffffffff");
    for (const IdStamp& id : {IdStamp(), IdStamp(2, 0x1f, 3), IdStamp(~0u, 0, 0x80000000)})
        EXPECT_EQ(IdStamp::fromString(id.asString()), id);
    for (const char* bad :
         {"", "1", "1.2", "1.2.", "1..3", ".1.2", "1.2.3.4", "01.2.3", "00.0.0", "1.2.3 ", " 1.2.3",
          "A.2.3", "100000000.2.3", "-1.2.3", "1.2.0x3", "g.2.3", "1,2,3"})
        EXPECT_EQ(IdStamp::fromString(bad), std::nullopt) << bad;
    EXPECT_TRUE(IdStamp(0, 0, 1).valid() && IdStamp(0, 1, 0).valid() && IdStamp(1, 0, 0).valid());
    EXPECT_LT(IdStamp(1, 9, 9), IdStamp(2, 0, 0));
}

TEST(IdSourceTest, FreshIdsNeverRepeat) {
    std::unordered_set<Cookie> cookies;
    std::unordered_set<IdStamp> stamps;
    for (int i = 0; i < 20000; ++i)
        EXPECT_TRUE(cookies.insert(Cookie::make('E')).second &&
                    stamps.insert(IdStamp::make()).second);
}

TEST(IdSourceTest, AnInstalledSourceDecides) {
    struct Counter final : cutroom::iIdSource {
        std::uint64_t nextId() override { return next++; }
        std::uint32_t secondsNow() override { return 0; }
        std::uint64_t next = 0;
    } counter;
    cutroom::iIdSource* const before = cutroom::installIdSource(&counter);
    EXPECT_EQ(Cookie::make('G'), Cookie('G', 0));
    EXPECT_EQ(IdStamp::make(), IdStamp(0, 0, 1));
    counter.next = 0;
    EXPECT_TRUE(IdStamp::make().valid()); // the empty id is passed over
    EXPECT_EQ(cutroom::installIdSource(before), &counter);
    EXPECT_NE(Cookie::make('G'), Cookie('G', 2));
}

} // namespace
