#include "platform/base/Strings.h"
#include "platform/base/Characters.h"
#include "tests/support/CommaLocale.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <bit>
#include <cmath>
#include <limits>

namespace cutroom {
namespace {

TEST(Strings, ConversionsAreStrictOrShowWhatIsIllFormed) {
    struct Row {
        std::string utf8;
        std::optional<std::wstring> strict;
        std::wstring lenient;
    };
    const Row rows[] = {
        {"", L"", L""},
        {"a\tb", L"a\tb", L"a\tb"},
        {{"a\0b", 3}, std::wstring(L"a\0b", 3), {L"a\0b", 3}},
        {"\xC3\xA4", L"\u00E4", L"\u00E4"},
        {"\xF0\x9F\x8E\xAC", L"\U0001F3AC", L"\U0001F3AC"},
        {"\xF4\x8F\xBF\xBF", L"\U0010FFFF", L"\U0010FFFF"},
        {"a\xC3", std::nullopt, L"a\uFFFD"},        // cut
        {"\x80z", std::nullopt, L"\uFFFDz"},        // stray
        {"\xC0\xAFz", std::nullopt, L"\uFFFDz"},    // overlong
        {"\xED\xA0\x80z", std::nullopt, L"\uFFFDz"} // a surrogate
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.utf8);
        EXPECT_EQ(toWideStrict(row.utf8), row.strict);
        EXPECT_EQ(toWide(row.utf8), row.lenient);
        EXPECT_EQ(isUtf8(row.utf8), row.strict.has_value());
        EXPECT_EQ(toUtf8Strict(row.strict.value_or(L"")), row.strict ? row.utf8 : "");
    }
}

TEST(Strings, WideTextThatIsNoUnicodeIsRefusedOrShown) {
    for (const wchar_t bad : {wchar_t(0xD800), wchar_t(0xDFFF), wchar_t(0x110000), wchar_t(-1)}) {
        const std::wstring text = {L'a', bad};
        EXPECT_EQ(toUtf8Strict(text), std::nullopt);
        EXPECT_EQ(toUtf8(text), "a\xEF\xBF\xBD");
    }
}

RC_GTEST_PROP(Strings, AnyBytesBecomeWellFormedText, (const std::string& bytes)) {
    const std::wstring wide = toWide(bytes);
    RC_ASSERT(isUtf8(toUtf8(wide)));
    RC_ASSERT(toWideStrict(toUtf8(wide)) == wide);
    RC_ASSERT(!isUtf8(bytes) || toUtf8(wide) == bytes);
}

TEST(Strings, LowerCaseIsUnicodesAndOneToOne) {
    EXPECT_EQ(toLower(L"\u00C4BC \u0416 \u03A3\u0130\u00DF"), L"\u00E4bc \u0436 \u03C3i\u00DF");
    EXPECT_EQ(toLowerUtf8("\xC3\x84\x42\xFF\x43"), "\xC3\xA4\x62\xFF\x63");
    EXPECT_TRUE(equalNoCase("Stra\xC3\x9F\x45", "stra\xC3\x9F\x65"));
    EXPECT_FALSE(equalNoCase("ss", "\xC3\x9F"));
}

TEST(Strings, CharacterClassesReachBeyondAscii) {
    for (const wchar_t c : {L'.', L'_', L'$', L'+', L'\u2014', L'\u3002', L'\u00BF', L'\u20AC'})
        EXPECT_TRUE(isPunctuation(c)) << static_cast<int>(c);
    for (const wchar_t c : {L' ', L'\t', L'\u0085', L'\u00A0', L'\u3000', L'\u2028'})
        EXPECT_TRUE(isWhiteSpace(c) && !isPunctuation(c)) << static_cast<int>(c);
    for (const wchar_t c : {L'a', L'0', L'\u00E9', L'\u4E2D', L'\u200B'})
        EXPECT_FALSE(isPunctuation(c) || isWhiteSpace(c)) << static_cast<int>(c);
    EXPECT_EQ(displayWidth(L'a'), 1);
    EXPECT_EQ(displayWidth(L'\u4E2D'), 2);
    EXPECT_EQ(displayWidth(L'\u0301'), 0);
}

TEST(Strings, CharactersOfAsciiAreOfOneKindWhateverTheLocale) {
    const auto all = [](auto isOne) {
        std::string those;
        for (int c = -128; c < 128; ++c)
            those.append(isOne(static_cast<char>(c)), static_cast<char>(c));
        return those;
    };
    const std::string capitals = "ABCDEFGHIJKLMNOPQRSTUVWXYZ", small = "abcdefghijklmnopqrstuvwxyz";
    EXPECT_EQ(all(isDigit), "0123456789");
    EXPECT_EQ(all(isCapital), capitals);
    EXPECT_EQ(all(isLetter), capitals + small);
    EXPECT_EQ(all([](char c) { return c != toCapital(c); }), small);
    EXPECT_EQ(all([](char c) { return hexDigit(c) >= 0; }), "0123456789ABCDEFabcdef");
    EXPECT_TRUE(toCapital('b') == 'B' && hexDigit('9') == 9 && hexDigit('A') == 10 &&
                hexDigit('f') == 15);
    EXPECT_FALSE(isDigits("") || isDigits("1a"));
    EXPECT_EQ(percentDecoded("a%20b%c3%A9"), "a b\xC3\xA9");
    for (const char* const bad : {"%", "%4", "x%zz", "%4g1", "%g41"})
        EXPECT_FALSE(percentDecoded(bad)) << bad;
}

TEST(Strings, SplitAndJoinAreInverse) {
    for (const std::string text : {"", ",", "a", "a,b", ",a,,b,"})
        EXPECT_EQ(join(split(text, ','), ","), text);
    EXPECT_THAT(split(",a,", ','), testing::ElementsAre("", "a", ""));
    EXPECT_THAT(split("", ','), testing::ElementsAre(""));
    EXPECT_EQ(trim(" \t a b \r\n"), "a b");
    EXPECT_EQ(trim(" \t "), "");
}

RC_GTEST_PROP(Strings, DoublesReadBackExactly, (std::uint64_t bits)) {
    const double value = std::bit_cast<double>(bits);
    const auto back = parseDouble(toText(value));
    RC_ASSERT(back.has_value());
    const bool same =
        std::isnan(value) ? std::isnan(*back) : std::bit_cast<std::uint64_t>(*back) == bits;
    RC_ASSERT(same);
}

TEST(Strings, NumbersAreReadWholeOrNotAtAll) {
    EXPECT_EQ(toText(0.1), "0.1");
    EXPECT_EQ(toText(1e99), "1e+99");
    EXPECT_EQ(toText(-std::numeric_limits<double>::infinity()), "-inf");
    EXPECT_EQ(toText(-std::nan("")), "nan");
    for (const char* bad : {"", " 1", "1 ", "1x", "+1", "0x10", "1e999", "infinity", "NaN", "-nan",
                            "nan(1)", "1,5", "."})
        EXPECT_EQ(parseDouble(bad), std::nullopt) << bad;
    for (const char* bad : {"", "1.0", "9223372036854775808", "+1", " 1", "-"})
        EXPECT_EQ(parseInt(bad), std::nullopt) << bad;
    EXPECT_EQ(parseInt("-9223372036854775808"), std::numeric_limits<long long>::min());
    EXPECT_EQ(parseUnsigned("18446744073709551615"),
              std::numeric_limits<unsigned long long>::max());
    EXPECT_EQ(parseUnsigned("-1"), std::nullopt);
}

TEST(Strings, LeadingIntTakesWhatItCan) {
    const std::pair<const char*, int> rows[] = {
        {"", 0},       {"x", 0},    {"12", 12},
        {"12abc", 12}, {"-7,", -7}, {"+5", 5},
        {"+-5", 0},    {"-", 0},    {"99999999999", std::numeric_limits<int>::max()},
        {" 3", 0},     {"007", 7},  {"-99999999999", std::numeric_limits<int>::min()}};
    for (const auto& [text, expected] : rows)
        EXPECT_EQ(leadingInt(text), expected) << text;
}

TEST(Strings, FormatKeepsThePointInEveryLocale) {
    const test::CommaLocale comma;
    ASSERT_TRUE(comma.active());
    EXPECT_EQ(format("%.1f|%d|%s", 1.5, 12345, "x"), "1.5|12345|x");
    EXPECT_EQ(toText(1.5), "1.5");
    EXPECT_EQ(parseDouble("1.5"), 1.5);
    EXPECT_EQ(format("%s", std::string(5000, 'x').c_str()), std::string(5000, 'x'));
    EXPECT_EQ(format("%s", ""), "");
}

} // namespace
} // namespace cutroom
