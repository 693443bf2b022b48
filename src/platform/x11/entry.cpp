// Library entry on Linux: runs the driver's load-time set-up when the shared library is loaded.
#include "driver/driver.h"

namespace {

__attribute__((constructor)) void onLibraryLoad() {
    norvgl::libraryAttach();
}

} // namespace
