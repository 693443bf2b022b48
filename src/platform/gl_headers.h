// The system's GL and GLU headers, with what each platform needs in front of them.
// The rest of the driver includes this file, never <GL/gl.h> directly.
#pragma once

#ifdef _WIN32
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
#define NVGL_APIENTRY APIENTRY
#else
#define NVGL_APIENTRY
#endif

#include <GL/gl.h>
#include <GL/glu.h>
