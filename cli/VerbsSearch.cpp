// Verbs for searches: what matches, the results that are kept, criteria in words and files.
#include "cli/Command.h"
#include "cli/ContainerText.h"
#include "cli/ContainerWords.h"
#include "cli/Names.h"
#include "cli/SearchWords.h"
#include "cli/Session.h"
#include "filters/ProjectFilterManager.h"
#include "platform/base/Strings.h"
#include "platform/files/Files.h"
#include "platform/project/ProjDb.h"

namespace cutroom::cli {

namespace {

using Criteria = ProjectSearch::Criteria;

void sayResults(Session& session, const BinData& results) {
    session.say("  " + toUtf8(results.getName()) + ": " + countText(results.numItems()));
    for (const BinItem& item : results) {
        const auto summary = projdb::findSummary(item.asset);
        std::string line =
            "    " + assetName(item.asset) + ", " + kindText(summary ? summary->kinds : 0);
        if (item.hasMark())
            line += format(", %.3f to %.3f", item.markIn, item.markOut);
        session.say(line);
    }
}

void sayFound(Session& session, const Kv::Ptr<BinData>& found) {
    if (found)
        sayResults(session, *found);
    else
        session.say("  stopped");
}

Kv::Ptr<SearchResultsFilter> results() { return require(searchResults()); }
Kv::Ptr<SearchBin> takeSearch(SessionWords& words) {
    return require(findSearch(words.take("a search")));
}

void search(Session& session, SessionWords& words) {
    const bool watched = words.takeIf("watched");
    const long long most = words.takeIf("stop-at") ? words.takeInt("a number", 1, 1'000'000) : 0;
    const Criteria criteria = takeConditions(words);
    if (!watched && most == 0)
        return sayFound(session, ProjectSearch::instance().perform(criteria));
    const auto found =
        ProjectSearch::instance().perform(criteria, [&](const ProjectSearch::Progress& state) {
            session.say(format("  %zu found, %.0f %%", state.found, state.share * 100));
            return most == 0 || state.found < static_cast<std::size_t>(most);
        });
    sayFound(session, found);
}

void tellSatisfies(Session& session, SessionWords& words) {
    const EditPtr edit = require(openEdit(words.take("an edit")));
    session.say(ProjectSearch::instance().satisfiesCriteria(edit, takeConditions(words)) ? "  yes"
                                                                                         : "  no");
}

void tellName(Session& session, SessionWords& words) {
    const Criteria criteria = takeConditions(words);
    session.say("  " + toUtf8(ProjectSearch::makeName(criteria, false)));
    session.say("  " + toUtf8(ProjectSearch::makeName(criteria, true)));
    for (const auto& [name, value] : ProjectSearch::getDescription(criteria))
        session.say("    " + name + " = " + value);
}

// Prints the criteria as pairs, and whether reading the pairs gives the same criteria.
void tellPairs(Session& session, SessionWords& words) {
    const Criteria criteria = takeConditions(words);
    std::vector<projdb::AttributeValuePair> pairs;
    criteria.saveTo(pairs);
    for (const auto& [name, value] : pairs)
        session.say("  " + name + " = " + oneLine(value));
    Criteria restored;
    restored.restoreFrom(pairs);
    session.say(restored == criteria ? "  restored alike" : "  restored otherwise");
}

void tellJson(Session& session, SessionWords& words) {
    std::string text = require(takeConditions(words).asText());
    text.pop_back();
    session.say(text);
}

void compare(Session& session, SessionWords& words) {
    const std::string text = words.take("a text");
    const std::string pattern = words.take("a pattern");
    const bool whole = words.takeAnywhere("words");
    const bool cased = words.takeAnywhere("case");
    const bool narrow = ProjectSearch::compareStrings(text, pattern, whole, cased);
    const bool wide = ProjectSearch::compareStrings(toWide(text), toWide(pattern), whole, cased);
    session.say(std::string(narrow ? "  found" : "  not found") +
                (narrow == wide ? "" : ", otherwise as wide text"));
}

// --- what is kept --------------------------------------------------------------------------------

void sayKept(Session& session, const Kv::Ptr<BinData>& bin) {
    if (bin)
        sayResults(session, *bin);
    else
        session.say("  not kept");
}

void keep(Session& session, SessionWords& words) {
    const bool dynamic = words.takeIf("dynamic");
    const Criteria criteria = takeConditions(words);
    sayKept(session, dynamic ? results()->add(criteria, true)
                             : ProjectFilterManager::instance().addSearch(criteria));
}

void saveAs(Session& session, SessionWords& words) {
    const std::string name = words.take("a name");
    const Kv::Ptr<BinData> bin =
        require(results()->saveCriteria(toWide(name), takeConditions(words)));
    session.say("  " + toUtf8(bin->getName()) + " is kept");
}

void tellKept(Session& session, SessionWords& words) {
    if (!words.done()) {
        const Kv::Ptr<SearchBin> bin = takeSearch(words);
        bin->fill();
        sayResults(session, *bin);
        if (const auto criteria = bin->getCriteria())
            session.say("    " + toUtf8(ProjectSearch::makeName(*criteria, true)));
        return;
    }
    const Kv::Ptr<SearchResultsFilter> all = results();
    session.say("  " + toUtf8(all->getName()) + (all->empty() ? ": none" : ""));
    for (const auto& bin : all->getBins())
        session.say("    " + toUtf8(bin->getName()) + ", " + countText(bin->numItems()) +
                    (require(findSearch(bin->getID().asString()))->isDynamic() ? ", dynamic" : ""));
    for (const Status& damage : all->getDamaged())
        session.say("    damaged: " + nameOf(damage.file()) + ": " + damage.message());
}

void removeKept(Session& session, SessionWords& words) {
    iMultiBinContainer::Bins going;
    while (!words.done())
        going.push_back(takeSearch(words));
    if (going.size() > 1)
        results()->remove(going);
    else if (!results()->remove(going.front()))
        session.say("  it stays");
}

} // namespace

void addSearchVerbs(VerbTable& verbs) {
    // The table keeps pointers to its texts.
    static const std::string conditions = conditionUsage();
    static const std::string watched = "[watched | stop-at N] " + conditions;
    static const std::string ofEdit = "EDIT " + conditions;
    static const std::string dynamic = "[dynamic] " + conditions;
    static const std::string named = "NAME " + conditions;
    verbs.heading("Searching");
    verbs.add({"search", watched.c_str(), "lists what meets the conditions", search});
    verbs.add({"satisfies?", ofEdit.c_str(), "whether one edit meets them", tellSatisfies});
    verbs.add({"search-name", conditions.c_str(), "the conditions in words", tellName});
    verbs.add({"search-pairs", conditions.c_str(), "the conditions as pairs", tellPairs});
    verbs.add({"search-json", conditions.c_str(), "the conditions as they are saved", tellJson});
    verbs.add({"compare", "TEXT PATTERN [words] [case]",
               "whether a pattern occurs, as a whole word, in that case", compare});
    verbs.add(
        {"search-keep", dynamic.c_str(), "searches and keeps the results, or the search", keep});
    verbs.add({"search-keep-bin", "BIN", "keeps what a bin holds as results",
               [](Session& session, SessionWords& words) {
                   sayKept(session,
                           ProjectFilterManager::instance().addSearchResults(takeBin(words)));
               }});
    verbs.add({"search-save", named.c_str(), "keeps the search under a name", saveAs});
    verbs.add(
        {"searches?", "[SEARCH]", "lists the kept searches, or the results of one", tellKept});
    verbs.add({"search-remove", "SEARCH ...", "forgets kept searches", removeKept});
    verbs.add({"search-clear", "", "forgets all kept searches",
               [](Session&, SessionWords&) { results()->clear(); }});
    verbs.add({"search-update", "", "reads the files of the kept searches again",
               [](Session&, SessionWords&) { results()->update(); }});
}

} // namespace cutroom::cli
