#!/usr/bin/env bash
# What a chart and a table add to a month report, on the benchmark database
# (bench/make-bench-db.sh): `zwinformes values` of the example monthly report
# against the same report with one more page holding a 31-day bar chart of ten
# counters and a 31-row table of five columns, against one raw SQL query that
# computes the same daily figures with sqlite3.
#   bench/series-report-bench.sh BUILD_DIR DB.sqlite [MONTH (default 2025-06)] [RUNS (default 5)]
# Writes its reports to ZW_BENCH_OUT (default a temporary folder, removed
# after); prints the medians in seconds and their ratios.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
build=${1:?usage: series-report-bench.sh BUILD_DIR DB.sqlite [MONTH] [RUNS]}
db=${2:?usage: series-report-bench.sh BUILD_DIR DB.sqlite [MONTH] [RUNS]}
month=${3:-2025-06}
runs=${4:-5}
zw="$build/app/zwinformes"
export TZ=${TZ:-Europe/Madrid}
if [ -n "${ZW_BENCH_OUT:-}" ]; then
  work=$ZW_BENCH_OUT
  mkdir -p "$work"
else
  work=$(mktemp -d)
  trap 'rm -rf "$work"' EXIT
fi

plain="$work/Plain.XRPT"
charted="$work/Charted.XRPT"
cp "$here/../examples/reports/MonthlyEnergy.XRPT" "$plain"

counters=()
for k in 2 4 6 8 10 12 14 16 18 20; do counters+=("$(printf 'Circuit %03d.Active energy' "$k")"); done

series=""
for i in "${!counters[@]}"; do
  series+="<series><title>C$i</title><formula>[${counters[$i]}]</formula><color>$(printf '%06X' $((i * 1234567 % 16777215)))</color></series>"
done
columns=""
for name in "Main meter.Active energy" "PV inverter.Energy" "Gas meter.Volume" "Water meter.Volume" "${counters[0]}"; do
  columns+="<column><title>${name%%.*}</title><formula>[$name]</formula><format>.1</format></column>"
done
page="<page><width>297.00</width><height>210.00</height>
<chart><x>10</x><y>10</y><width>277</width><height>90</height><id>{B0000000-0000-0000-0000-000000000001}</id>
<type>bar</type><unit>day</unit><labelFormat>dd</labelFormat>$series</chart>
<table><x>10</x><y>105</y><width>277</width><height>100</height><id>{B0000000-0000-0000-0000-000000000002}</id>
<unit>day</unit><labelFormat>dd/MM</labelFormat><size>5</size>$columns</table></page>"
# The charted report is the plain one with the page added before </design>.
python3 - "$plain" "$charted" "$page" <<'EOF'
import sys
text = open(sys.argv[1], encoding="utf-8").read()
i = text.rindex("</design>")
open(sys.argv[2], "w", encoding="utf-8").write(text[:i] + sys.argv[3] + "\n" + text[i:])
EOF

start=$(date -d "$month-01 00:00" +%s)
end=$(date -d "$month-01 00:00 +1 month" +%s)
names=$(printf "'%s'," "${counters[@]}" "Main meter.Active energy" "PV inverter.Energy" "Gas meter.Volume" "Water meter.Volume")
names=${names%,}
# Daily increases by local day: each rise belongs to the day its later sample
# closes (a sample at midnight closes the day before), a fall counts its new
# reading.
raw="SELECT w.variable_id, date(w.t - 1, 'unixepoch', 'localtime') AS day,
  SUM(CASE WHEN w.value >= w.prev THEN w.value - w.prev ELSE w.value END)
  FROM (SELECT variable_id, t, value, LAG(value) OVER (PARTITION BY variable_id ORDER BY t) AS prev
        FROM samples WHERE variable_id IN (SELECT id FROM variables WHERE name IN ($names))
        AND t >= $start - 3600 AND t <= $end) w
  WHERE w.prev IS NOT NULL AND w.t > $start GROUP BY 1, 2"

# shellcheck source=bench/median-time.sh
. "$here/median-time.sh"

opts=(--db "sqlite:$db" --unit month --date "$month-15T12:00:00")
echo "$raw" >"$work/raw-daily.sql"
t_plain=$(median "$zw" values "$plain" "${opts[@]}")
t_chart=$(median "$zw" values "$charted" "${opts[@]}")
t_raw=$(median sqlite3 "$db" "$raw")
printf 'plain report %.3f s, with chart and table %.3f s (%.2fx), raw daily query %.3f s (report/raw %.3f)\n' \
  "$t_plain" "$t_chart" "$(echo "$t_chart / $t_plain" | bc -l)" "$t_raw" "$(echo "$t_chart / $t_raw" | bc -l)"
