#include "bins/BinFile.h"

#include "bins/BinFileText.h"
#include "bins/DocumentManager.h"
#include "platform/files/Files.h"
#include "platform/project/ProjDb.h"

#include <cmath>
#include <iterator>
#include <limits>
#include <string_view>
#include <utility>
#include <vector>

namespace cutroom {

namespace {

using Reader = KVContainerFile::Reader;

constexpr KVContainerFile::ItemField kFields[] = {
    {"Cookie", 'a'},   {"Pos", 'a'}, {"Time", 'f'}, {"Mark", 'f'},
    {"Mark Out", 'f'}, {"ID", 'a'},  {"", 0},
};
constexpr int kCookie = 0, kPos = 1, kTime = 2, kMark = 3, kMarkOut = 4;

constexpr char kSize[] = "Size", kTileSize[] = "TileSize", kView[] = "View";
constexpr char kVersion[] = "Version", kAutoPosition[] = "AutoPosition";
constexpr char kModTime[] = "ModTime", kCreated[] = "Created", kExtID[] = "ExtID";
constexpr char kTileDimensions[] = "TileDimensions";

// A mark that is not set, in the file.
constexpr double kUnsetMark = -1.0;

// Every attribute that is written or was, so that none is kept that was meant to go.
const std::vector<std::string_view>& knownAttributes() {
    static const std::vector<std::string_view> names = {kSize,    kTileSize,     kView,
                                                        kVersion, kAutoPosition, kModTime,
                                                        kCreated, kExtID,        kTileDimensions};
    return names;
}

std::uint32_t readSeconds(const Reader& in, const char* name) {
    const long long value = in.getIntAttribute(name, 0);
    return value > 0 && value <= std::numeric_limits<std::uint32_t>::max()
               ? static_cast<std::uint32_t>(value)
               : 0;
}

double readMark(double stored) noexcept {
    return stored == kUnsetMark || !std::isfinite(stored) ? kNoTime : stored;
}

// Tile size and version; files before versions name two sizes in another way.
void readForm(const Reader& in, BinContents& contents) {
    const long long version = in.getIntAttribute(kVersion, kBinVersionUnnamed);
    contents.version = version >= 0 && version <= std::numeric_limits<int>::max()
                           ? static_cast<eBinVersion>(version)
                           : kBinVersionUnnamed;
    const std::string size = in.getAttribute(kTileSize);
    contents.tileSize = Kv::ImageSize::getPresetFromPersistableString(size);
    if (contents.tileSize != Kv::ImageSize::Presets::None)
        return;
    if (size == "Normal" || size == "Small") {
        contents.tileSize = static_cast<Kv::ImageSize::Presets::Preset>(size == "Normal" ? 2 : 1);
        contents.version = kBinVersionPixels;
    } else {
        contents.tileSize = Kv::ImageSize::getDefaultTileSize();
    }
}

// Reads every item of an asset that no item before it has.
void readItems(const Reader& in, BinFile& file) {
    BinContents::Items& items = file.contents.items;
    const auto keyAt = [&items](std::size_t place) -> const Cookie& { return items[place].asset; };
    const int pos = in.getFieldIndex("Pos"), mark = in.getFieldIndex("Mark");
    const int markOut = in.getFieldIndex("Mark Out"), id = in.getFieldIndex("ID");
    items.reserve(in.getNumItems());
    file.places.reserve(in.getNumItems(), keyAt);
    for (std::size_t i = 0; i < in.getNumItems(); ++i) {
        const double time = in.getDouble(i, kTime, 0);
        BinItem& item =
            items.emplace_back(Cookie(in.getText(i, kCookie)), std::isfinite(time) ? time : 0.0);
        if (file.places.insert(item.asset, items.size() - 1, keyAt) != file.places.kNone) {
            items.pop_back();
            continue;
        }
        item.markIn = readMark(in.getDouble(i, mark, kUnsetMark));
        item.markOut = readMark(in.getDouble(i, markOut, kUnsetMark));
        item.position = readPosition(in.getText(i, pos));
        if (const std::string_view vob = in.getText(i, id); !vob.empty())
            item.vobId(LightweightString<char>(vob));
    }
}

// Takes out the items of edits and documents that are no longer there.
void dropAbsent(BinFile& file) {
    BinContents::Items& items = file.contents.items;
    CookieVec edits;
    edits.reserve(items.size());
    for (const BinItem& item : items)
        if (item.getType() == 'E')
            edits.push_back(item.asset);
    const std::vector<bool> present = projdb::arePresent(edits);
    std::size_t edit = 0;
    const std::size_t dropped = std::erase_if(items, [&](const BinItem& item) {
        if (item.getType() == 'E')
            return !present[edit++];
        if (item.getType() == 'D' || item.getType() == 'A')
            return !DocumentManager::instance().exists(item.asset);
        return false;
    });
    if (dropped != 0)
        file.places.clear();
}

// Places in pixels become places in tiles.
void convertPixels(const Reader& in, BinContents& contents) {
    const std::optional<XY<int>> tile = readSize(in.getAttribute(kTileDimensions));
    if (!tile || tile->x == -7 || tile->y == -6)
        return;
    const auto width = static_cast<float>(tile->x), height = static_cast<float>(tile->y);
    for (BinItem& item : contents.items)
        item.position = {(item.position.x - 17.0f) / (width + 7.0f),
                         (item.position.y - 44.0f) / (height + 6.0f)};
}

} // namespace

Result<BinFile> BinFile::read(const LightweightString<wchar_t>& fileName) {
    const Reader in(fileName);
    if (!in.valid())
        return in.status();
    BinFile file;
    readForm(in, file.contents);
    file.name = toWide(in.getName());
    file.contents.permanent = in.getPermanent();
    file.externalId = toWide(in.getAttribute(kExtID));
    file.modified = readSeconds(in, kModTime);
    file.created = readSeconds(in, kCreated);
    if (file.created == 0)
        file.created = file.modified;
    readItems(in, file);
    dropAbsent(file);
    if (file.contents.version == kBinVersionPixels)
        convertPixels(in, file.contents);
    file.contents.dimensions = readSize(in.getAttribute(kSize)).value_or(XY<int>());
    file.contents.view = fromPersistableString(in.getAttribute(kView));
    if (file.contents.view == eGalleryViews::None)
        file.contents.view = eGalleryViews::Image;
    file.contents.autoPosition = BoolFromString(in.getAttribute(kAutoPosition)).value_or(false);
    file.holdsUnknown = in.holdsMoreThan(kFields, knownAttributes());
    return file;
}

// --- writing -------------------------------------------------------------------------------------

BinFileWriter::BinFileWriter() : writer_(kFields) {}

Status BinFileWriter::replace(const std::string& path) {
    auto older = std::make_unique<Reader>(path);
    if (older->valid()) {
        older_ = std::move(older);
        keepsUnknown_ = older_->holdsMoreThan(kFields, knownAttributes());
        writer_.keepUnknown(*older_, knownAttributes());
        return {};
    }
    if (older->status().code() == StatusCode::notFound)
        return {};
    if (older->status().code() != StatusCode::damaged)
        return older->status();
    const Result<std::string> moved = moveAside(path);
    return moved ? Status() : moved.status();
}

void BinFileWriter::fill(const std::string& name, const std::string& externalId,
                         std::uint32_t created, std::uint32_t modified,
                         const BinContents& contents) {
    writer_.setName(name);
    writer_.setPermanent(contents.permanent);
    writer_.addAttribute(kSize, sizeText(contents.dimensions));
    writer_.addAttribute(kTileSize, Kv::ImageSize::getPersistableString(contents.tileSize));
    writer_.addAttribute(kView, getPersistableString(contents.view));
    writer_.addAttribute(kVersion, "2");
    writer_.addAttribute(kAutoPosition, BoolAsString(contents.autoPosition));
    writer_.addAttribute(kModTime, toText(static_cast<unsigned long long>(modified)));
    if (created != 0)
        writer_.addAttribute(kCreated, toText(static_cast<unsigned long long>(created)));
    if (!externalId.empty())
        writer_.addAttribute(kExtID, externalId);
    writer_.reserve(contents.items.size());
    std::string position;
    for (const BinItem& item : contents.items) {
        position.clear();
        appendPosition(position, item.position);
        writer_.addItem(item.asset.asString());
        writer_.setField(kPos, position);
        writer_.setField(kTime, item.time);
        writer_.setField(kMark, item.markIn == kNoTime ? kUnsetMark : item.markIn);
        writer_.setField(kMarkOut, item.markOut == kNoTime ? kUnsetMark : item.markOut);
    }
}

} // namespace cutroom
