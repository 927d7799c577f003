#!/usr/bin/env bash
# Installs every Debian package that building, testing and benchmarking Ostrel needs.
# Idempotent: packages already present are left alone, and apt-get runs only when
# something is missing. Run as root on Debian 12.
set -euo pipefail

packages=(
    # toolchain
    g++ cmake ninja-build ccache pkg-config
    # fuzzing (libFuzzer with clang) and sanitizer runtimes
    clang libclang-rt-14-dev
    # tests and benchmarks
    googletest libgtest-dev libbenchmark-dev
    # independent noise implementations the benchmarks compare against
    libglm-dev libnoise-dev
    # project files: XML stream parsing and blob compression
    libexpat1-dev zlib1g-dev
    # image files: FreeImage for reading, OpenEXR and libtiff for the writer plug-ins,
    # and ImageMagick as the independent program the image tests compare against
    libfreeimage-dev libopenexr-dev libtiff-dev imagemagick
)

missing=()
for p in "${packages[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
        missing+=("$p")
    fi
done

if ((${#missing[@]} == 0)); then
    echo "setup: all ${#packages[@]} packages present"
    exit 0
fi

if [[ $(id -u) -ne 0 ]]; then
    echo "setup: missing packages: ${missing[*]}" >&2
    echo "setup: run this script as root to install them" >&2
    exit 1
fi

echo "setup: installing ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
apt-get update -q
apt-get install -y -q --no-install-recommends "${missing[@]}"
