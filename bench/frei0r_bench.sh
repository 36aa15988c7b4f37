#!/bin/sh
# The frei0r filter at 1920x1080, "Basic" with pre-roll, on this machine's
# processors: its time a frame inside ffmpeg against fizzle-render's frame
# cycle over the same scene, and a request 100 frames back inside melt.
# Each run three times, the fastest kept (other work on the machine only
# slows a run down).
#     bench/frei0r_bench.sh BUILD_DIR [FRAMES]
set -eu
build=$(cd "$1" && pwd)
frames=${2:-40}
work=$(mktemp -d /tmp/fizzle-frei0r-bench.XXXXXX)
trap 'rm -rf "$work"' EXIT
cd "$work"
export FREI0R_PATH="$build/frei0r-1"
# The smaller of a best so far (maybe none yet) and a new figure.
least() { if [ -z "$1" ]; then echo "$2"; else echo "$1 $2" | awk '{ print ($2 + 0 < $1 + 0) ? $2 : $1 }'; fi; }

ffmpeg -loglevel error -f lavfi -i testsrc=size=1920x1080:rate=25 -frames:v "$frames" -start_number 1 scene.%04d.png
mkdir out

# fizzle-render: the plug-in's frame cycle, from --timings.
best_render=
for run in 1 2 3; do
    seconds=$("$build/fizzle-render" -q --timings --size 1920x1080 --frames 1-"$frames" --scene scene.%04d.png \
        --preset Basic --preroll -o out/f.%04d.tif 2>&1 >/dev/null |
        sed -n "s/.*the plug-in's frame cycle \([0-9.]*\) s.*/\1/p")
    ms=$(echo "$seconds $frames" | awk '{ printf "%.2f", 1000 * $1 / $2 }')
    best_render=$(least "$best_render" "$ms")
done

# The filter in ffmpeg: every call after the first (which starts the plug-in), in full.
best_filter=
for run in 1 2 3; do
    ms=$(FIZZLE_FREI0R_LOG=1 ffmpeg -loglevel error -start_number 1 -i scene.%04d.png \
        -vf "frei0r=fizzle:|Basic|y" -f null - 2>&1 |
        awk '/^fizzle: instance/ && $5 > 1 { sum += $(NF - 1); n++ } END { printf "%.2f", sum / n }')
    best_filter=$(least "$best_filter" "$ms")
done
echo "1920x1080 Basic with pre-roll, $frames frames:"
echo "  fizzle-render's frame cycle  $best_render ms a frame"
echo "  the filter in ffmpeg         $best_filter ms a frame ($(echo "$best_filter $best_render" |
    awk '{ printf "%+.1f%%", 100 * ($1 - $2) / $2 }'))"

# melt plays frames 1..110, then frame 10 again: 100 frames back.
printf 'description=bench\nframe_rate_num=25\nframe_rate_den=1\nwidth=1920\nheight=1080\nprogressive=1\nsample_aspect_num=1\nsample_aspect_den=1\ndisplay_aspect_num=16\ndisplay_aspect_den=9\ncolorspace=709\n' >profile
cat >back.mlt <<XML
<mlt>
  <producer id="scene">
    <property name="resource">color:#336699</property>
    <filter mlt_service="frei0r.fizzle"><property name="preset">Basic</property><property name="preroll">1</property></filter>
  </producer>
  <playlist id="shot">
    <entry producer="scene" in="0" out="109"/>
    <entry producer="scene" in="9" out="9"/>
  </playlist>
</mlt>
XML
best_back=
for run in 1 2 3; do
    ms=$(FIZZLE_FREI0R_LOG=1 melt -quiet -profile "$work/profile" back.mlt -consumer null real_time=-1 \
        terminate_on_pause=1 2>&1 | sed -n 's/.*\(fizzle: instance\)/\1/p' |
        awk '/^fizzle: instance/ { if (seen_110 && $9 == 10) { print $(NF - 1); exit } if ($9 == 110) seen_110 = 1 }')
    best_back=$(least "$best_back" "$ms")
done
echo "  frame 10 asked for after frame 110, in melt: $best_back ms"
