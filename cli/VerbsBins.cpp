// Verbs that make, fill and empty bins.
#include "bins/BinManager.h"
#include "cli/ContainerWords.h"
#include "cli/FilterWords.h"
#include "cli/Names.h"
#include "cli/Session.h"
#include "platform/base/Strings.h"
#include "platform/store/Edit.h"

#include <utility>

namespace cutroom::cli {

namespace {

void makeBin(Session& session, SessionWords& words) {
    const std::wstring name = require(parseName(words.take("a name")));
    BinManager& manager = BinManager::instance();
    Kv::Ptr<BinData> bin;
    if (words.done()) {
        bin = manager.newBin();
        bin->setName(name);
    } else if (words.takeIf("empty")) {
        bin = manager.addBin(Kv::makePtr<BinData>(name), "made by hand");
    } else if (words.takeIf("copy")) {
        const Kv::Ptr<BinData> copy = Kv::makePtr<BinData>(*takeBin(words));
        copy->setName(name);
        bin = manager.addBin(copy, "copied");
    } else {
        words.takeIf("of");
        bin = Kv::makePtr<BinData>(takeAssets(words));
        bin->setName(name);
        bin = manager.addBin(bin, "made of assets");
    }
    session.say("made " + toUtf8(bin->getName()) + ", " + std::to_string(bin->numItems()) +
                " items");
}

BinItem takeItem(SessionWords& words) {
    BinItem item(takeAsset(words), 0.0);
    while (!words.done()) {
        const auto& word = words.takeOneOf("a word", {"time", "in", "out", "at"});
        if (word == "time")
            item.time = words.takeNumber("seconds");
        else if (word == "in" || word == "out")
            (word == "in" ? item.markIn : item.markOut) = words.takeNumber("seconds");
        else {
            item.position.x = static_cast<float>(words.takeNumber("a column"));
            item.position.y = static_cast<float>(words.takeNumber("a row"));
        }
    }
    return item;
}

// Adds an asset even when the bin holds it already.
void append(Session&, SessionWords& words) {
    const Kv::Ptr<BinData> bin = takeBin(words);
    if (words.left() == 1)
        bin->add(takeAsset(words));
    else
        bin->add(takeItem(words));
}

void insert(Session&, SessionWords& words) {
    const Kv::Ptr<BinData> bin = takeBin(words);
    const std::string where = words.peek();
    const Cookie before = takeAsset(words);
    if (!bin->insertBefore(before, takeItem(words)))
        refuse(StatusCode::notFound, where, "the bin does not hold it");
}

// Adds an asset with a range, as dropping a container on the bin does.
void refer(Session& session, SessionWords& words) {
    const Kv::Ptr<BinData> bin = takeBin(words);
    AssetReference reference(takeAsset(words));
    if (!words.done()) {
        const double from = words.takeNumber("seconds");
        reference.range = TimeRange(from, words.takeNumber("seconds"));
    }
    session.say(bin->add(LightweightVector<AssetReference>{reference}) ? "  taken" : "  not taken");
}

// A bin or a group; by its cookie also a bin that a filter presents.
Cookie takeContainer(SessionWords& words) {
    const std::string& text = words.take("a bin or group");
    const auto named = findAsset(text, kBins | kGroups);
    return named && named->kind == kGroups ? named->cookie : require(findAnyBin(text))->getID();
}

void importInto(Session& session, SessionWords& words) {
    const Kv::Ptr<BinData> bin = takeBin(words);
    session.say(bin->import(takeContainer(words)) ? "  taken" : "  nothing taken");
}

void setContents(Session&, SessionWords& words) {
    const Kv::Ptr<BinData> bin = takeBin(words);
    const bool logs = words.takeIf("logs");
    BinData::Items items;
    for (const Cookie& asset : takeAssets(words))
        items.emplace_back(asset, 0.0);
    if (logs)
        bin->setLogs(std::move(items));
    else
        bin->setContents(std::move(items));
}

void remove(Session& session, SessionWords& words) {
    const Kv::Ptr<BinData> bin = takeBin(words);
    bool gone = false;
    if (words.takeIf("item")) {
        const auto number = words.takeInt("an item", 1, 1'000'000);
        gone = bin->remove(bin->getItem(static_cast<unsigned>(number - 1)).getID());
    } else if (words.left() == 1) {
        gone = bin->remove(takeAsset(words));
    } else {
        gone = bin->remove(takeAssets(words));
    }
    if (!gone)
        session.say("  nothing to remove");
}

void tellItems(Session& session, SessionWords& words) {
    const Kv::Ptr<BinData> bin = takeBin(words);
    const BinData::Items items = [&read = std::as_const(*bin)] {
        const BinData::Reading reading(read);
        return read.items();
    }();
    unsigned number = 0;
    for (const BinItem& item : items)
        session.say(
            format("  %u ", ++number) + assetName(item.asset) + " at " + timeText(item.time) +
            (item.hasMark() ? ", marks " + timeText(item.markIn) + " to " + timeText(item.markOut)
                            : "") +
            (item.position == BinItem::kNotPlaced
                 ? ""
                 : format(", placed %g,%g", static_cast<double>(item.position.x),
                          static_cast<double>(item.position.y))) +
            (item.tagged ? ", tagged" : ""));
}

void tellHeld(Session& session, SessionWords& words) {
    const Kv::Ptr<BinData> bin = takeBin(words);
    const bool nested = words.takeIf("nested");
    const CookieVec assets = takeAssets(words);
    if (assets.size() > 1) {
        session.say(bin->contains(assets, nested) ? "  all" : "  not all");
        return;
    }
    const Cookie asset = assets.front();
    const BinItem item = bin->findItem(asset);
    const bool same = !item.valid() || (bin->findIndex(item.getID()) == bin->findIndex(asset) &&
                                        bin->findItem(item.getID()).equals(item) &&
                                        bin->find(item.getID()) == bin->find(asset));
    session.say(format("  %s, item %d%s", bin->contains(asset, nested) ? "held" : "not held",
                       bin->findIndex(asset) + 1, same ? "" : ", not found by identity"));
}

void tellAccepted(Session& session, SessionWords& words) {
    const Kv::Ptr<BinData> bin = takeBin(words);
    const Cookie asset = takeAsset(words);
    const EditPtr edit(asset);
    session.say(std::string("  kind ") + (bin->canAccomodate(asset.type()) ? "yes" : "no") +
                ", asset " + (bin->canAccomodate(asset) ? "yes" : "no") +
                (edit ? std::string(", edit ") + (bin->canAccomodate(edit) ? "yes" : "no") +
                            ", log " + (bin->canAccomodate(edit->getLogType()) ? "yes" : "no")
                      : std::string()));
}

void openItem(Session& session, SessionWords& words) {
    const Kv::Ptr<BinData> bin = takeBin(words);
    const long long number = words.takeInt("an item", 1, 1'000'000);
    const std::string name = session.takeViewerName(words);
    if (number > static_cast<long long>(bin->numItems()))
        refuse(StatusCode::notFound, std::to_string(number), "the bin has no such item");
    const auto index = static_cast<unsigned>(number - 1);
    if (const auto document = bin->openDocument(index)) {
        session.say("  document " + toUtf8(document->getFileName()));
        return;
    }
    const EditPtr edit = bin->openEdit(index);
    if (!edit)
        refuse(StatusCode::notFound, bin->getItem(index).asset.asString(), "no edit to open");
    const auto item = bin->find(bin->getItem(index).getID());
    session.addViewer(name, VobManager::instance().createVob(edit, item->vobId()));
    session.say(name + ": " + toUtf8(edit->getName()));
}

void place(Session&, SessionWords& words) {
    const Kv::Ptr<BinData> bin = takeBin(words);
    const auto item = bin->find(takeAsset(words));
    if (item == bin->end())
        refuse(StatusCode::notFound, "place", "the bin does not hold it");
    item->position.x = static_cast<float>(words.takeNumber("a column"));
    item->position.y = static_cast<float>(words.takeNumber("a row"));
    bin->setDirty(true);
}

} // namespace

void addBinVerbs(VerbTable& verbs) {
    verbs.heading("Bins");
    verbs.add({"new-bin", "NAME [empty | copy BIN | of ASSET ...]",
               "makes a bin: by the manager, or by hand", makeBin});
    verbs.add({"bin-items", "BIN", "lists a bin's items", tellItems});
    verbs.add({"bin-add", "BIN ASSET ...", "adds what the bin does not hold yet",
               [](Session&, SessionWords& words) {
                   const Kv::Ptr<BinData> bin = takeBin(words);
                   bin->add(takeAssets(words));
               }});
    verbs.add({"bin-append", "BIN ASSET [time T] [in T] [out T] [at X Y]",
               "appends an item, whatever the bin holds", append});
    verbs.add({"bin-insert", "BIN BEFORE ASSET [time T] [in T] [out T] [at X Y]",
               "puts an item before another one", insert});
    verbs.add({"bin-refer", "BIN ASSET [T T]", "adds an asset, or a range of it, if it is accepted",
               refer});
    verbs.add({"bin-merge", "BIN OTHER", "adds all items of another bin, in place of equal ones",
               [](Session&, SessionWords& words) {
                   const Kv::Ptr<BinData> bin = takeBin(words);
                   bin->add(*takeBin(words));
               }});
    verbs.add(
        {"bin-import", "BIN BIN|GROUP", "adds what that holds, as far as accepted", importInto});
    verbs.add({"bin-become", "BIN OTHER", "takes over everything of another bin",
               [](Session&, SessionWords& words) {
                   const Kv::Ptr<BinData> bin = takeBin(words);
                   *bin = *takeBin(words);
               }});
    verbs.add({"bin-contents", "BIN [logs] [ASSET ...]", "replaces all items", setContents});
    verbs.add({"bin-remove", "BIN item N | BIN ASSET ...", "removes an item, or assets", remove});
    verbs.add({"bin-clear", "BIN", "removes everything",
               [](Session&, SessionWords& words) { takeBin(words)->clear(); }});
    verbs.add(
        {"bin-place", "BIN ASSET X Y", "gives an item's tile a place; told to nobody", place});
    verbs.add({"bin-open", "BIN N [as NAME]", "opens an item in a viewer of its own", openItem});
    verbs.add(
        {"bin-holds?", "BIN [nested] ASSET ...", "tells whether a bin holds assets", tellHeld});
    verbs.add({"bin-accepts?", "BIN ASSET", "tells what a bin accepts of an asset", tellAccepted});
}

} // namespace cutroom::cli
