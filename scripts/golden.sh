#!/usr/bin/env bash
# Golden comparison for changes that must not alter any output: the trw of two
# commits runs on every example project and on the projects the benchmarks
# measure, once as the tool sets it up (V4 form, new init structure), once in
# each classic form, once with a UDS server in the V4 form and once with a UDS
# server and client in the classic form, and every file written, the console
# log and the exit code are compared byte for byte. Only lines carrying a date
# or a clock time are left out of the comparison.
#
#   scripts/golden.sh <base-commit> [<new-commit>]
#
# Without a new commit the new side is this working tree, built into build/.
# Each commit is built once under build/golden/<commit>/ (ccache makes that
# cheap) and the outputs are kept under build/golden/out/ for a closer look.
# Exit code 0 when all outputs agree, 1 when any differs, 2 on a build error.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build="${TRW_BUILD_DIR:-$root/build}"
golden="$build/golden"
jobs="${TRW_JOBS:-2}"

if [ $# -lt 1 ] || [ $# -gt 2 ]; then
    echo "usage: $0 <base-commit> [<new-commit>]" >&2
    exit 2
fi

source "$root/scripts/isolatedhome.sh"

# The sources of a commit go to build/golden/<sha>/ with the build folder
# inside, the same layout as a working tree, so that ccache hits.
trw_of_commit() {
    local sha dir
    sha=$(git -C "$root" rev-parse --verify "$1^{commit}")
    dir="$golden/$sha"
    if [ ! -x "$dir/build/trw" ]; then
        rm -rf "$dir"
        mkdir -p "$dir"
        git -C "$root" archive "$sha" | tar -x -C "$dir"
        cmake -S "$dir" -B "$dir/build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DBUILD_TESTING=OFF \
            -DTRW_BUILD_BENCH=OFF >"$dir/configure.log" 2>&1 || { cat "$dir/configure.log" >&2; exit 2; }
        nice -n 10 cmake --build "$dir/build" --target trw -j "$jobs" >"$dir/build.log" 2>&1 ||
            { tail -50 "$dir/build.log" >&2; exit 2; }
    fi
    echo "$dir/build/trw"
}

trw_of_worktree() {
    [ -f "$build/build.ninja" ] ||
        cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
    nice -n 10 cmake --build "$build" --target trw -j "$jobs" >"$golden/worktree-build.log" 2>&1 ||
        { tail -50 "$golden/worktree-build.log" >&2; exit 2; }
    echo "$build/trw"
}

# The examples as they are, and the benchmark projects as this working tree's
# benchmarks write them: both sides read the very same files.
make_projects() {
    local projects="$golden/projects" bench
    rm -rf "$projects"
    mkdir -p "$projects"
    cp "$root"/examples/*/*.trwt "$root"/examples/*/*.trwp "$projects/"
    [ -f "$build/build.ninja" ] ||
        cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
    nice -n 10 cmake --build "$build" --target bench_check bench_define bench_objdict bench_mcp -j "$jobs" \
        >"$golden/bench-build.log" 2>&1 || { tail -50 "$golden/bench-build.log" >&2; exit 2; }
    for bench in check define objdict mcp; do
        "$build/bench/bench_$bench" -save-project "$projects/bench_$bench.trwp" >/dev/null
    done
}

# Every project in the three forms, each in the same scratch folder so that
# paths in the log are equal on both sides.
run_all() {
    local trw=$1 out=$2 project name form work
    rm -rf "$out"
    mkdir -p "$out"
    printf 'GeneralSettings:use_core_headers:0\nGeneralSettings:new_init_structure:0\n' >"$golden/classic.mod"
    printf 'GeneralSettings:use_core_headers:1\n' >"$golden/classic-core.mod"
    # A line can't be UDS server and client at once, so the V4 form has a server alone (every project
    # passes the check) and the classic form a server on line 0 and a client on line 1 (projects of one
    # line stop at the check with its message).
    printf 'GeneralSettings:%s\n' udsserver_supported:1 uds_server_active:1,0 isotp_supported:1 \
        uds_physical_request_id:0x7e0,0x7e1 uds_physical_response_id:0x7e8,0x7e9 \
        uds_functional_request_id:0x7df uds_ext_addressing:1 >"$golden/uds.mod"
    { cat "$golden/uds.mod"; printf 'GeneralSettings:%s\n' udsserver_version:5; } >"$golden/uds-v4.mod"
    { cat "$golden/uds.mod" "$golden/classic.mod"
      printf 'GeneralSettings:%s\n' udsclient_supported:1 uds_client_cnt:0,2 udsserver_version:4; } \
        >"$golden/uds-classic.mod"
    for project in "$golden"/projects/*; do
        name=$(basename "$project")
        for form in v4 classic classic-core uds-v4 uds-classic; do
            work="$golden/run/${name%.*}"
            rm -rf "$golden/run"
            mkdir -p "$work"
            cp "$project" "$work/"
            local args=(-project "$work/$name")
            [ "$form" = v4 ] || args+=(-dbmod "$golden/$form.mod")
            set +e
            (cd "$work" && "$trw" "${args[@]}") >"$golden/run/trw.log" 2>&1
            echo "exit code $?" >>"$golden/run/trw.log"
            set -e
            rm -f "$work/$name"
            mv "$golden/run/trw.log" "$work/"
            mv "$work" "$out/${name%.*}.$form"
        done
    done
    rm -rf "$golden/run"
}

# The banner's clock time, the dates of an EDS file header and calendar dates.
datetime='[0-9]{2}:[0-9]{2}:[0-9]{2}|^(Creation|Modification)(Date|Time)=|[0-9]{4}-[0-9]{2}-[0-9]{2}|[0-9]{2}[./-][0-9]{2}[./-][0-9]{4}'

undated() {
    grep -a -v -E "$datetime" "$1" || true
}

compare() {
    local base=$1 new=$2 file differ=0
    if ! diff <(cd "$base" && find . -type f | sort) <(cd "$new" && find . -type f | sort) >"$golden/files.diff"; then
        echo "the sets of files differ:"
        cat "$golden/files.diff"
        differ=1
    fi
    while IFS= read -r file; do
        [ -f "$new/$file" ] || continue
        if ! diff <(undated "$base/$file") <(undated "$new/$file") >/dev/null; then
            echo "differs: $file"
            diff <(undated "$base/$file") <(undated "$new/$file") | head -20
            differ=1
        fi
    done < <(cd "$base" && find . -type f | sort)
    return $differ
}

mkdir -p "$golden"
base_trw=$(trw_of_commit "$1")
if [ $# -eq 2 ]; then
    new_trw=$(trw_of_commit "$2")
else
    new_trw=$(trw_of_worktree)
fi
make_projects
run_all "$base_trw" "$golden/out/base"
run_all "$new_trw" "$golden/out/new"
files=$(cd "$golden/out/base" && find . -type f | wc -l)
if compare "$golden/out/base" "$golden/out/new"; then
    echo "golden comparison: all $files outputs agree"
else
    echo "golden comparison: outputs differ"
    exit 1
fi
