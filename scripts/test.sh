#!/usr/bin/env bash
# Builds everything and runs the whole test suite.
#   OSTREL_SANITIZE=address,undefined bash scripts/test.sh   (or =thread) for a sanitized run
set -euo pipefail
cd "$(dirname "$0")/.."
sanitize=${OSTREL_SANITIZE:-}
if [[ -n $sanitize ]]; then
    build=${BUILD_DIR:-build-${sanitize//,/-}}
else
    build=${BUILD_DIR:-build}
fi
cmake -S . -B "$build" -G Ninja -DOSTREL_SANITIZE="$sanitize"
cmake --build "$build"
ctest --test-dir "$build" --output-on-failure -j "$(nproc)"
