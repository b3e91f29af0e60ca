#!/usr/bin/env bash
# Writes the PNG icons from the two drawings, and of them the one file that Windows wants. Run after a
# change of either; the results are committed, so that a build (and the program's own window) needs no
# renderer. Needs rsvg-convert (librsvg2-bin) and Python.
set -euo pipefail
cd "$(dirname "$0")/icons"
id=org.tarnwick.Tarnwick
for size in 16 22 24 32 48 64 128 256; do
  drawing=$id.svg
  [ "$size" -gt 24 ] || drawing=small.svg
  rsvg-convert -w "$size" -h "$size" "$drawing" -o "$id-$size.png"
done
python3 - "$id" <<'PYTHON'
import struct, sys

name = sys.argv[1]
sizes = [16, 24, 32, 48, 64, 128, 256]
pictures = [open(f"{name}-{size}.png", "rb").read() for size in sizes]
place = 6 + 16 * len(sizes)
with open(f"{name}.ico", "wb") as out:
    out.write(struct.pack("<HHH", 0, 1, len(sizes)))
    for size, picture in zip(sizes, pictures):
        out.write(struct.pack("<BBBBHHII", size % 256, size % 256, 0, 0, 1, 32, len(picture), place))
        place += len(picture)
    for picture in pictures:
        out.write(picture)
PYTHON
