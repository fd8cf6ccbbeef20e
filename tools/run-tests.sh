#!/usr/bin/env bash
# Installs what is missing, builds, and runs every test (unit suites and vcc-script scenarios).
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
"$root/tools/install-deps.sh"
"$root/tools/build.sh"
cd "${BUILD_DIR:-$root/build}"
QT_QPA_PLATFORM=offscreen ctest --output-on-failure -j "$(nproc)"
