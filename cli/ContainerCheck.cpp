#include "cli/ContainerCheck.h"

#include "bins/AssetAssociationGroup.h"
#include "bins/BinManager.h"
#include "bins/BinsCache.h"
#include "bins/DescriptionFiles.h"
#include "bins/Document.h"
#include "bins/DocumentManager.h"
#include "cli/Command.h"
#include "cli/SearchWords.h"
#include "filters/UserFilter.h"
#include "platform/files/Files.h"
#include "platform/files/JsonElement.h"
#include "platform/project/CurrentProject.h"
#include "platform/project/ProjectLayout.h"

#include <string>
#include <string_view>

namespace cutroom::cli {

namespace {

// The files of one kind of container: "<folder>/<cookie><suffix>".
struct Kind {
    const char* folder;
    std::string_view suffix;
    std::string_view types; // of the cookies
    Status (*read)(const Cookie& id, const std::string& path);
    std::size_t ContainerCounts::*count;
};

Status readBin(const Cookie&, const std::string& path) { return BinData().load(toWide(path)); }

template <class Container> Status readDescription(const Cookie& id, const std::string& path) {
    const auto description = JSON::Element::load(path, DescriptionFiles::readOptions());
    if (!description)
        return description.status();
    Container container;
    if (Status taken = container.take(**description, path); !taken)
        return taken;
    if (container.getID() != id)
        return {StatusCode::damaged, path,
                "describes " + container.getID().asString() + ", another cookie"};
    return {};
}

Status readFilter(const Cookie& id, const std::string& path) {
    const auto element = JSON::Element::load(path, DescriptionFiles::readOptions());
    return element ? UserFilter(id).take(**element, path) : element.status();
}

// Documents come first: bins leave out those that are not known.
constexpr Kind kKinds[] = {
    {kDocumentsFolder, ".KvDoc", "DA", readDescription<Document>, &ContainerCounts::documents},
    {kAssociationsFolder, ".AssetGroup", "G", readDescription<AssetAssociationGroup>,
     &ContainerCounts::groups},
    {kGroupsFolder, ".bin", "GM", readBin, &ContainerCounts::bins},
    {kFiltersFolder, ".filter", "ABCDEFGHJKLMNOPQRSTUVWXYZ", readFilter, &ContainerCounts::filters},
};

struct File {
    std::string path;
    Cookie id; // invalid when the name is none of the kind
};

std::vector<File> filesOf(const Kind& kind) {
    std::vector<File> all;
    const std::string folder = CurrentProject::getFolder() + '/' + kind.folder;
    const auto files = listFiles(folder, kind.suffix);
    for (const std::string& name : files ? *files : std::vector<std::string>()) {
        const auto id = Cookie::fromString(name.substr(0, name.size() - kind.suffix.size()));
        const bool fits = id && kind.types.find(id->type()) != std::string_view::npos;
        all.push_back({folder + '/' + name, fits ? *id : Cookie()});
    }
    return all;
}

Status read(const Kind& kind, const File& file) {
    if (!file.id.valid())
        return {StatusCode::damaged, file.path, "is not named by a cookie of its kind"};
    return kind.read(file.id, file.path);
}

// Puts the file's ".bak" in its place when that one is sound, and else moves it aside.
Status restore(const Kind& kind, const File& file, const Status& damage) {
    const Status former = read(kind, {file.path + ".bak", file.id});
    if (former)
        return putBackupInPlace(file.path, damage);
    if (former.code() != StatusCode::damaged && former.code() != StatusCode::notFound)
        return former; // it may be sound
    const auto aside = moveAside(file.path);
    if (aside)
        note(damage.text() + "; moved to " + *aside);
    return aside ? damage : aside.status();
}

// A clock that was put back, or a file from a backup, lets the cache seem newer than a bin: without
// entries it makes the manager read them all.
Status emptyBinsCache() {
    const std::string path = binsCachePath();
    return fileExists(path) ? writeFile(path, binsCacheBytes({}), Backup::none) : Status();
}

// Nothing stands in for a damaged search or list of searches: it is lost, but no longer in the way.
void setSearchesAside(std::vector<Status>& lost) {
    const auto searches = searchResults();
    if (!searches)
        return;
    for (const Status& damage : (*searches)->getDamaged()) {
        lost.push_back(damage);
        if (damage.code() != StatusCode::damaged)
            continue;
        if (const auto aside = moveAside(damage.file()))
            note(damage.text() + "; moved to " + *aside);
        else
            lost.push_back(aside.status());
    }
}

} // namespace

Status putBackupInPlace(const std::string& path, const Status& damage) {
    std::string aside = path + ".damaged";
    for (int number = 2; fileExists(aside); ++number)
        aside = format("%s.damaged.%d", path.c_str(), number);
    if (Status kept = fileSystem().link(path, aside); !kept)
        return kept;
    if (Status copied = copyFile(path + ".bak", path); !copied) {
        // The backup may have taken its place, though not for sure: then the damaged file has no
        // other name.
        const auto there = fileSystem().stat(path), kept = fileSystem().stat(aside);
        if (!there || !kept || there->identity != kept->identity)
            return copied;
        const Status gone = removeFile(aside);
        return gone ? copied : gone;
    }
    note(damage.text() + "; moved to " + aside);
    note(path + ": the version before the last one stands again");
    return {};
}

std::vector<Status> checkContainers(ContainerCounts* counts) {
    std::vector<Status> wrong;
    // The kept searches are read, and the kinds of bins in filters known, once the filters are.
    if (const auto searches = searchResults())
        wrong = (*searches)->getDamaged();
    for (const Kind& kind : kKinds)
        for (const File& file : filesOf(kind)) {
            Status one = read(kind, file);
            if (one.code() ==
                StatusCode::notFound) // another process deleted it since it was listed
                continue;
            ++(counts->*kind.count);
            if (!one)
                wrong.push_back(std::move(one));
        }
    BinManager::instance(); // looks at the cache
    return wrong;
}

std::vector<Status> restoreContainers() {
    std::vector<Status> lost;
    bool allBins = true;
    for (const Kind& kind : kKinds) {
        for (const File& file : filesOf(kind)) {
            Status one = read(kind, file);
            if (one.code() == StatusCode::damaged)
                one = restore(kind, file, one);
            if (one.ok())
                continue;
            allBins = allBins && kind.count != &ContainerCounts::bins;
            lost.push_back(std::move(one));
        }
        if (const auto known = DocumentManager::instance().scan(); !known)
            lost.push_back(known.status());
    }
    setSearchesAside(lost);
    if (allBins) // else the cache has the name of the one that cannot be read
        if (Status emptied = emptyBinsCache(); !emptied)
            lost.push_back(std::move(emptied));
    BinManager::instance().reInit();
    return lost;
}

} // namespace cutroom::cli
