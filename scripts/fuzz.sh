#!/bin/sh
# Builds every fuzz target under libFuzzer with AddressSanitizer and
# UndefinedBehaviorSanitizer and runs each for the given number of seconds
# (default 60), starting from its seed corpus in fuzz/corpus/<target>/.
# Findings are written to build-fuzz/artifacts/<target>/. FUZZ_TARGETS picks
# some of the targets (e.g. "setup_fuzz").
set -e
seconds="${1:-60}"
root="$(cd "$(dirname "$0")/.." && pwd)"
out="${FUZZ_BUILD:-$root/build-fuzz}"
mkdir -p "$out/obj"
flags="-std=c++17 -g -O1 -Wall -Wextra -ffp-contract=off -fsanitize=fuzzer-no-link,address,undefined \
-fno-sanitize-recover=all -I $root -I $root/tests"

# Compiles a source into $out/obj once, again only when it changed.
object() {
  o="$out/obj/$(echo "$1" | tr / _).o"
  if [ ! -f "$o" ] || [ "$root/$1" -nt "$o" ] || [ -n "$(find "$root/sparkhost" "$root/apps" "$root/fuzz" -name '*.h' -newer "$o" | head -1)" ]; then
    clang++ $flags -c "$root/$1" -o "$o"
  fi
  echo "$o"
}

link() {
  target="$1"; shift
  objects=""
  for source in "$@"; do objects="$objects $(object "$source")"; done
  clang++ -fsanitize=fuzzer,address,undefined -rdynamic $objects -ldl -o "$out/$target"
}

link amplitude_fuzz fuzz/amplitude_fuzz.cpp fuzz/host_stubs.cpp host/glue/amplitude_import.cpp framework/pause.cpp
setup_sources="sparkhost/files/setup_file.cpp sparkhost/controls/controls.cpp sparkhost/controls/curves.cpp sparkhost/controls/text_match.cpp \
sparkhost/files/atomic_file.cpp tests/sparkhost/fake_plugin/fake_plugin.cpp fuzz/setup_stubs.cpp"
link setup_fuzz fuzz/setup_fuzz.cpp $setup_sources
link option_values_fuzz fuzz/option_values_fuzz.cpp render/value_parsers.cpp \
  render/control_options.cpp sparkhost/core/resolution.cpp $setup_sources

status=0
for target in ${FUZZ_TARGETS:-amplitude_fuzz setup_fuzz option_values_fuzz}; do
  name="${target%_fuzz}"
  mkdir -p "$out/corpus/$name" "$out/artifacts/$name"
  echo "== $target, $seconds s"
  # New inputs go to $out/corpus; the seeds in the repository are only read.
  "$out/$target" -max_total_time="$seconds" -print_final_stats=1 -timeout=10 -rss_limit_mb=2048 \
    -artifact_prefix="$out/artifacts/$name/" "$out/corpus/$name" "$root/fuzz/corpus/$name" || status=1
done
exit $status
