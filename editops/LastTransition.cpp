#include "editops/LastTransition.h"

#include "platform/prefs/EditorPreferences.h"
#include "platform/store/Effects.h"

namespace {

constexpr char kPreference[] = "Last transition";
constexpr wchar_t kDefaultEffect[] = L"Dissolve";
constexpr int kDefaultLength = 10;

} // namespace

LastTransition::LastTransition(const Cookie& fxId, trans_posn position, int length)
    : fxId_(fxId), length_(length), position_(position) {}

LastTransition::LastTransition(const LightweightString<char>& text) : length_(kDefaultLength) {
    restoreFrom(text);
}

LastTransition::LastTransition(int defaultLength) : length_(defaultLength) {
    restoreFrom(EditorPreferences::getPreference(kPreference, ""));
}

LightweightString<char> LastTransition::asString() const {
    return fxId_.asString() + ',' + transPosnToString(position_) + ',' +
           cutroom::toText(static_cast<long long>(length_));
}

void LastTransition::restoreFrom(const LightweightString<char>& text) {
    if (text.empty()) {
        const auto effect = EffectTemplateManager::instance().getTemplate(kDefaultEffect);
        if (!effect)
            return;
        fxId_ = effect->id;
        position_ = kTransCentredHere;
        if (length_ == 0)
            length_ = kDefaultLength;
        return;
    }
    const std::vector<std::string> pieces = cutroom::split(text, ',');
    if (pieces.size() != 3)
        return;
    fxId_ = Cookie::fromString(pieces[0]).value_or(Cookie());
    position_ = stringToTransPosn(pieces[1]);
    length_ = cutroom::leadingInt(pieces[2]);
}

void LastTransition::persist() const { EditorPreferences::setPreference(kPreference, asString()); }
