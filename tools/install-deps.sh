#!/usr/bin/env bash
# Installs the Debian packages the build, the tests and the desktop tool need; quick when they
# are all there already.
set -euo pipefail
packages=(
  g++ cmake make pkg-config
  qt6-base-dev libgl-dev libyaml-cpp-dev libgtest-dev libgmock-dev
  libv4l-dev fonts-noto-cjk xvfb xauth ccache
)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done
if [ ${#missing[@]} -eq 0 ]; then
  exit 0
fi
sudo=""
if [ "$(id -u)" -ne 0 ]; then sudo="sudo"; fi
echo "Installing: ${missing[*]}"
$sudo apt-get update -qq
DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
