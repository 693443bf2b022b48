// Lights act on GL's fixed-function lights at once, in the host's left-handed coordinates;
// material colours are a key of the render-state tree and reach GL when the flush draws.
#include "manager3d/lights.h"

#include "norvgl.h"

#include "manager3d/manager3d.h"
#include "platform/gl_table.h"

namespace norvgl {

namespace {

constexpr std::int32_t kDirectionalLight = 1;
constexpr std::int32_t kHighestLightType = 2;

GLenum lightName(std::uint32_t light) {
    return GL_LIGHT0 + light;
}

} // namespace

int addLight(std::uint32_t light, std::int32_t type, float x, float y, float z) {
    if (type > kHighestLightType)
        return 1;
    gl.Enable(GL_LIGHTING);
    gl.Enable(lightName(light));
    const GLfloat position[4] = {x, -y, -z, type == kDirectionalLight ? 0.0f : 1.0f};
    gl.Lightf(lightName(light), GL_CONSTANT_ATTENUATION, 1.0f);
    gl.Lightf(lightName(light), GL_LINEAR_ATTENUATION, 0.0f);
    gl.Lightf(lightName(light), GL_QUADRATIC_ATTENUATION, 0.0f);
    static constexpr GLfloat kWhite[4] = {1.0f, 1.0f, 1.0f, 1.0f};
    gl.Lightfv(lightName(light), GL_AMBIENT, kWhite);
    gl.Lightfv(lightName(light), GL_DIFFUSE, kWhite);
    gl.Lightfv(lightName(light), GL_SPECULAR, kWhite);
    gl.Lightfv(lightName(light), GL_POSITION, position);
    return 0;
}

void Manager3D_SetLightPosition(std::uint32_t light, float x, float y, float z) {
    GLfloat position[4] = {0.0f, 0.0f, 1.0f, 0.0f};
    gl.GetLightfv(lightName(light), GL_POSITION, position);
    position[0] = x;
    position[1] = y;
    position[2] = z;
    gl.Lightfv(lightName(light), GL_POSITION, position);
}

int setLightPosition(std::uint32_t light, float x, float y, float z) {
    Manager3D_SetLightPosition(light, x, y, -z);
    return 0;
}

int setLightColor(std::uint32_t light, const float ambient[3], const float diffuse[3],
                  const float specular[3]) {
    const GLfloat a[4] = {ambient[0], ambient[1], ambient[2], 1.0f};
    const GLfloat d[4] = {diffuse[0], diffuse[1], diffuse[2], 1.0f};
    const GLfloat s[4] = {specular[0], specular[1], specular[2], 1.0f};
    gl.Lightfv(lightName(light), GL_AMBIENT, a);
    gl.Lightfv(lightName(light), GL_DIFFUSE, d);
    gl.Lightfv(lightName(light), GL_SPECULAR, s);
    return 0;
}

int removeLight(std::uint32_t light) {
    gl.Disable(lightName(light));
    return 0;
}

int setMaterialColor(const float colors[12]) {
    return Manager3D_StateCommand(STATE_MATERIAL, colors);
}

} // namespace norvgl
