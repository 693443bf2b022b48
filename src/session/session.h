// Session: the library's life with a host window. GFX_Init and display modes, the frame cycle,
// unloading and teardown; the one layer that knows every subsystem.
#pragma once

#include "core/core.h"

#include <cstdint>

namespace norvgl {

struct SessionState {
    // Which half of the depth range the next frame uses; set at load, kept across contexts.
    bool depthPhase = true;
};

extern SessionState session;

// Load-time set-up of the whole library: the core's tables, the frame phase, an empty queue
// and picture table, and the hooks between layers. Tests call it as the reset of them all.
void attachLibrary();

// Rendering context, display modes, teardown.
int initContext();
int enumResolutions(DisplayModeRecord* mode);
int setResolution(const DisplayModeRecord* mode);
int destroyContext();
int unloadAll();

// Frame cycle.
int beginRender();
int endRender();
int setClearColor(float red, float green, float blue, float alpha);
// Stores the value and acts on it. `stateRequests` says whether the blend, depth, cull and
// screen-space indices reach the render queue; the clear of RPROP_CLEAR_COLOR always acts.
int setRenderProperty(std::int32_t index, std::int32_t value, bool stateRequests);

} // namespace norvgl
