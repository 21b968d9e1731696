// The configuration of an edit, its descriptive texts, its effects, burnt-in timecode and mix.
#include "platform/store/EditFields.h"
#include "platform/store/EditImpl.h"

#include <algorithm>
#include <cmath>

using cutroom::EditTexts;

namespace {

constexpr char kReelKey[] = "reelid";

// What can be stored of an edit.
bool isStorable(const EffectGraph& graph) {
    return cutroom::fields::isPlace(graph.inOffset) && cutroom::fields::isPlace(graph.outOffset);
}

bool isStorable(const BITCLabel& label) {
    return cutroom::fields::isLabelType(label.type) && std::isfinite(label.x) &&
           std::isfinite(label.y) && std::isfinite(label.size);
}

} // namespace

const configb& Edit::config() const { return *impl_->state.config; }

std::optional<LightweightString<char>> Edit::getConfig(const LightweightString<char>& key) const {
    const Lock lock(*this);
    return impl_->state.config->getString(key);
}

template <class T> bool Edit::setConfigValue(const LightweightString<char>& key, const T& value) {
    const Lock lock(*this);
    if (!impl_->state.config.write().set(key, value))
        return false;
    if (configb::isViewState(key))
        impl_->touch();
    else
        impl_->record(kModConfiguration);
    return true;
}

bool Edit::setConfig(const LightweightString<char>& key, const LightweightString<char>& value) {
    return setConfigValue(key, value);
}

bool Edit::setConfig(const LightweightString<char>& key, double value) {
    return setConfigValue(key, value);
}

bool Edit::setConfig(const LightweightString<char>& key, int value) {
    return setConfigValue(key, value);
}

bool Edit::removeConfig(const LightweightString<char>& key) {
    const Lock lock(*this);
    if (!impl_->state.config->in(key))
        return false;
    impl_->state.config.write().remove(key);
    if (configb::isViewState(key))
        impl_->touch();
    else
        impl_->record(kModConfiguration);
    return true;
}

LightweightString<char> Edit::getVideoMetadata() const {
    const Lock lock(*this);
    return impl_->state.texts->video;
}

void Edit::setVideoMetadata(const LightweightString<char>& json) {
    const Lock lock(*this);
    impl_->set(impl_->state.texts, &EditTexts::video, json, kModMetadata);
}

LightweightString<char> Edit::getAudioMetadata() const {
    const Lock lock(*this);
    return impl_->state.texts->audio;
}

void Edit::setAudioMetadata(const LightweightString<char>& json) {
    const Lock lock(*this);
    impl_->set(impl_->state.texts, &EditTexts::audio, json, kModMetadata);
}

LightweightString<char> Edit::getImportedMetadata() const {
    const Lock lock(*this);
    return impl_->state.texts->imported;
}

void Edit::setImportedMetadata(const LightweightString<char>& json) {
    const Lock lock(*this);
    impl_->set(impl_->state.texts, &EditTexts::imported, json, kModMetadata);
}

LightweightString<char> Edit::getVideoReelId() const {
    return getConfig(kReelKey).value_or(std::string());
}

void Edit::setVideoReelId(const LightweightString<char>& reel) {
    if (reel.empty())
        removeConfig(kReelKey);
    else
        setConfig(kReelKey, reel);
}

LightweightVector<LightweightString<wchar_t>> Edit::getMediaLocations() const {
    const Lock lock(*this);
    return impl_->state.texts->mediaLocations;
}

void Edit::setMediaLocations(const LightweightVector<LightweightString<wchar_t>>& locations) {
    const Lock lock(*this);
    impl_->set(impl_->state.texts, &EditTexts::mediaLocations, locations, kModMedia);
}

LightweightString<char> Edit::findSequencePlaybackFormat() const {
    const Lock lock(*this);
    return impl_->state.texts->playbackFormat;
}

void Edit::setSequencePlaybackFormat(const LightweightString<char>& format) {
    const Lock lock(*this);
    impl_->set(impl_->state.texts, &EditTexts::playbackFormat, format, kModGeneral);
}

IdStamp Edit::setEffectGraph(EffectGraph graph) {
    const Lock lock(*this);
    if (!isStorable(graph))
        return {};
    if (!graph.id.valid())
        graph.id = IdStamp::make();
    const IdStamp id = graph.id;
    const auto known = impl_->state.graphs->find(id);
    if (known != impl_->state.graphs->end() && known->second == graph)
        return id;
    impl_->state.graphs.write()[id] = std::move(graph);
    impl_->record(kModEffects);
    return id;
}

std::optional<EffectGraph> Edit::getEffectGraph(const IdStamp& id) const {
    const Lock lock(*this);
    const auto known = impl_->state.graphs->find(id);
    if (known == impl_->state.graphs->end())
        return std::nullopt;
    return known->second;
}

std::vector<EffectGraph> Edit::getEffectGraphs() const {
    const Lock lock(*this);
    std::vector<EffectGraph> graphs;
    for (const auto& [id, graph] : *impl_->state.graphs)
        graphs.push_back(graph);
    return graphs;
}

bool Edit::removeEffectGraph(const IdStamp& id) {
    const Lock lock(*this);
    if (impl_->state.graphs->count(id) == 0)
        return false;
    impl_->state.graphs.write().erase(id);
    impl_->record(kModEffects);
    return true;
}

BITCEffect Edit::getBITC() const {
    const Lock lock(*this);
    return impl_->state.burntIn;
}

void Edit::setBITC(const BITCEffect& effect) {
    const Lock lock(*this);
    const auto& labels = effect.labels();
    if (std::all_of(labels.begin(), labels.end(),
                    [](const BITCLabel& label) { return isStorable(label); }))
        impl_->set(impl_->state.burntIn, effect, kModBurntIn);
}

Kv::Ptr<Aud::SimpleMixState> Edit::getAudioMix() const {
    const Lock lock(*this);
    return impl_->state.mix;
}

void Edit::setAudioMix(const Kv::Ptr<Aud::SimpleMixState>& mix) {
    const Lock lock(*this);
    const Kv::Ptr<Aud::SimpleMixState>& old = impl_->state.mix;
    if (old == mix || (old && mix && *old == *mix))
        return;
    impl_->state.mix = mix;
    impl_->record(kModAudioMix);
}
