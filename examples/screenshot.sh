#!/usr/bin/env bash
# Makes the README's pictures: examples/screenshot.png, the viewer on
# the monthly energy report of the demo site for the last complete month.
# Runs without a display (Qt's offscreen platform) and leaves the user's
# settings alone. Usage: examples/screenshot.sh [BUILD_DIR]
set -euo pipefail
BUILD=${1:-build}
ZW="$BUILD/app/zwinformes"
case "$ZW" in /*) ;; *) ZW="$PWD/$ZW" ;; esac
cd "$(dirname "$0")/.."
mkdir -p out

DB="sqlite:out/demo.sqlite"
if [ ! -f out/demo.sqlite ]; then
  "$ZW" demo-db --db "$DB" --months 14 --step 15m
fi
last_month=$(date -d "$(date +%Y-%m-01) -1 month" +%Y-%m-15T12:00:00)
settings=$(mktemp --suffix=.ini)
trap 'rm -f "$settings"' EXIT
ZWINFORMES_SETTINGS="$settings" QT_QPA_PLATFORM=offscreen \
  "$ZW" screenshot examples/reports/MonthlyEnergy.XRPT --db "$DB" --locale en_US \
  --unit month --date "$last_month" --size 1200x900 -o examples/screenshot.png

# The editor dialog on the same report, the title selected so that its
# properties show: examples/designer.png.
ZWINFORMES_SETTINGS="$settings" QT_QPA_PLATFORM=offscreen \
  "$ZW" screenshot examples/reports/MonthlyEnergy.XRPT --editor --card 2 --size 1400x900 \
  -o examples/designer.png

# The example report's trends page (charts, comparisons, the weekly table) at
# 80 dpi: examples/trends.png.
# Its tariff page, with the three-period calendar as the data folder's
# tariffs.xml: examples/tariffs.png.
pages=$(mktemp -d)
mkdir -p "$pages/data"
cp examples/tariffs/three-period.xml "$pages/data/tariffs.xml"
"$ZW" render examples/reports/MonthlyEnergy.XRPT --db "$DB" --locale en_US --unit month --date "$last_month" \
  --data-dir "$pages/data" --png "$pages" --dpi 80 >/dev/null
cp "$pages/MonthlyEnergy-page3.png" examples/trends.png
cp "$pages/MonthlyEnergy-page4.png" examples/tariffs.png
rm -rf "$pages"
