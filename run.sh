#!/usr/bin/env bash
# Installs what is missing, builds and starts Tarnwick.
#
#   ./run.sh            the program, on your own repository
#   ./run.sh --sample   the program on a sample mail profile that the build writes; where there is
#                       no display, in a virtual one: it loads the sample, prints the list and
#                       saves a picture of the window
set -euo pipefail
cd "$(dirname "$0")"
./cmake/setup.sh
cmake --preset release -DTARNWICK_BENCH=OFF
targets=(tarnwick tarnwick-cli)
[ "${1:-}" = "--sample" ] && targets+=(tarnwick-make-sample)
cmake --build --preset release --target "${targets[@]}"
bin=build/release/bin

if [ "${1:-}" != "--sample" ]; then
  exec "$bin/tarnwick"
fi

sample=build/sample
rm -rf "$sample"
mkdir -p "$sample"
"$bin/tarnwick-make-sample" "$sample/profile"
export TARNWICK_HOME="$PWD/$sample/home" TARNWICK_PROFILE="$PWD/$sample/profile"
"$bin/tarnwick-cli" load --accept all
if [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; then
  exec "$bin/tarnwick"
fi
"$bin/tarnwick-cli" list
TARNWICK_PICTURE="$PWD/$sample/window.png" xvfb-run -a -s "-screen 0 1280x800x24" "$bin/tarnwick"
echo "A picture of the window is in $sample/window.png"
