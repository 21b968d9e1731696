#include "bins/eGalleryViews.h"

#include "platform/prefs/EditorPreferences.h"

using eGalleryViews::eGalleryView;

namespace {
constexpr char kDefaultViewKey[] = "Gallery Default View";
}

LightweightString<char> getPersistableString(eGalleryView view) {
    switch (view) {
    case eGalleryViews::Image:
        return "Image";
    case eGalleryViews::Table:
        return "Table";
    case eGalleryViews::Hybrid:
        return "Hybrid";
    case eGalleryViews::SplitImage:
        return "SplitImage";
    default:
        return {};
    }
}

eGalleryView fromPersistableString(const LightweightString<char>& name) noexcept {
    for (const eGalleryView view : {eGalleryViews::Image, eGalleryViews::Table,
                                    eGalleryViews::Hybrid, eGalleryViews::SplitImage})
        if (getPersistableString(view) == name)
            return view;
    return eGalleryViews::None;
}

eGalleryView getDefaultGalleryView() {
    const eGalleryView view =
        fromPersistableString(EditorPreferences::getPreference(kDefaultViewKey, ""));
    return view == eGalleryViews::None ? eGalleryViews::Hybrid : view;
}

void setDefaultGalleryView(eGalleryView view) {
    EditorPreferences::setPreference(kDefaultViewKey, getPersistableString(view));
}
