#!/usr/bin/env bash
# Installs a built tree to a prefix and as the Debian package (unpacked, then installed into and
# removed from a scratch dpkg root), and runs what a user runs first: every command's --version,
# every manual page, and an example from the installed share folder.
# Usage: package.sh BUILD_DIR
set -euo pipefail
build=$(cd "$1" && pwd)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
fail() { echo "FAIL: $*" >&2; exit 1; }

# The example has a known answer: the triangle 5, 12, 13 (perimeter 30).
check_installed() {  # PREFIX
  local prefix=$1 cmd page report version
  for cmd in krait krait-certify krait-smt2 krait-prove krait-plot krait-batch; do
    [ -x "$prefix/bin/$cmd" ] || fail "$prefix/bin/$cmd is not installed"
    version=$("$prefix/bin/$cmd" --version) || fail "$cmd --version exits $?"
    grep -q "version [0-9]" <<<"$version" || fail "$cmd --version: $version"
    page="$prefix/share/man/man1/$cmd.1"
    [ -f "$page" ] || fail "no manual page $page"
    MANWIDTH=80 man -l "$page" 2>&1 | grep -q "^NAME" || fail "man -l $page"
  done
  [ -f "$prefix/share/krait/docs/language.md" ] || fail "no language reference in $prefix/share/krait"
  report=$("$prefix/bin/krait" "$prefix/share/krait/examples/pythagoras.krait")
  grep -A1 "^RESULT:" <<<"$report" | grep -q "^    candidate solution box" || fail "example run: $report"
}

cmake --install "$build" --prefix "$scratch/prefix" >/dev/null
check_installed "$scratch/prefix"

(cd "$build" && cpack -G DEB -B "$scratch/pkg" >"$scratch/cpack.log" 2>&1) || { cat "$scratch/cpack.log"; fail cpack; }
deb=$(ls "$scratch"/pkg/krait_*.deb)
dpkg-deb -x "$deb" "$scratch/unpacked"
check_installed "$scratch/unpacked/usr"

# Install into and remove from an empty dpkg database: nothing may be left behind.
root="$scratch/root"
mkdir -p "$root"/var/lib/dpkg/{info,updates,triggers}
touch "$root/var/lib/dpkg/status"
dpkg_root=(dpkg --root="$root" --force-depends --force-not-root --force-script-chrootless)
"${dpkg_root[@]}" -i "$deb" >/dev/null 2>&1 || fail "dpkg -i"
check_installed "$root/usr"
"${dpkg_root[@]}" -r krait >/dev/null 2>&1 || fail "dpkg -r"
left=$(find "$root" -path "$root/var" -prune -o -type f -print | head -5)
[ -z "$left" ] || fail "left after removal: $left"
echo "installed to a prefix, from the package and into a dpkg root; removed cleanly: $(basename "$deb")"
