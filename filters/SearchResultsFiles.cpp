// The files of the search results.
#include "filters/SearchResultsFiles.h"

#include "filters/ProjectFilterManager.h"
#include "filters/SearchResultsFilter.h"
#include "platform/base/Log.h"
#include "platform/files/Files.h"
#include "platform/files/GroupCommit.h"
#include "platform/host/StringTable.h"
#include "platform/project/CurrentProject.h"
#include "platform/project/ProjectPaths.h"

#include <algorithm>
#include <set>
#include <utility>

using cutroom::GroupCommit;
using cutroom::Status;
using cutroom::StatusCode;

namespace {

constexpr char kListFile[] = "Search.filter";
constexpr char kSuffix[] = ".criteria";
constexpr char kFolder[] = "groups/Filters/Search/"; // in the project's folder
constexpr std::size_t kMostNameBytes = 200;
// What is left of a long name for a number behind it.
constexpr std::size_t kMostPlainCharacters = 45;

bool isControl(wchar_t c) { return c < L' ' || c == 0x7F; }

std::string folder() { return cutroom::toUtf8(SearchResultsFilter::getFolder()); }

} // namespace

namespace cutroom {

std::string criteriaFile(const LightweightString<wchar_t>& name) { return toUtf8(name) + kSuffix; }

Status checkCriteriaName(const LightweightString<wchar_t>& name) {
    const std::string text = toUtf8(name);
    const auto refuse = [&](const char* reason) {
        return Status(StatusCode::wrongUsage, text, reason);
    };
    if (text.empty())
        return refuse("criteria need a name");
    if (text.size() > kMostNameBytes)
        return refuse("the name is longer than 200 bytes");
    if (name.front() == L'.')
        return refuse("the name begins with a point");
    if (std::any_of(name.begin(), name.end(), isControl) || name.find(L'/') != std::wstring::npos ||
        toWide(text) != name)
        return refuse("the name holds a slash, a control character or ill-formed text");
    return {};
}

std::wstring plainCriteriaName(const LightweightString<wchar_t>& name) {
    std::wstring plain = toWide(toUtf8(name.substr(0, kMostPlainCharacters)));
    for (wchar_t& c : plain)
        if (isControl(c) || c == L'/')
            c = L' ';
    plain.erase(plain.find_last_not_of(L' ') + 1);
    if (plain.empty() || plain.front() == L'.')
        plain.insert(0, L"_");
    return plain;
}

} // namespace cutroom

LightweightString<wchar_t> SearchResultsFilter::getFolder() {
    const auto filters = ProjectFilterManager::getFiltersFolder();
    return filters.empty() ? filters
                           : cutroom::toWide(cutroom::joinPath(cutroom::toUtf8(filters), "Search"));
}

void SearchResultsFilter::noteDamage(const std::string& file, const Status& status) {
    LogBoth("%s\n", status.text().c_str());
    damaged_.insert_or_assign(file, status);
}

void SearchResultsFilter::loadList() {
    const std::string path = cutroom::joinPath(folder(), kListFile);
    if (folder().empty() || !cutroom::fileExists(path))
        return;
    if (const Status status = load(cutroom::toWide(path)); !status)
        noteDamage(kListFile, status);
    setName(resourceStrW(cutroom::kResSearchResults)); // the file's may be in another language
    putListRight();
}

// Mends a list that something else has written: plain bins become results; dynamic ones whose
// cookie does not fit their name are dropped, and made again from their files.
void SearchResultsFilter::putListRight() {
    FilterBins bins;
    for (const Kv::Ptr<FilterBinData>& bin : peekResults()) {
        auto* const search = dynamic_cast<SearchBin*>(bin.get());
        if (search == nullptr)
            bins.push_back(Kv::makePtr<SearchBin>(*bin));
        else if (!search->isDynamic() || search->getID() == SearchBin::fixedID(search->keptAs()))
            bins.push_back(bin);
    }
    setResults(std::move(bins));
}

bool SearchResultsFilter::criteriaFileExists(const LightweightString<wchar_t>& name) {
    return cutroom::fileExists(cutroom::joinPath(folder(), cutroom::criteriaFile(name)));
}

bool SearchResultsFilter::isNameOfAnother(const LightweightString<wchar_t>& name) {
    if (!criteriaFileExists(name))
        return false;
    const auto files = cutroom::listFiles(folder(), kSuffix);
    return files &&
           std::find(files->begin(), files->end(), cutroom::criteriaFile(name)) == files->end();
}

// Reads all criteria files; dynamic bins without one go.
void SearchResultsFilter::followFiles(CookieVec& added, CookieVec& removed) {
    if (folder().empty())
        return;
    const auto files = cutroom::listFiles(folder(), kSuffix);
    if (!files) {
        noteDamage(kSuffix, files.status());
        return;
    }
    std::erase_if(damaged_, [&](const auto& one) {
        return one.first != kListFile &&
               std::find(files->begin(), files->end(), one.first) == files->end();
    });
    std::set<Cookie> present;
    for (const std::string& file : *files)
        followFile(file, present, added);
    FilterBins kept;
    for (const Kv::Ptr<FilterBinData>& bin : peekResults()) {
        if (!bin->isDynamic() || present.count(bin->getID()) != 0)
            kept.push_back(bin);
        else
            removed.push_back(bin->getID());
    }
    if (!removed.empty())
        setResults(std::move(kept));
}

void SearchResultsFilter::followFile(const std::string& file, std::set<Cookie>& present,
                                     CookieVec& added) {
    const std::wstring name = cutroom::toWide(file.substr(0, file.size() - sizeof kSuffix + 1));
    const Cookie id = SearchBin::fixedID(name);
    if (const Status sound = cutroom::checkCriteriaName(name); !sound) {
        noteDamage(file,
                   Status(StatusCode::damaged, cutroom::joinPath(folder(), file), sound.message()));
        return;
    }
    auto criteria = ProjectSearch::Criteria::load(cutroom::joinPath(folder(), file));
    if (!criteria) {
        noteDamage(file, criteria.status());
        return;
    }
    damaged_.erase(file);
    present.insert(id);
    if (const Kv::Ptr<SearchBin> bin = dynamicBin(id)) {
        if (bin->getCriteria() != *criteria)
            bin->setCriteria(*criteria);
        return;
    }
    appendResult(Kv::makePtr<SearchBin>(name, *criteria));
    added.push_back(id);
}

// Moves a damaged file out of the way of a new one.
Status SearchResultsFilter::makeRoom(const std::string& file) {
    if (damaged_.count(file) == 0)
        return {};
    const auto moved = cutroom::moveAside(cutroom::joinPath(folder(), file));
    if (moved)
        damaged_.erase(file);
    return moved.status();
}

Status SearchResultsFilter::saveList(const SearchBin* withCriteria, const SearchBins& going) {
    const auto results = peekResults();
    std::vector<std::uint64_t> counts;
    for (const Kv::Ptr<FilterBinData>& bin : results)
        counts.push_back(bin->changeCount());
    const auto list = asText();
    if (!list)
        return list.status();
    if (Status status = cutroom::makeFolders(folder()); !status)
        return status;
    GroupCommit group(CurrentProject::getFolder());
    const auto stage = [&](const std::string& file, const std::string& text)
                           CUTROOM_REQUIRES(saving_) {
                               Status status = makeRoom(file);
                               return status ? group.write(kFolder + file, text) : status;
                           };
    if (Status status = stage(kListFile, *list); !status)
        return status;
    if (withCriteria != nullptr) {
        const auto text = withCriteria->getCriteria()->asText();
        if (!text)
            return text.status();
        if (Status status = stage(cutroom::criteriaFile(withCriteria->keptAs()), *text); !status)
            return status;
    }
    for (const Kv::Ptr<SearchBin>& bin : going)
        if (bin->isDynamic())
            if (Status status = group.remove(kFolder + cutroom::criteriaFile(bin->keptAs()));
                !status)
                return status;
    if (Status status = group.commit(); !status)
        return status;
    for (std::size_t i = 0; i < results.size(); ++i)
        results[i]->setSaved(counts[i]);
    visibilityChanged_ = false;
    return {};
}
