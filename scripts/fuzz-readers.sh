#!/usr/bin/env bash
# Builds the LUT reader fuzzer with Debian's clang (libFuzzer, AddressSanitizer,
# UndefinedBehaviorSanitizer) in its own build folder and runs it.
#
#   scripts/fuzz-readers.sh SECONDS
#
# The fuzzer starts from the regression corpus in fuzz/corpus and works in
# build-fuzz/corpus (or $MELO_FUZZ_BUILD_DIR/corpus). Crashing inputs are
# written to fuzz/corpus as crash-*; when the run ends, inputs that reach new
# code are merged into fuzz/corpus so the normal test suite replays them.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
seconds=${1:?usage: fuzz-readers.sh SECONDS}
build=${MELO_FUZZ_BUILD_DIR:-$root/build-fuzz}

cmake -S "$root/fuzz" -B "$build" -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$build" -j2
mkdir -p "$build/corpus"

status=0
"$build/fuzz_lut_readers" -max_total_time="$seconds" -max_len=65536 -timeout=10 -rss_limit_mb=4096 \
  -dict="$root/fuzz/readers.dict" -artifact_prefix="$root/fuzz/corpus/crash-" -print_final_stats=1 \
  "$build/corpus" "$root/fuzz/corpus" || status=$?

echo "fuzz-readers: merging new coverage into fuzz/corpus"
"$build/fuzz_lut_readers" -merge=1 -use_counters=0 -max_len=65536 "$root/fuzz/corpus" "$build/corpus" 2>&1 | grep -E 'MERGE-OUTER: [0-9]+ new files' || true
exit $status
