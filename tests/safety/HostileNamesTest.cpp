// Cookies, names and places that try to lead out of a project: no file operation ever does.
#include "bins/AssetAssociationGroupManager.h"
#include "bins/BinManager.h"
#include "bins/DocumentManager.h"
#include "filters/ProjectFilterManager.h"
#include "platform/files/Files.h"
#include "platform/files/GroupCommit.h"
#include "tests/crash/CrashFixture.h"
#include "tests/support/FaultyFiles.h"

using namespace cutroom;
using namespace cutroom::test;

namespace {

// 60 texts: each way out of the project with each thing that may be found there.
std::vector<std::string> hostileTexts() {
    std::vector<std::string> texts;
    for (const char* const way :
         {"../", "../../", "/", "//", "a/../../", "./../", "..\\", "C:\\", "\\\\host\\", "%2e%2e/",
          "~/", "file:///", "..//..//", "\n../", "E0000000000000/../../"})
        for (const char* const goal : {"etc/passwd", "E0A1B2C3D4E5F6", "..", "x.json"})
            texts.push_back(std::string(way) + goal);
    return texts;
}

class HostileNamesTest : public CrashFixture {
protected:
    // Does the work in the open project; what it touches lies in the project.
    void expectInside(const std::string& what, const std::function<void()>& work) {
        FaultyFiles recorder(systemFiles());
        installFileSystem(&recorder);
        work();
        installFileSystem(nullptr);
        for (const std::string& operation : recorder.operations()) {
            const std::string path = operation.substr(operation.find(' ') + 1);
            const bool named = path.size() < operation.size();
            EXPECT_TRUE(!named ||
                        ((path + "/").starts_with(folder_ + "/") && path.find("/..") == path.npos))
                << what << ": " << operation;
        }
        ++tried_;
    }
    void TearDown() override {
        RecordProperty("tried", tried_);
        CrashFixture::TearDown();
    }
    int tried_ = 0;
};

TEST_F(HostileNamesTest, asCookies) {
    begin();
    for (const std::string& text : hostileTexts()) {
        const Cookie cookie(text);
        EXPECT_FALSE(cookie.valid()) << text;
        expectInside(text, [&] {
            EXPECT_FALSE(EditManager::instance().open(cookie)) << text;
            EXPECT_FALSE(EditManager::instance().makeNewEdit(cookie, 1, 1, 1, Kv::FrameRate(25)));
            EXPECT_FALSE(BinManager::instance().getData(cookie)) << text;
            EXPECT_FALSE(BinManager::instance().destroy(cookie, "test").ok()) << text;
            EXPECT_FALSE(DocumentManager::instance().getDocument(cookie)) << text;
            EXPECT_FALSE(DocumentManager::instance().destroy(cookie, "test").ok()) << text;
            EXPECT_FALSE(ProjectFilterManager::instance().getFilter(cookie)) << text;
        });
    }
}

TEST_F(HostileNamesTest, asNamesAndPlaces) {
    begin();
    ProjectFilterManager& filters = ProjectFilterManager::instance();
    const EditPtr edit(edits_[0]);
    const auto bin = BinManager::instance().newBin();
    const auto group = AssetAssociationGroupManager::instance().createGroup(L"a", edits_);
    const Cookie document = DocumentManager::instance().createDocument(L"/none/a", 'D')->getID();
    for (const std::string& text : hostileTexts()) {
        const std::wstring wide = toWide(text);
        expectInside(text, [&] {
            edit->setName(wide);
            edit->setMediaLocations({wide});
            edit->setChanUserName(edit->getId(0), wide);
            bin->setName(wide);
            bin->setExternalID(wide);
            group->setName(wide);
            DocumentManager::instance().getDocument(document)->setName(wide);
            DocumentManager::instance().getDocument(document)->setLocations({wide});
            EXPECT_TRUE(EditManager::instance().flushChanges(false).ok());
            EXPECT_TRUE(BinManager::instance().saveAll().ok());
            EXPECT_TRUE(DocumentManager::instance().saveAll().ok());
            EXPECT_TRUE(AssetAssociationGroupManager::instance().flushChanges().ok());
            EXPECT_TRUE(CurrentProject::setName(wide).ok());
            ProjectDefaults defaults;
            defaults.mixConfiguration = text;
            (void)CurrentProject::setDefaults(defaults);
            (void)EditManager::instance().makeNewEdit(makeNewEditCookie(), 1, 1, 1, {});
            EXPECT_TRUE(filters.saveAll().ok());
        });
    }
}

// The texts stand in files that have no checksum, and as paths in the manifest of a group.
TEST_F(HostileNamesTest, inFiles) {
    begin();
    const Cookie document = DocumentManager::instance().createDocument(L"/none/a", 'D')->getID();
    ASSERT_TRUE(DocumentManager::instance().saveAll().ok());
    end();
    const std::string file = path("documents/" + document.asString() + ".KvDoc");
    const std::string good = bytesOf(file);
    const std::size_t at = good.find(document.asString());
    ASSERT_NE(at, good.npos);
    for (const std::string& text : hostileTexts()) {
        putBytes(file, std::string(good).replace(at, document.asString().size(), text));
        begin(Access::readOnly);
        expectInside(text, [&] {
            EXPECT_EQ(DocumentManager::instance().getDocuments().size(), 0u) << text;
            GroupCommit group(folder_);
            EXPECT_FALSE(group.write("../" + text, "x").ok()) << text;
        });
        end();
    }
}

} // namespace
