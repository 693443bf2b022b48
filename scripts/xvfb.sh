# Sourced: starts a private Xvfb when DISPLAY is unset and stops it when the caller exits.
if [ -z "${DISPLAY:-}" ]; then
    for n in $(seq 90 120); do
        [ -e "/tmp/.X11-unix/X$n" ] || [ -e "/tmp/.X$n-lock" ] || break
    done
    Xvfb ":$n" -screen 0 1280x1024x24 -nolisten tcp >/dev/null 2>&1 &
    NORVGL_XVFB_PID=$!
    trap 'kill $NORVGL_XVFB_PID 2>/dev/null || true' EXIT
    export DISPLAY=":$n"
    for _ in $(seq 1 100); do
        [ -e "/tmp/.X11-unix/X$n" ] && break
        sleep 0.1
    done
    echo "xvfb: started on $DISPLAY"
fi
