// How the places of an edit are numbered.
#include "platform/store/EditFields.h"
#include "platform/store/EditImpl.h"

#include <algorithm>

namespace {

constexpr char kKeyPrefix[] = "label.";

bool sameKind(const EditLabel& a, const EditLabel& b) {
    return a.type() == b.type() && a.get_MediumRoll() == b.get_MediumRoll();
}

std::string keyOf(const EditLabel& label) {
    return kKeyPrefix + std::to_string(static_cast<int>(label.type())) + '.' +
           std::to_string(label.get_MediumRoll().first) + '.' +
           std::to_string(label.get_MediumRoll().second);
}

// "<rate> <drop frame> <frame at 0>"
std::string valueOf(const EditLabel& label) {
    return label.format().rate.asString() + (label.format().dropFrame ? " 1 " : " 0 ") +
           cutroom::toText(static_cast<long long>(label.get_abs_posn()));
}

EditLabel labelFrom(const std::string& key, const std::string& value) {
    const auto parts = cutroom::split(key, '.');
    const auto words = cutroom::split(value, ' ');
    if (parts.size() != 4 || words.size() != 3)
        return {};
    const auto rate = Kv::FrameRate::fromString(words[0]);
    const auto start = cutroom::parseInt(words[2]);
    const auto type = cutroom::parseInt(parts[1]);
    if (!rate || !start || !type || !cutroom::fields::isLabelType(*type))
        return {};
    return EditLabel(static_cast<eLabelType>(*type),
                     {cutroom::leadingInt(parts[2]), cutroom::leadingInt(parts[3])},
                     {*rate, words[1] == "1"}, *start);
}

} // namespace

EditLabel Edit::getLabel(eLabelType type, MediumRoll mediumRoll) const {
    const Lock lock(*this);
    for (const EditLabel& label : *impl_->state.labels)
        if (label.type() == type && label.get_MediumRoll() == mediumRoll)
            return label;
    return {};
}

EditLabel Edit::getVideoTimecodeLabel() const {
    const Lock lock(*this);
    const EditLabel picture = getLabel(kLabelVideoTimecode, {2, 1});
    if (picture.is_valid())
        return picture;
    for (const EditLabel& label : *impl_->state.labels)
        if (label.type() == kLabelVideoTimecode)
            return label;
    return {};
}

std::vector<EditLabel> Edit::getLabels() const {
    const Lock lock(*this);
    return *impl_->state.labels;
}

void Edit::addLabel(const EditLabel& label) {
    const Lock lock(*this);
    if (!label.is_valid() || !cutroom::fields::isLabelType(label.type()))
        return;
    std::vector<EditLabel>& labels = impl_->state.labels.write();
    const auto known = std::find_if(labels.begin(), labels.end(),
                                    [&](const EditLabel& other) { return sameKind(label, other); });
    if (known == labels.end())
        labels.push_back(label);
    else if (*known == label)
        return;
    else
        *known = label;
    impl_->record(kModLabels);
}

void Edit::remove_all_labels() {
    const Lock lock(*this);
    impl_->set(impl_->state.labels, cutroom::Shared<std::vector<EditLabel>>(), kModLabels);
}

void Edit::adjust_all_labels_by_time(double seconds) {
    const Lock lock(*this);
    std::vector<EditLabel> labels = *impl_->state.labels;
    for (EditLabel& label : labels)
        label.adjustByTime(seconds);
    impl_->set(impl_->state.labels, cutroom::Shared<std::vector<EditLabel>>(std::move(labels)),
               kModLabels);
}

void Edit::rebuildCachedLabels() {
    const Lock lock(*this);
    const configb config = *impl_->state.config;
    for (const auto& [key, value] : config.entries()) {
        if (key.rfind(kKeyPrefix, 0) != 0)
            continue;
        const EditLabel label = labelFrom(key, value);
        if (label.is_valid() && !getLabel(label.type(), label.get_MediumRoll()).is_valid())
            addLabel(label);
    }
}

void Edit::write_labels_to_config() {
    const Lock lock(*this);
    configb config = *impl_->state.config;
    for (const auto& [key, value] : impl_->state.config->entries())
        if (key.rfind(kKeyPrefix, 0) == 0)
            config.remove(key);
    for (const EditLabel& label : *impl_->state.labels)
        config.set(keyOf(label), valueOf(label));
    impl_->set(impl_->state.config, cutroom::Shared<configb>(std::move(config)), kModConfiguration);
}

LightweightString<char> Edit::getTimecode(double seconds) const {
    const Lock lock(*this);
    const EditLabel label = getVideoTimecodeLabel();
    if (label.is_valid())
        return label.pointAt(seconds).removePadding();
    const Kv::FrameRate rate = impl_->state.rate;
    if (!cutroom::isStorableTime(seconds))
        return {};
    return cutroom::timecodeText(rate.flicksToFrameFloor(cutroom::toFlicks(seconds)),
                                 {rate, impl_->state.dropFrame});
}
