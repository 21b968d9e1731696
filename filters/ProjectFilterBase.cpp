#include "filters/ProjectFilterBase.h"

#include "filters/FilterBinData.h"
#include "platform/files/TextFile.h"
#include "platform/prefs/EditorPreferences.h"

#include <algorithm>
#include <set>
#include <utility>

using cutroom::Status;
using cutroom::StatusCode;

namespace {

// Members of the file.
constexpr char kName[] = "Name";
constexpr char kVisibility[] = "Visibility";
constexpr char kBins[] = "Bins";
// The most bins that a file may hold, and its greatest size.
constexpr std::size_t kMaxBins = 10'000;
constexpr std::uint64_t kMaxBytes = TextFile::kMaxBytes;
// Behind the filter's name; stored settings are found under exactly these characters.
constexpr char kPrefKeyEnd[] = " : visiblity";

Status notReadAgain(const LightweightString<wchar_t>& name, const char* reason) {
    return {StatusCode::failed, cutroom::toUtf8(name), reason};
}

// Why bins could not be read again from one file.
const char* whyRefused(const FilterBins& bins) {
    if (bins.size() > kMaxBins)
        return "the filter has more bins than its file can hold";
    std::set<Cookie> ids;
    for (const Kv::Ptr<FilterBinData>& bin : bins)
        if (const Cookie id = bin->getID(); id.type() != 'G' || !ids.insert(id).second)
            return "a bin of the filter has no cookie of its own";
    return nullptr;
}

} // namespace

ProjectFilterBase::ProjectFilterBase(const Cookie& id, LightweightString<wchar_t> name)
    : id_(id), name_(std::move(name)) {}

CUTROOM_NO_THREAD_SAFETY ProjectFilterBase::~ProjectFilterBase() { note(results_, false); }

void ProjectFilterBase::note(const FilterBins& bins, bool presented) noexcept {
    for (const Kv::Ptr<FilterBinData>& bin : bins)
        bin->presented(presented);
}

LightweightString<wchar_t> ProjectFilterBase::getName() const {
    const CriticalSection::Lock lock(lock_);
    return name_;
}

void ProjectFilterBase::setName(LightweightString<wchar_t> name) {
    const CriticalSection::Lock lock(lock_);
    name_ = std::move(name);
}

// --- results -------------------------------------------------------------------------------------

FilterBins ProjectFilterBase::peekResults() const {
    const CriticalSection::Lock lock(lock_);
    return results_;
}

ProjectFilterBase::Bins ProjectFilterBase::getBins() const {
    Bins bins;
    for (const Kv::Ptr<FilterBinData>& bin : peekResults()) {
        bin->fill();
        bins.push_back(bin);
    }
    return bins;
}

CUTROOM_NO_THREAD_SAFETY const FilterBins& ProjectFilterBase::getResults() const {
    (void)getBins();
    return results_;
}

bool ProjectFilterBase::isEmpty() const {
    const Bins bins = getBins();
    return std::all_of(bins.begin(), bins.end(), [](const auto& bin) { return bin->empty(); });
}

bool ProjectFilterBase::empty() const { return peekResults().empty(); }

iProjectFilter::eResultsType ProjectFilterBase::resultsTypeByCount() const {
    return peekResults().size() > 1 ? kGroupedResults : kFlatResults;
}

// Bins that go do so outside the lock.
void ProjectFilterBase::setResults(FilterBins results) {
    note(results, true);
    {
        const CriticalSection::Lock lock(lock_);
        results_.swap(results);
    }
    note(results, false);
}

void ProjectFilterBase::clear() { setResults({}); }

void ProjectFilterBase::appendResult(const Kv::Ptr<FilterBinData>& bin) {
    const CriticalSection::Lock lock(lock_);
    bin->presented(true);
    results_.push_back(bin);
}

bool ProjectFilterBase::removeResult(const Kv::Ptr<BinData>& bin) {
    const CriticalSection::Lock lock(lock_);
    const auto at = std::find_if(results_.begin(), results_.end(),
                                 [&](const auto& result) { return result.get() == bin.get(); });
    if (at == results_.end())
        return false;
    (*at)->presented(false);
    results_.erase(at); // the caller's share keeps it alive
    return true;
}

void ProjectFilterBase::assetsChanged(const CookieVec& assets) {
    for (const Kv::Ptr<FilterBinData>& bin : peekResults())
        bin->assetsChanged(assets);
}

// --- visibility ----------------------------------------------------------------------------------

LightweightString<char> ProjectFilterBase::makePrefKey() const {
    return cutroom::toUtf8(getName()) + kPrefKeyEnd;
}

iProjectFilter::eVisibility ProjectFilterBase::getDefaultVisibility() const { return kAlways; }

iProjectFilter::eVisibility ProjectFilterBase::getVisibility() const {
    {
        const CriticalSection::Lock lock(lock_);
        if (visibility_ != kUnread)
            return visibility_;
    }
    const eVisibility otherwise = getDefaultVisibility();
    const int read = EditorPreferences::getPreference(makePrefKey(), int{otherwise});
    const CriticalSection::Lock lock(lock_);
    if (visibility_ == kUnread)
        visibility_ =
            read >= kAlways && read <= kNever ? static_cast<eVisibility>(read) : otherwise;
    return visibility_;
}

void ProjectFilterBase::setVisibility(eVisibility visibility) {
    EditorPreferences::setPreference(makePrefKey(), int{visibility});
    cacheVisibility(visibility);
}

void ProjectFilterBase::cacheVisibility(eVisibility visibility) {
    const CriticalSection::Lock lock(lock_);
    visibility_ = visibility;
}

void ProjectFilterBase::writePreference() const {
    EditorPreferences::setPreference(makePrefKey(), int{getVisibility()});
}

// --- the file ------------------------------------------------------------------------------------

cutroom::Result<std::string> ProjectFilterBase::asText() const {
    const eVisibility visibility = getVisibility();
    const FilterBins bins = peekResults();
    if (const char* const reason = whyRefused(bins))
        return notReadAgain(getName(), reason);
    JSON::Builder out;
    out.beginObject();
    out.add(kName, getName());
    if (visibility != kOptional)
        out.add(kVisibility, visibilityToString(visibility));
    out.beginArray(kBins);
    for (const Kv::Ptr<FilterBinData>& bin : bins) {
        out.beginObject();
        bin->write(out);
        out.endObject();
    }
    out.endArray();
    out.endObject();
    if (out.text().size() > kMaxBytes)
        return notReadAgain(getName(), "the filter would become larger than its file may be");
    return out.take();
}

Status ProjectFilterBase::save(const LightweightString<wchar_t>& path) const {
    const auto narrow = cutroom::narrowPath(path);
    if (!narrow)
        return narrow.status();
    const auto text = asText();
    return text ? TextFile::save(*narrow, *text) : text.status();
}

Status ProjectFilterBase::load(const LightweightString<wchar_t>& path) {
    const auto narrow = cutroom::narrowPath(path);
    if (!narrow)
        return narrow.status();
    JSON::ReadOptions options;
    options.maxBytes = kMaxBytes;
    const auto object = JSON::Element::load(*narrow, options);
    return object ? fromElement(**object, *narrow) : object.status();
}

namespace {

Status refuse(const std::string& file, std::string reason) {
    return {StatusCode::damaged, file, std::move(reason)};
}

Status checkMembers(const JSON::Element& object, const std::string& file) {
    if (!object.isObject())
        return refuse(file, "is no filter: an object is expected");
    if (const auto name = object.find(kName); name && !name->isString())
        return refuse(file, "Name: a text is expected");
    if (const auto visibility = object.find(kVisibility); visibility && !visibility->isString())
        return refuse(file, "Visibility: a text is expected");
    const auto bins = object.find(kBins);
    if (bins && !bins->isArray())
        return refuse(file, "Bins: a list is expected");
    if (bins && bins->size() > kMaxBins)
        return refuse(file, "Bins: more than " + std::to_string(kMaxBins));
    return {};
}

cutroom::Result<FilterBins> readBins(const JSON::Element& object, const std::string& file) {
    FilterBins bins;
    std::set<Cookie> ids;
    const auto list = object.find(kBins);
    const std::size_t count = list ? list->size() : 0;
    for (std::size_t i = 0; i < count; ++i) {
        const auto bin = cutroom::readFilterBin(*list->child(i), file);
        const std::string place = "Bins[" + std::to_string(i) + "]: ";
        if (!bin)
            return Status(bin.status().code(), file, place + bin.status().message());
        if (!ids.insert((*bin)->getID()).second)
            return refuse(file, place + "another bin has the ID " + (*bin)->getID().asString());
        bins.push_back(*bin);
    }
    return bins;
}

} // namespace

Status ProjectFilterBase::fromElement(const JSON::Element& object, const std::string& file) {
    if (Status sound = checkMembers(object, file); !sound)
        return sound;
    const auto bins = readBins(object, file);
    if (!bins)
        return bins.status();
    const auto visibility = object.find(kVisibility);
    const CriticalSection::Lock lock(lock_);
    name_ = object.getWString(kName);
    visibility_ = visibility ? visibilityFromString(visibility->text()) : kOptional;
    note(*bins, true);
    results_.insert(results_.end(), bins->begin(), bins->end());
    return {};
}
