// The names of copies: a suffix in parentheses behind the name of what was copied.
#pragma once

#include "platform/base/Strings.h"
#include "platform/host/StringTable.h"

// "(text)": a name that `edit_modify_name` takes as a suffix. Any thread.
CUTROOM_API LightweightString<wchar_t> makeEditNameSuffix(const LightweightString<wchar_t>& text);
// The same of a resource's text.
CUTROOM_API LightweightString<wchar_t> makeEditNameSuffix(ResId text);
