#include "bins/DocumentManager.h"

#include "platform/base/Log.h"
#include "platform/files/Files.h"
#include "platform/host/ProcessLife.h"
#include "platform/project/CurrentProject.h"
#include "platform/project/ProjectLayout.h"
#include "platform/project/ProjectPaths.h"

#include <algorithm>

using cutroom::Status;

namespace {

constexpr wchar_t kLocalFolder[] = L"local";
constexpr wchar_t kCacheFolder[] = L"cache";

bool isDocumentKind(CookieType type) { return type == 'D' || type == 'A'; }

// A folder below the documents' one; empty without a project.
LightweightString<wchar_t> below(const wchar_t* folder) {
    const auto documents = getProjectDocumentsDirectory();
    return documents.empty() ? documents : cutroom::joinPath(documents, folder);
}

LightweightString<wchar_t> belowFor(const wchar_t* folder, const Cookie& id) {
    const auto above = below(folder);
    return above.empty() || !isDocumentKind(id.type()) ? LightweightString<wchar_t>()
                                                       : cutroom::joinPath(above, id.asWString());
}

Kv::Ptr<Document> asDocument(const Kv::Ptr<cutroom::DescribedContainer>& container) {
    return Kv::Ptr<Document>(static_cast<Document*>(container.get()));
}

std::vector<Kv::Ptr<Document>>
asDocuments(const std::vector<Kv::Ptr<cutroom::DescribedContainer>>& containers) {
    std::vector<Kv::Ptr<Document>> documents;
    documents.reserve(containers.size());
    for (const auto& container : containers)
        documents.push_back(asDocument(container));
    return documents;
}

// Where a local copy lies now, when `location` names it below a folder in which the project lay
// before; empty for every other location.
LightweightString<wchar_t> movedCopy(const LightweightString<wchar_t>& location, const Cookie& id,
                                     const LightweightString<wchar_t>& local) {
    const std::wstring tail = std::wstring(L"/") + cutroom::toWide(cutroom::kDocumentsFolder) +
                              L"/" + kLocalFolder + L"/" + id.asWString() + L"/";
    const auto at = location.rfind(tail);
    if (at == location.npos || location.starts_with(local + L"/"))
        return {};
    const std::wstring name = location.substr(at + tail.size());
    if (name.empty() || name == L".." || name.find(L'/') != name.npos)
        return {};
    const std::wstring here = cutroom::joinPath(local, name);
    return cutroom::fileExists(cutroom::toUtf8(here)) ? here : std::wstring();
}

} // namespace

DocumentManager& DocumentManager::instance() {
    return cutroom::ProcessSingleton<DocumentManager>::get();
}

DocumentManager::DocumentManager()
    : DescribedContainerManager("documents", cutroom::kDocumentsFolder, getFileExtension()) {}

DocumentManager::~DocumentManager() { letGo(); }

DocumentManager::ContainerPtr DocumentManager::makeEmpty() const { return Kv::makePtr<Document>(); }

bool DocumentManager::takes(const Cookie& id) const { return isDocumentKind(id.type()); }

// A project folder may have been moved or copied since the location was written.
void DocumentManager::afterReading(cutroom::DescribedContainer& container) const {
    auto& document = static_cast<Document&>(container);
    const auto local = getLocalLocation(document.getID());
    auto locations = document.getLocations();
    bool moved = false;
    for (LightweightString<wchar_t>& location : locations)
        if (auto here = movedCopy(location, document.getID(), local); !here.empty()) {
            location = std::move(here);
            moved = true;
        }
    if (moved)
        document.restoreLocations(std::move(locations));
}

// --- making and finding --------------------------------------------------------------------------

ContainerModifier<Document> DocumentManager::beginDocument(const Cookie& id) {
    ContainerModifier<Document> document(Kv::makePtr<Document>(), "create document");
    document->setID(id);
    document->addModifications(ContainerBase::kModCreated);
    return enter(document.getContainer()) ? document : ContainerModifier<Document>();
}

ContainerModifier<Document> DocumentManager::createDocument(const LightweightString<wchar_t>& file,
                                                            CookieType type) {
    if (!isDocumentKind(type))
        return {};
    ContainerModifier<Document> document = beginDocument(Cookie::make(type));
    if (!document)
        return document;
    const std::string path = cutroom::toUtf8(file);
    document->setName(cutroom::toWide(cutroom::nameOf(path)));
    document->setLocations({file});
    const auto info = cutroom::fileSystem().stat(path);
    if (info && !info->folder)
        document->setSize(info->size);
    return document;
}

ContainerModifier<Document> DocumentManager::createDocument(const Cookie& id) {
    return beginDocument(id);
}

Kv::Ptr<Document> DocumentManager::getDocument(const Cookie& id) const {
    return asDocument(find(id));
}

bool DocumentManager::exists(const Cookie& id) const { return find(id) != nullptr; }

std::vector<Kv::Ptr<Document>> DocumentManager::getDocuments() const { return asDocuments(all()); }

std::vector<Kv::Ptr<Document>> DocumentManager::getDocuments(const DateRange& created) const {
    std::vector<Kv::Ptr<Document>> documents = getDocuments();
    std::erase_if(documents, [&](const Kv::Ptr<Document>& document) {
        return !created.contains(document->getCreationTime());
    });
    return documents;
}

std::size_t DocumentManager::getNumDocuments(CookieType type) const { return countOf(type); }

Kv::Ptr<Document>
DocumentManager::findDocumentReferringToFile(const LightweightString<wchar_t>& file) const {
    for (const auto& document : asDocuments(findByKey(cutroom::toUtf8(file)))) {
        const auto locations = document->getLocations();
        if (std::find(locations.begin(), locations.end(), file) != locations.end())
            return document;
    }
    return {};
}

// --- going ---------------------------------------------------------------------------------------

Status DocumentManager::destroy(const Cookie& id, const LightweightString<char>& reason) {
    return destroyAll({id}, reason);
}

Status DocumentManager::destroy(const CookieVec& ids, const LightweightString<char>& reason) {
    return destroyAll(ids, reason);
}

cutroom::Result<std::vector<std::string>> DocumentManager::filesOf(const Cookie& id) const {
    const std::string folder = cutroom::toUtf8(getLocalLocation(id));
    auto names = cutroom::listFiles(folder);
    if (!names)
        return names;
    const std::string relative = folder.substr(CurrentProject::getFolder().size() + 1);
    for (std::string& name : *names)
        name = cutroom::joinPath(relative, name);
    return names;
}

// A cache can be made again, so it is removed without a backup, and a failure is only logged.
void DocumentManager::afterDestruction(const Cookie& id) const {
    const std::string folder = cutroom::toUtf8(belowFor(kCacheFolder, id));
    const auto names = cutroom::fileSystem().list(folder);
    if (names.status().code() == cutroom::StatusCode::notFound)
        return;
    Status outcome = names.status(); // the first failure
    if (names)
        for (const std::string& name : *names) {
            const Status removed = cutroom::fileSystem().remove(cutroom::joinPath(folder, name));
            if (outcome.ok())
                outcome = removed;
        }
    if (outcome.ok())
        outcome = cutroom::fileSystem().remove(folder);
    if (!outcome.ok())
        LogBoth("%s\n", outcome.text().c_str());
}

// --- places --------------------------------------------------------------------------------------

const char* DocumentManager::getFileExtension() noexcept { return cutroom::kDocumentExtension; }

LightweightString<wchar_t> DocumentManager::getStorageLocation() const {
    return getProjectDocumentsDirectory();
}

LightweightString<wchar_t> DocumentManager::getStorageLocation(const Cookie& project,
                                                               const Cookie& document) const {
    if (!takes(document) || (project.valid() && project != CurrentProject::getCookie()))
        return {};
    return getFilenameForCookie(document);
}

LightweightString<wchar_t> DocumentManager::getLocalLocation(const Cookie& id) const {
    return belowFor(kLocalFolder, id);
}

bool DocumentManager::isLocal(const Cookie& id) const {
    const Kv::Ptr<Document> document = getDocument(id);
    const auto local = getLocalLocation(id);
    if (!document || local.empty())
        return false;
    const auto file = document->getFileName();
    return file.starts_with(local + L"/") && (file + L"/").find(L"/../", local.size()) == file.npos;
}

LightweightString<wchar_t> DocumentManager::getCacheLocation() const { return below(kCacheFolder); }

LightweightString<wchar_t>
DocumentManager::getCacheLocation(const Kv::Ptr<Document>& document) const {
    return document ? belowFor(kCacheFolder, document->getID()) : LightweightString<wchar_t>();
}

// --- files ---------------------------------------------------------------------------------------

cutroom::Result<int> DocumentManager::scan() {
    if (!CurrentProject::isOpen())
        return 0;
    const auto added = readFiles();
    if (!added)
        return added.status();
    for (const ContainerPtr& document : *added) {
        ContainerBase::Modifications changes;
        changes.add(ContainerBase::Modification(ContainerBase::kModCreated));
        handleModification(document->getID(), changes, "scan");
    }
    return static_cast<int>(added->size());
}

Status DocumentManager::saveAll() { return saveDirty(); }

// --- what it is told -----------------------------------------------------------------------------

void DocumentManager::handleModification(const Cookie& id,
                                         const ContainerBase::Modifications& changes,
                                         LightweightString<char> reason) {
    issueNotification(Kv::makePtr<ContainerNotice>(id, changes, std::move(reason)));
}

void DocumentManager::handleLogsDeletion(const CookieVec& logs,
                                         const LightweightString<char>& reason) {
    issueNotification(
        Kv::makePtr<ContainerNotice>(ContainerNotice::What::logsDeleted, logs, reason));
}

void DocumentManager::handleLogsModification(
    const std::vector<EditManager::Modification>& changes) {
    CookieVec logs;
    for (const EditManager::Modification& change : changes)
        logs.push_back(change.edit);
    issueNotification(
        Kv::makePtr<ContainerNotice>(ContainerNotice::What::logsModified, std::move(logs)));
}
