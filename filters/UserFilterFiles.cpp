#include "filters/UserFilterFiles.h"

#include "platform/project/CurrentProject.h"
#include "platform/project/ProjectLayout.h"

namespace cutroom {

namespace {

Status checkWritable() {
    if (!CurrentProject::isOpen())
        return {StatusCode::wrongUsage, "", "no project is open"};
    if (CurrentProject::isReadOnly())
        return {StatusCode::failed, CurrentProject::getFolder(),
                "the project is open for reading only"};
    return {};
}

} // namespace

UserFilterFiles::UserFilterFiles() : files_(kFiltersFolder, UserFilter::getFileExtension()) {}

Result<CookieVec> UserFilterFiles::list() {
    return files_.list([](const Cookie& id) { return id.valid(); });
}

UserFilterFiles::FilterPtr UserFilterFiles::read(const Cookie& id) {
    FilterPtr filter = Kv::makePtr<UserFilter>(id);
    (void)files_.read(id, [&](const JSON::Element& object, const std::string& file) {
        return filter->take(object, file);
    }); // logged and remembered
    return filter;
}

// The counts are taken before the texts, so that what changes between the two is saved again.
Status UserFilterFiles::write(const std::vector<FilterPtr>& filters) {
    if (Status writable = checkWritable(); !writable)
        return writable;
    GroupCommit group(CurrentProject::getFolder());
    std::vector<UserFilter::ChangeCounts> counts;
    for (const FilterPtr& filter : filters) {
        counts.push_back(filter->changeCounts());
        const auto text = filter->getFileText();
        if (!text)
            return text.status();
        if (Status staged = files_.stage(group, filter->getID(), *text); !staged)
            return staged;
    }
    if (Status committed = group.commit(); !committed)
        return committed;
    for (std::size_t i = 0; i < filters.size(); ++i)
        filters[i]->setSaved(counts[i]);
    return {};
}

Status UserFilterFiles::remove(const Cookie& id) {
    if (Status writable = checkWritable(); !writable)
        return writable;
    GroupCommit group(CurrentProject::getFolder());
    if (Status removed = group.remove(files_.name(id)); !removed)
        return removed;
    return group.commit();
}

} // namespace cutroom
