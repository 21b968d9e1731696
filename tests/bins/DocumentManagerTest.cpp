// The project's documents: finding, telling, going, and their files.
#include "bins/DocumentManager.h"
#include "tests/bins/DescribedFixture.h"

using namespace cutroom::test;
using cutroom::Status;
using cutroom::StatusCode;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

const Cookie kOne('D', 1), kTwo('D', 2), kOther('A', 1);

class DocumentManagerTest : public DescribedFixture {
protected:
    static DocumentManager& manager() { return DocumentManager::instance(); }
    static Kv::Ptr<Document> make(const Cookie& id, const std::wstring& name = L"") {
        const auto document = manager().createDocument(id);
        if (document)
            document->setName(name);
        return document.getContainer();
    }
    std::string file(const Cookie& id) const {
        return path("documents/" + id.asString() + ".KvDoc");
    }
    std::string outside(const std::string& name, const std::string& content) {
        put(folder_ / ("outside/" + name), content);
        return folder_ / ("outside/" + name);
    }
};

// --- making and finding --------------------------------------------------------------------------

TEST_F(DocumentManagerTest, ANewDocumentIsNamedAndSizedAfterItsFile) {
    const std::wstring source = cutroom::toWide(outside("Caf\u00e9.txt", "12345"));
    listen(manager());
    {
        const auto document = manager().createDocument(source, 'D');
        ASSERT_TRUE(document);
        EXPECT_EQ(document->getName(), L"Caf\u00e9.txt");
        EXPECT_THAT(document->getLocations(), ElementsAre(source));
        EXPECT_EQ(document->getSize(), 5u);
        EXPECT_NE(document->getCreationTime(), 0u);
        EXPECT_THAT(told_, IsEmpty());
        EXPECT_EQ(manager().findDocumentReferringToFile(source), document.getContainer());
    }
    EXPECT_THAT(told_, ElementsAre(HasSubstr(" 2 32/1 'create document'")));
    EXPECT_EQ(manager().createDocument(L"/not/there", 'A')->getSize(), 0u);
    EXPECT_EQ(manager().getNumDocuments('D'), 1u);
    EXPECT_FALSE(manager().createDocument(source, 'E'));
    EXPECT_TRUE(make(kOne));
    for (const Cookie& refused : {kOne, Cookie('E', 1), Cookie()})
        EXPECT_FALSE(make(refused));
    EXPECT_FALSE(manager().getDocument(kTwo));
}

TEST_F(DocumentManagerTest, DocumentsAreFoundByDateAndLocationInTheOrderOfTheirCookies) {
    const auto two = make(kTwo), one = make(kOne), other = make(kOther);
    one->setCreationTime(100);
    two->setCreationTime(200);
    EXPECT_THAT(manager().getDocuments(), ElementsAre(other, one, two));
    EXPECT_THAT(manager().getDocuments(DateRange(100, 199)), ElementsAre(one));
    EXPECT_THAT(manager().getDocuments(DateRange(100, 200)), ElementsAre(one, two));
    two->setLocations({L"/b"});
    one->setLocations({L"/a", L"/b"});
    EXPECT_EQ(manager().findDocumentReferringToFile(L"/b"), one);
    EXPECT_FALSE(manager().findDocumentReferringToFile(L""));
}

TEST_F(DocumentManagerTest, PlacesAreOfTheOpenProjectAndOfDocuments) {
    const Cookie project = CurrentProject::getCookie(), edit('E', 1);
    EXPECT_EQ(cutroom::toUtf8(manager().getStorageLocation(project, kOne)), file(kOne));
    EXPECT_EQ(cutroom::toUtf8(manager().getStorageLocation(Cookie(), kOther)), file(kOther));
    EXPECT_EQ(manager().getStorageLocation(Cookie('P', 1), kOne), L"");
    EXPECT_EQ(manager().getStorageLocation(project, edit), L"");
    EXPECT_EQ(manager().getLocalLocation(edit), L"");
    EXPECT_EQ(manager().getCacheLocation(nullptr), L"");
    const auto one = make(kOne);
    ASSERT_TRUE(project_.close().ok());
    for (const auto& place : {manager().getStorageLocation(), manager().getLocalLocation(kOne),
                              manager().getCacheLocation(), manager().getCacheLocation(one)})
        EXPECT_EQ(place, L"");
}

// --- telling -------------------------------------------------------------------------------------

TEST_F(DocumentManagerTest, ChangesReachTheManagersListenersBeforeTheDocumentsOwn) {
    const auto one = make(kOne);
    listen(manager());
    const auto own = one->registerNotification(
        makeCallback<NotifyMsg>([&](const NotifyMsg&) { told_.push_back("own"); }),
        NotifyMsgTypeDictionary::kGeneralChange);
    {
        const ContainerModifier<Document> batch(one, "batch");
        one->setDescription(L"x");
        one->setImported(true);
    }
    manager().handleLogsDeletion({Cookie('E', 5)}, "gone");
    manager().handleLogsModification({{Cookie('E', 6), {}}});
    EXPECT_THAT(told_, ElementsAre("changed D1 32/23 128 'batch'", "own", "logsDeleted E5 'gone'",
                                   "logsModified E6"));
}

// --- files ---------------------------------------------------------------------------------------

TEST_F(DocumentManagerTest, WhatIsSavedIsThereWhenTheProjectOpensAgain) {
    make(kOne, L"one");
    make(kTwo, L"two");
    listen(manager());
    ASSERT_TRUE(manager().saveAll().ok());
    ASSERT_TRUE(manager().saveAll().ok()); // nothing to do
    EXPECT_FALSE(manager().anyDirty());
    const std::string saved = bytesOf(file(kOne));
    const auto kept = manager().getDocument(kTwo);
    kept->setName(L"at exit");
    told_.clear();
    reopen();
    EXPECT_THAT(told_, ElementsAre("saved", "reset"));
    EXPECT_EQ(manager().getDocument(kTwo)->getName(), L"at exit");
    EXPECT_FALSE(manager().anyDirty());
    EXPECT_EQ(textOf(*manager().getDocument(kOne)), saved);
    EXPECT_EQ(kept->save().code(), StatusCode::wrongUsage); // of a project that was closed
    EXPECT_THAT(log_.lines, IsEmpty());
}

TEST_F(DocumentManagerTest, WhoHearsOfAProjectFirstFindsItsDocumentsAndNoOthers) {
    bool found = false;
    const auto entered = CurrentProject::addListener(
        makeCallback<NotifyMsg>([&](const NotifyMsg&) {
            EXPECT_TRUE(manager().saveAll().ok());
            found = manager().exists(kOne);
        }),
        CurrentProject::enteredMsgType()); // before the manager hears of it
    const auto one = make(kOne);
    listen(manager());
    ASSERT_TRUE(project_.close().ok());
    ASSERT_TRUE(make(kTwo)->isDirty());
    told_.clear();
    open();
    EXPECT_TRUE(found);
    EXPECT_NE(manager().getDocument(kOne), one);
    EXPECT_FALSE(manager().exists(kTwo));
    EXPECT_FALSE(cutroom::fileExists(file(kTwo)));
    EXPECT_THAT(told_, ElementsAre("reset"));
}

TEST_F(DocumentManagerTest, DamagedFilesAreNamedAndNeverWrittenOver) {
    make(kTwo, L"two");
    ASSERT_TRUE(manager().saveAll().ok());
    const std::string sound = bytesOf(file(kTwo));
    put(file(kOne), "{\n\"id\": nonsense}");
    put(file(kOther), sound);
    put(path("documents/Copy of it.KvDoc"), sound);
    reopen();
    EXPECT_THAT(manager().getDocuments(), testing::SizeIs(1));
    std::vector<std::string> texts;
    for (const Status& status : manager().getDamaged())
        texts.push_back(status.text());
    ASSERT_THAT(texts, ElementsAre(HasSubstr("A0000000000001.KvDoc: describes D0000000000002"),
                                   HasSubstr("Copy of it.KvDoc: is not named by a cookie"),
                                   HasSubstr("D0000000000001.KvDoc:2: ")));
    EXPECT_EQ(log_.lines.size(), 3u);
    EXPECT_EQ(*manager().scan(), 0);
    EXPECT_EQ(log_.lines.size(), 3u); // told once

    ASSERT_TRUE(make(kOne, L"new"));
    ASSERT_TRUE(manager().saveAll().ok());
    EXPECT_EQ(bytesOf(file(kOne) + ".damaged"), "{\n\"id\": nonsense}");
    EXPECT_THAT(bytesOf(file(kOne)), HasSubstr("\"name\": \"new\""));
    EXPECT_EQ(manager().getDamaged().size(), 2u);
}

TEST_F(DocumentManagerTest, AScanTakesFilesThatCameFromElsewhereOnceTheyAreWhole) {
    const std::string whole = golden("documents/document.KvDoc"), name = file(Cookie('D', 7));
    listen(manager());
    for (std::size_t size = 0; size < whole.size() - 1; ++size) { // without the line feed: sound
        put(name, whole.substr(0, size));
        EXPECT_EQ(*manager().scan(), 0) << size;
        EXPECT_THAT(manager().getDamaged(), testing::SizeIs(1)) << size;
    }
    put(name, whole);
    EXPECT_EQ(*manager().scan(), 1);
    EXPECT_EQ(*manager().scan(), 0);
    EXPECT_THAT(manager().getDamaged(), IsEmpty());
    EXPECT_THAT(told_, ElementsAre("changed D7 2 'scan'"));
    EXPECT_FALSE(manager().anyDirty());
    EXPECT_TRUE(manager().findDocumentReferringToFile(L"//server/film/Drehbuch.pdf"));
}

TEST_F(DocumentManagerTest, ADescriptionThatIsTooLongIsNeitherWrittenNorRead) {
    const auto one = make(kOne);
    one->setDescription(std::wstring(cutroom::DescriptionFiles::kMaxBytes, L'x'));
    EXPECT_THAT(manager().saveAll().text(), HasSubstr("larger than 16 MiB"));
    EXPECT_TRUE(one->isDirty());
    one->setDescription(L"");
    put(file(kTwo), std::string(cutroom::DescriptionFiles::kMaxBytes + 1, ' '));
    EXPECT_EQ(*manager().scan(), 0);
    EXPECT_THAT(manager().getDamaged(), testing::SizeIs(1));
}

TEST_F(DocumentManagerTest, AProjectForReadingOnlyWritesNothing) {
    make(kOne, L"one")->setLocations({cutroom::toWide(outside("a.txt", "a"))});
    reopen(Access::readOnly);
    const auto one = manager().getDocument(kOne);
    EXPECT_FALSE(one->localise().ok());
    EXPECT_FALSE(manager().destroy(kOne, "").ok());
    EXPECT_TRUE(manager().exists(kOne));
    one->setName(L"changed");
    EXPECT_FALSE(manager().saveAll().ok());
    EXPECT_FALSE(one->save().ok());
    EXPECT_THAT(bytesOf(file(kOne)), HasSubstr("\"name\": \"one\""));
    one->setDirty(false);
}

// --- going ---------------------------------------------------------------------------------------

TEST_F(DocumentManagerTest, DestroyingTellsOnceAndLasts) {
    const auto one = make(kOne, L"one"), two = make(kTwo);
    one->setLocations({L"/a"});
    ASSERT_TRUE(manager().saveAll().ok());
    listen(manager());
    EXPECT_EQ(manager().destroy(kOther, "no").code(), StatusCode::notFound);
    EXPECT_TRUE(manager().destroy({kTwo, kOther, kOne, kTwo}, "tidy").ok());
    one->setName(L"ghost"); // no longer of the project
    EXPECT_THAT(told_, ElementsAre("destroyed D2 D1 'tidy'"));
    EXPECT_THAT(manager().getDocuments(), IsEmpty());
    EXPECT_FALSE(manager().findDocumentReferringToFile(L"/a"));
    EXPECT_FALSE(cutroom::fileExists(file(kOne)));
    EXPECT_EQ(one->save().code(), StatusCode::wrongUsage);
    EXPECT_EQ(one->localise().code(), StatusCode::wrongUsage);
    ASSERT_TRUE(manager().saveAll().ok());
    reopen();
    EXPECT_THAT(manager().getDocuments(), IsEmpty());
}

TEST_F(DocumentManagerTest, ADestructionThatFailsTakesNothingAway) {
    std::uint64_t next = 10;
    CookieVec now;
    failEach(
        [&](long) {
            now = {Cookie('D', next++), Cookie('D', next++)};
            for (const Cookie& id : now)
                make(id);
            ASSERT_TRUE(manager().saveAll().ok());
        },
        [&] { return manager().destroy(now, ""); },
        [&](long at, const Status& status) {
            for (const Cookie& id : now)
                EXPECT_EQ(manager().exists(id), !status.ok()) << at;
            ASSERT_TRUE(manager().saveAll().ok()) << at;
            for (const Cookie& id : now)
                EXPECT_EQ(cutroom::fileExists(file(id)), manager().exists(id)) << at;
        });
}

// --- copies in the project -----------------------------------------------------------------------

TEST_F(DocumentManagerTest, LocalisingPutsACopyFirstAndNeverOverAnother) {
    const std::string source = outside("a.b.txt", "content");
    const std::wstring local = manager().getLocalLocation(kOne);
    const auto one = make(kOne);
    EXPECT_EQ(one->localise().code(), StatusCode::notFound);
    one->setLocations({cutroom::toWide(folder_.path()), cutroom::toWide(source)});
    listen(manager());
    for (const bool again : {false, true}) {
        ASSERT_TRUE(one->localise().ok()) << again;
        EXPECT_THAT(told_, ElementsAre("changed D1 32/15 'localise'")) << "once";
    }
    EXPECT_EQ(one->getFileName(), local + L"/a.b.txt");
    EXPECT_EQ(one->getSize(), 7u);
    EXPECT_TRUE(manager().isLocal(kOne));
    ASSERT_TRUE(cutroom::removeFile(cutroom::toUtf8(one->getFileName())).ok());
    ASSERT_TRUE(one->localise().ok()); // is there again, and named once
    EXPECT_EQ(one->getLocations().size(), 3u);

    for (const std::wstring& elsewhere : {local + L"/../../a.b.txt", cutroom::toWide(source)}) {
        one->setLocations({elsewhere});
        EXPECT_FALSE(manager().isLocal(kOne) || manager().isLocal(kTwo));
    }
    outside("a.b.txt", "other content");
    ASSERT_TRUE(one->localise().ok());
    EXPECT_EQ(one->getFileName(), local + L"/a.b (2).txt");
    EXPECT_EQ(bytesOf(cutroom::toUtf8(local + L"/a.b.txt")), "content");
}

} // namespace
