#!/usr/bin/env bash
# Installs what is missing, builds, and runs every test.
#   scripts/test.sh              the normal build in build/
#   scripts/test.sh --sanitize   the ASan+UBSan build in build-asan/
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh
scripts/build.sh "$@"

build_dir=build
[[ " $* " == *" --sanitize "* ]] && build_dir=build-asan

export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=1:abort_on_error=1}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}
# Qt leaves a few allocations to process exit on purpose.
export LSAN_OPTIONS=${LSAN_OPTIONS:-suppressions=$PWD/scripts/lsan.supp:print_suppressions=0}
ctest --test-dir "$build_dir" --output-on-failure --parallel "$(nproc)" --timeout 600
