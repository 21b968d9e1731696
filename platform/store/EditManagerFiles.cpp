// Saving, deleting and the history's files.
#include "platform/base/IdSource.h"
#include "platform/base/Log.h"
#include "platform/base/Strings.h"
#include "platform/files/Files.h"
#include "platform/files/GroupCommit.h"
#include "platform/project/CurrentProject.h"
#include "platform/project/ProjDb.h"
#include "platform/store/ChangedEdits.h"
#include "platform/store/EditManagerImpl.h"
#include "platform/store/EditRecord.h"
#include "platform/store/SaveAlongside.h"

#include <new>
#include <unordered_set>

using cutroom::EditFile;
using cutroom::Status;
using cutroom::StatusCode;

namespace {

// A damaged history is moved aside before the group is put in place. It may have gone already, when
// an earlier save moved it and failed after that.
Status writeHistory(cutroom::GroupCommit& group, const SavedEdit& now) {
    if (!now.writeHistory)
        return {};
    const Cookie& cookie = now.edit->getCookie();
    if (now.setHistoryAside)
        if (const auto moved = cutroom::moveAside(EditFile::historyPath(cookie));
            !moved && moved.status().code() != StatusCode::notFound)
            return moved.status();
    return group.write(EditFile::historyName(cookie),
                       EditFile::encodeHistory(cookie, now.historyId, now.history));
}

} // namespace

SavedEdit EditManager::Impl::beginSave(const Kv::Ptr<Edit>& edit) {
    const Edit::Lock lock(*edit);
    Edit::Impl& impl = *edit->impl_;
    SavedEdit saved;
    saved.edit = edit;
    saved.state = impl.state.snapshot();
    saved.changes = edit->changeCount();
    saved.historyId = impl.history.fileId;
    saved.writeHistory = impl.history.edits != impl.history.saved;
    if (!saved.writeHistory)
        return saved;
    saved.setHistoryAside = impl.history.damaged;
    saved.historyId = cutroom::idSource().nextId();
    saved.history.position = impl.history.position;
    saved.history.edits = impl.history.edits;
    for (const cutroom::EditHistory::Step& step : impl.history.steps)
        saved.history.steps.push_back({step.description, step.when, step.state.snapshot()});
    return saved;
}

// An edit whose record could not be written stays dirty, so that the next save writes the record.
void EditManager::Impl::endSave(const SavedEdit& saved, bool recorded) {
    const Edit::Lock lock(*saved.edit);
    Edit::Impl& impl = *saved.edit->impl_;
    impl.history.fileId = saved.historyId;
    if (saved.writeHistory) {
        impl.history.saved = saved.history.edits;
        impl.history.damaged = false;
    }
    if (recorded && saved.edit->changeCount() == saved.changes)
        impl.dirty = false;
}

Status EditManager::Impl::putRecords(const std::vector<SavedEdit>& saved) {
    ProjDbModificationCoalescer coalescer;
    for (const SavedEdit& edit : saved)
        if (Status status = projdb::put(cutroom::recordOf(edit.edit->getCookie(), edit.state));
            !status)
            return status;
    return coalescer.commit();
}

// State and history go into one group, so that after a crash both are old or both are new.
Status EditManager::Impl::saveAll(const std::vector<Kv::Ptr<Edit>>& edits, TooLarge tooLarge,
                                  const std::function<void(double)>& progress) {
    if (edits.empty() || !CurrentProject::isOpen())
        return {};
    if (CurrentProject::isReadOnly())
        return {StatusCode::failed, CurrentProject::getFolder(),
                "the project is open for reading only"};
    const CriticalSection::Lock whole(saving);
    cutroom::GroupCommit group(CurrentProject::getFolder());
    std::vector<SavedEdit> saved;
    Status unsaved;
    double done = 0;
    for (const Kv::Ptr<Edit>& edit : edits) {
        SavedEdit now = beginSave(edit);
        if (progress)
            progress(++done / static_cast<double>(edits.size()));
        const Cookie& cookie = edit->getCookie();
        const auto bytes = EditFile::encode(cookie, now.historyId, now.state);
        if (!bytes && tooLarge == TooLarge::staysUnsaved) {
            if (unsaved)
                unsaved = bytes.status();
            continue;
        }
        if (!bytes)
            return bytes.status();
        if (Status status = group.write(EditFile::name(cookie), *bytes); !status)
            return status;
        if (Status status = writeHistory(group, now); !status)
            return status;
        saved.push_back(std::move(now));
    }
    if (saved.empty())
        return unsaved;
    for (const cutroom::FileInProject& file : cutroom::SaveAlongside::current())
        if (Status status = group.write(file.name, file.content); !status)
            return status;
    if (Status status = group.commit(); !status)
        return status;
    Status recorded;
    try {
        recorded = putRecords(saved);
    } catch (const std::bad_alloc&) { // the files are in place already, so try once more
        recorded = putRecords(saved);
    }
    for (const SavedEdit& edit : saved) {
        endSave(edit, recorded.ok());
        if (recorded) // what changed meanwhile may have been entered before
            cutroom::ChangedEdits::note(*edit.edit, {});
    }
    return recorded ? unsaved : recorded;
}

Status EditManager::flushChanges(bool all) {
    std::vector<Kv::Ptr<Edit>> due;
    for (Kv::Ptr<Edit>& edit : impl_->all())
        if (all || edit->isDirty())
            due.push_back(std::move(edit));
    Status status = discardRest();
    if (status)
        status = impl_->saveAll(due, Impl::TooLarge::staysUnsaved);
    due.clear();
    impl_->dropUnused();
    return status;
}

Status EditManager::save(const EditPtr& edit) { return save(std::vector<EditPtr>{edit}); }

bool EditManager::anyDirty() const {
    for (const Kv::Ptr<Edit>& edit : impl_->all())
        if (edit->isDirty())
            return true;
    return false;
}

EditPtr EditManager::addToProject(const EditPtr& edit) {
    if (!edit)
        return {};
    const EditPtr entered(impl_->enter(Kv::Ptr<Edit>(edit.get())));
    entered->setDirty();
    if (!CurrentProject::isOpen() || CurrentProject::isReadOnly())
        return entered;
    const SavedEdit now = Impl::beginSave(Kv::Ptr<Edit>(entered.get()));
    if (const Status status = projdb::put(cutroom::recordOf(edit.getCookie(), now.state)); !status)
        LogBoth("%s\n", status.text().c_str());
    return entered;
}

Status EditManager::deleteEdits(const CookieVec& edits, const LightweightString<char>& reason) {
    CookieVec found;
    std::unordered_set<Cookie> seen;
    std::vector<std::string> names;
    for (const Cookie& cookie : edits)
        if (exists(cookie) && seen.insert(cookie).second) {
            found.push_back(cookie);
            names.push_back(cookie.asString());
        }
    if (found.empty())
        return {};
    const Kv::Ptr<iObject> notice(new EditDeletionNotice(found, reason));
    const std::string text = cutroom::join(names, " ");
    impl_->tell(kNoticePrepareForDeletion, notice, text);
    if (Status status = removeFiles(found); !status)
        return status;
    std::vector<Kv::Ptr<Edit>> gone; // die outside the lock
    {
        const CriticalSection::Lock held(impl_->lock);
        for (const Cookie& cookie : found) {
            const auto entry = impl_->table.find(cookie);
            if (entry == impl_->table.end())
                continue;
            gone.push_back(std::move(entry->second));
            impl_->table.erase(entry);
        }
    }
    gone.clear();
    impl_->tell(kNoticeDeletion, notice, text);
    return {};
}

Status EditManager::removeFiles(const CookieVec& edits) {
    if (!CurrentProject::isOpen())
        return {};
    if (CurrentProject::isReadOnly())
        return {StatusCode::failed, CurrentProject::getFolder(),
                "the project is open for reading only"};
    const CriticalSection::Lock whole(impl_->saving);
    cutroom::GroupCommit group(CurrentProject::getFolder());
    for (const Cookie& cookie : edits)
        for (const std::string& name : {EditFile::name(cookie), EditFile::historyName(cookie)})
            if (Status status = group.remove(name); !status)
                return status;
    if (Status status = group.commit(); !status)
        return status;
    {
        const CriticalSection::Lock held(impl_->lock);
        ++impl_->removals;
    }
    ProjDbModificationCoalescer coalescer;
    for (const Cookie& cookie : edits)
        if (projdb::isPresent(cookie))
            if (Status status = projdb::remove(cookie); !status)
                return status;
    return coalescer.commit();
}

cutroom::Result<std::string> EditManager::setDamagedAside(const Cookie& edit) {
    const std::string path = EditFile::path(edit);
    if (path.empty() || !cutroom::fileExists(path) || CurrentProject::isReadOnly())
        return Status(StatusCode::notFound, edit.asString(), "there is no such file to move");
    const auto bytes = cutroom::readFile(path);
    if (bytes && EditFile::decode(*bytes, path))
        return Status(StatusCode::wrongUsage, path, "the file is not damaged");
    return cutroom::moveAside(path);
}

cutroom::Status EditManager::restoreBackup(const Cookie& edit) {
    const std::string path = EditFile::path(edit);
    if (path.empty() || cutroom::fileExists(path) || CurrentProject::isReadOnly())
        return {StatusCode::wrongUsage, path, "the file is there, or cannot be written"};
    const std::string backup = path + ".bak";
    const auto bytes = cutroom::readFile(backup);
    if (!bytes)
        return bytes.status();
    if (const auto read = EditFile::decode(*bytes, backup); !read)
        return read.status();
    return cutroom::copyFile(backup, path);
}

cutroom::Status EditManager::checkFiles(const Cookie& edit) const {
    const std::string path = EditFile::path(edit);
    const auto bytes = cutroom::readFile(path);
    if (!bytes)
        return bytes.status();
    const auto read = EditFile::decode(*bytes, path);
    if (!read)
        return read.status();
    const std::string historyPath = EditFile::historyPath(edit);
    const auto history = cutroom::readFile(historyPath);
    if (history)
        return EditFile::decodeHistory(*history, historyPath, read->historyId).status();
    return history.status().code() == StatusCode::notFound ? Status() : history.status();
}

// --- undo ---------------------------------------------------------------------------------------

void EditManager::Impl::needHistory(Edit::Impl& edit) {
    cutroom::EditHistory& history = edit.history;
    if (history.loaded)
        return;
    history.loaded = true;
    const std::string path = EditFile::historyPath(edit.cookie);
    if (path.empty())
        return;
    const auto bytes = cutroom::readFile(path);
    if (bytes.status().code() == StatusCode::notFound)
        return;
    auto read = bytes ? EditFile::decodeHistory(*bytes, path, history.fileId)
                      : cutroom::Result<cutroom::EditHistory>(bytes.status());
    if (read) {
        history.steps = std::move(read->steps);
        history.position = read->position;
        return;
    }
    history.damaged = read.status().code() == StatusCode::damaged;
    history.loaded = history.damaged; // a file that may be readable later is read again then
    LogBoth("%s\n", read.status().text().c_str());
}

void EditManager::makeBackup(const EditPtr& edit, const LightweightString<char>& description) {
    if (!edit)
        return;
    const Edit::Lock lock(*edit);
    Edit::Impl& impl = *edit->impl_;
    Impl::needHistory(impl);
    cutroom::EditHistory& history = impl.history;
    if (!history.loaded)
        history.loaded = history.damaged = true; // a new history begins, the other is kept aside
    if (history.lastBackupAt == edit->changeCount() && history.canUndo() && !history.canRedo()) {
        history.rename(description); // nothing has changed since
        return;
    }
    history.push({description, cutroom::idSource().secondsNow(), impl.state.snapshot()}, kMaxSteps);
    history.lastBackupAt = edit->changeCount();
}

void EditManager::dropBackup(const EditPtr& edit) {
    if (!edit)
        return;
    const Edit::Lock lock(*edit);
    cutroom::EditHistory& history = edit->impl_->history;
    if (history.former && history.lastBackupAt == edit->changeCount())
        history.takeBack();
}

// Exchanges the edit's state with that of a step.
bool EditManager::restore(const EditPtr& edit, bool back) {
    if (!edit)
        return false;
    const Edit::Lock lock(*edit);
    Edit::Impl& impl = *edit->impl_;
    Impl::needHistory(impl);
    cutroom::EditHistory& history = impl.history;
    if (back ? !history.canUndo() : !history.canRedo())
        return false;
    cutroom::EditHistory::Step& step =
        history.steps[back ? history.position - 1 : history.position];
    cutroom::EditState present = impl.state.snapshot();
    impl.replaceState(*edit, step.state.snapshot());
    step.state = std::move(present);
    history.position = back ? history.position - 1 : history.position + 1;
    ++history.edits;
    history.lastBackupAt = ~std::uint64_t{0};
    history.former.reset();
    impl.record(kModRestored);
    impl.tellDue = true;
    return true;
}

bool EditManager::undo(const EditPtr& edit) { return restore(edit, true); }

bool EditManager::redo(const EditPtr& edit) { return restore(edit, false); }

bool EditManager::canUndo(const EditPtr& edit) const {
    if (!edit)
        return false;
    const Edit::Lock lock(*edit);
    Impl::needHistory(*edit->impl_);
    return edit->impl_->history.canUndo();
}

bool EditManager::canRedo(const EditPtr& edit) const {
    if (!edit)
        return false;
    const Edit::Lock lock(*edit);
    Impl::needHistory(*edit->impl_);
    return edit->impl_->history.canRedo();
}

std::vector<EditManager::HistoryStep> EditManager::getHistory(const EditPtr& edit) const {
    std::vector<HistoryStep> steps;
    if (!edit)
        return steps;
    const Edit::Lock lock(*edit);
    Impl::needHistory(*edit->impl_);
    const cutroom::EditHistory& history = edit->impl_->history;
    for (std::size_t i = 0; i < history.steps.size(); ++i)
        steps.push_back(
            {history.steps[i].description, history.steps[i].when, i >= history.position});
    return steps;
}
