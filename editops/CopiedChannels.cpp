#include "editops/CopiedChannels.h"

#include "editops/CopyMetadata.h"
#include "platform/store/Edit.h"

namespace cutroom {

namespace {

constexpr unsigned kShown = kSubAll & ~static_cast<unsigned>(kSubDerived);

bool allSelected(const EditModule& module, unsigned type) {
    const int selected = module.getNumSelectedChans(type, kShown);
    return selected > 0 && selected == module.getEdit()->getNumChans(type, kShown);
}

} // namespace

EditModule withDerivedChannels(const EditModule& module) {
    EditModule whole = module;
    const EditPtr& edit = module.getEdit();
    if (!edit)
        return whole;
    for (const IdStamp& channel : edit->getChans(kChanAllTypes, kSubDerived)) {
        const IdStamp audio = edit->getAudioChanForLevels(channel);
        if (module.isSelected(channel))
            continue;
        if (audio.valid() ? module.isSelected(audio)
                          : allSelected(module, edit->getChanType(channel)))
            whole.selectChan(channel, true);
    }
    return whole;
}

void removeUnselected(EditModifier& copy, const EditModule& source, unsigned types) {
    const EditModule kept = withDerivedChannels(source);
    for (const auto& [from, to] : pairChannels(source.getEdit(), copy))
        if ((copy->getChanType(to) & types) != 0 && !kept.isSelected(from))
            copy->removeChan(to, false);
}

} // namespace cutroom
