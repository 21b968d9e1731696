// The one export macro. Everything not marked with it stays inside the shared library.
#pragma once

#define CUTROOM_API [[gnu::visibility("default")]]
