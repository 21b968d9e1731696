// A document by itself: its description and its changes.
#include "bins/Document.h"
#include "tests/bins/DescribedFixture.h"

#include <rapidcheck.h>

using namespace cutroom::test;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

using Locations = LightweightVector<LightweightString<wchar_t>>;

class DocumentTest : public DescribedFixture {
protected:
    Kv::Ptr<Document> read(const std::string& text) {
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

TEST_F(DocumentTest, WritesItsKeysInOrder) {
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
    EXPECT_EQ(textOf(*read(golden("documents/document.KvDoc"))),
              golden("documents/document.KvDoc"));
}

TEST_F(DocumentTest, ReadsTheOlderFormWithOneFile) {
    const auto document = read(golden("documents/older.KvDoc"));
    EXPECT_EQ(document->getID(), Cookie('A', 8));
    EXPECT_THAT(document->getLocations(), ElementsAre(L"/home/lena/notes.txt"));
    EXPECT_EQ(document->getExternalID(), L"asset 8");
    EXPECT_EQ(document->getModificationTime(), 1100000001u);
    EXPECT_EQ(document->getAttribute(LogAttribute(LogAttribute::mediaLocation)),
              "/home/lena/notes.txt");
}

TEST_F(DocumentTest, ReadsWhatIsThereAndLeavesTheRestEmpty) {
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
        {R"("file":"")", 0, {}},
        {R"("size":3,"unknown":{"deep":[1]})", 3, {}},
    };
    for (const auto& row : rows) {
        const auto document = read(withMember(row.member));
        EXPECT_EQ(document->getSize(), row.size) << row.member;
        EXPECT_EQ(document->getLocations(), row.locations) << row.member;
        EXPECT_EQ(document->getFileName(),
                  row.locations.empty() ? std::wstring() : row.locations[0]);
    }
}

TEST_F(DocumentTest, RefusesWhatIsNoDescriptionAndStaysAsItWas) {
    const auto document = read(withMember(R"("name":"kept")"));
    const std::pair<std::string, const char*> rows[] = {
        {R"([])", "no JSON object"},
        {R"({})", "\"id\" is missing"},
        {R"({"id":7})", "\"id\" is no cookie"},
        {R"({"id":"I"})", "\"id\" is no cookie"},
        {R"({"id":"../../etc/passwd"})", "\"id\" is no cookie"},
        {R"({"id":"E0000000000001"})", "no document's cookie"},
        {withMember(R"("name":7)"), "\"name\" is no text"},
        {withMember(R"("extid":null)"), "\"extid\" is no text"},
        {withMember(R"("created":-1)"), "\"created\" is no time"},
        {withMember(R"("modified":4294967296)"), "\"modified\" is no time"},
        {withMember(R"("created":"1")"), "\"created\" is no time"},
        {withMember(R"("size":-1)"), "\"size\" is no number of bytes"},
        {withMember(R"("size":1e300)"), "\"size\" is no number of bytes"},
        {withMember(R"("locations":"/a")"), "\"locations\" is no list"},
        {withMember(R"("locations":["/a",1])"), "holds something that is no text"},
        {withMember(R"("file":["/a"])"), "\"file\" is no text"},
    };
    for (const auto& [text, reason] : rows) {
        const auto status = document->take(*jsonOf(text), "x.KvDoc");
        EXPECT_EQ(status.code(), cutroom::StatusCode::damaged) << text;
        EXPECT_THAT(status.text(), HasSubstr(std::string("x.KvDoc: ")));
        EXPECT_THAT(status.text(), HasSubstr(reason)) << text;
    }
    EXPECT_FALSE(document->read(nullptr));
    EXPECT_EQ(document->getName(), L"kept");
}

TEST_F(DocumentTest, AnyDescriptionComesBackExactlyAndIsWrittenTheSameAgain) {
    const auto texts = rc::gen::container<std::wstring>(rc::gen::oneOf(
        rc::gen::inRange<wchar_t>(0, 0xD800), rc::gen::inRange<wchar_t>(0xE000, 0x110000)));
    const bool held = rc::check("documents", [&] {
        Document document;
        document.setID(Cookie(*rc::gen::element('D', 'A'), *rc::gen::arbitrary<std::uint64_t>()));
        document.setName(*texts);
        document.setDescription(*texts);
        document.setExternalID(*texts);
        document.setLocations(*rc::gen::container<Locations>(texts));
        document.setSize(*rc::gen::arbitrary<std::uint64_t>());
        document.setCreationTime(*rc::gen::arbitrary<std::uint32_t>());
        document.setModificationTime(*rc::gen::arbitrary<std::uint32_t>());
        const auto again = read(textOf(document));
        RC_ASSERT(valuesOf(*again) == valuesOf(document));
        RC_ASSERT(textOf(*again) == textOf(document));
    });
    EXPECT_TRUE(held);
}

TEST_F(DocumentTest, EachSetterRecordsOneChangeAndAnEqualValueNone) {
    const struct {
        const char* told; // as ContainerNotice would be
        bool dirty;
        std::function<void(Document&)> set;
    } rows[] = {
        {"changed D1 32/1", true, [](Document& d) { d.setName(L"n"); }},
        {"changed D1 32/23", true, [](Document& d) { d.setDescription(L"d"); }},
        {"changed D1 32/23", true,
         [](Document& d) { d.setAttribute(LogAttribute(LogAttribute::description), "t"); }},
        {"changed D1 32", true, [](Document& d) { d.setSize(5); }},
        {"changed D1 32/15", true, [](Document& d) { d.setLocations({L"/a"}); }},
        {"changed D1 128", false, [](Document& d) { d.setImported(true); }},
        {nullptr, true, [](Document& d) { d.setCreationTime(5); }},
        {nullptr, true, [](Document& d) { d.setModificationTime(5); }},
    };
    for (const auto& row : rows) {
        const auto document = Kv::makePtr<Document>();
        document->setID(Cookie('D', 1));
        std::vector<std::string> told;
        const auto guard = document->registerNotification(
            makeCallback<NotifyMsg>([&](const NotifyMsg& message) {
                const auto* changes = message.getObjectAs<ContainerBase::Modifications>();
                told.push_back(noticeText(ContainerNotice(document->getID(), *changes)));
            }),
            NotifyMsgTypeDictionary::kGeneralChange);
        row.set(*document);
        EXPECT_EQ(document->isDirty(), row.dirty);
        document->setDirty(false);
        row.set(*document);
        EXPECT_EQ(told, row.told ? std::vector<std::string>{row.told} : std::vector<std::string>{});
        EXPECT_FALSE(document->isDirty());
    }
}

} // namespace
