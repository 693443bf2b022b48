// Library entry: the driver's load-time set-up runs once, when the host loads the library.
#include "platform/library_entry.h"
#include "session/session.h"

NORVGL_LIBRARY_ENTRY(norvgl::attachLibrary)
