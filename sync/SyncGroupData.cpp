#include "sync/SyncGroupData.h"

#include "bins/BinBatch.h"
#include "bins/BinManager.h"
#include "platform/base/Strings.h"

#include <algorithm>

namespace {

// Registers the maker of groups before `main`, so that no embedder has to.
[[maybe_unused]] const cutroom::BinMaker makerBefore =
    cutroom::installBinMaker('M', [] { return Kv::Ptr<BinData>(new SyncGroupData); });

bool isKnown(const SyncGroupData::Relationships& relationships, const Cookie& clip) {
    return std::any_of(relationships.begin(), relationships.end(),
                       [&](const auto& entry) { return entry.first == clip; });
}

} // namespace

SyncGroupData::~SyncGroupData() = default;

Kv::Ptr<SyncGroupData> SyncGroupData::make(const LightweightString<wchar_t>& name) {
    const Kv::Ptr<BinData> made = BinManager::instance().newBin(Cookie::make('M'));
    if (made)
        made->setName(name);
    return Kv::Ptr<SyncGroupData>(dynamic_cast<SyncGroupData*>(made.get()));
}

Kv::Ptr<SyncGroupData> SyncGroupData::open(const Cookie& group) {
    const Kv::Ptr<BinData> bin =
        group.type() == 'M' ? BinManager::instance().getData(group) : Kv::Ptr<BinData>();
    return Kv::Ptr<SyncGroupData>(dynamic_cast<SyncGroupData*>(bin.get()));
}

bool SyncGroupData::canAccomodate(CookieType type) const { return type == 'E'; }

CookieVec SyncGroupData::clips() const {
    const Reading reading(*this);
    CookieVec clips;
    for (const BinItem& item : items())
        clips.push_back(item.asset);
    return clips;
}

// --- where the clips are viewed ------------------------------------------------------------------

// Sets the place in every item of the clip. Called under the locks of a change.
bool SyncGroupData::takePlace(const ClipPlace& place) {
    bool changed = false;
    for (auto item = find(place.clip); item != end(); ++item) {
        if (item->asset != place.clip ||
            (item->time == place.time && item->markIn == place.markIn &&
             item->markOut == place.markOut))
            continue;
        item->time = place.time;
        item->markIn = place.markIn;
        item->markOut = place.markOut;
        changed = true;
    }
    return changed;
}

void SyncGroupData::takePlaces(const std::vector<ClipPlace>& places, bool movedAlone) {
    const Change change(*this);
    const cutroom::BinBatch batch(*this);
    Modification moved(kModUncounted);
    for (const ClipPlace& place : places)
        if (takePlace(place))
            moved.add(place.clip);
    if (!moved.getCookies().empty())
        setDirty(true);
    if (movedAlone)
        addModifications(kModClipMovedAlone);
    addModification(moved);
}

// --- how the clips lie to each other -------------------------------------------------------------

void SyncGroupData::storeRelationships(const Relationships& relationships) {
    setSyncedSources(cutroom::relationshipsText(relationships));
}

SyncGroupData::Relationships SyncGroupData::relationships() const {
    return cutroom::readRelationships(getSyncedSources());
}

namespace cutroom {

std::string relationshipsText(const SyncGroupData::Relationships& relationships) {
    std::string text;
    for (const auto& [clip, seconds] : relationships)
        text += (text.empty() ? "" : "|") + clip.asString() + '=' + toText(seconds);
    return text;
}

SyncGroupData::Relationships readRelationships(std::string_view text) {
    SyncGroupData::Relationships relationships;
    for (const std::string& entry : split(text, '|')) {
        const std::size_t sign = entry.find('=');
        const auto clip = Cookie::fromString(std::string_view(entry).substr(0, sign));
        const auto seconds = sign == entry.npos
                                 ? std::nullopt
                                 : parseDouble(std::string_view(entry).substr(sign + 1));
        if (clip && clip->valid() && seconds && isStorableTime(*seconds) &&
            !isKnown(relationships, *clip))
            relationships.emplace_back(*clip, *seconds);
    }
    return relationships;
}

} // namespace cutroom
