#!/usr/bin/env bash
# Installs trw into a temporary prefix and runs the installed program on an
# example; then builds the Debian package and reads what it says and holds.
set -euo pipefail

build=$1
example=$2
version=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() {
    echo "FAIL: $*"
    exit 1
}

prefix=$work/prefix
cmake --install "$build" --prefix "$prefix" >/dev/null
version_line=$("$prefix/bin/trw" --version) || fail "installed trw --version ended with $?"
[ "$version_line" = "trw $version" ] || fail "installed trw --version: $version_line"
zcat "$prefix/share/man/man1/trw.1.gz" >"$work/trw.1" || fail "no compressed man page"
warnings=$(groff -man -Tutf8 -ww -z "$work/trw.1" 2>&1)
[ -z "$warnings" ] || fail "man page: $warnings"
grep -q "^\.TH TRW 1 \"\" \"trw $version\"" "$work/trw.1" || fail "man page title"

cp "$example" "$work/"
"$prefix/bin/trw" -project "$work/$(basename "$example")" >"$work/run.txt" || fail "installed run: $(tail -3 "$work/run.txt")"
[ -s "$work/gen_define.h" ] || fail "the installed run wrote no gen_define.h"

(cd "$work" && cpack -G DEB --config "$build/CPackConfig.cmake" -B "$work/deb" >"$work/cpack.txt") ||
    fail "cpack: $(cat "$work/cpack.txt")"
deb=$work/deb/trw_${version}_$(dpkg --print-architecture).deb
[ -f "$deb" ] || fail "no $deb"

info=$(dpkg-deb --info "$deb")
for field in "Package: trw" "Version: $version" "Section: devel"; do
    grep -qx " $field" <<<"$info" || fail "dpkg-deb --info has no '$field'"
done
depends=$(sed -n 's/^ Depends: //p' <<<"$info")
names=$(tr ',' '\n' <<<"$depends" | sed 's/^ *//; s/ .*//')
for package in libqt6core6 libqt6sql6 libqt6sql6-sqlite libstdc++6; do
    grep -qxF "$package" <<<"$names" || fail "Depends lacks $package: $depends"
done

contents=$(dpkg-deb --contents "$deb" | awk '{print $6}' | grep -v '/$')
expected=$'./usr/bin/trw\n./usr/share/man/man1/trw.1.gz'
[ "$contents" = "$expected" ] || fail "dpkg-deb --contents lists: $contents"
echo "installed run, man page and package as expected"
