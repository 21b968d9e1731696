#include "platform/files/JsonBuilder.h"
#include "platform/files/JsonElement.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <cmath>
#include <limits>

using namespace cutroom;
using JSON::Builder;
using JSON::Cursor;
using JSON::Element;
using JSON::Layout;
using JSON::ReadOptions;
using testing::HasSubstr;

namespace {

Kv::Ptr<Element> parsed(const std::string& text, const ReadOptions& options = {}) {
    Result<Kv::Ptr<Element>> read = Element::parse(text, "test.json", options);
    EXPECT_TRUE(read.ok()) << read.status().text();
    return read ? *read : nullptr;
}

std::string written(const Element& element, Layout layout = Layout::compact) {
    Builder out(layout, JSON::NonFinite::asWord);
    out.add(element);
    return out.take();
}

ReadOptions tolerant() {
    ReadOptions options;
    options.tolerant = true;
    return options;
}

} // namespace

TEST(JsonReading, GivesBackWhatTheTextSays) {
    const struct {
        std::string text, again; // empty: the same
    } rows[] = {
        {"null", ""},
        {" [ ] ", "[]"},
        {R"({"b":1,"a":2,"":3})", ""},
        {R"([true,false,null,"",0,-0,-1,1.50,1e3,-2.5E-7])", ""},
        {"[9223372036854775807,-9223372036854775808,18446744073709551615]", ""},
        {"[18446744073709551616,-9223372036854775809,123456789012345678901234567890]", ""},
        {R"(["\u00e9\ud83c\udfac\/\b\f\n\r\t\"\\ \u0000"])", R"(["é🎬/\b\f\n\r\t\"\\ \u0000"])"},
        {R"({"a":1,"a":2})", ""},
        {R"([[[],{}],{"x":[{}]}])", ""},
    };
    for (const auto& row : rows) {
        const Kv::Ptr<Element> root = parsed(row.text);
        ASSERT_TRUE(root) << row.text;
        EXPECT_EQ(written(*root), row.again.empty() ? row.text : row.again);
    }
}

TEST(JsonReading, NamesThePlaceAndReasonOfWhatIsWrong) {
    const struct {
        std::string text;
        long line;
        std::string message;
    } rows[] = {
        {"", 1, "column 1: is empty"},
        {" \n ", 1, "is empty"},
        {"{\n  \"a\": tru\n}", 2, "column 11: "},
        {"[1,\n2,\n3,]", 3, "column 3: "},
        {"[1 2]", 1, "column 4: "},
        {"{\"a\":1", 1, "column 7: "},
        {"[01]", 1, "column 3: "},
        {"[+1]", 1, "column 2: "},
        {"[NaN]", 1, "column 2: "},
        {"[1e999]", 1, "column 6: number overflow"},
        {"{'a':1}", 1, "column 2: syntax error"},
        {"[\"\xFF\"]", 1, "column 3: "},
        {"[\"\\ud800\"]", 1, "column 9: "},
        {"[\"a\nb\"]", 1, "column 4: "},
        {std::string("{}\0garbage", 10), 1, "column 3: holds a null character"},
        {"{} {}", 1, "column 4: "},
        {"\xEF\xBB\xBF{}", 1, "byte order mark"},
        {"// comment\n1", 1, "column 1: "},
    };
    for (const auto& row : rows) {
        const Status status = Element::parse(row.text, "f.json").status();
        EXPECT_EQ(status.code(), StatusCode::damaged) << row.text;
        EXPECT_EQ(status.file(), "f.json");
        EXPECT_EQ(status.line(), row.line) << row.text << status.text();
        EXPECT_THAT(status.message(), HasSubstr(row.message)) << row.text;
        EXPECT_THAT(status.message(), testing::Not(HasSubstr("json.exception")));
        EXPECT_TRUE(isUtf8(status.message()));
        EXPECT_LT(status.message().size(), 250u);
    }
}

TEST(JsonReading, KeepsItsLimits) {
    ReadOptions few;
    few.maxElements = 3;
    EXPECT_TRUE(Element::parse("[1,2]", "f", few).ok());
    EXPECT_THAT(Element::parse("[1,2,3]", "f", few).status().message(), HasSubstr("too many"));
    ReadOptions small;
    small.maxBytes = 4;
    EXPECT_TRUE(Element::parse("[12]", "f", small).ok());
    EXPECT_THAT(Element::parse("[123]", "f", small).status().message(), HasSubstr("too large"));
    const std::string deep = std::string(64, '[') + std::string(64, ']');
    EXPECT_TRUE(Element::parse(deep, "f").ok());
    const Status deeper = Element::parse("[" + deep + "]", "f").status();
    EXPECT_EQ(deeper.message(), "column 65: is nested more than 64 deep");
    EXPECT_EQ(Element::parse(std::string(100'000, '['), "f").status().message(), deeper.message());
}

TEST(JsonReading, WalksAHundredThousandLevelsWithoutRecursion) {
    ReadOptions options;
    options.maxDepth = 1'000'000;
    for (const auto& [open, close] :
         {std::pair<std::string, std::string>{"[", "]"}, {"{\"a\":", "}"}}) {
        std::string text;
        for (int i = 0; i < 100'000; ++i)
            text += open;
        text += "1";
        for (int i = 0; i < 100'000; ++i)
            text += close;
        EXPECT_EQ(written(*parsed(text, options)), text);
        EXPECT_FALSE(Element::parse(text.substr(0, text.size() - 1), "f", options).ok());
    }
}

TEST(JsonReading, OfOtherProgramsTakesBareWordsAndAByteOrderMark) {
    const std::string text =
        "\xEF\xBB\xBF[1, NaN, {\"Infinity\": -Infinity, \"x\": \"NaN \\\" inf\"}, "
        "Inf, -inf, nan, -NaN, 1.5e400000000000000000000]";
    EXPECT_FALSE(Element::parse(text, "f", tolerant()).ok()); // the last number is beyond all
    const Kv::Ptr<Element> root =
        parsed(text.substr(0, text.rfind(',')) + ", 12345678901234567890123]", tolerant());
    EXPECT_EQ(written(*root), "[1,NaN,{\"Infinity\":-Infinity,\"x\":\"NaN \\\" inf\"},Inf,-inf,nan,"
                              "-NaN,12345678901234567890123]");
    EXPECT_TRUE(std::isnan(root->child(1)->asDouble().value()));
    EXPECT_EQ(root->child(2)->getDouble("Infinity"), -std::numeric_limits<double>::infinity());
    EXPECT_EQ(root->child(3)->asDouble(), std::numeric_limits<double>::infinity());
    EXPECT_EQ(root->child(7)->asInt(), std::nullopt);
    const Status status = Element::parse("[NaN,\n Infinity,\n Infinite]", "f", tolerant()).status();
    EXPECT_EQ(status.line(), 3);
    for (const char* bad : {"[NaNs]", "[-]", "[--inf]", "{NaN:1}", "[nAn]"})
        EXPECT_FALSE(Element::parse(bad, "f", tolerant()).ok()) << bad;
}

TEST(JsonElement, ReadsNumbersOnlyWhenTheyFit) {
    const std::pair<const char*, const char*> rows[] = {
        // whole, positive and any number
        {"9223372036854775807", "9223372036854775807 9223372036854775807 9223372036854775808"},
        {"-9223372036854775808", "-9223372036854775808 none -9223372036854775808"},
        {"18446744073709551615", "none 18446744073709551615 18446744073709551616"},
        {"1e3", "1000 1000 1000"},
        {"-2.0", "-2 none -2"},
        {"1.5", "none none 1.5"},
        {"1e300", "none none 1e+300"},
        {"\"7\"", "none none none"},
        {"true", "none none none"},
    };
    const auto whole = [](const auto& number) { return number ? std::to_string(*number) : "none"; };
    for (const auto& [text, expected] : rows) {
        const Kv::Ptr<Element> root = parsed(text);
        const auto real = root->asDouble();
        EXPECT_EQ(whole(root->asInt()) + ' ' + whole(root->asUnsigned()) + ' ' +
                      (real ? toText(*real) : "none"),
                  expected);
    }
}

TEST(JsonElement, FindsMembersAndFallsBackOnOtherKinds) {
    Kv::Ptr<Element> inner;
    {
        const Kv::Ptr<Element> root =
            parsed(R"({"s":"é","n":-7,"d":1.5,"b":true,"list":["x","y"],"n2":3,"s":"last"})");
        EXPECT_EQ(root->getString("s"), "last");
        EXPECT_EQ(root->getWString("s"), L"last");
        EXPECT_EQ(root->getString("n", "none"), "none");
        EXPECT_EQ(root->getWString("n", L"none"), L"none");
        EXPECT_EQ(root->getInt("n"), -7);
        EXPECT_EQ(root->getUnsigned("n", 9), 9u);
        EXPECT_EQ(root->getInt("d", 4), 4);
        EXPECT_TRUE(root->getBool("b"));
        EXPECT_TRUE(root->getBool("n", true));
        EXPECT_EQ(root->find("absent"), nullptr);
        EXPECT_FALSE(root->has("x"));
        EXPECT_EQ(root->children().size(), 7u);
        EXPECT_EQ(root->child(2)->key(), "d");
        EXPECT_EQ(root->child(7), nullptr);
        inner = root->find("list");
    }
    EXPECT_EQ(inner->key(), "list"); // keeps its document
    EXPECT_EQ(inner->find("x"), nullptr);
    std::string all;
    for (Cursor item = Cursor::childrenOf(*inner); item; item.next())
        all += std::string(item.text()) + std::string(item.element(*inner)->text());
    EXPECT_EQ(all, "xxyy");
}

TEST(JsonElement, FindsByKeyAndIndexInLargeObjects) {
    Builder out(Layout::compact);
    out.beginObject();
    for (int i = 999; i >= 0; --i)
        out.add("key" + std::to_string(i % 500), i);
    out.endObject();
    const Kv::Ptr<Element> root = parsed(out.text());
    for (int i = 0; i < 500; ++i)
        ASSERT_EQ(root->getInt("key" + std::to_string(i)), i); // the last of two
    for (std::size_t i = 0; i < 1000; ++i)
        ASSERT_EQ(root->child(i)->asUnsigned(), 999 - i);
    for (const char* absent : {"key", "zzz"})
        EXPECT_FALSE(root->has(absent));
    EXPECT_EQ(root->child(1000), nullptr);
}

TEST(JsonBuilder, WritesBothLayouts) {
    const std::string compact =
        R"({"name":"Ünit🎬","yes":true,"list":[1,"two",{}],"empty":[],"none":null})";
    EXPECT_EQ(written(*parsed(compact)), compact);
    EXPECT_EQ(written(*parsed(compact), Layout::indented), R"({
    "name": "Ünit🎬",
    "yes": true,
    "list": [
        1,
        "two",
        {}
    ],
    "empty": [],
    "none": null
}
)");
}

TEST(JsonBuilder, WritesEveryNumberAndTextSoThatItReadsBack) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    Builder out(Layout::compact);
    out.beginArray();
    for (const double value :
         {0.1, -0.0, 1e21, 5e-324, 1.7976931348623157e308, kInfinity, std::nan("")})
        out.add(value);
    out.add(std::numeric_limits<std::int64_t>::min());
    out.add(std::numeric_limits<std::uint64_t>::max());
    out.add(std::string_view("\xFF\"\\\x1F \x7F", 6));
    out.endArray();
    EXPECT_EQ(out.text(), "[0.1,-0,1e+21,5e-324,1.7976931348623157e+308,null,null,"
                          "-9223372036854775808,18446744073709551615,"
                          "\"\xEF\xBF\xBD\\\"\\\\\\u001f \x7F\"]");
    Builder words(Layout::compact, JSON::NonFinite::asWord);
    words.beginArray();
    for (const double value : {kInfinity, -kInfinity, std::nan("")})
        words.add(value);
    words.endArray();
    EXPECT_EQ(words.text(), "[Infinity,-Infinity,NaN]");
}

namespace {

void addRandomValue(Builder& out, const std::string* key, int depth) {
    const auto add = [&](const auto& value) { key ? out.add(*key, value) : out.add(value); };
    switch (*rc::gen::inRange(0, depth > 0 ? 7 : 5)) {
    case 0:
        return add(*rc::gen::arbitrary<double>());
    case 1:
        return add(*rc::gen::arbitrary<std::int64_t>());
    case 2:
        return add(*rc::gen::arbitrary<bool>());
    case 3:
        return key ? out.addNull(*key) : out.addNull();
    case 4:
        return add(*rc::gen::arbitrary<std::string>());
    case 5:
        key ? out.beginArray(*key) : out.beginArray();
        for (int i = *rc::gen::inRange(0, 5); i > 0; --i)
            addRandomValue(out, nullptr, depth - 1);
        return out.endArray();
    default:
        key ? out.beginObject(*key) : out.beginObject();
        for (int i = *rc::gen::inRange(0, 30); i > 0; --i) {
            const auto name = *rc::gen::arbitrary<std::string>();
            addRandomValue(out, &name, depth - 1);
        }
        out.endObject();
    }
}

} // namespace

TEST(JsonProperty, WhatIsBuiltIsReadAndWrittenAgainAsTheSameBytes) {
    EXPECT_TRUE(rc::check([] {
        Builder out(Layout::compact);
        out.beginArray();
        addRandomValue(out, nullptr, 4);
        out.endArray();
        const Result<Kv::Ptr<Element>> read = Element::parse(out.text(), "f");
        RC_ASSERT(read.ok());
        RC_ASSERT(written(*read.value()) == out.text());
    }));
}

TEST(JsonProperty, NoTruncationOrChangedByteOfATextDoesHarm) {
    const std::string text = R"({"a":[1,-2.5e3,"x\u00e9",{"b":null}],"n":NaN,"t":true})";
    for (std::size_t cut = 0; cut < text.size(); ++cut)
        EXPECT_FALSE(Element::parse(text.substr(0, cut), "f", tolerant()).ok()) << cut;
    int sound = 0;
    for (std::size_t at = 0; at < text.size(); ++at)
        for (int bit = 0; bit < 8; ++bit) {
            std::string flipped = text;
            flipped[at] = static_cast<char>(flipped[at] ^ (1 << bit));
            const Result<Kv::Ptr<Element>> read = Element::parse(flipped, "f", tolerant());
            if (read)
                sound += Element::parse(written(*read.value()), "f", tolerant()).ok();
            else
                EXPECT_EQ(read.status().code(), StatusCode::damaged);
        }
    EXPECT_GT(sound, 50); // digits and letters inside texts
}
