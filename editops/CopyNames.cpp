#include "editops/CopyNames.h"

LightweightString<wchar_t> makeEditNameSuffix(const LightweightString<wchar_t>& text) {
    return L"(" + text + L")";
}

LightweightString<wchar_t> makeEditNameSuffix(ResId text) {
    return makeEditNameSuffix(resourceStrW(text));
}
