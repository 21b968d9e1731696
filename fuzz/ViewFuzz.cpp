// Any bytes, a line each, as what an edit's configuration says of how it was viewed; the last line
// as the text of a change that was posted. The Vob that takes them stays usable: its times are
// numbers, what it stores can be taken again, and is then the same.
#include "fuzz/Require.h"
#include "platform/embedded/EmbeddedHost.h"
#include "platform/store/Edit.h"
#include "platform/store/EditManager.h"
#include "vob/VobManager.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <map>

namespace {

using namespace cutroom;

std::vector<std::string> keysOf(const EditPtr& edit) {
    std::vector<std::string> keys = {"BACKUP_CURRENT", "BACKUP_CHAN_SEL", "BACKUP_RANGE_START",
                                     "BACKUP_RANGE_END"};
    for (const IdStamp& channel : edit->getChans())
        for (const char* key :
             {"BACKUP_CUTS_", "BACKUP_SEGS_", "BACKUP_MARK_IN_", "BACKUP_MARK_OUT_"})
            keys.push_back(key + channel.asString());
    return keys;
}

// An edit with two clips and black between them on each channel.
EditPtr makeViewed() {
    const EditPtr edit =
        EditManager::instance().makeNewEdit(makeNewEditCookie(), 2, 2, 5.0, Kv::FrameRate(25));
    edit->setLogType(kLogTypeEdit);
    for (const IdStamp& channel : edit->getChans())
        for (const auto& [from, to] : {std::pair(0.0, 1.6), std::pair(2.0, 4.4)}) {
            CelSegment clip;
            clip.start = toFlicks(from);
            clip.end = toFlicks(to);
            clip.material = Cookie('E', 7);
            require(edit->get_edit_cel_p(channel)->overwrite(clip).ok());
        }
    return edit;
}

std::map<std::string, std::string> stored(const Kv::Ptr<Vob>& vob) {
    vob->storeBackupDetails();
    std::map<std::string, std::string> values;
    for (const std::string& key : keysOf(vob->getEdit()))
        if (const auto value = vob->getEdit()->getConfig(key))
            values[key] = *value;
    return values;
}

void checkTimes(const Kv::Ptr<Vob>& vob) {
    require(std::isfinite(vob->getCurrentTime()));
    require(vob->getEdit()->checkConsistency().empty());
}

void postChange(const Kv::Ptr<Vob>& vob, const std::string& text) {
    Event event;
    event.handler = vob.get();
    event.type = Event::kChangeType;
    event.keyCode = 1;
    event.text = text;
    event.value = static_cast<unsigned>(text.size());
    require(vob->handleEvent(event) == EventHandler::kConsumed);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    EmbeddedHost host(EmbeddedHost::repeatable());
    const EditPtr edit = makeViewed();
    const std::vector<std::string> lines =
        split(std::string(reinterpret_cast<const char*>(data), size), '\n');
    const std::vector<std::string> keys = keysOf(edit);
    for (std::size_t i = 0; i < keys.size() && i + 1 < lines.size(); ++i)
        edit->setConfig(keys[i], lines[i]);

    const Kv::Ptr<Vob> vob = VobManager::instance().createVob(edit);
    require(static_cast<bool>(vob));
    vob->setStatus(Vob::kStatusRecord);
    vob->restoreBackupDetails();
    checkTimes(vob);
    postChange(vob, lines.back());
    checkTimes(vob);
    const auto once = stored(vob);
    vob->restoreBackupDetails();
    require(stored(vob) == once);
    return 0;
}
