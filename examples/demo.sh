#!/usr/bin/env bash
# The demonstration behind 'make demo': the demo site's logged data, the
# monthly energy report filled for the last complete month as a PDF, a few
# formulas from the command line, and the viewer when there is a display.
set -euo pipefail
BUILD=${1:-build}
ZW="$BUILD/app/zwinformes"
case "$ZW" in /*) ;; *) ZW="$PWD/$ZW" ;; esac
cd "$(dirname "$0")/.."
mkdir -p out

# 14 months of quarter-hour samples of a small site, up to now (about a
# second to make). Made once; delete out/demo.sqlite to make it again.
DB="sqlite:out/demo.sqlite"
if [ ! -f out/demo.sqlite ]; then
  "$ZW" demo-db --db "$DB" --months 14 --step 15m
fi

# The data folder: the time-of-use calendar of the report's tariff page.
mkdir -p out/data
cp examples/tariffs/three-period.xml out/data/tariffs.xml
export ZWINFORMES_DATA_DIR="$PWD/out/data"

REPORT=examples/reports/MonthlyEnergy.XRPT
last_month=$(date -d "$(date +%Y-%m-01) -1 month" +%Y-%m-15T12:00:00)
echo "== The monthly energy report for the last complete month"
"$ZW" render "$REPORT" --db "$DB" --unit month --date "$last_month" -o out/demo-report.pdf --png out/demo-pages
echo "Filled report: $PWD/out/demo-report.pdf"
echo

echo "== Its values"
"$ZW" values "$REPORT" --db "$DB" --unit month --date "$last_month"
echo

echo "== Formulas from the command line (examples/formulas.xml)"
run() {
  echo "\$ zwinformes $(printf '%q ' "$@")"
  "$ZW" "$@" || echo "(exit status $?)"
}
LIB=examples/formulas.xml
METERS=(--set meter1.energy=1520.5 --set meter2.energy=310.25 --set meter1.power=42.5 --set meter2.power=17.0
        --set meter1.reactive=11.2)
run eval --formules "$LIB" "${METERS[@]}" "Total"
run eval "-2^2 + 2^3^2"
run eval "2+-3"
run check-loops --formules "$LIB"

# The viewer on the same report, when a display is there to show it.
if "$ZW" --help | grep -q '^  view ' && { [ -n "${DISPLAY:-}" ] || [ -n "${WAYLAND_DISPLAY:-}" ]; }; then
  echo "== Opening the viewer"
  "$ZW" view "$REPORT" --db "$DB" --unit month --date "$last_month" &
fi
