// The table of open edits: making, opening, dropping, naming.
#include "platform/store/EditManager.h"

#include "platform/base/IdSource.h"
#include "platform/base/Log.h"
#include "platform/files/Files.h"
#include "platform/host/ProcessLife.h"
#include "platform/messaging/Callback.h"
#include "platform/project/CurrentProject.h"
#include "platform/project/ProjDb.h"
#include "platform/project/ProjDbFields.h"
#include "platform/store/EditManagerImpl.h"
#include "platform/store/EditModule.h"
#include "platform/store/EditRecord.h"

#include <algorithm>
#include <set>

using cutroom::Status;
using cutroom::StatusCode;

EditManager& EditManager::instance() { return cutroom::ProcessSingleton<EditManager>::get(); }

EditManager::EditManager() : impl_(new Impl) {
    impl_->projectExit =
        CurrentProject::addListener(makeCallback<NotifyMsg>([this](const NotifyMsg&) {
                                        if (const Status status = handleProjectExit(); !status)
                                            LogBoth("%s\n", status.text().c_str());
                                    }),
                                    CurrentProject::aboutToExitMsgType());
    impl_->databaseRebuilder = CurrentProject::installDatabaseRebuilder(cutroom::rebuildRecords);
}

// A listener of an edit may hold other edits and let them go along with it, which looks at the
// table.
EditManager::~EditManager() {
    std::unordered_map<Cookie, Kv::Ptr<Edit>> gone; // die outside the lock
    const CriticalSection::Lock held(impl_->lock);
    gone.swap(impl_->table);
}

Kv::Ptr<Edit> EditManager::Impl::find(const Cookie& cookie) const {
    const CriticalSection::Lock held(lock);
    const auto entry = table.find(cookie);
    return entry == table.end() ? Kv::Ptr<Edit>() : entry->second;
}

std::vector<Kv::Ptr<Edit>> EditManager::Impl::all() const {
    const CriticalSection::Lock held(lock);
    std::vector<Kv::Ptr<Edit>> edits;
    for (const auto& [cookie, edit] : table)
        edits.push_back(edit);
    return edits;
}

Kv::Ptr<Edit> EditManager::Impl::enter(const Kv::Ptr<Edit>& edit) {
    const CriticalSection::Lock held(lock);
    return table.try_emplace(edit->getCookie(), edit).first->second;
}

Kv::Ptr<Edit> EditManager::Impl::enterRead(const Kv::Ptr<Edit>& edit,
                                           std::uint64_t removalsBefore) {
    const CriticalSection::Lock held(lock);
    return removals == removalsBefore ? enter(edit) : Kv::Ptr<Edit>();
}

void EditManager::Impl::dropUnused() {
    std::vector<Kv::Ptr<Edit>> dropped; // die outside the lock
    const CriticalSection::Lock held(lock);
    for (auto entry = table.begin(); entry != table.end();) {
        if (entry->second->refCount() == 1 && !entry->second->impl_->dirty) {
            dropped.push_back(std::move(entry->second));
            entry = table.erase(entry);
        } else {
            ++entry;
        }
    }
}

// A new share of the edit is only made from another share or from the table. So when two are
// counted under the table's lock, they are this one and the table's, and nobody else has one.
void EditManager::forget(Kv::Ptr<Edit> edit) noexcept {
    EditManager* const manager = cutroom::ProcessSingleton<EditManager>::find();
    if (!manager || edit->refCount() > 2 || edit->impl_->dirty)
        return;
    Kv::Ptr<Edit> last;
    const CriticalSection::Lock held(manager->impl_->lock);
    const auto entry = manager->impl_->table.find(edit->getCookie());
    if (entry == manager->impl_->table.end() || entry->second != edit || edit->refCount() > 2 ||
        edit->impl_->dirty)
        return;
    last = std::move(entry->second);
    manager->impl_->table.erase(entry);
}

EditModifier EditManager::makeNewEdit(const Cookie& cookie, unsigned char video,
                                      unsigned char audio, double length,
                                      const Kv::FrameRate& rate) {
    if (cookie.type() != 'E' || !cutroom::isStorableTime(length) || exists(cookie))
        return {};
    const ProjectDefaults defaults = CurrentProject::getDefaults();
    const Kv::Ptr<Edit> edit(new Edit(cookie));
    edit->setFrameRate(rate.valid() ? rate : defaults.frameRate);
    edit->setDropFrame(defaults.dropFrame && edit->getFrameRate().allowsDropFrame());
    edit->impl_->state.created = cutroom::idSource().secondsNow();
    CelSegment black;
    black.end = cutroom::toFlicks(length);
    for (int i = 0; i < video + audio; ++i) {
        const IdStamp channel = edit->addChan(i < video ? kChanVideo : kChanAudio);
        if (black.end <= 0)
            continue;
        if (const Status status = edit->get_edit_cel_p(channel)->setSegments({black}); !status)
            return {};
    }
    edit->impl_->touch();
    edit->impl_->takePending(); // nobody knows it yet
    if (impl_->enter(edit) != edit)
        return {};
    return EditModifier(EditPtr(edit));
}

cutroom::Result<Kv::Ptr<Edit>> EditManager::Impl::read(const Cookie& cookie) {
    const std::string path = cookie.type() == 'E' ? cutroom::EditFile::path(cookie) : "";
    if (path.empty())
        return Status(StatusCode::notFound, cookie.asString(), "there is no such edit");
    const auto bytes = cutroom::readFile(path);
    if (!bytes)
        return bytes.status();
    auto content = cutroom::EditFile::decode(*bytes, path);
    if (!content)
        return content.status();
    Kv::Ptr<Edit> edit(new Edit(cookie));
    {
        const Edit::Lock lock(*edit);
        edit->impl_->state = std::move(content->state);
        edit->impl_->attach(edit.get());
        edit->impl_->history.fileId = content->historyId;
        edit->impl_->history.loaded = content->historyId == 0;
        edit->impl_->takePending();
    }
    return edit;
}

// The file is read without a lock. If edits were deleted or the project was closed meanwhile, the
// edit that was read may no longer exist, so it is looked for again.
EditPtr EditManager::open(const Cookie& cookie, Status* why) {
    if (why)
        *why = {};
    while (true) {
        std::uint64_t removals = 0;
        {
            const CriticalSection::Lock held(impl_->lock);
            if (const auto entry = impl_->table.find(cookie); entry != impl_->table.end())
                return entry->second;
            removals = impl_->removals;
        }
        const auto read = Impl::read(cookie);
        if (!read) {
            if (why)
                *why = read.status();
            return {};
        }
        if (const Kv::Ptr<Edit> entered = impl_->enterRead(*read, removals))
            return entered;
    }
}

bool EditManager::isOpen(const Cookie& cookie) const {
    return static_cast<bool>(impl_->find(cookie));
}

bool EditManager::exists(const Cookie& cookie) const {
    if (isOpen(cookie) || (CurrentProject::isOpen() && projdb::isPresent(cookie)))
        return true;
    const std::string path = cookie.type() == 'E' ? cutroom::EditFile::path(cookie) : "";
    return !path.empty() && cutroom::fileExists(path);
}

CookieVec EditManager::getAllEdits() const {
    std::set<Cookie> open;
    for (const Kv::Ptr<Edit>& edit : impl_->all())
        open.insert(edit->getCookie());
    CookieVec edits(open.begin(), open.end());
    projdb::forEachSummary([&](const projdb::Summary& record) {
        if (open.count(record.cookie) == 0)
            edits.push_back(record.cookie);
        return true;
    });
    return edits;
}

EditPtr EditManager::getClipboard() {
    Cookie known;
    {
        const CriticalSection::Lock held(impl_->lock);
        known = impl_->clipboard;
    }
    if (!known.valid())
        projdb::forEachSummary([&](const projdb::Summary& record) {
            if ((record.kinds & projdb::kKindClipboard) != 0)
                known = record.cookie;
            return !known.valid();
        });
    EditPtr clipboard = known.valid() ? open(known) : EditPtr();
    if (!clipboard) {
        EditModifier fresh = makeNewEdit(makeNewEditCookie(), 1, 2, 0, Kv::FrameRate());
        if (!fresh)
            return {};
        fresh->setName(L"Clipboard");
        fresh->setConfig("CLIPBOARD", 1);
        clipboard = fresh;
    }
    const CriticalSection::Lock held(impl_->lock);
    impl_->clipboard = clipboard.getCookie();
    return clipboard;
}

ValServer<bool>& EditManager::getMixerBypassServer() { return impl_->mixerBypass; }

// --- names and cookies --------------------------------------------------------------------------

Cookie makeNewEditCookie() { return Cookie::make('E'); }

Cookie newContainerCookie() { return Cookie::make('G'); }

LightweightString<wchar_t> generateNewEditName() {
    std::set<std::wstring> taken;
    projdb::forEachHaving("name", projdb::kNewEditName,
                          [&](const Cookie&, const std::string& name) {
                              taken.insert(cutroom::toWide(name));
                              return true;
                          });
    EditManager& manager = EditManager::instance();
    for (const Cookie& cookie : manager.getAllEdits())
        if (manager.isOpen(cookie))
            taken.insert(EditPtr(cookie)->getName());
    for (int number = 1;; ++number) {
        std::wstring name = cutroom::toWide(projdb::kNewEditName) + std::to_wstring(number);
        if (taken.count(name) == 0)
            return name;
    }
}

void edit_modify_name(const EditPtr& edit, const LightweightString<wchar_t>& name) {
    if (!edit || name.empty())
        return;
    if (name.front() != L'(' || name.back() != L')') {
        edit->setName(name);
        return;
    }
    const std::wstring present = edit->getName();
    const std::wstring suffix = L" " + name;
    const bool there = present.size() >= suffix.size() &&
                       present.compare(present.size() - suffix.size(), suffix.size(), suffix) == 0;
    if (!there)
        edit->setName(present + suffix);
}

void autoInitAudioLevelsTracks(EditModule& module) {
    const EditPtr& edit = module.getEdit();
    if (!edit)
        return;
    for (const IdStamp& audio : edit->getChans(kChanAudio))
        edit->addLevelsChan(audio);
    module.initLevelsFromAudio();
}
