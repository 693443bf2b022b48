// GL table storage and its filling from the system's GL and GLU libraries.
#include "platform/gl_table.h"

namespace norvgl {

namespace {

template <typename F> F* entry(F* function) {
    return function;
}

} // namespace

const GlTable& systemGlTable() {
    static const GlTable table = [] {
        GlTable t;
#define NVGL_GL(result, name, params, args) t.name = entry(&::gl##name);
#define NVGL_GLU(result, name, params, args) t.name = entry(&::name);
#include "platform/gl_funcs.inl"
#undef NVGL_GLU
#undef NVGL_GL
        return t;
    }();
    return table;
}

// Filled while the library is loaded, before any entry can run: a call that comes before
// GFX_Init, or after GFX_Destroy, reaches GL (which ignores it without a context) rather than
// a null entry.
GlTable gl = systemGlTable();

const char* glCallName(GlCall call) {
    static const char* const names[] = {
#define NVGL_GL(result, name, params, args) "gl" #name,
#define NVGL_GLU(result, name, params, args) #name,
#include "platform/gl_funcs.inl"
#undef NVGL_GLU
#undef NVGL_GL
    };
    const auto index = static_cast<std::size_t>(call);
    return index < sizeof(names) / sizeof(names[0]) ? names[index] : "?";
}

} // namespace norvgl
