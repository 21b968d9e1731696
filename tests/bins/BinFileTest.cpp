#include "bins/BinFileText.h"
#include "bins/DocumentManager.h"
#include "platform/files/CheckedFile.h"
#include "platform/files/KVContainerFile.h"
#include "platform/project/ProjDb.h"
#include "tests/bins/BinProject.h"
#include "tests/bins/ToldRecords.h"

#include <rapidcheck.h>

#include <bit>
#include <cmath>
#include <filesystem>
#include <random>

using namespace cutroom::test;
using cutroom::StatusCode;
using testing::IsEmpty;

namespace {

const std::string kGolden = CUTROOM_TEST_DATA "/bins/";

// A project with edits 1 to 20 and document 3.
class BinFileTest : public BinProject {
protected:
    BinFileTest() {
        for (std::uint64_t i = 1; i <= 20; ++i) {
            projdb::Record record;
            record.cookie = Cookie('E', i);
            EXPECT_TRUE(projdb::insert(record).ok());
        }
        DocumentManager::instance().createDocument(Cookie('D', 3));
    }
    // A bin, managed by nobody, whose file is a copy of the given one. Not loaded.
    static Kv::Ptr<BinData> binOn(const std::string& bytes) {
        auto bin = Kv::makePtr<BinData>();
        EXPECT_TRUE(cutroom::writeFile(fileOf(bin->getID()), bytes).ok());
        return bin;
    }
    static Kv::Ptr<BinData> loaded(const std::string& golden) {
        const Kv::Ptr<BinData> bin = binOn(file(kGolden + golden));
        const cutroom::Status status = bin->load();
        EXPECT_TRUE(status.ok() && bin->valid()) << status.text();
        return bin;
    }
    static std::vector<std::string> filesInGroups() {
        return cutroom::listFiles(cutroom::toUtf8(getProjectGroupsDirectory())).value();
    }
};

BinItem item(const Cookie& asset, double time, double in, double out, XY<float> position) {
    BinItem made(asset, time);
    made.markIn = in;
    made.markOut = out;
    made.position = position;
    return made;
}

// --- forms of the file ---------------------------------------------------------------------------

TEST_F(BinFileTest, OfVersion2LoadsAndIsSavedAsTheSameBytes) {
    const Kv::Ptr<BinData> bin = loaded("version-2.bin");
    EXPECT_EQ(bin->getName() + bin->getExternalID(), L"D\u00E4iliesreel 7");
    EXPECT_EQ(bin->getModificationTime(), 2000u);
    EXPECT_EQ(bin->getCreationTime(), 1000u);
    EXPECT_TRUE(bin->getPermanent() && bin->getAutoPosition());
    EXPECT_EQ(bin->getDimensions(), (XY<int>{640, 480}));
    EXPECT_EQ(bin->getTileSize(), Kv::ImageSize::Presets::Large);
    EXPECT_EQ(bin->getViewType(), eGalleryViews::Table);
    ASSERT_EQ(bin->numItems(), 4u);
    EXPECT_TRUE(bin->getItem(0).equals(item(Cookie('E', 1), 12.48, 1e99, 1e99, {1.5f, -2})));
    EXPECT_TRUE(bin->getItem(1).equals(item(Cookie('E', 2), 0, 1, 2.5, {-1, -1})));
    EXPECT_TRUE(bin->getItem(2).equals(item(Cookie('D', 3), 0, 1e99, 3, {0.1f, 1e9f})));
    EXPECT_TRUE(bin->getItem(3).equals(item(Cookie('G', 4), 0, 1e99, 1e99, {-12345, -12345})));
    EXPECT_FALSE(bin->isDirty());
    for (int i = 0; i < 2; ++i) {
        EXPECT_TRUE(bin->save().ok());
        EXPECT_EQ(file(fileOf(bin->getID())), file(kGolden + "version-2.bin"));
    }
}

TEST_F(BinFileTest, WithoutVersionFallsBackWhereTheFileIsSilent) {
    const Kv::Ptr<BinData> bin = loaded("version-1.bin");
    EXPECT_EQ(bin->getVersion(), cutroom::kBinVersionUnnamed);
    EXPECT_EQ(bin->getViewType(), eGalleryViews::Image); // "Gallery" is no view
    EXPECT_EQ(bin->getTileSize(), Kv::ImageSize::Presets::Small);
    EXPECT_FALSE(bin->getAutoPosition()); // whatever the preference says
    EXPECT_EQ(bin->getCreationTime(), 500u);
    ASSERT_EQ(bin->numItems(), 2u); // without those that are gone, each once
    BinItem first = item(Cookie('E', 2), 1, 1e99, 1e99, {3, 4});
    first.vobId("1.2.3");
    EXPECT_TRUE(bin->getItem(0).equals(first));
    EXPECT_TRUE(bin->getItem(1).equals(item(Cookie('E', 1), 2, 7, 1e99, {-12345, -12345})));
    EXPECT_EQ(bin->findIndex(Cookie('E', 1)), 1);
    EXPECT_TRUE(bin->save().ok());
    const KVContainerFile::Reader written(fileOf(bin->getID()));
    EXPECT_EQ(written.getAttribute("Version"), "2");
    EXPECT_EQ(written.getNumItems(), 2u);
    EXPECT_EQ(written.getText(0, written.getFieldIndex("ID")), ""); // read, never written
    EXPECT_EQ(bin->getVersion(), cutroom::kBinVersionUnnamed);
}

TEST_F(BinFileTest, OfPixelsIsTurnedIntoTiles) {
    const Kv::Ptr<BinData> bin = loaded("version-0.bin");
    EXPECT_EQ(bin->getVersion(), cutroom::kBinVersionPixels);
    EXPECT_EQ(bin->getTileSize(), Kv::ImageSize::Presets::Normal);
    EXPECT_EQ(bin->getItem(0).position, (XY<float>{1, 1}));
    EXPECT_EQ(bin->getItem(1).position, (XY<float>{0, 0}));
    EXPECT_FALSE(bin->getItem(0).hasMark());
    EXPECT_EQ(bin->getCreationTime(), 0u);
    EXPECT_TRUE(bin->save().ok());
    EXPECT_FALSE(KVContainerFile::Reader(fileOf(bin->getID())).hasAttribute("TileDimensions"));
    EXPECT_TRUE(bin->load().ok());
    EXPECT_EQ(bin->getVersion(), cutroom::kBinVersionCurrent);
    EXPECT_EQ(bin->getItem(0).position, (XY<float>{1, 1}));
}

TEST_F(BinFileTest, KeepsWhatALaterVersionWroteAndDropsWhatWasTakenAway) {
    const Kv::Ptr<BinData> bin = loaded("later.bin");
    EXPECT_EQ(bin->getVersion(), 3);
    EXPECT_EQ(bin->getTileSize(), Kv::ImageSize::getDefaultTileSize());
    bin->setExternalID(L"");
    bin->add(Cookie('E', 2));
    for (int i = 0; i < 2; ++i)
        EXPECT_TRUE(bin->save().ok());
    const KVContainerFile::Reader written(fileOf(bin->getID()));
    EXPECT_EQ(written.getAttribute("Mood"), "blue");
    EXPECT_EQ(written.getAttribute("Version"), "2");
    EXPECT_FALSE(written.hasAttribute("ExtID"));
    EXPECT_EQ(written.getDouble(0, written.getFieldIndex("Weight")), 2.5);
}

TEST_F(BinFileTest, OfOddFieldsIsReadByPlaceAndName) {
    // The third field is the time whatever its name; a legacy size counts more than the version;
    // fields that cannot be read count as absent.
    const Kv::Ptr<BinData> bin = loaded("odd-fields.bin");
    EXPECT_EQ(bin->getVersion(), cutroom::kBinVersionPixels);
    EXPECT_EQ(bin->getTileSize(), Kv::ImageSize::Presets::Small);
    EXPECT_EQ(bin->getViewType(), eGalleryViews::Image);
    EXPECT_EQ(bin->getDimensions(), XY<int>());
    EXPECT_FALSE(bin->getAutoPosition() || bin->getPermanent() || bin->getModificationTime());
    ASSERT_EQ(bin->numItems(), 2u); // the document is not there, other kinds are not looked for
    EXPECT_TRUE(bin->getItem(0).equals(item(Cookie('X', 1), 4, 1e99, 6, {124, 110})));
    EXPECT_EQ(bin->getItem(1).asset, Cookie('E', 1));
    EXPECT_TRUE(bin->save().ok());
    const KVContainerFile::Reader written(fileOf(bin->getID()));
    EXPECT_FALSE(written.hasAttribute("Created") || written.hasAttribute("ExtID"));
}

TEST(BinFileText, ReadsPlacesAndSizesUpToWhatIsNoNumber) {
    const float none = -12345;
    const struct {
        const char* text;
        XY<float> position;
        std::optional<XY<int>> size;
    } rows[] = {
        {"(1.5,-2)", {1.5f, -2}, XY<int>{1, -2}},
        {"( 640,+480)", {640, 480}, XY<int>{640, 480}},
        {"(1,2", {1, 2}, XY<int>{1, 2}},
        {"(1e2x,3)tail", {100, 3}, XY<int>{1, 3}},
        {"", {none, none}, {}},
        {"(1 2)", {none, none}, {}},
        {"1,2)", {none, none}, {}},
        {"(1,2,3)", {none, none}, {}},
        {"(,2)", {none, 2}, {}},
        {"(+-1,nan)", {none, none}, {}},
        {"(99999999999,1)", {99999999999.0f, 1}, {}},
        {"(12345.678905,1)", {12345.678905f, 1}, XY<int>{12345, 1}},
        {"(-12345,1)", {none, 1}, {}},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(cutroom::readPosition(row.text), row.position) << row.text;
        EXPECT_EQ(cutroom::readSize(row.text), row.size) << row.text;
    }
    EXPECT_EQ(cutroom::BoolFromString("True"), std::nullopt);
}

TEST(BinFileText, ReadsEveryPlaceThatIsWrittenAsItWas) {
    std::mt19937 random(3);
    for (int i = 0; i < 100000; ++i) {
        // Places of any magnitude, and some as a gallery has them.
        const float any = std::bit_cast<float>(static_cast<std::uint32_t>(random()));
        const float near = static_cast<float>(random() % 4000000) / static_cast<float>(1 + i % 997);
        const XY<float> position{std::isfinite(any) ? any : 0.0f, i % 2 == 0 ? near : -near};
        std::string text;
        cutroom::appendPosition(text, position);
        ASSERT_EQ(cutroom::readPosition(text), position) << text;
    }
}

TEST(GalleryViews, OfNewBinsAreHybridUnlessTheUserLikesAnother) {
    const cutroom::EmbeddedHost host;
    EXPECT_EQ(getDefaultGalleryView(), eGalleryViews::Hybrid);
    for (const auto view : {eGalleryViews::Table, eGalleryViews::None}) {
        setDefaultGalleryView(view);
        EXPECT_EQ(getDefaultGalleryView(), view ? view : eGalleryViews::Hybrid);
    }
}

// --- any bin comes back --------------------------------------------------------------------------

rc::Gen<BinItem> anyItem() {
    const auto seconds = rc::gen::map(rc::gen::arbitrary<std::int32_t>(),
                                      [](std::int32_t n) { return n == -24 ? 0.5 : n / 24.0; });
    const auto mark = rc::gen::oneOf(rc::gen::just(kNoTime), seconds);
    return rc::gen::apply(
        [](char type, std::uint64_t number, double time, double in, double out, double x) {
            const XY<float> place{static_cast<float>(x), static_cast<float>(time)};
            return item(Cookie(type, number), time, in, out, x < 0 ? BinItem::kNotPlaced : place);
        },
        rc::gen::element('E', 'G', 'M', 'X'), rc::gen::inRange<std::uint64_t>(1, 21), seconds, mark,
        mark, seconds);
}

TEST_F(BinFileTest, AnyBinComesBackAndIsSavedAsTheSameBytes) {
    EXPECT_TRUE(rc::check(
        [](const std::vector<char32_t>& name, bool on, int view, std::pair<int, int> panel) {
            const XY<int> size{panel.first, panel.second};
            BinData bin, again;
            bin.setName(cutroom::toWide(cutroom::toUtf8(std::wstring(name.begin(), name.end()))));
            bin.addModifications(ContainerBase::kModCreated);
            bin.setPermanent(on);
            bin.setAutoPosition(!on);
            bin.setViewType(static_cast<eGalleryViews::eGalleryView>(1 + (view & 3)));
            bin.setTileSize(static_cast<Kv::ImageSize::Presets::Preset>(1 + (view >> 2 & 3)));
            bin.setDimensions(size == XY<int>{-12345, -12345} ? XY<int>() : size);
            bin.setContents(*rc::gen::uniqueBy<BinData::Items>(
                anyItem(), [](const BinItem& one) { return one.asset; }));
            RC_ASSERT(bin.save().ok());
            RC_ASSERT(!bin.isDirty());
            RC_ASSERT(again.load(bin.getID()).ok());
            RC_ASSERT(again.getName() == bin.getName());
            RC_ASSERT(again.getPermanent() == on && again.getAutoPosition() == !on);
            RC_ASSERT(again.getViewType() == bin.getViewType());
            RC_ASSERT(again.getTileSize() == bin.getTileSize());
            RC_ASSERT(again.getDimensions() == bin.getDimensions());
            RC_ASSERT(again.getModificationTime() == bin.getModificationTime());
            RC_ASSERT(again.numItems() == bin.numItems());
            for (unsigned i = 0; i < bin.numItems(); ++i)
                RC_ASSERT(again.getItem(i).equals(bin.getItem(i)));
            RC_ASSERT(again.save().ok());
            RC_ASSERT(file(fileOf(again.getID())) == file(fileOf(bin.getID())));
        }));
}

// --- damage and failure --------------------------------------------------------------------------

TEST_F(BinFileTest, AFileThatCannotBeReadLeavesTheBinAsItWas) {
    const Kv::Ptr<BinData> bin = loaded("version-2.bin");
    bin->add(Cookie('E', 7));
    ToldRecords told(*bin);
    const std::string path = fileOf(bin->getID()), sound = file(path);
    const auto expectUntouched = [&](const std::string& bytes) {
        ASSERT_TRUE(cutroom::writeFile(path, bytes, cutroom::Backup::none).ok());
        const cutroom::Status status = bin->load();
        ASSERT_EQ(status.code(), StatusCode::damaged);
        ASSERT_EQ(status.file(), path);
        ASSERT_FALSE(bin->valid() || bin->isDirty());
        ASSERT_EQ(bin->numItems(), 5u);
    };
    for (std::size_t size = 0; size < sound.size(); ++size)
        expectUntouched(sound.substr(0, size));
    for (std::size_t bit = 0; bit < sound.size() * 8; ++bit) {
        std::string bytes = sound;
        bytes[bit / 8] = static_cast<char>(bytes[bit / 8] ^ (1 << (bit % 8)));
        expectUntouched(bytes);
    }
    EXPECT_THAT(told.texts, IsEmpty());
    EXPECT_EQ(bin->load(Cookie('G', 77)).code(), StatusCode::notFound);
    EXPECT_FALSE(bin->load(L"").ok() || BinData(Cookie('G', 77)).valid());
}

TEST_F(BinFileTest, ADamagedFileIsMovedAsideByASave) {
    const auto movedAside = [](const BinData& bin) {
        return file(fileOf(bin.getID()) + ".damaged") == "junk";
    };
    const Kv::Ptr<BinData> bin = binOn("junk"), other = binOn("junk"), fresh = binOn("junk");
    EXPECT_FALSE(bin->load().ok());
    EXPECT_TRUE(bin->save().ok() && movedAside(*bin));
    EXPECT_TRUE(bin->load().ok() && bin->valid());
    // The file of another bin, whose cookie the bin takes once its own file is known to be sound.
    bin->setID(other->getID());
    EXPECT_TRUE(bin->save().ok() && movedAside(*other));
    // A bin that was not looked at yet, and one that is staged.
    fresh->add(Cookie('E', 1));
    const auto image = fresh->takeForSaving();
    ASSERT_TRUE(image.ok());
    EXPECT_EQ(image->path, fileOf(fresh->getID()));
    EXPECT_TRUE(movedAside(*fresh));
    EXPECT_FALSE(cutroom::fileExists(image->path) || fresh->isDirty());
}

TEST_F(BinFileTest, AFileOfALaterFormOrThatCannotBeLookedAtIsLeftAlone) {
    const Kv::Ptr<BinData> bin =
        binOn(cutroom::CheckedFile::wrap("container", 2, "of another time"));
    const std::string later = file(fileOf(bin->getID()));
    bin->add(Cookie('E', 1));
    EXPECT_EQ(bin->save().code(), StatusCode::failed);
    EXPECT_EQ(file(fileOf(bin->getID())), later);
    EXPECT_TRUE(bin->isDirty());
    // So many unknown attributes that there is no room for those that are written.
    std::vector<std::string> names;
    std::vector<KVContainerFile::ItemField> fields;
    for (int i = 0; i < 64; ++i)
        names.push_back("field " + std::to_string(i));
    for (const std::string& name : names)
        fields.push_back({name.c_str(), 'a'});
    fields.push_back({nullptr, 0});
    EXPECT_TRUE(KVContainerFile::Writer(fields.data()).save(fileOf(bin->getID())).ok());
    EXPECT_TRUE(bin->load().ok());
    EXPECT_EQ(bin->save().code(), StatusCode::failed);
    EXPECT_EQ(bin->takeForSaving().status().code(), StatusCode::failed);
    EXPECT_TRUE(bin->load().ok());
    std::filesystem::remove(fileOf(bin->getID()));
    std::filesystem::create_directory(fileOf(bin->getID()));
    EXPECT_FALSE(bin->save().ok());
    EXPECT_EQ(BinData(L"x").save(Cookie('E', 1)).code(), StatusCode::notFound);
}

TEST_F(BinFileTest, ASaveThatFailsAnywhereLeavesOldOrNew) {
    const Kv::Ptr<BinData> bin = loaded("later.bin"); // is read again when it is saved
    const std::string path = fileOf(bin->getID());
    EXPECT_TRUE(bin->save().ok());
    for (const auto span : {FaultyFiles::Span::once, FaultyFiles::Span::allForEver}) {
        bool struck = true;
        for (long at = 0; struck; ++at) {
            const std::string old = file(path);
            bin->setName(bin->getName() + L"x");
            files_.arm(at, span);
            const cutroom::Status saved = bin->save();
            struck = files_.struck();
            files_.disarm();
            EXPECT_EQ(bin->isDirty(), !saved.ok());
            EXPECT_EQ(filesInGroups().size(), 2u); // the file and its backup
            const KVContainerFile::Reader now(path);
            ASSERT_TRUE(now.valid());
            const bool isNew = now.getName() == cutroom::toUtf8(bin->getName());
            EXPECT_TRUE(isNew || (!saved && file(path) == old));
            EXPECT_TRUE(bin->save().ok());
            EXPECT_EQ(KVContainerFile::Reader(path).getName(), cutroom::toUtf8(bin->getName()));
            EXPECT_EQ(KVContainerFile::Reader(path).getAttribute("Mood"), "blue");
        }
    }
}

TEST_F(BinFileTest, AChangeThatWaitsForTheSaveIsNotLost) {
    const Kv::Ptr<BinData> bin = loaded("version-2.bin");
    bin->clear();
    EXPECT_TRUE(bin->takeForSaving().ok() && !bin->isDirty());
    bin->add(Cookie('E', 1)); // before it is written
    EXPECT_TRUE(bin->save(Cookie('G', 50)).ok());
    EXPECT_EQ(BinData(Cookie('G', 50)).numItems(), 1u);
    EXPECT_TRUE(bin->isDirty()); // writing another cookie's file does not save it
}

} // namespace
