#!/usr/bin/env bash
# Installs what Velloran needs to build, test and run. Idempotent: when every
# package is already present it only checks and returns.
set -euo pipefail

packages=(
  cmake ninja-build g++ clang make pkg-config
  qt6-base-dev qt6-base-dev-tools qt6-image-formats-plugins qt6-declarative-dev qt6-svg-dev
  libqt6opengl6-dev libgl-dev zlib1g-dev libtiff-dev libdeflate-dev
  libgtest-dev libgmock-dev libbenchmark-dev libclang-rt-dev
  libavcodec-dev libavformat-dev libavutil-dev libswscale-dev
  xvfb xauth libgl1-mesa-dri libglx-mesa0 fonts-dejavu-core fonts-liberation2
  python3 python3-jsonschema
  glslang-dev
  desktop-file-utils appstream shared-mime-info
  libassimp-dev
  ocl-icd-opencl-dev opencl-c-headers pocl-opencl-icd
)

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done

if [ ${#missing[@]} -eq 0 ]; then
  exit 0
fi

echo "install-deps: installing ${missing[*]}" >&2
SUDO=""
if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -qq
$SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
