#include "tests/support/ProjectStates.h"

#include "bins/AssetAssociationGroupManager.h"
#include "bins/BinManager.h"
#include "bins/DocumentManager.h"
#include "interchange/Importer.h"
#include "platform/files/Files.h"
#include "platform/project/CurrentProject.h"
#include "platform/project/ProjDb.h"
#include "platform/store/Edit.h"
#include "platform/store/EditFile.h"
#include "platform/store/EditManager.h"
#include "platform/store/EditRecord.h"
#include "sync/SyncGroupData.h"

#include <zlib.h>

#include <filesystem>
#include <set>
#include <sstream>
#include <stdexcept>

namespace cutroom::test {

namespace {

std::string checksumOf(const std::string& text) {
    const auto* bytes = reinterpret_cast<const Bytef*>(text.data());
    return std::to_string(crc32(0, bytes, static_cast<uInt>(text.size())));
}

} // namespace

std::string stampOf(const EditPtr& edit) {
    std::string stamp = checksumOf(edit->canonicalContents());
    for (const auto& step : EditManager::instance().getHistory(edit))
        stamp += (step.undone ? "-" : "+") + step.description;
    return stamp;
}

std::string stampOf(const BinData& bin) {
    std::string text = toUtf8(bin.getName());
    for (const BinItem& item : bin.items())
        text += ' ' + item.getAssetID().asString() + ' ' + toText(item.time);
    if (const auto* const group = dynamic_cast<const SyncGroupData*>(&bin))
        text += relationshipsText(group->relationships());
    return checksumOf(text);
}

std::string stampOf(const DescribedContainer& container) {
    JSON::Builder text;
    container.write(text);
    return checksumOf(text.text());
}

std::string groupKey(const Cookie& group) { return "group." + group.asString(); }

ProjectState stateOfProject() {
    ProjectState state{{"name", toUtf8(CurrentProject::getName())}};
    for (const Cookie& cookie : EditManager::instance().getAllEdits()) {
        const EditPtr edit(cookie);
        state[cookie.asString()] = edit ? stampOf(edit) : "-";
    }
    BinSummaries bins;
    BinManager::instance().getAllBins(bins);
    for (const auto& [cookie, summary] : bins) {
        const Kv::Ptr<BinData> bin = BinManager::instance().getData(cookie);
        state[cookie.asString()] = bin && bin->valid() ? stampOf(*bin) : "-";
    }
    for (const auto& document : DocumentManager::instance().getDocuments())
        state[document->getID().asString()] = stampOf(*document);
    for (const auto& group : AssetAssociationGroupManager::instance().getGroups())
        state[groupKey(group->getID())] = stampOf(*group);
    return state;
}

std::string summaryTrouble() {
    BinSummaries bins;
    BinManager::instance().getAllBins(bins);
    for (const auto& [cookie, summary] : bins)
        if (!(summary == BinSummary(BinData(cookie))))
            return cookie.asString() + ": " + toUtf8(summary.name);
    return {};
}

std::string textOf(const ProjectState& state) {
    std::string text;
    for (const auto& [key, stamp] : state)
        text.append(key).append("=").append(stamp).append(" ");
    return text;
}

ProjectState stateOf(const std::string& text) {
    ProjectState state;
    std::istringstream words(text);
    for (std::string word; words >> word;)
        state[word.substr(0, word.find('='))] = word.substr(word.find('=') + 1);
    return state;
}

std::string differences(const ProjectState& a, const ProjectState& b) {
    std::string text;
    for (const auto& [key, stamp] : a)
        if (!b.contains(key) || b.at(key) != stamp)
            text += key + ": " + stamp + " / " + (b.contains(key) ? b.at(key) : "none") + '\n';
    for (const auto& [key, stamp] : b)
        if (!a.contains(key))
            text += key + ": none / " + stamp + '\n';
    return text;
}

CookieVec importTimelines() {
    CookieVec edits;
    for (const char* const name : {"/premiere_example.otio", "/multitrack.otio"}) {
        const auto report = importFile(std::string(CUTROOM_TEST_DATA "/corpus/otio") + name);
        if (!report)
            throw std::runtime_error(report.status().text());
        for (const auto& made : report->edits)
            edits.push_back(made.edit);
    }
    return edits;
}

std::map<std::string, std::string> filesBelow(const std::string& folder) {
    std::map<std::string, std::string> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder))
        if (entry.is_regular_file())
            files[entry.path().string().substr(folder.size() + 1)] = bytesOf(entry.path().string());
    return files;
}

std::vector<std::string> litterAmong(const std::map<std::string, std::string>& files) {
    std::vector<std::string> litter;
    for (const auto& [path, content] : files)
        if (isTemporaryName(nameOf(path)) || path == "commit.manifest")
            litter.push_back(path);
    return litter;
}

std::string databaseTrouble() {
    std::set<Cookie> filed;
    const std::string folder = CurrentProject::getFolder() + "/edits";
    const auto names = listFiles(folder, ".edit");
    if (!names)
        return names.status().text();
    for (const std::string& name : *names) {
        const Cookie cookie = Cookie::fromString(name.substr(0, name.size() - 5)).value();
        const auto read = EditFile::decode(bytesOf(joinPath(folder, name)), name);
        const auto record = projdb::find(cookie);
        filed.insert(cookie);
        if (!read || !record || !(*record == recordOf(cookie, read->state)))
            return name + ": " + (read ? record ? "old record" : "no record" : "damaged");
    }
    std::string trouble;
    projdb::forEach([&](const projdb::Record& record) {
        if (!filed.contains(record.cookie))
            trouble = record.cookie.asString() + ": record without file";
        return trouble.empty();
    });
    return trouble;
}

std::string historyTrouble(const EditPtr& edit) {
    EditManager& manager = EditManager::instance();
    const std::string before = stampOf(edit);
    std::size_t undone = 0;
    std::size_t redone = 0;
    std::string trouble = edit->checkConsistency();
    for (; trouble.empty() && manager.undo(edit); ++undone)
        trouble = edit->checkConsistency();
    if (manager.canUndo(edit) || !trouble.empty())
        return "going back: " + trouble;
    const std::size_t steps = manager.getHistory(edit).size();
    for (; trouble.empty() && manager.redo(edit); ++redone)
        trouble = edit->checkConsistency();
    if (redone != steps || !trouble.empty())
        return "going forth: " + trouble;
    for (; redone > undone; --redone)
        (void)manager.undo(edit);
    return stampOf(edit) == before ? "" : "another state after going back and forth";
}

} // namespace cutroom::test
