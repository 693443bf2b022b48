// The driver attached to its own 640 x 480 window, once for the whole benchmark run.
#pragma once

#include "scenario/host_window.h"

#include "norvgl.h"

#include <cstdio>
#include <cstdlib>
#include <memory>

namespace norvgl::bench {

struct Session {
    std::unique_ptr<scenario::HostWindow> window;
    Session() {
        window = std::make_unique<scenario::HostWindow>(640, 480);
        GFX_SetProperty(PROP_WINDOW, window->handle());
        if (GFX_Init() != 0) {
            std::fprintf(stderr, "bench: GFX_Init failed on the X display\n");
            std::exit(1);
        }
    }
    ~Session() { GFX_Destroy(); }
};

inline Session& session() {
    static Session s;
    return s;
}

} // namespace norvgl::bench
