/* norvgl.h: the host's interface to the norvgl rendering driver.
   63 plain C functions (caller-cleaned default convention), their constants and records. */
#ifndef NORVGL_H
#define NORVGL_H

#include <stddef.h>
#include <stdint.h>

/* Exported names are visible; everything else in the library stays hidden. */
#if defined(__GNUC__) && !defined(_WIN32)
#define NORVGL_API __attribute__((visibility("default")))
#else
#define NORVGL_API
#endif

/* Entries that ignore their arguments accept any argument list: "..." in C++ and in C23,
   where "()" means no arguments; before C23 a C declaration can say so only without a
   prototype. Compilers that announce C23 before accepting "(...)" keep the old form, which
   they still read as taking any arguments. */
#if defined(__cplusplus) ||                                                                        \
    (defined(__STDC_VERSION__) && __STDC_VERSION__ > 201710L &&                                    \
     (__STDC_VERSION__ >= 202311L || (defined(__clang__) && __clang_major__ >= 18) ||              \
      (!defined(__clang__) && defined(__GNUC__) && __GNUC__ >= 13)))
#define NORVGL_ANY_ARGS ...
#else
#define NORVGL_ANY_ARGS
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Driver properties (GFX_GetProperty / GFX_SetProperty). Slots are pointer-sized:
   32 bits on 32-bit Windows, wide enough for the name and version text pointers elsewhere. */
#define PROP_DRIVER_NAME 0    /* pointer to the driver's name text */
#define PROP_DRIVER_VERSION 1 /* pointer to the driver's version text */
#define PROP_WINDOW 2         /* HWND on Windows; an X11 Window id on $DISPLAY on Linux */
#define PROP_MODE_CHANGED 3   /* nonzero: GFX_Destroy restores the saved display mode */
#define PROP_NO_TEXTURES 4    /* nonzero: pictures stay pixel arrays, text mode is off */
#define PROP_SPARE 5          /* stored only */
#define PROP_ENABLED 6        /* 0: drawing and frame calls do nothing */
#define PROP_MODE_CURSOR 7    /* position of the GFX_EnumResolutions enumeration */

/* Render properties (GFX_GetRenderProperty / GFX_SetRenderProperty). Index 8 is accepted by
   both calls and kept in a ninth slot that only the getter reads. */
#define RPROP_ALPHA_BLEND 0
#define RPROP_ADDITIVE_BLEND 1
#define RPROP_DEPTH_TEST 2
#define RPROP_SPARE 3
#define RPROP_MIPMAPS 4
#define RPROP_SCREEN_SPACE 5
#define RPROP_CULLING 6
#define RPROP_CLEAR_COLOR 7

/* Last-error codes (GFX_GetLastError). */
#define ERR_NONE 0
#define ERR_SET_PIXEL_FORMAT 1
#define ERR_CREATE_CONTEXT 2
#define ERR_MAKE_CURRENT 3
#define ERR_BAD_PROPERTY 4
#define ERR_NOT_SUPPORTED 5
#define ERR_FILE_NOT_FOUND 6
#define ERR_INVALID_FILE_DATA 7
#define ERR_INVALID_PARAMETER 8
#define ERR_OUT_OF_MEMORY 9
#define ERR_UNKNOWN 10

/* Buffer sizes that GFX_GetLastError needs, terminator included. */
#define ERROR_TITLE_SIZE 24
#define ERROR_DETAILS_SIZE 165

/* State request mask bits and the packed values they consume, in this order. */
#define STATE_CULL 1     /* one word: CULL_ */
#define STATE_DEPTH 2    /* one word: DEPTH_ */
#define STATE_BLEND 4    /* one word: BLEND_ */
#define STATE_MATERIAL 8 /* twelve floats: ambient, diffuse, specular RGBA */
#define STATE_TEXTURE 16 /* one word, low 16 bits: texture name */

#define CULL_ON 0
#define CULL_OFF 2
#define DEPTH_ON 0
#define DEPTH_OFF 1
#define BLEND_OFF 0
#define BLEND_ALPHA 1
#define BLEND_ADD 2

/* Primitive types. */
#define PRIM_POINTS 0
#define PRIM_LINES 2
#define PRIM_LINE_STRIP 3
#define PRIM_TRIANGLES 4
#define PRIM_QUADS 7
#define PRIM_BILLBOARD 8
#define PRIM_NONE 9

/* Particle flags (EmitterParams.flags). */
#define PF_LOOP 1
#define PF_FIRE 2
#define PF_SMOKE 4
#define PF_STAGGER 8
#define PF_NO_GRAVITY 16
#define PF_SET_FLAGS 32
#define PF_SHARDS 64

/* GFX_LoadPicture flags. */
#define PICTURE_NO_MIPMAPS 2

/* GFX_NewObject types. */
#define OBJECT_DISPLAY_LIST 0
#define OBJECT_PARTICLE_SYSTEM 1

typedef struct DisplayModeRecord {
    unsigned int width;
    unsigned int height;
    unsigned char bits;
} DisplayModeRecord;

typedef struct EmitterParams {
    unsigned int count;
    unsigned int flags;
    unsigned int headMarker;
    float colorMin[4];
    float colorMax[4];
    float sizeMin, sizeMax;
    float ageStepMin, ageStepMax;
    float azimuthMin, azimuthMax;
    float elevationMin, elevationMax;
    float speedMin, speedMax;
    unsigned int reserved;
} EmitterParams;

/* Properties and errors */
NORVGL_API void GFX_GetLastError(char* title, char* details);
NORVGL_API intptr_t GFX_GetProperty(unsigned int index);
NORVGL_API int GFX_SetProperty(unsigned int index, intptr_t value);
NORVGL_API int GFX_GetRenderProperty(int index);
NORVGL_API int GFX_SetRenderProperty(int index, int value);

/* Context, display modes, teardown */
NORVGL_API int GFX_Init(void);
NORVGL_API int GFX_Destroy(void);
NORVGL_API int GFX_UnloadAll(void);
NORVGL_API int GFX_EnumResolutions(DisplayModeRecord* mode);
NORVGL_API int GFX_SetResolution(const DisplayModeRecord* mode);

/* Frame */
NORVGL_API int GFX_BeginRender(void);
NORVGL_API int GFX_EndRender(void);
NORVGL_API int GFX_SetClearColor(float red, float green, float blue, float alpha);

/* Render state */
NORVGL_API int GFX_LockRenderState(unsigned int mask, const void* values);
NORVGL_API void GFX_UnlockRenderState(void);
NORVGL_API void GFX_LockRenderMesh(unsigned int type);
NORVGL_API void GFX_UnlockRenderMesh(void);

/* Transforms (angles in radians, left-handed coordinates) */
NORVGL_API void GFX_Translate(float x, float y, float z);
NORVGL_API void GFX_Rotate(float angle, float x, float y, float z);
NORVGL_API void GFX_Scale(float x, float y, float z);
NORVGL_API void GFX_Look(float eyeX, float eyeY, float eyeZ, float targetX, float targetY,
                         float targetZ, float unused1, float unused2, float unused3);
NORVGL_API int GFX_Untransform(unsigned int count);

/* Geometry: vertices are 8 floats (position xyz, normal xyz, texture st), 32 bytes apart */
NORVGL_API int GFX_DrawPolygon(int type, unsigned int count, const float* vertices);
NORVGL_API int GFX_DrawIndexedPolygon(int type, unsigned int count, const float* vertices,
                                      unsigned int indexCount, const unsigned short* indices);
NORVGL_API int GFX_DrawBillboard(const float* position, float size);

/* Lights and materials */
NORVGL_API int GFX_AddLight(unsigned int light, int type, float x, float y, float z);
NORVGL_API int GFX_SetLightPosition(unsigned int light, float x, float y, float z);
NORVGL_API int GFX_SetLightColor(unsigned int light, float ambientR, float ambientG, float ambientB,
                                 float diffuseR, float diffuseG, float diffuseB, float specularR,
                                 float specularG, float specularB);
NORVGL_API int GFX_RemoveLight(unsigned int light);
NORVGL_API int GFX_SetMaterialColorEx(float ambientR, float ambientG, float ambientB,
                                      float ambientA, float diffuseR, float diffuseG,
                                      float diffuseB, float diffuseA, float specularR,
                                      float specularG, float specularB, float specularA);
NORVGL_API int GFX_SetMaterialColor(float ambientR, float ambientG, float ambientB, float diffuseR,
                                    float diffuseG, float diffuseB, float specularR,
                                    float specularG, float specularB);

/* Pictures and text.
   GFX_LoadPicture reads a 3DF file or a Windows bitmap, from the named file or, when data is
   not null, from memory. Pictures become textures of the rendering context, so they load only
   between a successful GFX_Init and GFX_Destroy: a load without a context returns 1 with the
   last error ERR_CREATE_CONTEXT. A name that is not a regular file (a pipe, a device, a
   directory) is refused as a missing file, ERR_FILE_NOT_FOUND. */
NORVGL_API int GFX_LoadPicture(const char* name, const void* data, unsigned int aux,
                               unsigned int* id, unsigned int flags);
NORVGL_API int GFX_GetPictureDimensions(unsigned int id, unsigned int* width, unsigned int* height,
                                        unsigned int* extra);
NORVGL_API int GFX_DrawPicture(unsigned int id, int x, int y, int width, int height);
NORVGL_API int GFX_DrawPictureByProportion(unsigned int id, float x, float y, float width,
                                           float height);
NORVGL_API int GFX_SelectTexture(unsigned int id);
NORVGL_API int GFX_SetFontSize(float width, float height);
NORVGL_API int GFX_SetFontBitmap(unsigned int id);
NORVGL_API int GFX_BeginText(void);
NORVGL_API int GFX_EndText(void);
NORVGL_API int GFX_PrintByProportion(float x, float y, const char* text);

/* Models, meshes, objects, particle systems.
   VRML models and host meshes load between a successful GFX_Init and GFX_Destroy (otherwise 1,
   ERR_CREATE_CONTEXT) and live until GFX_Destroy; GFX_UnloadAll keeps them and their ids, and
   ids issued after it skip every id a model's mesh or a host mesh still holds.
   GFX_LoadMeshIndirect keeps referring to the host's arrays, and converts them in place for
   the driver's coordinates: z of positions and normals negated, texture v := 1 - v (loading the
   same arrays twice turns them back). They must stay valid as long as the mesh is drawn. With
   a vertex count above 0, all three arrays are needed and every index must be below the count;
   a null array, a null index array for a non-zero count, more than 65535 indices or an index
   out of range is refused with ERR_INVALID_PARAMETER before anything is converted. */
NORVGL_API int GFX_LoadVRML(int unused1, unsigned int length, const char* text, unsigned int* id,
                            int unused2, int unused3, int unused4, float* bounds);
NORVGL_API int GFX_LoadMeshIndirect(int type, unsigned int count, float* positions, float* normals,
                                    float* texCoords, const unsigned short* indices,
                                    unsigned int indexCount, unsigned int pictureId,
                                    unsigned int* id);
/* Particle systems (GFX_NewObject type 1, GFX_SetObjectProperty, GFX_DrawParticleSystem).
   The library writes into the host's block: it consumes count (the block holds 0 afterwards)
   and sets the low byte of headMarker. A library holds at most 64 systems from its load on;
   the 65th GFX_NewObject of type 1 returns 1 with ERR_OUT_OF_MEMORY, and a null id pointer or
   a count above 65535 returns 1 with ERR_INVALID_PARAMETER: in each case no id is taken and
   neither the block nor the host's id is written. No system ever has id 0: both
   GFX_SetObjectProperty and GFX_DrawParticleSystem treat it as an id no system has, which
   they ignore (result 0). Rebuilding a system frees the records it no longer uses. A particle
   whose random tumbling axis comes out as zero tumbles about the vertical axis. GFX_UnloadAll
   keeps every particle system with its id, and no later object is given an id a particle
   system holds. */
NORVGL_API int GFX_NewObject(unsigned int* id, int type, EmitterParams* params);
NORVGL_API int GFX_EndObject(void);
NORVGL_API int GFX_DrawObject(unsigned int id, float x, float y, float z);
NORVGL_API int GFX_DrawObjectEx(unsigned int id, float x, float y, float z, int type,
                                unsigned int mask, const void* values);
NORVGL_API int GFX_SetObjectProperty(unsigned int id, EmitterParams* params);
NORVGL_API int GFX_DrawParticleSystem(unsigned int id, float x, float y, float z);

/* Entries kept for hosts written against older tables: always 0 ... */
NORVGL_API int GFX_Print(NORVGL_ANY_ARGS);
NORVGL_API int GFX_Resize(NORVGL_ANY_ARGS);
NORVGL_API int GFX_SetBlitArea(NORVGL_ANY_ARGS);
/* ... always 1 without recording an error ... */
NORVGL_API int GFX_LoadIndexedMesh(NORVGL_ANY_ARGS);
/* ... and always 1 with ERR_NOT_SUPPORTED. */
NORVGL_API int GFX_AddRenderWindow(NORVGL_ANY_ARGS);
NORVGL_API int GFX_GetAvailableDevices(NORVGL_ANY_ARGS);
NORVGL_API int GFX_GetRenderState(NORVGL_ANY_ARGS);
NORVGL_API int GFX_GetRenderWindow(NORVGL_ANY_ARGS);
NORVGL_API int GFX_RemoveRenderWindow(NORVGL_ANY_ARGS);
NORVGL_API int GFX_SetDevice(NORVGL_ANY_ARGS);
NORVGL_API int GFX_SetRenderState(NORVGL_ANY_ARGS);
NORVGL_API int GFX_SetRenderWindow(NORVGL_ANY_ARGS);
NORVGL_API int GFX_TestRenderState(NORVGL_ANY_ARGS);
NORVGL_API int GFX_UnloadPicture(NORVGL_ANY_ARGS);

#ifdef __cplusplus
}
#endif

#endif /* NORVGL_H */
