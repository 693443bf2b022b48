/* norvgl.h: the host's interface to the norvgl rendering driver, and its manual.

   norvgl draws with OpenGL 1.1 on a window that the host owns. The host talks to it through
   the 63 plain C functions below (the platform's default, caller-cleaned convention); this
   header is all a host needs. Link with -lnorvgl (Linux: libnorvgl.so; Windows: norvgl.dll).

   A HOST IN TEN LINES
       GFX_SetProperty(PROP_WINDOW, window);        the window the driver draws on
       if (GFX_Init() != 0) { GFX_GetLastError(title, details); ... }
       GFX_LoadPicture("logo.bmp", NULL, 0, &logo, 0);
       while (running) {
           GFX_BeginRender();                       a frame: record what to draw
           GFX_Look(0, 50, -300, 0, 0, 0, 0, 0, 0); the camera
           ... GFX_DrawPolygon, GFX_DrawObject, GFX_DrawPicture, text, particles ...
           GFX_EndRender();                         draw it all, sorted by state, and show it
       }
       GFX_Destroy();

   CONVENTIONS
   - Results: 0 is success and 1 is failure, unless a function says otherwise. A failure the
     driver diagnoses sets the last error, which GFX_GetLastError reads as a title and a
     details text. The last error stays set until the next error: a later success does not
     clear it, and reading it does not either. Every error is also written to the debug log.
   - The debug log: "debuglog.txt" in the process's current directory, opened, appended to and
     closed for every line (CR LF endings). Loading the library writes a banner line of
     asterisks and "NORVGL.DLL Entry Point"; each error writes
     "Norvgl: Error report: TITLE: DETAILS" and "Error details: WHAT" (WHAT is "(none)" or
     the call's own note); a full pool of the render queue writes a line that begins with
     "Manager3D Error:".
   - PROP_ENABLED, the master switch: while it is 0, every function marked GUARDED below returns
     0 at once and does nothing. Loading, lights, properties and objects are not guarded.
   - Threads: one. Call everything on the thread that called GFX_Init.
   - Coordinates: left-handed, y up, the camera at first looking along +z. The driver negates
     every z (positions, normals, light positions, translations) on its way to OpenGL, and
     texture v becomes -v, so that textures stand upright with v = 0 at the picture's top.
     Angles are in radians. Units are the host's own ("model units").
   - Projection: perspective with a vertical field of view of 45 degrees, the window's
     aspect ratio, the near plane at 10 and the far plane at 10000 model units. Nothing nearer
     than 10 units to the camera is drawn: scale small models up (GFX_Scale).
   - The screen: pixels count from the window's top-left corner, x to the right and y down
     (GFX_DrawPicture). Text and proportional pictures measure in fractions of the window:
     (0, 0) is the top-left corner and (1, 1) the bottom-right one.
   - Frames never clear the depth buffer. Frames alternate between two halves of the depth
     range (GL_LESS over 0..0.5, then GL_GREATER over 1..0.5), so a frame only draws where
     the frame before it wrote depth. An animated host must therefore cover the whole window
     with depth-tested geometry every frame: a sky box, a ground and a sky, a wall behind
     everything. Clearing the colour (RPROP_CLEAR_COLOR) does not clear depth.
   - Deferred drawing: between GFX_BeginRender and GFX_EndRender, drawing calls only record.
     GFX_EndRender draws everything grouped by render state (culling, then depth test, then
     blending, then material, then texture), so submission order does not decide what is
     drawn first. Draw blended geometry under a state that sorts after the opaque one.
   - Drawing outside a frame: between GFX_Init and GFX_Destroy the calls record into the queue
     as they do inside one, and GFX_BeginRender throws those records away; before GFX_Init
     and after GFX_Destroy there is no queue and they do nothing. Pictures that are pixel
     arrays are the exception: they are copied to the window at once.
   - Render state: every frame starts with culling off, depth test on, no blending, a white
     material and no texture. A state request (render properties, materials,
     GFX_SelectTexture) applies to everything submitted after it, to the end of the frame.
   - Pictures: 3DF texture files and Windows bitmaps (4, 8 or 24 bits; uncompressed, RLE8,
     RLE4). Pure black (0, 0, 0) in a bitmap becomes transparent (alpha 0): it shows only
     while blending with source alpha (RPROP_ALPHA_BLEND or RPROP_ADDITIVE_BLEND, text,
     particles). A bitmap up to 256 x 256 becomes a square power-of-two texture (its sides
     rounded down to powers of two; unequal ones become twice the larger); a larger one stays
     a pixel array drawn at its own size at the window's lower-left corner.
   - Ids: pictures get PictureIds 1, 2, 3, ... in load order (GFX_UnloadAll starts again at
     1). Models, meshes, display-list objects and particle systems share one ObjectId counter,
     which starts at 1 after GFX_Init.

   ON LINUX, PROP_WINDOW holds an X11 Window id (an XID) of a mapped window on the display
   that $DISPLAY names, whose visual is RGBA and double-buffered with a depth buffer (the
   default visual of Xvfb and of desktop servers is). The driver opens its own display
   connection in GFX_Init and closes it in GFX_Destroy. On Windows it holds the HWND.

   STRICT PROTOTYPES: the entries that accept any arguments (GFX_Print and the other kept
   entries at the end) are declared in C before C23 without a prototype, the only way C can
   say "any arguments"; the header silences -Wstrict-prototypes for those declarations only. */
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

/* The version of this header and of the library built with it. GFX_GetProperty
   (PROP_DRIVER_VERSION) reports NORVGL_VERSION_STRING of the library that is loaded, so a host
   can tell whether it runs with the library it was compiled against. */
#define NORVGL_VERSION_MAJOR 8
#define NORVGL_VERSION_MINOR 29
#define NORVGL_VERSION_PATCH 0
#define NORVGL_VERSION_BUILD 1
#define NORVGL_VERSION_STRING "8.29.00.1"

#ifdef __cplusplus
extern "C" {
#endif

/* Driver properties (GFX_GetProperty / GFX_SetProperty). Slots are pointer-sized:
   32 bits on 32-bit Windows, wide enough for the name and version text pointers elsewhere. */
#define PROP_DRIVER_NAME 0    /* pointer to the text "Norvash OpenGL Driver" */
#define PROP_DRIVER_VERSION 1 /* pointer to the version text, NORVGL_VERSION_STRING */
#define PROP_WINDOW 2         /* HWND on Windows; an X11 Window id on $DISPLAY on Linux */
#define PROP_MODE_CHANGED 3   /* nonzero: GFX_Destroy restores the saved display mode */
#define PROP_NO_TEXTURES 4    /* nonzero: bitmaps stay pixel arrays, text mode is off */
#define PROP_SPARE 5          /* stored only */
#define PROP_ENABLED 6        /* the master switch, initially -1; 0: guarded calls do nothing */
#define PROP_MODE_CURSOR 7    /* position of the GFX_EnumResolutions enumeration */

/* Render properties (GFX_GetRenderProperty / GFX_SetRenderProperty). Index 8 is accepted by
   both calls and kept in a ninth slot that only the getter reads. Setting 0, 1, 2 or 6 is a
   state request for the rest of the frame (set them after GFX_BeginRender). */
#define RPROP_ALPHA_BLEND 0    /* nonzero: blend with source alpha, one minus source alpha */
#define RPROP_ADDITIVE_BLEND 1 /* nonzero: blend with source alpha, one; 0 (either): no blend */
#define RPROP_DEPTH_TEST 2     /* 0: no depth test (and no depth writes); initially on */
#define RPROP_SPARE 3          /* stored only */
#define RPROP_MIPMAPS 4        /* nonzero: pictures loaded later get mip levels */
#define RPROP_SCREEN_SPACE 5   /* nonzero: coordinates are -1..1 of the window (x right, y up) */
#define RPROP_CULLING 6        /* nonzero: faces clockwise on screen are not drawn */
/* Nonzero: every GFX_BeginRender clears the colour buffer to the clear colour. Setting it, to
   any value, clears colour and depth at once. */
#define RPROP_CLEAR_COLOR 7

/* Last-error codes (GFX_GetLastError). */
#define ERR_NONE 0
#define ERR_SET_PIXEL_FORMAT 1 /* GFX_Init: no window, or no suitable pixel format on it */
#define ERR_CREATE_CONTEXT 2   /* a load before GFX_Init or after GFX_Destroy */
#define ERR_MAKE_CURRENT 3
#define ERR_BAD_PROPERTY 4 /* a property index out of range */
#define ERR_NOT_SUPPORTED 5
#define ERR_FILE_NOT_FOUND 6
#define ERR_INVALID_FILE_DATA 7
#define ERR_INVALID_PARAMETER 8
#define ERR_OUT_OF_MEMORY 9
#define ERR_UNKNOWN 10

/* Buffer sizes that GFX_GetLastError needs, terminator included. */
#define ERROR_TITLE_SIZE 24
#define ERROR_DETAILS_SIZE 165

/* State request mask bits and the packed values they consume, in this order, one 32-bit word
   each (GFX_LockRenderState, GFX_DrawObjectEx). */
#define STATE_CULL 1     /* one word: CULL_ */
#define STATE_DEPTH 2    /* one word: DEPTH_ */
#define STATE_BLEND 4    /* one word: BLEND_ */
#define STATE_MATERIAL 8 /* twelve floats: ambient, diffuse, specular RGBA */
#define STATE_TEXTURE 16 /* one word, low 16 bits: texture name (a picture's id, ordinarily) */

#define CULL_ON 0
#define CULL_OFF 2
#define DEPTH_ON 0
#define DEPTH_OFF 1
#define BLEND_OFF 0
#define BLEND_ALPHA 1 /* source alpha, one minus source alpha */
#define BLEND_ADD 2   /* source alpha, one */

/* Primitive types: how a run of vertices is joined, as OpenGL does. */
#define PRIM_POINTS 0
#define PRIM_LINES 2      /* pairs */
#define PRIM_LINE_STRIP 3 /* one connected line */
#define PRIM_TRIANGLES 4  /* triples; counter-clockwise as seen is the front */
#define PRIM_QUADS 7      /* fours */
#define PRIM_BILLBOARD 8  /* GFX_DrawBillboard's own */
#define PRIM_NONE 9       /* GFX_DrawObjectEx: keep each batch's own type */

/* Particle flags (EmitterParams.flags). */
#define PF_LOOP 1        /* a particle that ends its life respawns at once */
#define PF_FIRE 2        /* red 1, green random, blue 0.15 */
#define PF_SMOKE 4       /* grey, rising instead of falling */
#define PF_STAGGER 8     /* particle k starts k steps late (with PF_LOOP) */
#define PF_NO_GRAVITY 16 /* no downward acceleration */
#define PF_SET_FLAGS 32  /* GFX_SetObjectProperty: only replace the flags of every particle */
#define PF_SHARDS 64     /* opaque untextured tumbling triangles instead of textured quads */

/* GFX_LoadPicture flags. */
#define PICTURE_NO_MIPMAPS 2 /* bitmaps: no mip levels, nearest filtering */

/* GFX_NewObject types. */
#define OBJECT_DISPLAY_LIST 0
#define OBJECT_PARTICLE_SYSTEM 1

typedef struct DisplayModeRecord {
    unsigned int width;  /* pixels */
    unsigned int height; /* pixels */
    unsigned char bits;  /* bits per pixel */
} DisplayModeRecord;

/* A particle system's parameters (GFX_NewObject type 1, GFX_SetObjectProperty). Random values
   are drawn between each min and max. The driver keeps its own copy. */
typedef struct EmitterParams {
    /* Particles after the first: the system has count + 1. The driver counts it down to 0 in
       the host's block as it builds. */
    unsigned int count;
    unsigned int flags;      /* PF_ */
    unsigned int headMarker; /* written by the driver; no need to set */
    float colorMin[4];       /* red, green, blue lower limits; alpha at the end of life */
    float colorMax[4];       /* red, green, blue upper limits; alpha at birth */
    float sizeMin, sizeMax;  /* model units; a particle shrinks to 0 over its life */
    /* Life added per step; a particle lives until 1.0, so 0.01 is 100 steps (a step is 1/100 s
       of wall clock). */
    float ageStepMin, ageStepMax;
    float azimuthMin, azimuthMax;     /* launch direction about the vertical axis, radians */
    float elevationMin, elevationMax; /* launch direction above the horizontal, radians */
    float speedMin, speedMax;         /* model units per step; gravity is -0.01 per step */
    unsigned int reserved;
} EmitterParams;

/* ---- Properties and errors ------------------------------------------------------------- */

/* Copies the last error's title (at most ERROR_TITLE_SIZE bytes with the terminator) and
   details text (at most ERROR_DETAILS_SIZE) into the buffers; either may be NULL. Before any
   error both read "No error has occured". Does not clear the error. */
NORVGL_API void GFX_GetLastError(char* title, char* details);
/* A driver property, PROP_ (0..7). Index above 7: returns 1 and sets ERR_BAD_PROPERTY. Text
   properties return a pointer: cast it with (const char*). */
NORVGL_API intptr_t GFX_GetProperty(unsigned int index);
/* Stores a driver property; 0, or 1 with ERR_BAD_PROPERTY for an index above 7. Nothing
   happens at the call: each slot is read when the calls that use it run. */
NORVGL_API int GFX_SetProperty(unsigned int index, intptr_t value);
/* A render property, RPROP_ (0..8); 1 with ERR_BAD_PROPERTY outside. */
NORVGL_API int GFX_GetRenderProperty(int index);
/* Stores a render property and acts on it (see RPROP_): 0, or 1 with ERR_BAD_PROPERTY for an
   index outside 0..8. GUARDED in part: the value is always stored and RPROP_CLEAR_COLOR
   always clears; the state requests of the others need PROP_ENABLED. */
NORVGL_API int GFX_SetRenderProperty(int index, int value);

/* ---- Context, display modes, teardown --------------------------------------------------- */

/* Attaches the driver to the window in PROP_WINDOW: an OpenGL context, the initial state
   (depth test on, back faces culled when culling is requested, clear colour black) and the
   projection, sized to the window's client area at this moment (the driver does not follow
   later resizes). 0, or 1 with ERR_SET_PIXEL_FORMAT (no window or no suitable format). A
   second GFX_Init on another window keeps loaded pictures usable. */
NORVGL_API int GFX_Init(void);
/* Releases meshes, models, pictures, display lists, the queue and the context. Properties and
   particle systems survive; GFX_Init may follow again. 0. */
NORVGL_API int GFX_Destroy(void);
/* Unloads every picture and display list and restarts the id counters; models and meshes stay
   (until GFX_Destroy). Always 0. */
NORVGL_API int GFX_UnloadAll(void);
/* Fills *mode with the next display mode of the screen: 0, or 1 at the end of the list (the
   next call starts again) or for a NULL pointer. */
NORVGL_API int GFX_EnumResolutions(DisplayModeRecord* mode);
/* Switches the screen to the first listed mode of that width, height and depth: 0, or 1 when
   none matches. Set PROP_MODE_CHANGED so that GFX_Destroy switches back. */
NORVGL_API int GFX_SetResolution(const DisplayModeRecord* mode);

/* ---- Frame -------------------------------------------------------------------------------- */

/* Opens a frame: flips the depth half (see CONVENTIONS), clears the colour when
   RPROP_CLEAR_COLOR is set, and resets the queue (default state, identity transform, the
   perspective projection). 0. GUARDED. */
NORVGL_API int GFX_BeginRender(void);
/* Draws what the frame recorded, grouped by state, then the particle systems requested, and
   shows the result (buffer swap). 0. GUARDED. */
NORVGL_API int GFX_EndRender(void);
/* The colour of colour clears, each component 0.0 to 1.0. 0. GUARDED. */
NORVGL_API int GFX_SetClearColor(float red, float green, float blue, float alpha);

/* ---- Render state --------------------------------------------------------------------- */

/* Applies a state request (STATE_ mask and the packed values, see STATE_) and then ignores all
   other state requests until GFX_UnlockRenderState. 0. GUARDED. */
NORVGL_API int GFX_LockRenderState(unsigned int mask, const void* values);
NORVGL_API void GFX_UnlockRenderState(void); /* GUARDED */
/* Draws everything submitted from now on as primitive `type` (PRIM_), whatever the calls say,
   until GFX_UnlockRenderMesh. GUARDED. */
NORVGL_API void GFX_LockRenderMesh(unsigned int type);
NORVGL_API void GFX_UnlockRenderMesh(void); /* GUARDED */

/* ---- Transforms ---------------------------------------------------------------------------
   Each transform multiplies the current one and becomes a step of the frame's transform
   history; GFX_Untransform steps back. Every frame starts from the identity, and
   geometry is drawn with the transform that was current when it was submitted. */

/* Moves what follows by (x, y, z) model units. GUARDED. */
NORVGL_API void GFX_Translate(float x, float y, float z);
/* Turns what follows by `angle` radians about the axis (x, y, z) through the origin. GUARDED. */
NORVGL_API void GFX_Rotate(float angle, float x, float y, float z);
/* Scales what follows by (x, y, z). GUARDED. */
NORVGL_API void GFX_Scale(float x, float y, float z);
/* The camera: at the eye, looking at the target, with the world's y axis up (the z axis when
   looking straight up or down). Call it first in a frame: it multiplies the current
   transform. The last three arguments are not used. Eye equal to target: nothing. GUARDED. */
NORVGL_API void GFX_Look(float eyeX, float eyeY, float eyeZ, float targetX, float targetY,
                         float targetZ, float unused1, float unused2, float unused3);
/* Goes back `count` transforms (GFX_Translate, GFX_Rotate, GFX_Scale, GFX_Look each count one):
   0, or 1 when there are not that many to undo. GUARDED (0 while disabled). */
NORVGL_API int GFX_Untransform(unsigned int count);

/* ---- Geometry ------------------------------------------------------------------------------
   Vertices are 8 floats each, 32 bytes apart: position x, y, z; normal x, y, z (for lighting;
   unit length is not needed); texture s, t (0..1 across a picture, t = 0 at its top; values
   outside repeat). A frame holds at most 10922 vertices (32768 floats of positions) and 341
   batches (a draw of the same type, state and transform as the one before joins its batch);
   past that a draw is dropped with a "Manager3D Error:" log line and 1. */

/* Records `count` vertices joined as `type` (PRIM_) under the current state and transform.
   0, or 1 when the frame's vertex heap is full. GUARDED. */
NORVGL_API int GFX_DrawPolygon(int type, unsigned int count, const float* vertices);
/* As GFX_DrawPolygon, the vertices taken in the order of `indexCount` 16-bit indices. The
   index array is not copied: it must stay valid until GFX_EndRender. GUARDED. */
NORVGL_API int GFX_DrawIndexedPolygon(int type, unsigned int count, const float* vertices,
                                      unsigned int indexCount, const unsigned short* indices);
/* A square of side `size` facing the camera about the position (x, y, z) (its first corner
   at the position minus half the size on every axis), textured with the current texture and
   blended additively (black adds nothing; blending is off after it). 0. Its drawing is
   GUARDED, its state requests are not. */
NORVGL_API int GFX_DrawBillboard(const float* position, float size);

/* ---- Lights and materials --------------------------------------------------------------
   Up to 8 lights (0..7) act at once. Lights are not part of a frame: they stay as set until
   changed or removed. A position is placed by the transform current at the call (outside a
   frame: relative to the camera). Lighting reaches pictures and text too: under lights they
   show only the light they get. A white, diffuse-only directional light with direction
   (0, 0, 1) gives them their own colours and leaves scene geometry facing the camera as it
   was. */

/* Turns light `light` on, full white, at (x, y, z). The first light switches lighting on for
   good; before it, geometry is drawn unlit in white (or its texture) and materials do not
   show. Type 1: directional, shining from the direction (x, y, z), whose y goes in negated
   (a light from above has y < 0 here): a light from above and behind the camera, onto what
   the camera sees, is (0, -1, -1); type 0 or 2: a point light at (x, y, z) without fall-off.
   0, or 1 for a type above 2. */
NORVGL_API int GFX_AddLight(unsigned int light, int type, float x, float y, float z);
/* Moves a light (its type stays). 0. */
NORVGL_API int GFX_SetLightPosition(unsigned int light, float x, float y, float z);
/* A light's ambient, diffuse and specular colours, each component 0.0 to 1.0. 0. */
NORVGL_API int GFX_SetLightColor(unsigned int light, float ambientR, float ambientG, float ambientB,
                                 float diffuseR, float diffuseG, float diffuseB, float specularR,
                                 float specularG, float specularB);
/* Turns a light off. 0. */
NORVGL_API int GFX_RemoveLight(unsigned int light);
/* The material of what is submitted next: ambient, diffuse and specular colours with alpha,
   0.0 to 1.0 (alpha shows under RPROP_ALPHA_BLEND). A state request. 0. GUARDED. */
NORVGL_API int GFX_SetMaterialColorEx(float ambientR, float ambientG, float ambientB,
                                      float ambientA, float diffuseR, float diffuseG,
                                      float diffuseB, float diffuseA, float specularR,
                                      float specularG, float specularB, float specularA);
/* GFX_SetMaterialColorEx with every alpha 1.0. GUARDED. */
NORVGL_API int GFX_SetMaterialColor(float ambientR, float ambientG, float ambientB, float diffuseR,
                                    float diffuseG, float diffuseB, float specularR,
                                    float specularG, float specularB);

/* ---- Pictures and text ---------------------------------------------------------------------
   GFX_LoadPicture reads a 3DF file or a Windows bitmap, from the named file or, when data is
   not NULL, from memory (then `name` only names the picture and may be NULL). The name is
   what VRML models and particles look pictures up by, without regard to case. Pictures become
   textures of the rendering context, so they load only between a successful GFX_Init and
   GFX_Destroy: a load without a context returns 1 with ERR_CREATE_CONTEXT. A missing file,
   or a name that is not a regular file, is ERR_FILE_NOT_FOUND; data that is no picture, or a
   broken one, ERR_INVALID_FILE_DATA. `aux` is not used; `flags` takes PICTURE_NO_MIPMAPS.
   Writes the new PictureId to *id. At most 1024 pictures. */
NORVGL_API int GFX_LoadPicture(const char* name, const void* data, unsigned int aux,
                               unsigned int* id, unsigned int flags);
/* The picture's size in pixels as stored in its file (any pointer may be NULL; the third value
   is always 0). 0, or 1 for an id above the last loaded. */
NORVGL_API int GFX_GetPictureDimensions(unsigned int id, unsigned int* width, unsigned int* height,
                                        unsigned int* extra);
/* Draws the picture into the window's rectangle at (x, y) from the top-left corner, width x
   height pixels; a width or height of 0 takes the picture's own. It becomes the current
   texture afterwards. Pixel-array pictures are copied at once at their own size to the
   lower-left corner. 0. GUARDED. */
NORVGL_API int GFX_DrawPicture(unsigned int id, int x, int y, int width, int height);
/* As GFX_DrawPicture in fractions of the window: (0, 0, 1, 1) fills it. 0. GUARDED. */
NORVGL_API int GFX_DrawPictureByProportion(unsigned int id, float x, float y, float width,
                                           float height);
/* The picture's texture for what is submitted next (0: none). A state request. 0. GUARDED. */
NORVGL_API int GFX_SelectTexture(unsigned int id);
/* The size of one character cell as fractions of the window's width and height (0.02, 0.04
   is small text). Nothing shows before it is set. 0. */
NORVGL_API int GFX_SetFontSize(float width, float height);
/* The font: a picture divided into a 16 x 16 grid of cells, character code 16 * row + column
   in each, row 0 at the top (so 'A', 65, is row 4, column 1). Glyphs should be drawn in
   colour on black: black is transparent. 0, or 1 with ERR_INVALID_PARAMETER for an unknown
   id. */
NORVGL_API int GFX_SetFontBitmap(unsigned int id);
/* Text mode: the font's texture, additive blending, no depth test, in screen space; the
   state before is restored by GFX_EndText. Pair every GFX_BeginText with GFX_EndText (at most
   4 deep). Both do nothing while PROP_NO_TEXTURES is set. 0. GUARDED. */
NORVGL_API int GFX_BeginText(void);
NORVGL_API int GFX_EndText(void);
/* One line of text, its first cell's top-left corner at (x, y) in fractions of the window.
   Every byte is one cell (a line feed too); a space leaves its cell empty. 0. GUARDED. */
NORVGL_API int GFX_PrintByProportion(float x, float y, const char* text);

/* ---- Models, meshes, objects, particle systems -------------------------------------------
   Loaded models and host meshes are drawn with GFX_DrawObject. They load between a successful
   GFX_Init and GFX_Destroy (otherwise 1, ERR_CREATE_CONTEXT) and live until GFX_Destroy;
   GFX_UnloadAll keeps them and their ids, and ids issued after it skip every id a model's mesh
   or a host mesh still holds. */

/* Loads a VRML model from `length` bytes of text (lines end with CR LF): DEF Transform nodes
   (translation, rotation, scale, nested), IndexedFaceSets of triangles (coord, coordIndex,
   texCoord, texCoordIndex, ccw) and ImageTexture urls, with USE instances. Textures are found
   by file name among the pictures loaded before the model. Normals are made per face. With
   ccw TRUE (the default) a face whose points go clockwise as the camera sees them is a front
   face (the coordinates are left-handed). The VRML 2.0 text that modelling tools write is
   read as it stands (Shape, children and Coordinate wrappers included; other nodes are
   skipped); a triangle 50 units in front of the camera, facing it:
     DEF Tri Transform { translation 0 0 50 children [ Shape { geometry IndexedFaceSet {
       coord Coordinate { point [ -10 -10 0, 0 10 0, 10 -10 0 ] }
       coordIndex [ 0, 1, 2, -1 ] } } ] }
   Writes the model's ObjectId to *id
   and, when `bounds` is not NULL, six floats: min x, y, z, max x, y, z. 0; 1 with
   ERR_INVALID_PARAMETER for a NULL text or id, ERR_OUT_OF_MEMORY when it is too large. The
   unused arguments are not read. */
NORVGL_API int GFX_LoadVRML(int unused1, unsigned int length, const char* text, unsigned int* id,
                            int unused2, int unused3, int unused4, float* bounds);
/* Registers a mesh whose arrays the host keeps: `count` vertices of positions (3 floats),
   normals (3) and texture coordinates (2), and `indexCount` 16-bit indices (0: the vertices
   in order), textured with picture `pictureId` (0: none), drawn as `type`. The arrays are
   referred to, not copied, and converted in place for the driver's coordinates (z of
   positions and normals negated, v := 1 - v; loading the same arrays twice turns them back):
   they must stay valid as long as the mesh is drawn. With a vertex count above 0, all three
   arrays are needed and every index must be below the count; a NULL array, a NULL index array
   for a non-zero count, more than 65535 indices or an index out of range is refused with
   ERR_INVALID_PARAMETER before anything is converted. Writes the ObjectId to *id. */
NORVGL_API int GFX_LoadMeshIndirect(int type, unsigned int count, float* positions, float* normals,
                                    float* texCoords, const unsigned short* indices,
                                    unsigned int indexCount, unsigned int pictureId,
                                    unsigned int* id);
/* Type OBJECT_DISPLAY_LIST: a new object id, its display list open until GFX_EndObject.
   Type OBJECT_PARTICLE_SYSTEM: a particle system built from *params (see EmitterParams). The
   driver writes into the host's block: count is consumed (0 afterwards) and the low byte of
   headMarker set. A library holds at most 64 systems from its load on, kept with their ids
   across GFX_UnloadAll and GFX_Destroy; the 65th returns 1 with ERR_OUT_OF_MEMORY, and a NULL
   id pointer or a count above 65535 returns 1 with ERR_INVALID_PARAMETER, nothing written.
   Writes the ObjectId to *id. 0. */
NORVGL_API int GFX_NewObject(unsigned int* id, int type, EmitterParams* params);
/* Closes the display list GFX_NewObject opened. 0. */
NORVGL_API int GFX_EndObject(void);
/* Draws the model or mesh `id` moved by (x, y, z), under the current transform, each part
   with its own texture. An id without a mesh draws nothing. 0. GUARDED. */
NORVGL_API int GFX_DrawObject(unsigned int id, float x, float y, float z);
/* As GFX_DrawObject, every part drawn as `type` (PRIM_NONE: its own) under the state request
   `mask` with `values` (see STATE_; mask 0: each part's own texture). 0. GUARDED. */
NORVGL_API int GFX_DrawObjectEx(unsigned int id, float x, float y, float z, int type,
                                unsigned int mask, const void* values);
/* Rebuilds particle system `id` from *params (PF_SET_FLAGS: only its flags), writing into the
   block as GFX_NewObject does. 0, also for an unknown id (0 is never a system's). */
NORVGL_API int GFX_SetObjectProperty(unsigned int id, EmitterParams* params);
/* Draws particle system `id` this frame, its origin at (x, y, z) under the current transform,
   and advances it by the steps it owes: one per hundredth of a second since it was last
   drawn. Particles are drawn after everything else, without depth test, as camera-facing
   quads blended additively with the texture of the picture named "particle.bmp" (untextured
   when none is loaded), or with PF_SHARDS as opaque triangles. A frame that drew particles
   leaves lighting switched on, as GFX_AddLight does: a host without lights adds one before
   drawing particles, or its later geometry shows only the ambient term. 0. GUARDED. */
NORVGL_API int GFX_DrawParticleSystem(unsigned int id, float x, float y, float z);

/* ---- Entries kept for hosts written against older tables ---------------------------------
   They take any arguments and ignore them. Before C23, C can declare that only without a
   prototype, so -Wstrict-prototypes is silenced for these declarations. */
#if !defined(__cplusplus) && (defined(__GNUC__) || defined(__clang__))
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wstrict-prototypes"
#endif
/* Always 0 ... */
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
#if !defined(__cplusplus) && (defined(__GNUC__) || defined(__clang__))
#pragma GCC diagnostic pop
#endif

#ifdef __cplusplus
}
#endif

#endif /* NORVGL_H */
