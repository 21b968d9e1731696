// Verbs for the project's filters.
#include "cli/ContainerText.h"
#include "cli/ContainerWords.h"
#include "cli/FilterWords.h"
#include "cli/Names.h"
#include "cli/Session.h"
#include "platform/base/Strings.h"
#include "platform/store/ChangedEdits.h"

namespace cutroom::cli {

namespace {

ProjectFilterManager& filters() { return ProjectFilterManager::instance(); }

FilterPtr takeFilter(SessionWords& words) { return require(findFilter(words.take("a filter"))); }
Kv::Ptr<UserFilter> takeUserFilter(SessionWords& words) {
    return require(findUserFilter(words.take("a filter")));
}

// A result bin of the filter by its name.
Kv::Ptr<FilterBinData> takeResult(SessionWords& words, const iProjectFilter& filter) {
    const std::string name = words.take("a bin of the filter");
    for (const Kv::Ptr<FilterBinData>& bin : filter.getResults())
        if (toUtf8(bin->getName()) == name || bin->getID().asString() == name)
            return bin;
    refuse(StatusCode::notFound, name, "the filter has no such bin");
}

std::string contents(const BinData& bin) {
    std::string text;
    for (const AssetReference& item : bin.getCookies())
        text += (text.empty() ? "" : ", ") + assetName(item.cookie);
    return text;
}

void tellFilters(Session& session, SessionWords&) {
    ChangedEdits::enter();
    for (const FilterPtr& filter : filters().getAllFilters())
        session.say("  " + toUtf8(filter->getName()) +
                    (filter->getCreator() == iProjectFilter::kUser ? ", yours" : "") + ", " +
                    iProjectFilter::visibilityToString(filter->getVisibility()) +
                    (filter->isEmpty() ? ", empty" : ""));
    for (const Status& damage : filters().getDamaged())
        session.say("  damaged: " + damage.message());
}

void tellFilter(Session& session, SessionWords& words) {
    static constexpr const char* kResults[] = {"a list", "a group of bins", "results of searches"};
    const FilterPtr filter = takeFilter(words);
    session.say("  " + toUtf8(filter->getDescription()) + ", as " +
                kResults[filter->getResultsType()] + (filter->empty() ? ", no bins" : ""));
    for (const Kv::Ptr<FilterBinData>& bin : filter->getResults())
        session.say("  " + toUtf8(bin->getName()) + ": " + contents(*bin));
}

void makeFilter(Session& session, SessionWords& words) {
    const std::string name = words.take("a name");
    auto visibility = iProjectFilter::kAlways;
    if (words.takeIf("shown"))
        visibility = require(visibilityOf(words.take("when")));
    const FilterBins bins = require(filterBinsOf(words.takeRest()));
    const FilterPtr made = filters().createFilter(bins, toWide(name), visibility);
    if (!made)
        refuse(StatusCode::failed, name, "no filter can be made");
    session.say("made " + toUtf8(made->getName()));
}

void updateFilter(Session&, SessionWords& words) {
    const Kv::Ptr<UserFilter> filter = takeUserFilter(words);
    const FilterBins bins = require(filterBinsOf(words.takeRest()));
    if (!filters().updateFilter(filter, bins))
        refuse(StatusCode::failed, toUtf8(filter->getName()), "cannot be saved");
}

void destroyFilter(Session& session, SessionWords& words) {
    if (!filters().destroyFilter(takeFilter(words)))
        session.say("  it stays");
}

void giveName(Session&, SessionWords& words) {
    const Kv::Ptr<UserFilter> filter = takeUserFilter(words);
    const std::string name = words.take("a name");
    if (!filters().renameFilter(filter, toWide(name)))
        refuse(StatusCode::failed, toUtf8(filter->getName()), "cannot be saved");
}

void setVisibility(Session&, SessionWords& words) {
    const FilterPtr filter = takeFilter(words);
    const auto visibility = require(visibilityOf(words.take("when")));
    if (!filters().setVisibility(filter, visibility))
        refuse(StatusCode::failed, toUtf8(filter->getName()), "cannot be saved");
}

// --- through the interface that every filter has -------------------------------------------------

void addToFilter(Session& session, SessionWords& words) {
    const FilterPtr filter = takeFilter(words);
    const Kv::Ptr<BinData> taken = filter->add(require(findAnyBin(words.take("a bin"))));
    session.say(taken ? "  " + toUtf8(taken->getName()) + ": " + contents(*taken)
                      : "  it takes none");
}

void removeFromFilter(Session& session, SessionWords& words) {
    const FilterPtr filter = takeFilter(words);
    iMultiBinContainer::Bins going;
    while (!words.done())
        going.push_back(takeResult(words, *filter));
    if (going.size() > 1)
        filter->remove(going);
    else if (!filter->remove(going.front()))
        session.say("  it stays");
}

// --- bins ----------------------------------------------------------------------------------------

void makeRealBin(Session& session, SessionWords& words) {
    const FilterPtr filter = takeFilter(words);
    const eSetOperation operation = require(setOperationOf(words.take("any, all or first")));
    const auto bin = filters().makeBin(filter, operation, require(parseName(words.take("a name"))));
    session.say(toUtf8(getDisplayString(operation)) + ": " + contents(*bin));
}

void tellResponsible(Session& session, SessionWords& words) {
    const FilterPtr filter =
        filters().findFilterResponsibleFor(require(findAnyBin(words.take("a bin"))));
    session.say("  " + (filter ? toUtf8(filter->getName()) : std::string("none")));
}

// The bin as a filter file would hold it, read again.
void tellPersisted(Session& session, SessionWords& words) {
    const FilterPtr filter = takeFilter(words);
    JSON::Builder out(JSON::Layout::compact);
    out.beginObject();
    takeResult(words, *filter)->write(out);
    out.endObject();
    session.say("  " + out.text());
    const auto read =
        filters().createFilterBinData(*require(JSON::Element::parse(out.text(), "bin")));
    session.say(read ? "  read again: " + read->getTypeID() + ", " + countText(read->numItems())
                     : "  is not read again");
}

} // namespace

void addFilterVerbs(VerbTable& verbs) {
    verbs.heading("Filters");
    verbs.add({"filters?", "", "lists the filters", tellFilters});
    verbs.add({"filter?", "FILTER", "tells what a filter shows", tellFilter});
    verbs.add({"filter-new", "NAME [shown always|optional|never] [BIN|FILTER] ...",
               "makes a filter over copies of bins", makeFilter});
    verbs.add({"filter-update", "FILTER [BIN|FILTER] ...", "gives it other bins", updateFilter});
    verbs.add({"filter-delete", "FILTER", "deletes a filter of yours", destroyFilter});
    verbs.add({"filter-rename", "FILTER NAME", "gives it another name", giveName});
    verbs.add(
        {"filter-shown", "FILTER always|optional|never", "sets when it is shown", setVisibility});
    verbs.add(
        {"filter-add", "FILTER BIN", "puts a bin into a filter that takes some", addToFilter});
    verbs.add({"filter-remove", "FILTER BIN ...", "takes result bins out", removeFromFilter});
    verbs.add({"filter-clear", "FILTER", "drops its results",
               [](Session&, SessionWords& words) { takeFilter(words)->clear(); }});
    verbs.add(
        {"filter-bin", "FILTER any|all|first NAME", "makes a real bin of its bins", makeRealBin});
    verbs.add({"filter-of?", "BIN", "tells which filter presents a bin", tellResponsible});
    verbs.add(
        {"filter-json?", "FILTER BIN", "writes a result bin as its file holds it", tellPersisted});
    verbs.add({"filters-save", "", "writes the filters that changed",
               [](Session&, SessionWords&) { require(filters().saveAll()); }});
    verbs.add({"filters-reinit", "", "brings the filters into line with their files",
               [](Session&, SessionWords&) { filters().reInit(); }});
}

} // namespace cutroom::cli
