#!/usr/bin/env bash
# Builds the libFuzzer targets in build-fuzz (clang, ASan, UBSan) and runs
# each for FUZZ_SECONDS (default 60) over its seeds in fuzz/corpus/NAME/
# (NAME is the target without "fuzz_"). Inputs the fuzzer finds go to
# build-fuzz/corpus/NAME/, crashes to build-fuzz/artifacts/NAME/.
# Usage: fuzz/run.sh [TARGET...]   (default: every fuzz/fuzz_*.cpp)
# FUZZ_ARGS adds libFuzzer options, e.g. FUZZ_ARGS=-max_len=65536.
set -euo pipefail
cd "$(dirname "$0")/.."
FUZZ_SECONDS=${FUZZ_SECONDS:-60}
BUILD_DIR=${FUZZ_BUILD_DIR:-build-fuzz}
JOBS=${JOBS:-$(nproc)}

targets=("$@")
if [ ${#targets[@]} -eq 0 ]; then
  for source in fuzz/fuzz_*.cpp; do targets+=("$(basename "$source" .cpp)"); done
fi

CC=clang CXX=clang++ cmake -S . -B "$BUILD_DIR" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DVELLORAN_FUZZ=ON >/dev/null
cmake --build "$BUILD_DIR" -j "$JOBS" --target "${targets[@]}"

status=0
for target in "${targets[@]}"; do
  name=${target#fuzz_}
  work="$BUILD_DIR/corpus/$name"
  artifacts="$BUILD_DIR/artifacts/$name/"
  mkdir -p "$work" "$artifacts"
  corpora=("$work")
  if [ -d "fuzz/corpus/$name" ]; then corpora+=("fuzz/corpus/$name"); fi
  echo "== $target for ${FUZZ_SECONDS}s" >&2
  if ! "$BUILD_DIR/fuzz/$target" -max_total_time="$FUZZ_SECONDS" -timeout=10 -rss_limit_mb=2048 \
      -print_final_stats=1 -artifact_prefix="$artifacts" ${FUZZ_ARGS:-} "${corpora[@]}"; then
    echo "$target found a problem; reproducers are in $artifacts" >&2
    status=1
  fi
done
exit $status
