#!/usr/bin/env bash
# Installs what is missing, builds, and starts the desktop tool on the simulated camera.
# Extra arguments go to vcc. UVCLINK_DEVICE=sim:0 or sim:1 picks another camera model.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
"$root/tools/install-deps.sh"
"$root/tools/build.sh"
bin="${BUILD_DIR:-$root/build}/bin"
if [ -x "$bin/make-fw-package" ]; then
  "$bin/make-fw-package" "$bin/QM-T77K_FW_Update" >/dev/null
fi
export UVCLINK_DEVICE="${UVCLINK_DEVICE:-sim}"
if [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ] && [ -z "${QT_QPA_PLATFORM:-}" ]; then
  echo "No display found: starting vcc under Xvfb on :99 (set DISPLAY to use your own)."
  Xvfb :99 -screen 0 1280x1024x24 >/dev/null 2>&1 &
  export DISPLAY=:99
  sleep 1
fi
exec "$bin/vcc" "$@"
