// One table of GL and GLU entry points, filled from the system library; every GL call of the
// driver goes through `gl`, so a test can put a recording table in front of the real one.
#pragma once

#include "platform/gl_headers.h"

#include <cstddef>

namespace norvgl {

enum class GlCall : int {
#define NVGL_GL(result, name, params, args) name,
#include "platform/gl_funcs.inl"
#undef NVGL_GL
    Count
};

struct GlTable {
#define NVGL_GL(result, name, params, args) result(NVGL_APIENTRY* name) params = nullptr;
#include "platform/gl_funcs.inl"
#undef NVGL_GL
};

static_assert(sizeof(GlTable) == static_cast<std::size_t>(GlCall::Count) * sizeof(void*),
              "GL table and call names out of step");

extern GlTable gl;

// Name of a call as GL spells it ("glEnable", "gluLookAt").
const char* glCallName(GlCall call);

// The system library's entry points, whatever `gl` currently holds.
const GlTable& systemGlTable();

} // namespace norvgl
