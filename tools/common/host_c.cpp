// The C examples' host loop over HostWindow: options, frames, the last frame as a PNG.
#include "host.h"
#include "host_window.h"

#include "norvgl.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <memory>
#include <string>

struct HostLoop {
    std::unique_ptr<norvgl::host::HostWindow> window;
    long frames = -1; // -1: until closed
    std::string out;
    unsigned next = 0;
    bool saveFailed = false;
};

extern "C" HostLoop* host_open(int argc, char** argv, int width, int height, const char* title) {
    auto loop = std::make_unique<HostLoop>();
    for (int i = 1; i < argc; ++i) {
        const bool hasValue = i + 1 < argc;
        if (std::strcmp(argv[i], "--frames") == 0 && hasValue) {
            char* end = nullptr;
            loop->frames = std::strtol(argv[++i], &end, 10);
            if (*end != '\0' || loop->frames < 1) {
                std::fprintf(stderr, "%s: --frames takes a count of 1 or more\n", argv[0]);
                return nullptr;
            }
        } else if (std::strcmp(argv[i], "--out") == 0 && hasValue) {
            loop->out = argv[++i];
        } else {
            std::fprintf(stderr, "usage: %s [--frames N] [--out FILE.png]\n", argv[0]);
            return nullptr;
        }
    }
    try {
        loop->window = std::make_unique<norvgl::host::HostWindow>(width, height, title);
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "%s: %s\n", argv[0], failure.what());
        return nullptr;
    }
    return loop.release();
}

extern "C" intptr_t host_window(const HostLoop* loop) {
    return loop->window->handle();
}

extern "C" int host_next_frame(HostLoop* loop) {
    const bool open = loop->window->poll();
    if (open && (loop->frames < 0 || loop->next < static_cast<unsigned long>(loop->frames))) {
        ++loop->next;
        return 1;
    }
    if (!loop->out.empty() && loop->next > 0) {
        loop->saveFailed = !loop->window->capture().savePng(loop->out);
        if (loop->saveFailed)
            std::fprintf(stderr, "could not save %s\n", loop->out.c_str());
        loop->out.clear();
    }
    return 0;
}

extern "C" unsigned host_frame(const HostLoop* loop) {
    return loop->next > 0 ? loop->next - 1 : 0;
}

extern "C" int host_close(HostLoop* loop) {
    const int status = loop->saveFailed ? 1 : 0;
    delete loop;
    return status;
}

extern "C" int host_fail(const char* call) {
    char title[ERROR_TITLE_SIZE] = "", details[ERROR_DETAILS_SIZE] = "";
    GFX_GetLastError(title, details);
    std::fprintf(stderr, "%s failed: %s: %s\n", call, title, details);
    return 1;
}
