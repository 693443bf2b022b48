// Rendering context and display modes: GFX_Init attaches the driver to the host's window with
// its initial GL state and projection; teardown gives all of it back.
#include "manager3d/manager3d.h"
#include "models/models.h"
#include "particles/particles.h"
#include "pictures/pictures.h"
#include "platform/gl_table.h"
#include "platform/platform.h"
#include "session/session.h"

#include <vector>

namespace norvgl {

namespace {

// Whether a live object still holds an id, so that issuing skips it: a mesh (a VRML model's
// or the host's) and a particle system outlive GFX_UnloadAll, which restarts the count.
bool objectIdHeld(std::uint32_t id) {
    return MeshStore_Find(id) != nullptr || Particle_HoldsId(id);
}

} // namespace

void attachLibrary() {
    libraryAttach();
    session = SessionState{};
    Models_Reset();
    Manager3D_Reset();
    Pictures_Reset();
    Particle_Reset();
    Manager3D_SetParticlePass(Particle_DrawAll);
    SetObjectIdHeldCheck(objectIdHeld);
}

int initContext() {
    // A new context starts with an empty mesh store, as with fresh heaps.
    MeshStore_Clear();
    if (Manager3D_InitHeaps() != 0) {
        ReportError(ERR_OUT_OF_MEMORY, "the render queue's pools could not be allocated");
        return 1;
    }
    if (!platform::attachWindow(getProperty(PROP_WINDOW))) {
        ReportError(ERR_SET_PIXEL_FORMAT, nullptr);
        return 1;
    }
    platform::createContext();

    gl.ClearDepth(1.0);
    gl.DepthFunc(GL_LESS);
    gl.Enable(GL_DEPTH_TEST);
    gl.DepthMask(GL_TRUE);
    gl.DepthRange(0.0, 0.5);
    gl.ClearColor(0.0f, 0.0f, 0.0f, 0.0f);
    gl.Enable(GL_CULL_FACE);
    Manager3D_ContextCreated();
    gl.Enable(GL_NORMALIZE);
    gl.EnableClientState(GL_VERTEX_ARRAY);
    gl.EnableClientState(GL_NORMAL_ARRAY);
    gl.Materialf(GL_FRONT, GL_SHININESS, 30.0f);
    gl.ShadeModel(GL_SMOOTH);
    gl.PixelStorei(GL_UNPACK_ALIGNMENT, 1);
    gl.Clear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);

    platform::clientSize(driver.clientWidth, driver.clientHeight);
    gl.MatrixMode(GL_PROJECTION);
    gl.LoadIdentity();
    // A window with no height yet still gets a usable projection.
    const std::int32_t height = driver.clientHeight > 0 ? driver.clientHeight : 1;
    Manager3D_Perspective(static_cast<float>(static_cast<double>(driver.clientWidth) / height),
                          kNearPlane, kFarPlane);
    gl.Viewport(0, 0, driver.clientWidth, driver.clientHeight);
    gl.MatrixMode(GL_MODELVIEW);
    gl.LoadIdentity();
    driver.objectIdCounter = 0;
    return 0;
}

int enumResolutions(DisplayModeRecord* mode) {
    if (!mode)
        return 1;
    const auto position = static_cast<std::uint32_t>(driver.properties[PROP_MODE_CURSOR]);
    driver.properties[PROP_MODE_CURSOR] = static_cast<std::intptr_t>(position) + 1;
    platform::DisplayMode found;
    if (!platform::displayMode(position, found)) {
        driver.properties[PROP_MODE_CURSOR] = 0;
        return 1;
    }
    mode->width = found.width;
    mode->height = found.height;
    mode->bits = static_cast<unsigned char>(found.bits & 0xFF);
    return 0;
}

int setResolution(const DisplayModeRecord* wanted) {
    if (!wanted) {
        ReportError(ERR_INVALID_PARAMETER, "display mode record is NULL");
        return 1;
    }
    std::uint32_t count = 0;
    platform::DisplayMode probe;
    while (platform::displayMode(count, probe))
        ++count;
    // Room for one more than counted; a list that grew in between is cut there.
    std::vector<platform::DisplayMode> modes(static_cast<std::size_t>(count) + 1);
    std::uint32_t fetched = 0;
    while (fetched < modes.size() && platform::displayMode(fetched, modes[fetched]))
        ++fetched;
    for (std::uint32_t i = 0; i < fetched; ++i) {
        const platform::DisplayMode& mode = modes[i];
        if (platform::testDisplayMode(mode) && mode.width == wanted->width &&
            mode.height == wanted->height && mode.bits == wanted->bits) {
            platform::changeDisplayMode(mode);
            return 0;
        }
    }
    return 1;
}

// Pictures and display lists go; meshes stay, and keep their ids (see objectIdHeld).
int unloadAll() {
    if (driver.objectIdCounter > 0)
        gl.DeleteLists(1, static_cast<GLsizei>(driver.objectIdCounter));
    UnloadPictures();
    driver.objectIdCounter = 0;
    return 0;
}

// Meshes first, then the queue's pools, then the pictures and lists (one left open closed
// first) while their context is still current; the context and the window go last, stopping
// at the first that fails.
int destroyContext() {
    MeshStore_Clear();
    Manager3D_FreeHeaps();
    Objects_CloseOpenList();
    unloadAll();
    if (driver.properties[PROP_MODE_CHANGED])
        platform::restoreDisplayMode();
    if (!platform::releaseContext())
        return 1;
    if (!platform::releaseWindow(driver.properties[PROP_WINDOW]))
        return 1;
    return 0;
}

} // namespace norvgl
