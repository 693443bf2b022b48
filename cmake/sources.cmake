# The driver's sources, also built by the fuzz project. Layers bottom up: platform, core,
# render queue, pictures, models, particles, session, entries. Paths are relative to the
# repository root, which NORVGL_ROOT names where the includer is not the root project.
if(NOT DEFINED NORVGL_ROOT)
    set(NORVGL_ROOT ${CMAKE_CURRENT_LIST_DIR}/..)
endif()
set(NORVGL_CORE_SOURCES
    src/platform/gl_table.cpp
    src/core/properties.cpp
    src/core/debug_log.cpp
    src/manager3d/state_tree.cpp
    src/manager3d/transform.cpp
    src/manager3d/submit.cpp
    src/manager3d/flush.cpp
    src/manager3d/lights.cpp
    src/pictures/picture_table.cpp
    src/pictures/load_picture.cpp
    src/pictures/draw_picture.cpp
    src/pictures/text.cpp
    src/models/mesh_store.cpp
    src/models/objects.cpp
    src/models/vrml_model.cpp
    src/particles/emitters.cpp
    src/particles/particles.cpp
    src/session/context.cpp
    src/session/frame.cpp
    src/api/api_driver.cpp
    src/api/api_queue.cpp
    src/api/api_pictures.cpp
    src/api/api_models.cpp
    src/api/api_particles.cpp
    src/api/library_entry.cpp
)
if(WIN32)
    set(NORVGL_PLATFORM_SOURCES
        src/platform/win32/platform_win32.cpp
        src/platform/win32/bitmap_win32.cpp)
else()
    set(NORVGL_PLATFORM_SOURCES
        src/platform/x11/platform_x11.cpp
        src/platform/x11/bitmap_x11.cpp)
endif()
list(TRANSFORM NORVGL_CORE_SOURCES PREPEND ${NORVGL_ROOT}/)
list(TRANSFORM NORVGL_PLATFORM_SOURCES PREPEND ${NORVGL_ROOT}/)
