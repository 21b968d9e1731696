// Verbs for what bins, groups and documents have in common: telling, batches, files; for the
// managers, and for snapshots of what anything holds.
#include "bins/AssetAssociationGroupManager.h"
#include "bins/BinManager.h"
#include "bins/DocumentManager.h"
#include "cli/ContainerWords.h"
#include "cli/Session.h"
#include "filters/ProjectFilterManager.h"
#include "platform/base/Strings.h"
#include "platform/files/Files.h"

#include <map>

namespace cutroom::cli {

namespace {

BinManager& bins() { return BinManager::instance(); }

Kv::Ptr<ContainerBase> takeContainer(SessionWords& words) {
    const NamedAsset named =
        require(findAsset(words.take("a bin, group or document"), kBins | kGroups | kDocuments));
    const std::string cookie = named.cookie.asString();
    if (named.kind == kGroups)
        return Kv::Ptr<ContainerBase>(require(openGroup(cookie)).get());
    if (named.kind == kDocuments)
        return Kv::Ptr<ContainerBase>(require(openDocument(cookie)).get());
    return Kv::Ptr<ContainerBase>(require(openBin(cookie)).get());
}

const ContainerManagerBase* managerOf(const std::string& word) {
    if (word == "bins")
        return &bins();
    if (word == "groups")
        return &AssetAssociationGroupManager::instance();
    if (word == "filters")
        return &ProjectFilterManager::instance();
    return word == "documents" ? &DocumentManager::instance() : nullptr;
}

void watch(Session& session, SessionWords& words) {
    if (const ContainerManagerBase* const manager = managerOf(words.peek()))
        session.containers().watch(words.take("a kind"), *manager, session.printer());
    else
        session.containers().watch(takeContainer(words), session.printer());
}

void unwatch(Session& session, SessionWords& words) {
    const std::string word = words.peek();
    const bool all = managerOf(word) != nullptr;
    const std::string what = all ? words.take("a kind") : takeContainer(words)->getID().asString();
    if (!session.containers().unwatch(what))
        refuse(StatusCode::notFound, word, "nobody watches it");
}

void change(Session& session, SessionWords& words) {
    const Kv::Ptr<ContainerBase> container = takeContainer(words);
    const std::string& what =
        words.takeOneOf("what", {"begin", "end", "forget", "tell", "external-id", "name"});
    if (what == "begin")
        container->beginModifications();
    else if (what == "end")
        container->endModifications(words.takeOr(""));
    else if (what == "forget")
        container->clearModifications();
    else if (what == "tell")
        container->addModifications(static_cast<unsigned>(words.takeInt("kinds", 0, 0xFFFF)));
    else if (what == "external-id")
        container->setExternalID(toWide(words.take("a text")));
    else if (!container->setName(toWide(words.take("a name"))))
        session.say("  it has this name");
}

// --- files ---------------------------------------------------------------------------------------

void saveContainers(Session& session, SessionWords& words) {
    if (words.done()) {
        require(bins().saveAll());
        require(AssetAssociationGroupManager::instance().flushChanges());
        require(DocumentManager::instance().saveAll());
        require(ProjectFilterManager::instance().saveAll());
        return;
    }
    if (words.left() == 3) { // BIN as OTHER
        const Kv::Ptr<BinData> bin = takeBin(words);
        words.takeIf("as");
        require(bin->save(takeBin(words)->getID()));
        return;
    }
    const Kv::Ptr<ContainerBase> container = takeContainer(words);
    require(container->save());
    session.say(container->isDirty() ? "  still to be saved" : "  saved");
}

// A failed load ends what a bin was to save, so what has no file is not even tried.
void loadBin(Session&, SessionWords& words) {
    const Kv::Ptr<BinData> bin = takeBin(words);
    const Kv::Ptr<BinData> from = words.takeIf("from") ? takeBin(words) : bin;
    if (!fileExists(toUtf8(from->getLocation())))
        refuse(StatusCode::notFound, toUtf8(from->getName()), "the bin has not been saved yet");
    require(bin->load(from->getID()));
}

// --- managers ------------------------------------------------------------------------------------

void listBinSummaries(Session& session, SessionWords&) {
    std::map<Cookie, BinManager::BinSummary> found;
    bins().getAllBins(found);
    std::multimap<std::wstring, BinManager::BinSummary> all; // by name, which a person looks for
    for (const auto& [cookie, summary] : found)
        all.emplace(summary.name, summary);
    for (const auto& [name, summary] : all) {
        std::string children;
        for (const Cookie& child : summary.children)
            children += (children.empty() ? ", bins " : ", ") + assetName(child);
        session.say("  " + toUtf8(summary.name) + format(": %d items", summary.logCount) +
                    (summary.permanent ? ", permanent" : "") +
                    (summary.isSynced() ? ", synced" : "") +
                    (summary.extID.empty() ? "" : ", external id " + toUtf8(summary.extID)) +
                    children + (bins().isManaged(summary.id) ? ", loaded" : ""));
    }
}

void tellHolders(Session& session, SessionWords& words) {
    const Cookie asset = takeAsset(words);
    for (const auto& bin : bins().findBinsContainingLog(asset))
        session.say("  bin " + toUtf8(bin->getName()));
    for (const Cookie& bin : bins().findBinsContainingBin(asset))
        session.say("  as a bin in " + assetName(bin));
    for (const auto& group :
         AssetAssociationGroupManager::instance().findGroupsContainingAsset(asset, true))
        session.say("  group " + toUtf8(group->getName()));
}

// --- snapshots -----------------------------------------------------------------------------------

void snapshot(Session& session, SessionWords& words) {
    CachedCookieContainer& kept = session.containers().snapshot();
    const std::string& what = words.takeOneOf("what", {"of", "add", "clear", "name", "type", "id"});
    if (what == "of" && session.hasClient(words.peek()))
        kept = session.clientNamed(words.take("a client"));
    else if (what == "of")
        kept = static_cast<const iCookieContainer&>(*takeBin(words));
    else if (what == "add")
        kept.add(takeAsset(words));
    else if (what == "clear")
        kept.clear();
    else if (what == "id")
        kept.setContainerID(takeBin(words)->getID());
    else if (what == "name")
        kept.setName(toWide(words.take("a name")));
    else
        kept.setTypeName(toWide(words.take("a name")));
}

void tellSnapshot(Session& session, SessionWords&) {
    const CachedCookieContainer& kept = session.containers().snapshot();
    session.say("  \"" + toUtf8(kept.getName()) + "\" " + toUtf8(kept.getTypeName()) +
                (kept.getContainerID().valid() ? " of " + assetName(kept.getContainerID()) : "") +
                format(", %zu assets%s", kept.numContained(),
                       kept.containsType('E') ? ", with edits" : ""));
    for (const AssetReference& asset : kept.getCookies())
        session.say("  " + assetName(asset.cookie) +
                    (asset.hasRange() ? " from " + timeText(asset.range.getStart()) + " to " +
                                            timeText(asset.range.getEnd())
                                      : ""));
}

// A client, or the snapshot, as what is dropped on a bin.
void dropOn(Session& session, SessionWords& words) {
    const std::string name = words.take("a client or snapshot");
    const Kv::Ptr<BinData> bin = takeBin(words);
    const iImportable& from = name == "snapshot"
                                  ? static_cast<const iImportable&>(session.containers().snapshot())
                                  : session.clientNamed(name);
    session.say(from.import(bin->getID()) ? "  taken" : "  nothing taken");
}

} // namespace

void addContainerVerbs(VerbTable& verbs) {
    verbs.heading("Bins, groups and documents");
    verbs.add({"watch", "bins|groups|documents|filters | CONTAINER",
               "prints what a manager, or one container, tells", watch});
    verbs.add({"unwatch", "bins|groups|documents|filters | CONTAINER", "ends that", unwatch});
    verbs.add({"change",
               "CONTAINER begin|forget | CONTAINER end [REASON] | CONTAINER tell KINDS | "
               "CONTAINER name|external-id TEXT",
               "a batch of changes, a change by its kinds (bits), or another name", change});
    verbs.add({"save-containers", "[CONTAINER | BIN as BIN]",
               "writes what has changed, one container, or a bin as another", saveContainers});
    verbs.add({"bin-load", "BIN [from BIN]",
               "reads a bin's file again, or another's; told to nobody", loadBin});
    verbs.add(
        {"bin-reload", "BIN", "has the manager read a bin again",
         [](Session&, SessionWords& words) { require(bins().reload(takeBin(words)->getID())); }});
    verbs.add({"re-read-bins", "", "has the manager set itself up anew",
               [](Session&, SessionWords&) { bins().reInit(); }});
    verbs.add({"bins", "", "lists the summaries of all bins", listBinSummaries});
    verbs.add({"who-holds?", "ASSET", "tells which bins and groups hold an asset", tellHolders});
    verbs.add({"snapshot", "of BIN|CLIENT | add ASSET | clear | name|type TEXT | id BIN",
               "keeps what a bin or client holds now", snapshot});
    verbs.add({"snapshot?", "", "tells what was kept", tellSnapshot});
    verbs.add(
        {"drop-on", "CLIENT|snapshot BIN", "copies what a client or the snapshot holds", dropOn});
}

} // namespace cutroom::cli
