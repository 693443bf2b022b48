/* host.h: the host side of the kit's C examples: a window to hand the driver, a frame loop
   and a picture of the last frame. The examples keep to the driver's own calls; this is the
   part every host writes for its own system (see HostWindow in host_window.h). */
#ifndef NORVGL_HOST_H
#define NORVGL_HOST_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct HostLoop HostLoop;

/* Opens a window with a client area of width x height pixels and reads the program's options:
     --frames N   draw N frames and stop (without it: until the window is closed or Esc)
     --out FILE   save the last frame as a PNG picture
   Returns NULL after printing why (no display, a bad option). */
HostLoop* host_open(int argc, char** argv, int width, int height, const char* title);
/* The value to store in PROP_WINDOW: an X11 Window id on Linux, the HWND on Windows. */
intptr_t host_window(const HostLoop* loop);
/* Call before each frame: 1 to draw one more, 0 when the program should stop. Before it says
   0 it saves the last frame when --out asked for it. */
int host_next_frame(HostLoop* loop);
/* The number of the frame host_next_frame just allowed: 0, 1, 2, ... */
unsigned host_frame(const HostLoop* loop);
/* Closes the window. Returns the exit status: 1 when --out could not be saved, else 0. */
int host_close(HostLoop* loop);
/* Prints "CALL failed: TITLE: DETAILS" from GFX_GetLastError on stderr and returns 1. */
int host_fail(const char* call);

#ifdef __cplusplus
}
#endif

#endif /* NORVGL_HOST_H */
