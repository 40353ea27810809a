# Sourced by run, test and .ci/run. All progress goes to stderr, so that a program's own output stays clean.
# shellcheck shell=bash

progress() { printf '== %s\n' "$*" >&2; }

# build PRESET [TARGET...]: configures build/PRESET when that is due and builds the targets, all of them by default.
build() {
  local preset=$1 targets=()
  shift
  [ $# -eq 0 ] || targets=(--target "$@")
  if command -v ccache >/dev/null; then
    export CMAKE_CXX_COMPILER_LAUNCHER=ccache
    # Without these ccache leaves everything alone that uses a precompiled header.
    export CCACHE_SLOPPINESS=${CCACHE_SLOPPINESS:-pch_defines,time_macros}
  fi
  # Changed CMakeLists.txt files are noticed by the build itself, changed presets are not.
  if [ ! -e "build/$preset/build.ninja" ] || [ CMakePresets.json -nt "build/$preset/build.ninja" ]; then
    progress "configuring build/$preset"
    cmake --preset "$preset" ${TAVRIL_WERROR:+"-DTAVRIL_WERROR=$TAVRIL_WERROR"} >&2
  fi
  progress "building build/$preset"
  cmake --build --preset "$preset" --parallel "$(nproc)" "${targets[@]}" >&2
}
