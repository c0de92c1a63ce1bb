#!/usr/bin/env bash
# What tariff periods add to a year report, on the benchmark database
# (bench/make-bench-db.sh): `zwinformes values` of a report of ten counters'
# yearly increases against the same report with each counter's increase in
# each of the six periods of examples/tariffs/six-period.xml too, against one
# raw SQL query that computes the same per-period sums with sqlite3.
#   bench/tariff-report-bench.sh BUILD_DIR DB.sqlite [YEAR (default 2025)] [RUNS (default 5)]
# Writes its reports and the raw query to ZW_BENCH_OUT (default a temporary
# folder, removed after); prints the medians in seconds and their ratios.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
build=${1:?usage: tariff-report-bench.sh BUILD_DIR DB.sqlite [YEAR] [RUNS]}
db=${2:?usage: tariff-report-bench.sh BUILD_DIR DB.sqlite [YEAR] [RUNS]}
year=${3:-2025}
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
mkdir -p "$work/data"
cp "$here/../examples/tariffs/six-period.xml" "$work/data/tariffs.xml"

counters=()
for k in 2 4 6 8 10 12 14 16 18 20; do counters+=("$(printf 'Circuit %03d.Active energy' "$k")"); done

# One formula card per value, in rows of seven: the year's increase, then P1..P6.
python3 - "$work" "${counters[@]}" <<'EOF'
import sys, uuid
work, counters = sys.argv[1], sys.argv[2:]
def report(name, periods):
    cards = []
    for row, counter in enumerate(counters):
        for col, filt in enumerate([""] + periods):
            formula = "[%s%s]" % (counter, ":" + filt if filt else "")
            cards.append("<formule><x>%d</x><y>%d</y><width>28</width><height>8</height>"
                         "<id>{%s}</id><value>%s</value><format>.1</format></formule>"
                         % (5 + 29 * col, 10 + 10 * row, str(uuid.uuid4()).upper(), formula))
    text = ("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<design><id>{%s}</id><name>%s</name>"
            "<page><width>210</width><height>297</height>%s</page></design>\n"
            % (str(uuid.uuid4()).upper(), name, "".join(cards)))
    open("%s/%s.XRPT" % (work, name), "w", encoding="utf-8").write(text)
report("YearTotals", [])
report("YearTariffs", ["P%d" % i for i in range(1, 7)])
EOF

start=$(date -d "$year-01-01 00:00" +%s)
end=$(date -d "$((year + 1))-01-01 00:00" +%s)
names=$(printf "'%s'," "${counters[@]}")
names=${names%,}
holidays=$(grep -o "<holiday>$year-[0-9-]*</holiday>" "$work/data/tariffs.xml" | sed "s/<holiday>\(.*\)<\/holiday>/'\1'/" | paste -sd,)
# Each rise belongs to the local hour its sample closes (a sample on the hour
# closes the hour before); a fall counts its new reading. The hour's period
# by the six-period calendar, written out as CASE.
raw="SELECT variable_id, period, SUM(rise) FROM (
  SELECT w.variable_id,
    CASE WHEN date(w.t - 1, 'unixepoch', 'localtime') IN ($holidays)
           OR strftime('%w', w.t - 1, 'unixepoch', 'localtime') IN ('0', '6')
           OR CAST(strftime('%H', w.t - 1, 'unixepoch', 'localtime') AS INTEGER) < 8 THEN 'P6'
      ELSE (CASE CAST(strftime('%m', w.t - 1, 'unixepoch', 'localtime') AS INTEGER)
              WHEN 1 THEN 0 WHEN 2 THEN 0 WHEN 7 THEN 0 WHEN 12 THEN 0
              WHEN 3 THEN 1 WHEN 11 THEN 1 WHEN 6 THEN 2 WHEN 8 THEN 2 WHEN 9 THEN 2 ELSE 3 END)
        + (CASE WHEN CAST(strftime('%H', w.t - 1, 'unixepoch', 'localtime') AS INTEGER) IN (9, 10, 11, 12, 13, 18, 19, 20, 21)
                THEN 1 ELSE 2 END) END AS period,
    CASE WHEN w.value >= w.prev THEN w.value - w.prev ELSE w.value END AS rise
  FROM (SELECT variable_id, t, value, LAG(value) OVER (PARTITION BY variable_id ORDER BY t) AS prev
        FROM samples WHERE variable_id IN (SELECT id FROM variables WHERE name IN ($names))
        AND t >= $start - 3600 AND t <= $end) w
  WHERE w.prev IS NOT NULL AND w.t > $start) GROUP BY 1, 2"
echo "$raw" >"$work/raw-tariffs.sql"

# shellcheck source=bench/median-time.sh
. "$here/median-time.sh"

opts=(--data-dir "$work/data" --db "sqlite:$db" --unit year --date "$year-06-15T12:00:00")
t_plain=$(median "$zw" values "$work/YearTotals.XRPT" "${opts[@]}")
t_tariff=$(median "$zw" values "$work/YearTariffs.XRPT" "${opts[@]}")
t_raw=$(median sqlite3 "$db" "$raw")
printf 'year totals %.3f s, with 6 tariff periods %.3f s (%.2fx), raw per-period query %.3f s (report/raw %.3f)\n' \
  "$t_plain" "$t_tariff" "$(echo "$t_tariff / $t_plain" | bc -l)" "$t_raw" "$(echo "$t_tariff / $t_raw" | bc -l)"
