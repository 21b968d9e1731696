// What the check for cuts off the frame boundary is told by the configuration.
#pragma once

namespace cutroom {

// Reads whether subframe errors are shown to the user ("disable_subframe_warnings"): done when the
// first Vob of a life is made, so that a later setting changes nothing.
void readSubframeWarnings();

} // namespace cutroom
