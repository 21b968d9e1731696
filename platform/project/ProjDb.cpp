#include "platform/project/ProjDb.h"

#include "platform/base/Log.h"
#include "platform/messaging/NotifyMsgTypeDictionary.h"
#include "platform/project/ProjDbFields.h"
#include "platform/project/ProjDbSearch.h"
#include "platform/project/ProjectDatabase.h"

#include <new>

using cutroom::ProjectDatabase;
using cutroom::Status;

namespace projdb {

bool isPresent(const Cookie& cookie) { return ProjectDatabase::instance().isPresent(cookie); }

std::vector<bool> arePresent(const CookieVec& cookies) {
    return ProjectDatabase::instance().arePresent(cookies);
}

std::vector<bool> firstPresent(const CookieVec& cookies) {
    return ProjectDatabase::instance().firstPresent(cookies);
}

std::optional<Record> find(const Cookie& cookie) {
    return ProjectDatabase::instance().find(cookie);
}

std::optional<Summary> findSummary(const Cookie& cookie) {
    return ProjectDatabase::instance().findSummary(cookie);
}

std::size_t count() { return ProjectDatabase::instance().count(); }

Status insert(const Record& record) {
    return ProjectDatabase::instance().put(record, ProjectDatabase::Put::insert);
}
Status update(const Record& record) {
    return ProjectDatabase::instance().put(record, ProjectDatabase::Put::update);
}
Status put(const Record& record) {
    return ProjectDatabase::instance().put(record, ProjectDatabase::Put::either);
}
Status remove(const Cookie& cookie) { return ProjectDatabase::instance().remove(cookie); }

void forEach(const std::function<bool(const Record&)>& visit) {
    ProjectDatabase::instance().forEach(visit);
}

void forEach(const std::vector<std::string_view>& fields,
             const std::function<bool(const std::vector<std::string>&)>& visit) {
    std::vector<LogAttribute> attributes;
    for (const std::string_view field : fields)
        attributes.push_back(LogAttribute::fromID(field).value_or(LogAttribute()));
    std::vector<std::string> texts(fields.size());
    forEach([&](const Record& record) {
        for (std::size_t i = 0; i < fields.size(); ++i) {
            if (attributes[i].valid()) {
                texts[i] = record.getText(attributes[i]);
                continue;
            }
            const auto entry = record.attributes.find(fields[i]);
            texts[i] = entry != record.attributes.end() ? entry->second : std::string();
        }
        return visit(texts);
    });
}

void forEachHaving(std::string_view field, const FieldVisitor& visit) {
    forEachHaving(field, {}, visit);
}

void forEachHaving(std::string_view field, std::string_view beginning, const FieldVisitor& visit) {
    ProjectDatabase::instance().forEachHaving(field, beginning, [&](const Record& record) {
        const std::string text = record.getField(field);
        return text.empty() || !text.starts_with(beginning) || visit(record.cookie, text);
    });
}

void forEachSummary(const std::function<bool(const Summary&)>& visit) {
    for (const Summary& summary : ProjectDatabase::instance().summaries())
        if (!visit(summary))
            return;
}

void forEachMatch(const SearchCriteria& criteria,
                  const std::function<bool(const Summary&)>& visit) {
    Search search(criteria);
    std::vector<Hit> hits;
    while (search.next(hits)) {
    }
    putInOrder(hits);
    for (const Hit& hit : hits)
        if (!visit(hit.summary))
            return;
}

Changes::~Changes() = default;

int changedMsgType() {
    return NotifyMsgTypeDictionary::instance().intern("ProjectDatabaseChanged");
}

Kv::Ptr<Guard> addListener(CallbackPtr<NotifyMsg> callback) {
    return ProjectDatabase::instance().notifier().addListener(std::move(callback),
                                                              changedMsgType());
}

} // namespace projdb

ProjDbModificationCoalescer::ProjDbModificationCoalescer() {
    ProjectDatabase::instance().beginBatch();
}

ProjDbModificationCoalescer::~ProjDbModificationCoalescer() {
    try {
        if (const Status status = ProjectDatabase::instance().endBatch(); !status)
            LogBoth("%s\n", status.text().c_str());
    } catch (const std::bad_alloc&) {
        LogBoth("no memory to tell what the project database became\n");
    }
}

Status ProjDbModificationCoalescer::commit() { return ProjectDatabase::instance().commitBatch(); }
