// Every GL and GLU entry point the driver calls, one line each: result, name, parameters,
// arguments. Expanded into the GL table, the call-name enum and the test recorder's wrappers.
// NVGL_GL(result, Name, (parameters), (arguments)); GLU entries use NVGL_GLU, which falls back
// to NVGL_GL where the includer does not tell them apart.

#ifndef NVGL_GLU
#define NVGL_GLU NVGL_GL
#define NVGL_GLU_FALLBACK
#endif

NVGL_GL(void, Begin, (GLenum mode), (mode))
NVGL_GL(void, BindTexture, (GLenum target, GLuint texture), (target, texture))
NVGL_GL(void, BlendFunc, (GLenum sfactor, GLenum dfactor), (sfactor, dfactor))
NVGL_GL(void, CallList, (GLuint list), (list))
NVGL_GL(void, Clear, (GLbitfield mask), (mask))
NVGL_GL(void, ClearColor, (GLclampf r, GLclampf g, GLclampf b, GLclampf a), (r, g, b, a))
NVGL_GL(void, ClearDepth, (GLclampd depth), (depth))
NVGL_GL(void, Color4f, (GLfloat r, GLfloat g, GLfloat b, GLfloat a), (r, g, b, a))
NVGL_GL(void, ColorPointer, (GLint size, GLenum type, GLsizei stride, const GLvoid* pointer),
        (size, type, stride, pointer))
NVGL_GL(void, DeleteLists, (GLuint list, GLsizei range), (list, range))
NVGL_GL(void, DeleteTextures, (GLsizei n, const GLuint* textures), (n, textures))
NVGL_GL(void, DepthFunc, (GLenum func), (func))
NVGL_GL(void, DepthMask, (GLboolean flag), (flag))
NVGL_GL(void, DepthRange, (GLclampd zNear, GLclampd zFar), (zNear, zFar))
NVGL_GL(void, Disable, (GLenum cap), (cap))
NVGL_GL(void, DisableClientState, (GLenum array), (array))
NVGL_GL(void, DrawArrays, (GLenum mode, GLint first, GLsizei count), (mode, first, count))
NVGL_GL(void, DrawElements, (GLenum mode, GLsizei count, GLenum type, const GLvoid* indices),
        (mode, count, type, indices))
NVGL_GL(void, DrawPixels,
        (GLsizei width, GLsizei height, GLenum format, GLenum type, const GLvoid* pixels),
        (width, height, format, type, pixels))
NVGL_GL(void, Enable, (GLenum cap), (cap))
NVGL_GL(void, EnableClientState, (GLenum array), (array))
NVGL_GL(void, End, (void), ())
NVGL_GL(void, EndList, (void), ())
NVGL_GL(void, Flush, (void), ())
NVGL_GL(void, GenTextures, (GLsizei n, GLuint* textures), (n, textures))
NVGL_GL(GLenum, GetError, (void), ())
NVGL_GL(void, GetFloatv, (GLenum pname, GLfloat* params), (pname, params))
NVGL_GL(void, GetLightfv, (GLenum light, GLenum pname, GLfloat* params), (light, pname, params))
NVGL_GL(void, LightModelfv, (GLenum pname, const GLfloat* params), (pname, params))
NVGL_GL(void, Lightf, (GLenum light, GLenum pname, GLfloat param), (light, pname, param))
NVGL_GL(void, Lightfv, (GLenum light, GLenum pname, const GLfloat* params), (light, pname, params))
NVGL_GL(void, LoadIdentity, (void), ())
NVGL_GL(void, LoadMatrixf, (const GLfloat* m), (m))
NVGL_GL(void, Materialf, (GLenum face, GLenum pname, GLfloat param), (face, pname, param))
NVGL_GL(void, Materialfv, (GLenum face, GLenum pname, const GLfloat* params), (face, pname, params))
NVGL_GL(void, MatrixMode, (GLenum mode), (mode))
NVGL_GL(void, NewList, (GLuint list, GLenum mode), (list, mode))
NVGL_GL(void, Normal3fv, (const GLfloat* v), (v))
NVGL_GL(void, NormalPointer, (GLenum type, GLsizei stride, const GLvoid* pointer),
        (type, stride, pointer))
NVGL_GL(void, PixelStorei, (GLenum pname, GLint param), (pname, param))
NVGL_GL(void, Rotatef, (GLfloat angle, GLfloat x, GLfloat y, GLfloat z), (angle, x, y, z))
NVGL_GL(void, Scalef, (GLfloat x, GLfloat y, GLfloat z), (x, y, z))
NVGL_GL(void, ShadeModel, (GLenum mode), (mode))
NVGL_GL(void, TexCoord2fv, (const GLfloat* v), (v))
NVGL_GL(void, TexCoordPointer, (GLint size, GLenum type, GLsizei stride, const GLvoid* pointer),
        (size, type, stride, pointer))
NVGL_GL(void, TexEnvf, (GLenum target, GLenum pname, GLfloat param), (target, pname, param))
NVGL_GL(void, TexImage2D,
        (GLenum target, GLint level, GLint internalFormat, GLsizei width, GLsizei height,
         GLint border, GLenum format, GLenum type, const GLvoid* pixels),
        (target, level, internalFormat, width, height, border, format, type, pixels))
NVGL_GL(void, TexParameteri, (GLenum target, GLenum pname, GLint param), (target, pname, param))
NVGL_GL(void, Translatef, (GLfloat x, GLfloat y, GLfloat z), (x, y, z))
NVGL_GL(void, Vertex3fv, (const GLfloat* v), (v))
NVGL_GL(void, VertexPointer, (GLint size, GLenum type, GLsizei stride, const GLvoid* pointer),
        (size, type, stride, pointer))
NVGL_GL(void, Viewport, (GLint x, GLint y, GLsizei width, GLsizei height), (x, y, width, height))
NVGL_GLU(void, gluLookAt,
        (GLdouble eyeX, GLdouble eyeY, GLdouble eyeZ, GLdouble centerX, GLdouble centerY,
         GLdouble centerZ, GLdouble upX, GLdouble upY, GLdouble upZ),
        (eyeX, eyeY, eyeZ, centerX, centerY, centerZ, upX, upY, upZ))
NVGL_GLU(void, gluPerspective, (GLdouble fovy, GLdouble aspect, GLdouble zNear, GLdouble zFar),
        (fovy, aspect, zNear, zFar))

#ifdef NVGL_GLU_FALLBACK
#undef NVGL_GLU
#undef NVGL_GLU_FALLBACK
#endif
