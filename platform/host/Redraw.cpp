#include "platform/host/Redraw.h"

#include "platform/host/Host.h"

cutroom::iRedraw::~iRedraw() = default;

namespace Glib {

UpdateDeferrer::UpdateDeferrer() { cutroom::Host::redraw().defer(); }

UpdateDeferrer::~UpdateDeferrer() { cutroom::Host::redraw().resume(); }

} // namespace Glib
