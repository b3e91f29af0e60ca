#!/usr/bin/env bash
# Writes the PNG icons from the two drawings. Run after a change of either; the results are committed,
# so that a build (and the program's own window) needs no renderer. Needs rsvg-convert
# (librsvg2-bin).
set -euo pipefail
cd "$(dirname "$0")/icons"
id=org.tarnwick.Tarnwick
for size in 16 22 24 32 48 64 128 256; do
  drawing=$id.svg
  [ "$size" -gt 24 ] || drawing=small.svg
  rsvg-convert -w "$size" -h "$size" "$drawing" -o "$id-$size.png"
done
