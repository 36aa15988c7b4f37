#!/bin/sh
# Renders the "Champagne" preset, pre-rolled, over the built-in scene into
# out/demo/, and lays every eighth frame out on one contact sheet.
set -e
BUILD=${1:-build}
OUT=out/demo
mkdir -p "$OUT"
rm -f "$OUT"/demo.*.png "$OUT"/contact-sheet.png
"$BUILD/fizzle-render" --preset Champagne --preroll --frames 1-48 --size 1280x720 -o "$OUT/demo.%04d.png"
"$BUILD/contact-sheet" --columns 3 -o "$OUT/contact-sheet.png" \
    "$OUT/demo.0001.png" "$OUT/demo.0009.png" "$OUT/demo.0017.png" \
    "$OUT/demo.0025.png" "$OUT/demo.0033.png" "$OUT/demo.0041.png"
echo "Demo frames written to $(pwd)/$OUT/ (demo.0001.png to demo.0048.png)"
echo "Contact sheet of every eighth frame: $(pwd)/$OUT/contact-sheet.png"
