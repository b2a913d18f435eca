#!/usr/bin/env bash
# The hostile-input step of CI. Builds trw, its tests and the fuzz programs
# with clang under AddressSanitizer and UndefinedBehaviorSanitizer into a
# build folder of their own, runs the whole test suite there, then runs each
# fuzz program for a bounded time (TRW_FUZZ_SECONDS, 60 by default). Any
# finding fails the step; the input that caused it is kept in the build
# folder under fuzz-findings/. HOME and the XDG folders are expected to be
# set as scripts/test.sh sets them.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build="${TRW_SANITIZE_BUILD_DIR:-$root/build-hostile}"
seconds="${TRW_FUZZ_SECONDS:-60}"
corpus="${TRW_CORPUS_DIR:-$root/../shared/corpus}"
[ -d "$corpus" ] || corpus=/work/shared/corpus

# -O1 keeps the sanitized suite fast enough; line tables are all a report needs.
CC=clang CXX=clang++ cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DCMAKE_CXX_FLAGS_RELWITHDEBINFO="-O1 -gline-tables-only -DNDEBUG" \
    -DTRW_FUZZ=ON -DTRW_BUILD_BENCH=OFF
cmake --build "$build" -j "$(nproc)"
echo "Sanitized build: $SECONDS s"

export ASAN_OPTIONS="detect_leaks=1:abort_on_error=0:strict_string_checks=1:detect_stack_use_after_return=1"
export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"

started=$SECONDS
ctest --test-dir "$build" --output-on-failure -j 2 --timeout 1200
echo "Sanitized suite: $((SECONDS - started)) s"

findings="$build/fuzz-findings"
rm -rf "$findings"
mkdir -p "$findings"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# fuzz <name> [extra seed folders...]: new inputs go to a scratch folder, so
# the seed folders in the repository and the corpus stay as they are.
fuzz() {
    local name=$1
    shift
    local seeds=("$root/fuzz/corpus/$name")
    for folder in "$@"; do
        [ -d "$folder" ] && seeds+=("$folder")
    done
    mkdir -p "$work/$name"
    echo "Fuzzing $name for ${seconds} s"
    if ! (cd "$work" && "$build/fuzz/fuzz_$name" -max_total_time="$seconds" -timeout=20 -rss_limit_mb=2048 \
        -max_len=65536 -print_final_stats=1 -artifact_prefix="$findings/${name}-" \
        "$work/$name" "${seeds[@]}" >"$work/$name.log" 2>&1); then
        tail -n 60 "$work/$name.log"
        echo "fuzz_$name found a fault; its input is in $findings"
        return 1
    fi
    grep -E '^stat::number_of_executed_units|^stat::peak_rss_mb' "$work/$name.log" || true
}

started=$SECONDS
status=0
fuzz edsimport "$corpus/eds" || status=1
fuzz codbimport || status=1
fuzz textproject "$root/examples"/*/ || status=1
fuzz mcpline || status=1
fuzz dbcread "$corpus/dbc" || status=1
fuzz csvimport || status=1
echo "Fuzzing: $((SECONDS - started)) s"
exit $status
