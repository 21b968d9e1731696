// `LastTransition`: the transition that the user applied last, kept among the preferences so that
// the next one starts from it.
#pragma once

#include "editops/basics/CutTypes.h"
#include "platform/base/Cookie.h"

// A value. Its text form is "EFFECT,POSITION,LENGTH": the effect's cookie, the position's text
// (`transPosnToString`) and the length in decimal.
class CUTROOM_API LastTransition {
public:
    // `length` in frames of the edit.
    LastTransition(const Cookie& fxId, trans_posn position, int length);
    // Without effect and position, 10 frames long, then `restoreFrom`.
    explicit LastTransition(const LightweightString<char>& text);
    // Reads the preference "Last transition". What the preference lacks is: no effect, no position,
    // `defaultLength` frames.
    explicit LastTransition(int defaultLength);

    LightweightString<char> asString() const;
    // Takes over what a text says; one that is not of three pieces changes nothing. The empty text
    // means the template "Dissolve", if there is one, centred, of 10 frames where the length is 0.
    void restoreFrom(const LightweightString<char>& text);
    // Makes it the preference "Last transition".
    void persist() const;

    // It names an effect.
    bool valid() const noexcept { return fxId_.valid(); }
    // Identity of the effect template.
    const Cookie& getFXID() const noexcept { return fxId_; }
    int getLen() const noexcept { return length_; }
    trans_posn getPosn() const noexcept { return position_; }

private:
    Cookie fxId_;
    int length_ = 0;
    trans_posn position_ = kTransNone;
};
