#include "platform/store/Edit.h"

#include "platform/base/IdSource.h"
#include "platform/messaging/UiThread.h"
#include "platform/project/LogAttribute.h"
#include "platform/store/EditImpl.h"
#include "platform/store/EditManager.h"

#include <algorithm>
#include <cstdlib>
#include <new>

// --- the lock and the telling -------------------------------------------------------------------

Edit::Lock::Lock(const Edit& edit) CUTROOM_NO_THREAD_SAFETY : edit_(edit) {
    edit_.impl_->lock.lock();
    ++edit_.impl_->lockDepth;
}

// Tells the changes that are due once the edit is no longer locked.
Edit::Lock::~Lock() CUTROOM_NO_THREAD_SAFETY {
    Impl& impl = *edit_.impl_;
    const bool tell = --impl.lockDepth == 0 && impl.tellDue;
    EditModifications due;
    if (tell)
        due = impl.takePending();
    impl.lock.unlock();
    if (!tell || due.empty())
        return;
    try {
        const_cast<Edit&>(edit_).tell(due);
    } catch (const std::bad_alloc&) {
        impl.keepKinds(due); // they are told with the next changes
    }
}

void Edit::tell(const EditModifications& changes) {
    const Kv::Ptr<iObject> notice(new EditModificationNotice(impl_->cookie, changes));
    const Kv::Ptr<Edit> keep(this);
    const NotifyMsg message(notice);
    if (cutroom::isUiThread())
        issueNotification(message, kNoticeModifications);
    else
        cutroom::postToUiThread(
            [keep, message] { keep->issueNotification(message, kNoticeModifications); });
    EditManager::tellModifications(*this, message);
}

void Edit::Impl::keepKinds(const EditModifications& untold) noexcept {
    const CriticalSection::Lock held(lock);
    for (int kind = 0; kind < 64; ++kind)
        if (untold.includes(static_cast<EditModificationType>(kind)))
            pending.add(static_cast<EditModificationType>(kind));
}

void Edit::Impl::touch() {
    dirty = true;
    changes.fetch_add(1, std::memory_order_acq_rel);
    state.modified = cutroom::idSource().secondsNow();
}

namespace {

// Only the kinds of the changes, without details: that takes no memory.
EditModifications kindsOf(const EditModifications& changes) {
    EditModifications kinds;
    for (int kind = 0; kind < 64; ++kind)
        if (changes.includes(static_cast<EditModificationType>(kind)))
            kinds.add(static_cast<EditModificationType>(kind));
    return kinds;
}

} // namespace

void Edit::Impl::record(const EditModification& change) {
    const auto& known = pending.details();
    const std::size_t recent = std::min<std::size_t>(known.size(), 16);
    if (std::find(known.end() - static_cast<std::ptrdiff_t>(recent), known.end(), change) ==
        known.end()) {
        try {
            pending.add(change);
        } catch (const std::bad_alloc&) { // the change is made and will be told, without details
            pending = kindsOf(pending);
            pending.add(change.kind);
        }
    }
    touch();
}

void Edit::Impl::recordChannel(EditModificationType kind, const IdStamp& channel) {
    EditModification change(kind);
    change.track = channel;
    record(change);
}

EditModifications Edit::Impl::takePending() {
    tellDue = false;
    double start = 0;
    double end = 0;
    if (!state.extents(start, end))
        start = end = 0;
    if (start != toldStart)
        pending.add(kModStartTime);
    if (end != toldEnd)
        pending.add(kModLength);
    toldStart = start;
    toldEnd = end;
    return std::exchange(pending, EditModifications());
}

void Edit::addModification(EditModificationType kind, bool notify) {
    addModification(EditModifications(kind), notify);
}

void Edit::addModification(const EditModifications& changes, bool notify) {
    const Lock lock(*this);
    if (!changes.empty()) {
        impl_->touch();
        if (changes.details().size() == 1)
            impl_->record(changes.details().front());
        else
            impl_->pending.add(changes);
    }
    impl_->tellDue = impl_->tellDue || notify;
}

void Edit::beginWriting() {
    const Lock lock(*this);
    ++impl_->modifiers;
}

void Edit::endWriting() {
    const Lock lock(*this);
    if (--impl_->modifiers == 0)
        impl_->tellDue = true;
}

// --- life ---------------------------------------------------------------------------------------

Edit::Edit(const Cookie& cookie) : impl_(new Impl(cookie)) {}

Edit::~Edit() { impl_->attach(nullptr); }

void Edit::Impl::attach(Edit* edit) {
    for (cutroom::EditChannel& channel : state.channels) {
        channel.cel->edit_ = edit;
        channel.cel->channel_ = edit ? channel.id : IdStamp();
    }
}

void Edit::Impl::replaceState(Edit& edit, cutroom::EditState&& fresh) {
    attach(nullptr);
    for (cutroom::EditChannel& channel : fresh.channels) {
        const cutroom::EditChannel* old = state.find(channel.id);
        if (!old)
            continue;
        old->cel->assign(*channel.cel);
        channel.cel = old->cel;
    }
    configb config = *state.config;
    config.restoreContents(*fresh.config);
    fresh.config = cutroom::Shared<configb>(std::move(config));
    for (const cutroom::EditChannel& channel : state.channels)
        if (!fresh.find(channel.id))
            channel.cel->renumber();
    state = std::move(fresh);
    attach(&edit);
}

// --- identity and state -------------------------------------------------------------------------

const Cookie& Edit::getCookie() const noexcept { return impl_->cookie; }

LightweightString<wchar_t> Edit::getName() const {
    const Lock lock(*this);
    return impl_->state.name;
}

void Edit::setName(const LightweightString<wchar_t>& name) {
    const Lock lock(*this);
    impl_->set(impl_->state.name, name, kModName);
}

eLogType Edit::getLogType() const {
    const Lock lock(*this);
    return impl_->state.logType;
}

void Edit::setLogType(eLogType type) {
    const Lock lock(*this);
    impl_->set(impl_->state.logType, type, kModLogType);
}

Kv::FrameRate Edit::getFrameRate() const {
    const Lock lock(*this);
    return impl_->state.rate;
}

void Edit::setFrameRate(const Kv::FrameRate& rate) {
    const Lock lock(*this);
    if (rate.valid())
        impl_->set(impl_->state.rate, rate, kModGeneral);
}

bool Edit::getDropFrame() const {
    const Lock lock(*this);
    return impl_->state.dropFrame;
}

void Edit::setDropFrame(bool on) {
    const Lock lock(*this);
    impl_->set(impl_->state.dropFrame, on, kModGeneral);
}

double Edit::getCelResolution() const { return getFrameRate().frameDuration(); }

bool Edit::isReadOnly() const {
    const Lock lock(*this);
    return impl_->state.readOnly;
}

void Edit::setReadOnly(bool on) {
    const Lock lock(*this);
    impl_->set(impl_->state.readOnly, on, kModReadOnly);
}

bool Edit::isDirty() const {
    const Lock lock(*this);
    return impl_->dirty;
}

void Edit::setDirty() {
    const Lock lock(*this);
    impl_->touch();
}

std::uint64_t Edit::changeCount() const noexcept {
    return impl_->changes.load(std::memory_order_acquire);
}

bool Edit::isEmpty() const {
    const Lock lock(*this);
    const auto& channels = impl_->state.channels;
    return std::all_of(channels.begin(), channels.end(), [](const cutroom::EditChannel& channel) {
        return channel.cel->get_num_events() == 0;
    });
}

std::uint32_t Edit::getCreationTime() const {
    const Lock lock(*this);
    return impl_->state.created;
}

std::uint32_t Edit::getModificationTime() const {
    const Lock lock(*this);
    return impl_->state.modified;
}

void Edit::setCreationDetails() {
    const Lock lock(*this);
    impl_->state.created = cutroom::idSource().secondsNow();
    const char* const user = std::getenv("USER");
    if (user && cutroom::isUtf8(user))
        impl_->state.config.write().set(LogAttribute(LogAttribute::createdBy).getID(), user);
    impl_->record(kModGeneral);
}

int Edit::get_original_material() const {
    const Lock lock(*this);
    return impl_->state.originalMaterial;
}

void Edit::set_original_material(int value) {
    const Lock lock(*this);
    impl_->set(impl_->state.originalMaterial, value, kModOriginalMaterial);
}

void Edit::make_original(bool isCopy, bool keepLabels) {
    const Lock lock(*this);
    if (!isCopy)
        impl_->set(impl_->state.originalMaterial, 0, kModOriginalMaterial);
    impl_->set(impl_->state.labelsFromMaterial, keepLabels, kModLabels);
}

void Edit::clear_cache_flags() {
    const Lock lock(*this);
    configb config = *impl_->state.config;
    for (const auto& [key, value] : impl_->state.config->entries())
        if (key.rfind("CACHE_", 0) == 0)
            config.remove(key);
    impl_->set(impl_->state.config, cutroom::Shared<configb>(std::move(config)), kModConfiguration);
}

bool Edit::isImported() const {
    const Lock lock(*this);
    return impl_->state.imported;
}

void Edit::setImported(bool on) {
    const Lock lock(*this);
    impl_->set(impl_->state.imported, on, kModImported);
}

bool Edit::isAudioOnlyRecording() const {
    const Lock lock(*this);
    bool recorded = false;
    for (const cutroom::EditChannel& channel : impl_->state.channels) {
        if (channel.type == kChanVideo)
            return false;
        recorded =
            recorded || (channel.type == kChanAudio && channel.cel->hasFlag(kCelHasMaterial));
    }
    return recorded && impl_->state.logType == kLogTypeSource;
}

bool Edit::isClipboard() const {
    const Lock lock(*this);
    return impl_->state.config->in("CLIPBOARD");
}

// --- contents as a whole ------------------------------------------------------------------------

std::string Edit::checkConsistency() const {
    const Lock lock(*this);
    return cutroom::checkState(impl_->state);
}

LightweightString<char> Edit::canonicalContents() const {
    const Lock lock(*this);
    return cutroom::canonicalText(impl_->state);
}
