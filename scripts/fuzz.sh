#!/usr/bin/env bash
# Builds the libFuzzer targets with clang and runs each for a while.
#   bash scripts/fuzz.sh [seconds per target, default 60]
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-60}
build=${BUILD_DIR:-build-fuzz}
cmake -S . -B "$build" -G Ninja -DCMAKE_CXX_COMPILER=clang++ -DOSTREL_FUZZ=ON -DOSTREL_BUILD_TESTS=OFF
cmake --build "$build"
for target in "$build"/fuzz/ostrel_fuzz_*; do
    name=$(basename "$target")
    corpus="fuzz-corpus/$name"
    mkdir -p "$corpus"
    seeds=()
    [[ -d "fuzz/seeds/${name#ostrel_fuzz_}" ]] && seeds+=("fuzz/seeds/${name#ostrel_fuzz_}")
    echo "== $name for ${seconds}s"
    "$target" -max_total_time="$seconds" -print_final_stats=1 "$corpus" "${seeds[@]}"
done
