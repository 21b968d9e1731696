// Verbs for how a bin is shown: tags, order, presentation, handles and the panels that show it.
#include "bins/BinManager.h"
#include "cli/ContainerText.h"
#include "cli/ContainerWords.h"
#include "cli/Session.h"
#include "platform/base/Strings.h"

#include <filesystem>

namespace cutroom::cli {

namespace {

eGalleryViews::eGalleryView takeView(SessionWords& words) {
    using namespace eGalleryViews;
    return words.takeChoice<eGalleryView>(
        "a view", {{"image", Image}, {"table", Table}, {"hybrid", Hybrid}, {"split", SplitImage}});
}

// --- tags ----------------------------------------------------------------------------------------

void tagRange(Session& session, SessionWords& words) {
    const Kv::Ptr<BinData> bin = takeBin(words);
    const bool on = words.takeOnOff("on or off");
    const auto take = [&](const char* what, int otherwise) {
        return words.done() ? otherwise : static_cast<int>(words.takeInt(what, -1, 1'000'000)) - 1;
    };
    const int first = take("the first item", 0);
    if (!bin->setTags(on, first, take("the last item", -1)))
        session.say("  nothing changed");
}

void tagItems(Session& session, SessionWords& words) {
    const Kv::Ptr<BinData> bin = takeBin(words);
    std::map<unsigned, bool> tags;
    while (!words.done()) {
        const auto index = static_cast<unsigned>(words.takeInt("an item", 1, 1'000'000) - 1);
        tags[index] = words.takeOnOff("on or off");
    }
    if (!bin->setTags(tags))
        session.say("  nothing changed");
}

void tellTags(Session& session, SessionWords& words) {
    const Kv::Ptr<BinData> bin = takeBin(words);
    const Kv::Ptr<BinData> selected = bin->getSelectedItems();
    std::string names;
    for (const BinItem& item : *selected)
        names += (names.empty() ? ": " : ", ") + assetName(item.asset);
    session.say(format("  %u tagged, %u edits, documents %s", bin->getNumTagged(),
                       bin->getNumTagged('E'), bin->anyTagged('D') ? "too" : "none") +
                names);
    if (!bin->empty())
        session.say(std::string("  the first is ") + (bin->isTagged(0u) ? "tagged" : "not tagged") +
                    (bin->isTagged(bin->getItem(0).asset) == bin->isTagged(bin->getItem(0).getID())
                         ? ""
                         : ", by identity not"));
}

// --- presentation --------------------------------------------------------------------------------

void setDefault(SessionWords& words) {
    if (words.takeOneOf("a word", {"view", "auto-position"}) == "view")
        setDefaultGalleryView(takeView(words));
    else
        BinData::setAutoPositionDefault(words.takeOnOff("on or off"));
}

void setTiles(BinData& bin, SessionWords& words) {
    using namespace Kv::ImageSize::Presets;
    bin.setTileSize(words.takeChoice<Preset>(
        "a size", {{"small", Small}, {"normal", Normal}, {"large", Large}, {"huge", Huge}}));
}

void set(Session&, SessionWords& words) {
    if (words.takeIf("default"))
        return setDefault(words);
    const Kv::Ptr<BinData> bin = takeBin(words);
    const std::string& what = words.takeOneOf(
        "what", {"view", "tiles", "auto-position", "size", "permanent", "columns", "attribute"});
    if (what == "view")
        bin->setViewType(takeView(words));
    else if (what == "tiles")
        setTiles(*bin, words);
    else if (what == "auto-position")
        bin->setAutoPosition(words.takeOnOff("on or off"));
    else if (what == "permanent")
        bin->setPermanent(words.takeOnOff("on or off"));
    else if (what == "size") {
        const int width = static_cast<int>(words.takeInt("a width", 0, 100'000));
        bin->setDimensions({width, static_cast<int>(words.takeInt("a height", 0, 100'000))});
    } else if (what == "columns")
        bin->setDefaultTableColumns(words.done() ? std::vector<LogAttribute>()
                                                 : require(parseColumns(words.take("columns"))));
    else {
        const LogAttribute attribute = require(parseColumn(words.take("an attribute")));
        bin->setAttribute(attribute, words.take("a value"));
    }
}

void tell(Session& session, SessionWords& words) {
    const Kv::Ptr<BinData> bin = takeBin(words);
    std::string columns;
    for (const LogAttribute& column : bin->getTableColumns())
        columns += (columns.empty() ? "" : ",") + column.getID();
    session.say(
        "  " + toUtf8(bin->getName()) + ": view " + getPersistableString(bin->getViewType()) +
        ", tiles " + Kv::ImageSize::getPersistableString(bin->getTileSize()) + ", size " +
        std::to_string(bin->getDimensions().x) + "x" + std::to_string(bin->getDimensions().y) +
        (bin->getAutoPosition() ? ", auto-position" : "") +
        (bin->getPermanent() ? ", permanent" : ""));
    session.say("  columns " + columns);
    session.say(format("  %u items, %u edits, %s documents, version %d, capabilities %u%s%s%s%s",
                       bin->numItems(), bin->numItems('E'),
                       bin->anyItems('D') || bin->containsType('A') ? "with" : "without",
                       static_cast<int>(bin->getVersion()), bin->getCaps(),
                       bin->valid() ? "" : ", not valid", bin->isComplete() ? "" : ", filling",
                       bin->empty() ? ", empty" : "", bin->isDirty() ? ", to be saved" : ""));
    const std::filesystem::path file(toUtf8(bin->getLocation()));
    session.say("  file " + (file.parent_path().filename() / file.filename()).string());
}

void tellColumn(Session& session, SessionWords& words) {
    const Kv::Ptr<BinData> bin = takeBin(words);
    const LogAttribute column = require(parseColumn(words.take("a column")));
    for (unsigned i = 0; i < bin->numItems(); ++i)
        session.say(format("  %u ", i + 1) + toUtf8(bin->getAttribute(i, column)));
}

// --- handles and panels --------------------------------------------------------------------------

BinHandle takeHandle(SessionWords& words) {
    const std::string text = words.take("a bin or handle");
    if (const BinHandle handle(text); handle.valid())
        return handle;
    return BinHandle(require(openBin(text)));
}

// The text form is made of cookies: a person reads names.
void tellHandle(Session& session, SessionWords& words) {
    BinHandle handle = takeHandle(words);
    if (words.takeIf("in"))
        handle = BinHandle(handle.getID(), takeBin(words)->getID());
    BinHandle again;
    again.initFromString(handle.asWString());
    const Kv::Ptr<BinData> group = handle.getGroup();
    session.say("  " + handle.asString() + ": " +
                (handle.getBin() ? toUtf8(handle->getName()) : std::string("no bin")) +
                (handle.isGrouped() ? " in " + (group ? toUtf8(group->getName()) : "no bin") : "") +
                (again == handle && !(again < handle) ? "" : ", read differently"));
}

void gallery(Session& session, SessionWords& words) {
    const std::string name = words.take("a name");
    SessionGallery& panel = session.containers().addGallery(name, session.printer());
    if (!words.done() && !panel.setBinHandle(takeHandle(words)))
        refuse(StatusCode::notFound, name, "no bin to show");
    session.say("  " + name + (panel.isActive() ? " shows " : " is empty") +
                (panel.getBinData() ? toUtf8(panel.getBinData()->getName()) : std::string()));
}

SessionGallery& takeGallery(Session& session, SessionWords& words) {
    const std::string& name = words.take("a gallery");
    SessionGallery* const panel = session.containers().gallery(name);
    if (!panel)
        refuse(StatusCode::notFound, name, "no such gallery; `gallery NAME` makes one");
    return *panel;
}

void gallerySelect(Session& session, SessionWords& words) {
    SessionGallery& panel = takeGallery(session, words);
    LightweightVector<BinHandle> bins;
    while (!words.done())
        bins.push_back(takeHandle(words));
    panel.setBinSelection(bins);
    session.say("  selected: " + BinHandle::asString(panel.getBinSelection()));
}

void galleryImport(Session& session, SessionWords& words) {
    const SessionGallery& panel = takeGallery(session, words);
    session.say(panel.import(takeBin(words)->getID()) ? "  taken" : "  nothing taken");
}

} // namespace

void addBinViewVerbs(VerbTable& verbs) {
    verbs.heading("How bins are shown");
    verbs.add(
        {"bin-tag", "BIN on|off [FIRST [LAST]]", "tags items (selects them in the bin)", tagRange});
    verbs.add({"bin-tag-items", "BIN (N on|off) ...", "tags single items", tagItems});
    verbs.add({"bin-invert-tags", "BIN", "tags what is not tagged, and the other way round",
               [](Session&, SessionWords& words) { takeBin(words)->invertTags(); }});
    verbs.add({"bin-untag", "BIN", "takes all tags away",
               [](Session&, SessionWords& words) { takeBin(words)->resetSelections(); }});
    verbs.add({"bin-tags?", "BIN", "tells what is tagged", tellTags});
    verbs.add({"bin-sort", "BIN COLUMN [descending]", "puts the items in the order of a column",
               [](Session&, SessionWords& words) {
                   const Kv::Ptr<BinData> bin = takeBin(words);
                   const LogAttribute column = require(parseColumn(words.take("a column")));
                   bin->sort(column, !words.takeIf("descending"));
               }});
    verbs.add({"bin-set",
               "BIN view image|table|hybrid|split | BIN tiles small|normal|large|huge | "
               "BIN auto-position|permanent on|off | BIN size W H | BIN columns [LIST] | "
               "BIN attribute NAME VALUE | default view image|table|hybrid|split | "
               "default auto-position on|off",
               "how a bin, or each new one, is shown", set});
    verbs.add({"bin?", "BIN", "tells how a bin is shown, and its state", tell});
    verbs.add({"bin-column", "BIN COLUMN", "lists an attribute of all items", tellColumn});
    verbs.add(
        {"handle?", "BIN [in GROUP]", "a bin's handle, as text and what it finds", tellHandle});
    verbs.add({"gallery", "NAME [BIN]", "a panel that shows bins", gallery});
    verbs.add({"gallery-select", "NAME [BIN ...]", "selects bins in a panel", gallerySelect});
    verbs.add(
        {"gallery-import", "NAME BIN", "copies what a panel shows into a bin", galleryImport});
    verbs.add({"gallery-reveal", "NAME ASSET", "brings an asset of a panel into sight",
               [](Session& session, SessionWords& words) {
                   SessionGallery& panel = takeGallery(session, words);
                   panel.reveal(takeAsset(words));
               }});
}

} // namespace cutroom::cli
