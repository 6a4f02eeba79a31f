#!/usr/bin/env bash
# Montala's one entry point: sets up what is missing, builds, and runs.
#   ./run.sh main    build, then generate a Change EDL from the bundled sample EDLs
#   ./run.sh test    build, then run every test (unit tests, then short fuzz runs)
#   ./run.sh asan    build with AddressSanitizer and UndefinedBehaviorSanitizer and run the unit tests
#   ./run.sh bench   build, then run the benchmarks
#   ./run.sh setup   only install the packages and build
set -euo pipefail
cd "$(dirname "$0")"

job="${1:-main}"
jobs="${MONTALA_JOBS:-2}"

./scripts/setup.sh

# ccache keeps compiled objects between build folders and runs; JUCE alone
# takes minutes to compile.
export CCACHE_BASEDIR="$PWD" CCACHE_NOHASHDIR=true
launcher=()
if command -v ccache >/dev/null; then
  launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache -DCMAKE_C_COMPILER_LAUNCHER=ccache)
fi

configure() {  # build-dir [cmake options...]
  local dir="$1"; shift
  if [ ! -f "$dir/build.ninja" ]; then
    cmake -S . -B "$dir" -G Ninja "${launcher[@]}" "$@" >/dev/null
  fi
}

build_main() {
  configure build
  cmake --build build -j "$jobs"
}

case "$job" in
  setup)
    build_main
    ;;
  main)
    build_main
    ./scripts/main-job.sh build
    ;;
  test)
    build_main
    ctest --test-dir build --output-on-failure -j "$jobs"
    if [ -z "${MONTALA_SKIP_FUZZ:-}" ] && [ -d fuzz ]; then
      CC=clang CXX=clang++ configure build-fuzz -DMONTALA_BUILD_FUZZ=ON -DMONTALA_BUILD_TESTS=OFF \
        -DMONTALA_BUILD_BENCH=OFF -DMONTALA_BUILD_GUI=OFF -DCMAKE_BUILD_TYPE=RelWithDebInfo
      cmake --build build-fuzz -j "$jobs"
      ctest --test-dir build-fuzz --output-on-failure
    fi
    ;;
  asan)
    configure build-asan -DMONTALA_SANITIZE=ON -DMONTALA_BUILD_BENCH=OFF -DCMAKE_BUILD_TYPE=Debug
    cmake --build build-asan -j "$jobs"
    ctest --test-dir build-asan --output-on-failure -j "$jobs"
    ;;
  bench)
    build_main
    for program in build/bench/*; do
      if [ -x "$program" ] && [ -f "$program" ]; then
        echo "== $(basename "$program")"
        "$program" --benchmark_counters_tabular=true
      fi
    done
    ;;
  *)
    echo "usage: ./run.sh [main|test|asan|bench|setup]" >&2
    exit 2
    ;;
esac
