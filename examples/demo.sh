#!/usr/bin/env bash
# The demonstration behind 'make demo'.
set -euo pipefail
BUILD=${1:-build}
ZW="$BUILD/app/zwinformes"
echo "zwinformes built at $ZW"
mkdir -p out
# The demo site's logged data: 14 months of quarter-hour samples (under a
# second to make). Made once; delete out/demo.sqlite to make it again.
DB="sqlite:out/demo.sqlite"
if [ ! -f out/demo.sqlite ]; then
  "$ZW" demo-db --db "$DB" --months 14 --step 15m
fi
this_month=$(date +%Y-%m-01)
last_month=$(date -d "$this_month -1 month" +%Y-%m-01)
echo "Values of the last complete month ($last_month to $this_month) in $DB:"
"$ZW" period-values --db "$DB" --from "$last_month" --to "$this_month" \
  "Main meter.Active energy" "Main meter.Active power" "Main meter.Active power:max" \
  "PV inverter.Energy" "Gas meter.Volume" "Water meter.Volume" \
  "Boiler room.Temperature" "Office.Temperature" "Office.Temperature:min"
