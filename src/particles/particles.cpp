// Particle drawing: requests made during the frame, and the end-of-frame pass that draws each
// requested system from a vertex buffer of its own and then advances its simulation.
#include "particles/particles.h"
#include "pictures/pictures.h"
#include "platform/gl_table.h"

namespace norvgl {

namespace {

// The pass's own projection, whatever the window's shape.
constexpr double kFieldOfView = 45.0;
constexpr double kAspect = 1.0696;
constexpr double kNear = 10.0;
constexpr double kFar = 10000.0;
constexpr GLsizei kStride = static_cast<GLsizei>(kParticleVertexFloats * sizeof(float));
constexpr char kParticleTexture[] = "particle.bmp";
constexpr float kFacing[3] = {0.0f, 0.0f, 1.0f};
constexpr float kShardSpin = 50.0f; // radians turned over a shard's life
constexpr std::uint32_t kQuadVertices = 4;

void flushVertices(GLenum mode) {
    if (particles.fill == 0)
        return;
    gl.DrawArrays(mode, 0, static_cast<GLsizei>(particles.fill));
    particles.fill = 0;
}

void putVertex(const float* at, const float* rgba, float s, float t) {
    float* v = &particles.vertices[particles.fill++ * kParticleVertexFloats];
    v[0] = at[0];
    v[1] = at[1];
    v[2] = at[2];
    v[3] = rgba[0];
    v[4] = rgba[1];
    v[5] = rgba[2];
    v[6] = rgba[3];
    v[7] = s;
    v[8] = t;
}

// Draws one record as it is, then runs the steps it owes at `now`. `m` is the system's
// modelview: its first two rows are the view's right and up axes in model coordinates.
void drawRecord(ParticleRecord& r, bool shards, const float* m, double now) {
    const std::int32_t steps = Particle_StepCount(r, now);
    const float s = (1.0f - r.age) * r.size; // shrinks to nothing over the particle's life
    const float h = s * 0.5f;
    // Offset along the model axes, not the quad's edges.
    const float c[3] = {r.position[0] - h, r.position[1] - h, r.position[2] - h};
    const float alpha =
        r.params.colorMin[3] + (r.params.colorMax[3] - r.params.colorMin[3]) * (1.0f - r.age);
    if (r.age == kDeadAge)
        return;
    if (r.delay == 0.0f) {
        const float rgba[4] = {r.color[0], r.color[1], r.color[2], alpha};
        if (!shards) {
            const float right[3] = {m[0], m[4], m[8]};
            const float up[3] = {m[1], m[5], m[9]};
            if (particles.fill + kQuadVertices > kParticleBufferVertices)
                flushVertices(GL_QUADS);
            float corner[3];
            for (int i = 0; i < 3; ++i)
                corner[i] = c[i] + s * (right[i] + up[i]);
            putVertex(corner, rgba, 1.0f, 0.0f);
            for (int i = 0; i < 3; ++i)
                corner[i] = c[i] + s * up[i];
            putVertex(corner, rgba, 1.0f, 1.0f);
            putVertex(c, rgba, 0.0f, 1.0f);
            for (int i = 0; i < 3; ++i)
                corner[i] = c[i] + s * right[i];
            putVertex(corner, rgba, 0.0f, 0.0f);
        } else {
            if (particles.fill >= kShardFlushVertices)
                flushVertices(GL_TRIANGLES);
            // A shard keeps its full size while it tumbles.
            float points[3][3] = {
                {r.size, 0.0f, 0.0f}, {0.0f, r.size, 0.0f}, {-r.size, 0.0f, 0.0f}};
            const float angle = r.age * kShardSpin + r.axis[0];
            for (float* point : points) {
                RotateAboutAxis(point, r.axis, angle);
                for (int i = 0; i < 3; ++i)
                    point[i] += r.position[i];
                putVertex(point, rgba, 1.0f, 0.0f);
            }
        }
    }
    for (std::int32_t step = 0; step < steps; ++step)
        Particle_Update(r);
}

// Draws a chain from its last record back to its head, each record after those behind it,
// without recursion: the links are turned around on the way out and restored on the way
// back. One clock reading serves the whole chain.
void drawChain(ParticleRecord* head, bool shards, const float* m) {
    const double now = particles.clock();
    ParticleRecord* reversed = nullptr;
    for (ParticleRecord* r = head; r;) {
        ParticleRecord* const next = r->next;
        r->next = reversed;
        reversed = r;
        r = next;
    }
    ParticleRecord* restored = nullptr;
    for (ParticleRecord* r = reversed; r;) {
        ParticleRecord* const before = r->next;
        r->next = restored;
        restored = r;
        drawRecord(*r, shards, m, now);
        r = before;
    }
}

} // namespace

void Particle_RequestDraw(std::uint32_t id, float x, float y, float z) {
    ParticleRecord* const head = Particle_Find(id);
    if (!head)
        return;
    const auto slot = static_cast<std::size_t>(head - particles.table);
    particles.origin[slot][0] = x;
    particles.origin[slot][1] = y;
    particles.origin[slot][2] = z;
    head->drawRequested = 1;
    particles.modelview[slot] = Manager3D_CurrentModelview();
    particles.drawPending = true;
}

void Particle_DrawAll() {
    if (!particles.drawPending)
        return;
    particles.drawPending = false;

    gl.MatrixMode(GL_PROJECTION);
    gl.LoadIdentity();
    gl.gluPerspective(kFieldOfView, kAspect, kNear, kFar);
    gl.MatrixMode(GL_MODELVIEW);

    gl.Disable(GL_LIGHTING);
    gl.DisableClientState(GL_NORMAL_ARRAY);
    gl.EnableClientState(GL_COLOR_ARRAY);
    gl.EnableClientState(GL_TEXTURE_COORD_ARRAY);
    gl.Enable(GL_TEXTURE_2D);
    gl.Disable(GL_DEPTH_TEST); // scene geometry never hides particles
    gl.Enable(GL_BLEND);
    gl.BlendFunc(GL_SRC_ALPHA, GL_ONE);
    const float* v = particles.vertices;
    gl.VertexPointer(3, GL_FLOAT, kStride, v);
    gl.ColorPointer(4, GL_FLOAT, kStride, v + 3);
    gl.TexCoordPointer(2, GL_FLOAT, kStride, v + 7);
    gl.TexEnvf(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
    // Texture 0 when no such picture is loaded: quads show their vertex colours.
    gl.BindTexture(GL_TEXTURE_2D, FindPictureTexture(kParticleTexture));
    gl.Normal3fv(kFacing);

    for (std::uint32_t slot = 0; slot < particles.emitterCount; ++slot) {
        ParticleRecord& head = particles.table[slot];
        if (!head.drawRequested)
            continue;
        head.drawRequested = 0;
        // The head decides how the whole chain is drawn, so the buffer holds one kind.
        const bool shards = (head.params.flags & PF_SHARDS) != 0;
        if (shards) {
            gl.Disable(GL_BLEND);
            gl.Disable(GL_TEXTURE_2D);
            gl.DisableClientState(GL_TEXTURE_COORD_ARRAY);
        }
        const Matrix4& m = *particles.modelview[slot];
        gl.LoadMatrixf(m.m);
        gl.Translatef(particles.origin[slot][0], particles.origin[slot][1],
                      -particles.origin[slot][2]);
        // A translation changes only the last column, so the view's axes are read from the
        // captured matrix rather than back from GL.
        drawChain(&head, shards, m.m);
        flushVertices(shards ? GL_TRIANGLES : GL_QUADS);
        if (shards) {
            gl.EnableClientState(GL_TEXTURE_COORD_ARRAY);
            gl.Enable(GL_TEXTURE_2D);
            gl.Enable(GL_BLEND);
        }
    }

    gl.DisableClientState(GL_COLOR_ARRAY);
    gl.EnableClientState(GL_NORMAL_ARRAY);
    gl.Enable(GL_LIGHTING);
}

} // namespace norvgl
