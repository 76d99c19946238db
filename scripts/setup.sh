#!/usr/bin/env bash
# Installs what building and testing Krait needs, and nothing when it is all there already.
set -euo pipefail

missing=()
for tool in cmake:cmake g++:g++ ninja:ninja-build flex:flex bison:bison clang++:clang; do
  command -v "${tool%%:*}" >/dev/null 2>&1 || missing+=("${tool#*:}")
done
# libgmp-dev, libmpfr-dev: exact rationals and validated enclosures of the certifier (and test
# references); libclang-rt-dev: the fuzzers' runtime (libFuzzer and the sanitizers for clang).
for package in libgtest-dev libgmp-dev libmpfr-dev libclang-rt-dev; do
  dpkg -s "$package" >/dev/null 2>&1 || missing+=("$package")
done
# The differential soundness suite's oracle (z3) and its outward-rounded interval arithmetic.
for package in z3 python3-mpmath; do
  dpkg -s "$package" >/dev/null 2>&1 || missing+=("$package")
done
# krait-plot draws with matplotlib; krait-batch spreads runs with GNU parallel; the manual
# pages are checked with groff and read with man.
for package in python3-matplotlib parallel groff-base man-db; do
  dpkg -s "$package" >/dev/null 2>&1 || missing+=("$package")
done

if [ ${#missing[@]} -gt 0 ]; then
  echo "Installing: ${missing[*]}"
  sudo=""
  [ "$(id -u)" -eq 0 ] || sudo="sudo"
  $sudo apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq "${missing[@]}" >/dev/null
fi
