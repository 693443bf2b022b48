// Transform stack: each transform is applied to GL's modelview matrix at once and read back
// into the next slot of the matrix heap, so batches can keep a pointer to the slot they need.
#include "core/core.h"
#include "core/messages.h"
#include "manager3d/manager3d.h"
#include "platform/gl_table.h"

#include <cmath>
#include <cstring>

namespace norvgl {

namespace {

constexpr Matrix4 kIdentity = {{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}};

void record() {
    if (m3d.nextMatrix >= kMatrixHeapSlots) {
        DebugLog("%s", kMatrixHeapExhausted);
        return;
    }
    m3d.currentMatrix = m3d.nextMatrix++;
    gl.GetFloatv(GL_MODELVIEW_MATRIX, m3d.matrixHeap[m3d.currentMatrix].m);
}

} // namespace

void Manager3D_ResetTransforms() {
    m3d.matrixHeap[kIdentitySlot] = kIdentity;
    // Slot 1 is current until a frame's first transform; it holds the identity the frame
    // starts from, and set-up starts the free slots above it so slot 0 is never taken.
    m3d.matrixHeap[1] = kIdentity;
    m3d.currentMatrix = 1;
    m3d.nextMatrix = 2;
    m3d.projectionIndex = 0;
    m3d.screenSpaceDepth = 0;
    m3d.screenSpaceOverflow = 0;
}

void Manager3D_Translate(float x, float y, float z) {
    gl.Translatef(x, y, -z);
    record();
}

void Manager3D_Rotate(float angle, float x, float y, float z) {
    gl.Rotatef(angle * kRadiansToDegrees, x, y, -z);
    record();
}

void Manager3D_Scale(float x, float y, float z) {
    gl.Scalef(x, y, z);
    record();
}

void Manager3D_LookAt(float eyeX, float eyeY, float eyeZ, float targetX, float targetY,
                      float targetZ) {
    const double dx = static_cast<double>(targetX) - eyeX;
    const double dy = static_cast<double>(targetY) - eyeY;
    const double dz = static_cast<double>(targetZ) - eyeZ;
    const double length = std::sqrt(dx * dx + dy * dy + dz * dz);
    if (length == 0.0)
        return;
    const double nx = dx / length, ny = dy / length, nz = dz / length;
    // Up is the y axis without its part along the view direction, or the z axis when looking
    // (almost) straight along y.
    double ux = -ny * nx, uy = 1.0 - ny * ny, uz = -nz * ny;
    double upLength = std::sqrt(ux * ux + uy * uy + uz * uz);
    if (upLength < kLookUpThreshold) {
        ux = -nz * nx;
        uy = -nz * ny;
        uz = 1.0 - nz * nz;
        upLength = std::sqrt(ux * ux + uy * uy + uz * uz);
        if (upLength < kLookUpThreshold)
            return;
    }
    gl.gluLookAt(eyeX, eyeY, -static_cast<double>(eyeZ), targetX, targetY,
                 -static_cast<double>(targetZ), ux / upLength, uy / upLength, -uz / upLength);
    record();
}

int Manager3D_Untransform(std::uint32_t n) {
    if (m3d.currentMatrix <= n)
        return 1;
    if (m3d.nextMatrix >= kMatrixHeapSlots) {
        DebugLog("%s", kMatrixHeapExhausted);
        return 0;
    }
    const std::uint32_t slot = m3d.nextMatrix++;
    m3d.matrixHeap[slot] = m3d.matrixHeap[m3d.currentMatrix - n];
    m3d.currentMatrix = slot;
    gl.LoadMatrixf(m3d.matrixHeap[slot].m);
    return 0;
}

void Manager3D_Perspective(float aspect, float zNear, float zFar) {
    gl.MatrixMode(GL_PROJECTION);
    gl.LoadIdentity();
    gl.gluPerspective(kFieldOfViewDegrees, aspect, zNear, zFar);
    if (m3d.projectionIndex + 1 < kProjectionStackDepth)
        ++m3d.projectionIndex;
    gl.GetFloatv(GL_PROJECTION_MATRIX, m3d.projectionStack[m3d.projectionIndex].m);
    gl.MatrixMode(GL_MODELVIEW);
}

void Manager3D_ScreenSpace(bool on) {
    if (on) {
        if (m3d.projectionIndex + 1 >= kProjectionStackDepth) {
            DebugLog("%s", kProjectionStackExhausted);
            ++m3d.screenSpaceOverflow;
        } else {
            ++m3d.projectionIndex;
            ++m3d.screenSpaceDepth;
            m3d.projectionStack[m3d.projectionIndex] = kIdentity;
        }
        m3d.currentMatrix = kIdentitySlot;
        return;
    }
    // The slot written last; slot 1 at least, since the cursors never go below their reset.
    m3d.currentMatrix = m3d.nextMatrix - 1;
    // An exit without a matching entry keeps the frame's perspective in place.
    if (m3d.screenSpaceOverflow > 0) {
        --m3d.screenSpaceOverflow;
    } else if (m3d.screenSpaceDepth > 0) {
        --m3d.screenSpaceDepth;
        --m3d.projectionIndex;
    }
}

const Matrix4* Manager3D_CurrentModelview() {
    return &m3d.matrixHeap[m3d.currentMatrix];
}

void RotateAboutAxis(float* point, const float* axis, float angle) {
    const float s = std::sin(angle);
    const float c = std::cos(angle);
    const float t = 1.0f - c;
    const float ax = axis[0], ay = axis[1], az = axis[2];
    const float x = point[0], y = point[1], z = point[2];
    point[0] = (t * ax * ax + c) * x + (t * ax * ay - s * az) * y + (t * ax * az + s * ay) * z;
    point[1] = (t * ax * ay + s * az) * x + (t * ay * ay + c) * y + (t * ay * az - s * ax) * z;
    point[2] = (t * ax * az - s * ay) * x + (t * ay * az + s * ax) * y + (t * az * az + c) * z;
}

} // namespace norvgl
