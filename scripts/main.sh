#!/usr/bin/env bash
# Builds everything and runs the main job.
set -euo pipefail
cd "$(dirname "$0")/.."
build=${BUILD_DIR:-build}
cmake -S . -B "$build" -G Ninja
cmake --build "$build"
# The command-line host lists the classes of the reference plug-ins it loads.
"$build/bin/ostrel" classes
# It reads the example project and prints its node tree, links and animation keys.
"$build/bin/ostrel" info examples/valley.svd
# And the render settings example: a render node with its five settings nodes and a
# render layer, every value shown.
"$build/bin/ostrel" info examples/render_settings.svd
"$build/bench/ostrel_bench" --quick
