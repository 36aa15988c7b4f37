#!/bin/sh
# Renders the demo over the built-in default scene into out/demo/.
set -e
BUILD=${1:-build}
mkdir -p out/demo
"$BUILD/fizzle-render" --frames 1-48 --size 1280x720 -o out/demo/demo.%04d.png
echo "Demo frames written to $(pwd)/out/demo/ (demo.0001.png to demo.0048.png)"
