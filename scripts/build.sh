#!/usr/bin/env bash
# Configures and builds. `--sanitize` builds with AddressSanitizer and
# UndefinedBehaviorSanitizer into build-asan/ instead of build/.
set -euo pipefail
cd "$(dirname "$0")/.."

build_dir=build
options=()
for arg in "$@"; do
  case "$arg" in
    --sanitize) build_dir=build-asan; options+=(-DTOSVAR_SANITIZE=ON -DCMAKE_BUILD_TYPE=Debug) ;;
    *) echo "build.sh: unknown option $arg" >&2; exit 2 ;;
  esac
done

if [[ ! -f $build_dir/build.ninja ]]; then
  cmake -S . -B "$build_dir" -G Ninja "${options[@]}"
fi
cmake --build "$build_dir" --parallel "$(nproc)"
