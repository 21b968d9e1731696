// Documents and asset groups by themselves: their descriptions and their changes.
#include "bins/AssetAssociationGroup.h"
#include "bins/DocumentManager.h"
#include "tests/bins/DescribedFixture.h"

#include <rapidcheck.h>

using namespace cutroom::test;
using testing::HasSubstr;

namespace {

using Group = AssetAssociationGroup;
using Locations = LightweightVector<LightweightString<wchar_t>>;

class DescriptionTest : public DescribedFixture {
protected:
    static Kv::Ptr<Document> read(const std::string& text) {
        auto document = Kv::makePtr<Document>();
        EXPECT_TRUE(document->read(jsonOf(text))) << text;
        return document;
    }
    static auto valuesOf(const Document& d) {
        return std::tuple(d.getID(), d.getName(), d.getDescription(), d.getExternalID(),
                          d.getLocations(), d.getSize(), d.getCreationTime(),
                          d.getModificationTime());
    }
    static std::string withMember(const std::string& member) {
        return R"({"id":"D0000000000001")" + (member.empty() ? "" : "," + member) + "}";
    }
};

TEST_F(DescriptionTest, KeysAreWrittenInOrder) {
    Document document;
    document.setID(Cookie('D', 7));
    document.setName(L"Drehbuch \u201c\u00c4pfel\u201d.pdf");
    document.setDescription(L"Fassung 3\nmit \"Korrekturen\"");
    document.setSize(18446744073709551615u);
    document.setLocations(
        {L"/home/lena/Drehbuch \u201c\u00c4pfel\u201d.pdf", L"//server/film/Drehbuch.pdf"});
    document.setCreationTime(1700000000);
    document.setModificationTime(4294967295u);
    EXPECT_EQ(textOf(document), golden("documents/document.KvDoc"));
    for (const char* name : {"associations/user.AssetGroup", "associations/versions.AssetGroup"}) {
        Group group;
        ASSERT_TRUE(group.read(jsonOf(golden(name)))) << name;
        EXPECT_EQ(textOf(group), golden(name));
        EXPECT_TRUE(group.isDirty()); // read by hand, not from its file
    }
    EXPECT_THAT(textOf(Group(L"", {}, static_cast<Group::eType>(2))), HasSubstr("\"Versions\""));
}

TEST_F(DescriptionTest, WhatIsThereIsReadAndTheRestIsEmpty) {
    const struct {
        const char* member;
        std::uint64_t size;
        Locations locations;
    } rows[] = {
        {"", 0, {}},
        {R"("size":"12")", 0, {}}, // taken only as a number
        {R"("size":12.0)", 12, {}},
        {R"("locations":[],"file":"/a")", 0, {}},
        {R"("locations":["/b",""],"file":"/a")", 0, {L"/b", L""}},
        {R"("size":5,"file":"/a")", 5, {L"/a"}}, // the older form
        {R"("file":"")", 0, {}},
        {R"("size":3,"unknown":{"deep":[1]})", 3, {}},
    };
    for (const auto& row : rows) {
        const auto document = read(withMember(row.member));
        EXPECT_EQ(document->getSize(), row.size) << row.member;
        EXPECT_EQ(document->getLocations(), row.locations) << row.member;
        EXPECT_EQ(document->getFileName(),
                  row.locations.empty() ? std::wstring() : row.locations[0]);
        document->setSize(99); // stays where the description has none
        EXPECT_TRUE(document->read(jsonOf(withMember(row.member))));
        EXPECT_EQ(document->getSize(), row.size == 0 ? 99 : row.size) << row.member;
    }
    Group group;
    EXPECT_TRUE(group.read(jsonOf(R"({"ID":"G0000000000001","Unknown":1})")));
    EXPECT_EQ(group.getType(), Group::kUserGroup);
}

TEST_F(DescriptionTest, WhatIsNoDescriptionIsRefusedAndChangesNothing) {
    const auto document = read(withMember(R"("name":"kept")"));
    const auto group = Kv::makePtr<Group>(L"kept", std::vector<Cookie>(), Group::kVersionsGroup);
    const auto ofGroup = [](const std::string& member) {
        return R"({"ID":"G0000000000001",)" + member + "}";
    };
    const struct {
        cutroom::DescribedContainer& container;
        std::string text;
        const char* reason;
    } rows[] = {
        {*document, R"([])", "no JSON object"},
        {*document, R"({})", "\"id\" is missing"},
        {*document, R"({"id":7})", "\"id\" is no cookie"},
        {*document, R"({"id":"I"})", "\"id\" is no cookie"},
        {*document, R"({"id":"../../etc/passwd"})", "\"id\" is no cookie"},
        {*document, R"({"id":"E0000000000001"})", "no cookie of this kind"},
        {*document, withMember(R"("name":7)"), "\"name\" is no text"},
        {*document, withMember(R"("extid":null)"), "\"extid\" is no text"},
        {*document, withMember(R"("created":-1)"), "\"created\" is no time"},
        {*document, withMember(R"("modified":4294967296)"), "\"modified\" is no time"},
        {*document, withMember(R"("created":"1")"), "\"created\" is no time"},
        {*document, withMember(R"("size":-1)"), "\"size\" is no number of bytes"},
        {*document, withMember(R"("size":1e300)"), "\"size\" is no number of bytes"},
        {*document, withMember(R"("locations":"/a")"), "\"locations\" is no list"},
        {*document, withMember(R"("locations":["/a",1])"), "holds something that is no text"},
        {*document, withMember(R"("file":["/a"])"), "\"file\" is no text"},
        {*group, R"({"ID":"E0000000000001"})", "no cookie of this kind"},
        {*group, ofGroup(R"("Type":7)"), "\"Type\" is neither"},
        {*group, ofGroup(R"("Type":"user")"), "\"Type\" is neither"},
        {*group, ofGroup(R"("Created":1.5)"), "\"Created\" is no time"},
        {*group, ofGroup(R"("Constituents":["E0000000000001","E1"])"), "text that is no cookie"},
        {*group, ofGroup(R"("Constituents":["I"])"), "holds a text that is no cookie"},
    };
    for (const auto& row : rows) {
        const auto status = row.container.take(*jsonOf(row.text), "x.file");
        EXPECT_EQ(status.code(), cutroom::StatusCode::damaged) << row.text;
        EXPECT_THAT(status.text(), HasSubstr("x.file: ")) << row.text;
        EXPECT_THAT(status.text(), HasSubstr(row.reason)) << row.text;
        EXPECT_EQ(row.container.getName(), L"kept");
    }
    EXPECT_FALSE(document->read(nullptr));
}

TEST_F(DescriptionTest, AnyDescriptionComesBackExactlyAndIsWrittenTheSameAgain) {
    using namespace rc;
    const auto texts = gen::container<std::wstring>(
        gen::oneOf(gen::inRange<wchar_t>(0, 0xD800), gen::inRange<wchar_t>(0xE000, 0x110000)));
    EXPECT_TRUE(check("documents", [&] {
        Document document;
        document.setID(Cookie(*gen::element('D', 'A'), *gen::arbitrary<std::uint64_t>()));
        document.setName(*texts);
        document.setDescription(*texts);
        document.setExternalID(*texts);
        document.setLocations(*gen::container<Locations>(texts));
        document.setSize(*gen::arbitrary<std::uint64_t>());
        document.setCreationTime(*gen::arbitrary<std::uint32_t>());
        document.setModificationTime(*gen::arbitrary<std::uint32_t>());
        const auto again = read(textOf(document));
        RC_ASSERT(valuesOf(*again) == valuesOf(document));
        RC_ASSERT(textOf(*again) == textOf(document));
    }));
    const auto cookies = gen::container<std::vector<Cookie>>(gen::apply(
        [](char type, std::uint64_t id, std::uint8_t index) { return Cookie(type, id, index); },
        gen::element('E', 'D', 'A', 'G', 'V'), gen::arbitrary<std::uint64_t>(),
        gen::arbitrary<std::uint8_t>()));
    EXPECT_TRUE(check("groups", [&] {
        Group group(*texts, *cookies, *gen::element(Group::kUserGroup, Group::kVersionsGroup));
        group.setExternalID(*texts);
        Group again;
        RC_ASSERT(again.read(jsonOf(textOf(group))));
        RC_ASSERT(again.getType() == group.getType());
        RC_ASSERT(again.getConstituents() == group.getConstituents());
        RC_ASSERT(textOf(again) == textOf(group));
    }));
}

} // namespace
