// Verbs for documents and groups of assets.
#include "bins/AssetAssociationGroupManager.h"
#include "bins/DocumentManager.h"
#include "cli/ContainerWords.h"
#include "cli/Names.h"
#include "cli/Session.h"
#include "platform/base/Strings.h"

#include <cstdint>
#include <limits>

namespace cutroom::cli {

namespace {

DocumentManager& documents() { return DocumentManager::instance(); }
AssetAssociationGroupManager& groups() { return AssetAssociationGroupManager::instance(); }

std::uint32_t takeSeconds(SessionWords& words) {
    return static_cast<std::uint32_t>(
        words.takeInt("seconds since 1970", 0, std::numeric_limits<std::uint32_t>::max()));
}

// --- documents -----------------------------------------------------------------------------------

void makeDocument(Session& session, SessionWords& words) {
    const std::string text = words.take("a file or cookie");
    ContainerModifier<Document> made;
    if (const auto cookie = Cookie::fromString(text)) {
        made = documents().createDocument(*cookie);
    } else {
        const CookieType type = words.takeIf("as") && words.take("a type") == "A" ? 'A' : 'D';
        made = documents().createDocument(toWide(text), type);
    }
    if (!made)
        refuse(StatusCode::failed, text, "no document can be made");
    session.say("made " + toUtf8(made->getName()));
}

void changeDocument(Session&, SessionWords& words) {
    const Kv::Ptr<Document> document = takeDocument(words);
    const std::string& what = words.takeOneOf(
        "what", {"description", "locations", "size", "imported", "created", "modified"});
    if (what == "description")
        document->setDescription(toWide(words.take("a text")));
    else if (what == "size")
        document->setSize(static_cast<std::uint64_t>(
            words.takeInt("bytes", 0, std::numeric_limits<std::int64_t>::max())));
    else if (what == "imported")
        document->setImported(words.takeOnOff("on or off"));
    else if (what == "created")
        document->setCreationTime(takeSeconds(words));
    else if (what == "modified")
        document->setModificationTime(takeSeconds(words));
    else {
        LightweightVector<LightweightString<wchar_t>> locations;
        while (!words.done())
            locations.push_back(toWide(words.take("a location")));
        document->setLocations(locations);
    }
}

// A path inside the project is printed relative to its folder.
std::string placeText(Session& session, const std::wstring& place) {
    const std::string text = toUtf8(place);
    const std::string folder = session.folder() + '/';
    return text.starts_with(folder) ? text.substr(folder.size()) : text;
}

void tellDocument(Session& session, SessionWords& words) {
    const Kv::Ptr<Document> document = takeDocument(words);
    const Cookie id = document->getID();
    session.say("  " + toUtf8(document->getName()) +
                format(", %llu bytes", static_cast<unsigned long long>(document->getSize())) +
                (document->isImported() ? ", imported" : "") +
                (documents().isLocal(id) ? ", local" : "") +
                (document->isDirty() ? ", to be saved" : ""));
    if (!document->getDescription().empty())
        session.say("  " + toUtf8(document->getDescription()));
    for (const auto& location : document->getLocations())
        session.say("  at " + placeText(session, location));
    const auto place = [&](const std::wstring& path) { return placeText(session, path); };
    session.say("  described in " + place(documents().getStorageLocation(Cookie(), id)));
    session.say("  copies in " + place(documents().getLocalLocation(id)) + ", derived files in " +
                place(documents().getCacheLocation(document)));
}

void listDocuments(Session& session, SessionWords& words) {
    DateRange range;
    if (!words.done()) {
        range.from = takeSeconds(words);
        range.to = takeSeconds(words);
    }
    for (const auto& document : documents().getDocuments(range))
        session.say("  " + toUtf8(document->getName()));
    session.say(format("  %zu of kind D, %zu of kind A", documents().getNumDocuments('D'),
                       documents().getNumDocuments('A')));
    session.say("  described in " + placeText(session, documents().getStorageLocation()) +
                ", derived files in " + placeText(session, documents().getCacheLocation()));
}

void follow(Session& session, SessionWords& words) {
    auto& follower = session.containers().follower();
    if (words.takeIf("none")) {
        follower.reset();
        return;
    }
    const Cookie document = takeDocument(words)->getID();
    if (follower)
        follower->setAssetID(document);
    else
        follower = std::make_unique<PrintingDocumentListener>(document, session.printer());
    session.say("  follows " + assetName(follower->getAssetID()));
}

// --- groups --------------------------------------------------------------------------------------

void makeGroup(Session& session, SessionWords& words) {
    const std::wstring name = require(parseName(words.take("a name")));
    auto type = AssetAssociationGroup::kUserGroup;
    bool byHand = false;
    while (!words.done() && (words.peek() == "versions" || words.peek() == "by-hand"))
        if (words.take("a word") == "versions")
            type = AssetAssociationGroup::kVersionsGroup;
        else
            byHand = true;
    const CookieVec members = takeAssets(words);
    if (!byHand) {
        groups().createGroup(name, members, type);
        return;
    }
    const auto group = Kv::makePtr<AssetAssociationGroup>(name, members, type);
    if (!groups().addGroup(group) || groups().addGroup(group))
        refuse(StatusCode::failed, toUtf8(name), "cannot be added once");
    session.say("  added by hand");
}

void tellGroup(Session& session, SessionWords& words) {
    const auto group = takeAssetGroup(words);
    std::string members;
    for (const Cookie& asset : group->getConstituents())
        members += (members.empty() ? ": " : ", ") + assetName(asset);
    session.say("  " + toUtf8(group->getName()) +
                (group->getType() == AssetAssociationGroup::kVersionsGroup ? ", versions" : "") +
                (groups().isManaged(group->getID()) ? "" : ", not managed") +
                (group->isDirty() ? ", to be saved" : "") + members);
}

void listGroups(Session& session, SessionWords& words) {
    std::vector<Kv::Ptr<AssetAssociationGroup>> found;
    if (words.done()) {
        found = groups().getGroups();
    } else {
        const Cookie asset = takeAsset(words);
        const std::string type = words.takeOr("all");
        found = type == "user"
                    ? groups().findGroupsContainingAsset(asset, AssetAssociationGroup::kUserGroup)
                    : groups().findGroupsContainingAsset(asset, type == "all");
    }
    for (const auto& group : found)
        session.say("  " + toUtf8(group->getName()));
}

} // namespace

void addAssetVerbs(VerbTable& verbs) {
    verbs.heading("Documents and groups of assets");
    verbs.add(
        {"new-document", "FILE [as D|A] | COOKIE", "a document for an outside file", makeDocument});
    verbs.add({"document",
               "DOCUMENT description TEXT | DOCUMENT locations [FILE ...] | "
               "DOCUMENT size|created|modified N | DOCUMENT imported on|off",
               "changes a document", changeDocument});
    verbs.add(
        {"document?", "DOCUMENT", "tells what a document says, and its places", tellDocument});
    verbs.add({"documents", "[FROM TO]", "lists the documents, or those made in a time (seconds)",
               listDocuments});
    verbs.add({"document-of?", "FILE", "tells which document stands for a file",
               [](Session& session, SessionWords& words) {
                   const std::wstring file = toWide(words.take("a file"));
                   const auto found = documents().findDocumentReferringToFile(file);
                   session.say("  " + (found ? toUtf8(found->getName()) : "none"));
               }});
    verbs.add({"localise", "DOCUMENT", "copies the outside file into the project",
               [](Session&, SessionWords& words) { require(takeDocument(words)->localise()); }});
    verbs.add({"scan-documents", "", "takes up descriptions put into the project's folder",
               [](Session& session, SessionWords&) {
                   session.say(format("  %d taken up", require(documents().scan())));
               }});
    verbs.add({"follow", "DOCUMENT|none", "prints the changes of one document", follow});
    verbs.add(
        {"new-group", "NAME [versions] [by-hand] [ASSET ...]", "ties assets together", makeGroup});
    verbs.add({"group-add", "GROUP ASSET", "puts an asset into a group",
               [](Session& session, SessionWords& words) {
                   const auto group = takeAssetGroup(words);
                   if (!group->add(takeAsset(words)))
                       session.say("  it is a member");
               }});
    verbs.add({"group-remove", "GROUP ASSET ...", "takes assets out",
               [](Session& session, SessionWords& words) {
                   const auto group = takeAssetGroup(words);
                   if (!group->remove(takeAssets(words)))
                       session.say("  none is a member");
               }});
    verbs.add({"group-contents", "GROUP [ASSET ...]", "replaces the members",
               [](Session&, SessionWords& words) {
                   const auto group = takeAssetGroup(words);
                   group->setConstituents(takeAssets(words));
               }});
    verbs.add({"asset-group?", "GROUP", "tells the members", tellGroup});
    verbs.add({"asset-groups", "[ASSET [user|versions]]", "lists the groups, or those of an asset",
               listGroups});
}

} // namespace cutroom::cli
