#include "bins/BinFile.h"

#include "bins/BinFileText.h"
#include "bins/DocumentManager.h"
#include "bins/PlaceTable.h"
#include "platform/files/Files.h"
#include "platform/project/ProjDb.h"

#include <algorithm>
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
constexpr char kTileDimensions[] = "TileDimensions", kSyncedSources[] = "SYNCED_SOURCES";

// A mark that is not set, in the file.
constexpr double kUnsetMark = -1.0;

// Every attribute that this or an earlier version writes: one that is left out now was dropped on
// purpose and is not carried over from the older file. Never destroyed, as bins may be saved by
// static objects.
const std::vector<std::string_view>& knownAttributes() {
    static const auto& names = *new std::vector<std::string_view>{
        kSize,    kTileSize, kView,  kVersion,        kAutoPosition,
        kModTime, kCreated,  kExtID, kTileDimensions, kSyncedSources};
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

// Where the fields of an item lie; -1 for one that the file lacks.
struct Places {
    explicit Places(const Reader& in)
        : fields(static_cast<int>(in.getNumFields())), pos(in.getFieldIndex("Pos")),
          mark(in.getFieldIndex("Mark")), markOut(in.getFieldIndex("Mark Out")),
          id(in.getFieldIndex("ID")) {}

    std::string_view text(const Reader::Value* values, int field) const {
        return has(field) ? values[field].text : "";
    }
    double number(const Reader::Value* values, int field, double otherwise) const {
        return has(field) && values[field].isNumber ? values[field].number : otherwise;
    }

    const int fields, pos, mark, markOut, id;

private:
    bool has(int field) const { return field >= 0 && field < fields; }
};

// Every item of the file, in its order. `assets` gets their assets alone, packed, for look-ups that
// need nothing else of the items.
Status readItems(const Reader& in, BinContents::Items& items, CookieVec& assets) {
    items.reserve(in.getNumItems());
    assets.reserve(in.getNumItems());
    const Places at(in);
    IdRow ids;
    return in.forEachItem([&](const Reader::Value* values) {
        const double time = at.number(values, kTime, 0);
        const Cookie& asset = assets.emplace_back(at.text(values, kCookie));
        BinItem& made = items.emplace_back(asset, std::isfinite(time) ? time : 0, ids);
        made.markIn = readMark(at.number(values, at.mark, kUnsetMark));
        made.markOut = readMark(at.number(values, at.markOut, kUnsetMark));
        made.position = readPosition(at.text(values, at.pos));
        if (const std::string_view vob = at.text(values, at.id); !vob.empty())
            made.vobId(LightweightString<char>(vob));
    });
}

// Tells of each asset that is no edit whether its item is kept.
class OtherAssets {
public:
    explicit OtherAssets(const CookieVec& assets) : assets_(assets) {
        places_.reserve(assets.size(), at_);
    }
    bool keeps(std::size_t i) {
        if (i + kAhead < assets_.size())
            places_.prefetch(assets_[i + kAhead]);
        const CookieType type = assets_[i].type();
        if ((type == 'D' || type == 'A') && !DocumentManager::instance().exists(assets_[i]))
            return false;
        return places_.insert(assets_[i], i, at_) == places_.kNone;
    }

private:
    static constexpr std::size_t kAhead = 24; // looks that memory does at a time

    struct At {
        const CookieVec& assets;
        const Cookie& operator()(std::size_t place) const { return assets[place]; }
    };
    const CookieVec& assets_;
    const At at_{assets_};
    PlaceTable<Cookie> places_;
};

// Tells of each asset whether its item is kept: the first of each that is there. Other kinds than
// edits and documents always are.
std::vector<bool> keptOf(const CookieVec& assets) {
    const auto isEdit = [](const Cookie& asset) { return asset.type() == 'E'; };
    if (std::all_of(assets.begin(), assets.end(), isEdit)) // as in most bins
        return projdb::firstPresent(assets);
    CookieVec edits, rest;
    std::partition_copy(assets.begin(), assets.end(), std::back_inserter(edits),
                        std::back_inserter(rest), isEdit);
    const std::vector<bool> keptEdits = projdb::firstPresent(edits);
    OtherAssets others(rest);
    std::vector<bool> kept(assets.size());
    for (std::size_t i = 0, edit = 0; i < assets.size(); ++i)
        kept[i] = isEdit(assets[i]) ? keptEdits[edit++] : others.keeps(i - edit);
    return kept;
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
    const Reader in(fileName, Reader::Access::inOrder);
    if (!in.valid())
        return in.status();
    BinFile file;
    CookieVec assets;
    if (Status read = readItems(in, file.contents.items, assets); !read)
        return read;
    readForm(in, file.contents);
    file.name = toWide(in.getName());
    file.contents.permanent = in.getPermanent();
    file.externalId = toWide(in.getAttribute(kExtID));
    file.modified = readSeconds(in, kModTime);
    file.created = readSeconds(in, kCreated);
    if (file.created == 0)
        file.created = file.modified;
    const std::vector<bool> kept = keptOf(assets);
    if (std::size_t place = 0; std::find(kept.begin(), kept.end(), false) != kept.end())
        std::erase_if(file.contents.items, [&](const BinItem&) { return !kept[place++]; });
    if (file.contents.version == kBinVersionPixels)
        convertPixels(in, file.contents);
    file.contents.dimensions = readSize(in.getAttribute(kSize)).value_or(XY<int>());
    file.contents.view = fromPersistableString(in.getAttribute(kView));
    if (file.contents.view == eGalleryViews::None)
        file.contents.view = eGalleryViews::Image;
    file.contents.autoPosition = BoolFromString(in.getAttribute(kAutoPosition)).value_or(false);
    file.contents.syncedSources = in.getAttribute(kSyncedSources);
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
    if (!contents.syncedSources.empty())
        writer_.addAttribute(kSyncedSources, contents.syncedSources);
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
