#!/usr/bin/env bash
# The demonstration behind 'make demo': the formula engine from the command
# line, over the formula library examples/formulas.xml.
set -euo pipefail
BUILD=${1:-build}
ZW="$BUILD/app/zwinformes"
HERE="$(cd "$(dirname "$0")" && pwd)"
LIB="examples/formulas.xml"
case "$ZW" in /*) ;; *) ZW="$PWD/$ZW" ;; esac
cd "$HERE/.."
METERS=(--set meter1.energy=1520.5 --set meter2.energy=310.25
        --set meter1.power=42.5 --set meter2.power=17.0 --set meter1.reactive=11.2)

run() {
  echo "\$ zwinformes $(printf '%q ' "$@")"
  "$ZW" "$@" || echo "(exit status $?)"
  echo
}

run check-loops --formules "$LIB"
run eval --formules "$LIB" "${METERS[@]}" "Total"
run eval --formules "$LIB" "${METERS[@]}" "Cost / (Consumption - 1830.75)"
run eval --formules "$LIB" "${METERS[@]}" "Meter1Share > 60 && (ApparentPower < 50)"
run eval --formules "$LIB" "${METERS[@]}" --json "ApparentPower"
run eval "-2^2 + 2^3^2"
run eval "2+-3"
run eval --formules "$LIB" --set meter1.energy= --set meter2.energy=310.25 "Total"
run tokens "atan2([meter1.power], 2) >= 1"
run message 10
