// `createEmptyEdit`: an edit with empty channels, ready to be cut into.
#pragma once

#include "platform/base/Cookie.h"
#include "platform/base/FrameRate.h"
#include "platform/base/Strings.h"
#include "platform/store/EditPtr.h"

// Makes an edit of `videoChans` and `audioChans` channels, `length` seconds long. An invalid cookie
// takes a fresh one; kNoTime takes the preference "new_edit_len_mins" (5 minutes); an empty name
// the next free one; no rate the project's default. The project's mix configuration, pairing of
// audio channels and burnt-in timecode are applied. Empty when the store refuses the cookie.
CUTROOM_API EditModifier createEmptyEdit(Cookie cookie, LightweightString<wchar_t> name,
                                         unsigned char videoChans, unsigned char audioChans,
                                         double length, Kv::FrameRate frameRate);
