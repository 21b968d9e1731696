// `cut_type`: how one shot passes into the next, and `trans_posn`: where a transition is placed.
// Both are persisted and exchanged as fixed narrow texts, compared exactly.
#pragma once

#include "platform/base/Export.h"
#include "platform/base/Strings.h"

// The numbers are fixed as well.
enum cut_type : int {
    kCutTypeCut = 0,
    kCutTypeMix = 1,
    kCutTypeVideoDissolve = 2,
    kCutTypeFilmDissolve = 3,
    kCutTypeWipe = 4,
    kCutTypeChequer = 5,
    kCutTypeNone = 6,
};

enum trans_posn : int {
    kTransFromHere = 0,
    kTransToHere = 1,
    kTransCentredHere = 2,
    kTransUseMark = 3,
    kTransFromStart = 4, // this and the next have no text of their own
    kTransToEnd = 5,
    kTransCurrentSection = 6,
    kTransCurrentSectionUnfolded = 7,
    kTransMultipleSections = 8,
    kTransSelectedSegments = 9,
    kTransNone = 10,
};

// "ct_cut", "ct_mix" and so on; "ct_none" for every other value, and kCutTypeNone for every other
// text.
CUTROOM_API LightweightString<char> cutTypeToString(cut_type type);
CUTROOM_API cut_type stringToCutType(const LightweightString<char>& text) noexcept;

// "eFromHere", "eToHere" and so on; "eNone" for positions without a text and for every other value,
// and kTransNone for every other text.
CUTROOM_API LightweightString<char> transPosnToString(trans_posn position);
CUTROOM_API trans_posn stringToTransPosn(const LightweightString<char>& text) noexcept;

// The text shown to the user, from the string table; empty for kTransNone and for every other value
// that is no position. And the first position with such a text, or kTransNone.
CUTROOM_API LightweightString<wchar_t> getDisplayString(trans_posn position);
CUTROOM_API trans_posn getTransPosnFromDisplayString(const LightweightString<wchar_t>& text);
