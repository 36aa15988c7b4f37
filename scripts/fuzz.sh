#!/bin/sh
# Builds the amplitude file reader under libFuzzer with AddressSanitizer and
# runs it for the given number of seconds (default 60), starting from the
# sample amplitude files in tests/data.
set -e
seconds="${1:-60}"
root="$(cd "$(dirname "$0")/.." && pwd)"
out="${FUZZ_BUILD:-$root/build-fuzz}"
mkdir -p "$out/corpus" "$out/seeds" "$out/artifacts"
cp "$root"/tests/data/*.amp "$out/seeds/"

clang++ -std=c++17 -g -O1 -Wall -Wextra -ffp-contract=off \
  -fsanitize=fuzzer,address,undefined -fno-sanitize-recover=undefined \
  -I "$root" \
  "$root/fuzz/amplitude_fuzz.cpp" "$root/fuzz/host_stubs.cpp" \
  "$root/host/amplitude_import.cpp" "$root/framework/pause.cpp" \
  -o "$out/amplitude_fuzz"

# New inputs go to $out/corpus; the seeds are only read.
"$out/amplitude_fuzz" -max_total_time="$seconds" -print_final_stats=1 \
  -artifact_prefix="$out/artifacts/" "$out/corpus" "$out/seeds"
