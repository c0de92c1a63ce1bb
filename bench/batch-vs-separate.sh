#!/usr/bin/env bash
# Whole-process time of rendering twelve monthly PDFs of the example report:
# one batch run (`render --each month`: the store opened and the report read
# once) against twelve separate `render` runs, each a median of RUNS.
#   bench/batch-vs-separate.sh DB_URL BUILD_DIR [YEAR] [RUNS]
# DB_URL is a logger database (sqlite:PATH or postgresql://…), BUILD_DIR the
# build folder that holds app/zwinformes; YEAR defaults to 2025, RUNS to 5.
set -euo pipefail
if [ $# -lt 2 ]; then
  sed -n '2,7p' "$0" | sed 's/^# \{0,1\}//'
  exit 2
fi
db=$1 build=$2 year=${3:-2025} runs=${4:-5}
here=$(cd "$(dirname "$0")/.." && pwd)
zw=$build/app/zwinformes
report=$here/examples/reports/MonthlyEnergy.XRPT
[ -x "$zw" ] || { echo "no program at $zw" >&2; exit 2; }
out=$(mktemp -d)
trap 'rm -rf "$out"' EXIT

now() { date +%s.%N; }

batch() {
  "$zw" --tz UTC render "$report" --db "$db" --each month \
    --from "$year-01-01T00:00:00" --to "$((year + 1))-01-01T00:00:00" \
    -o "$out/batch/{name}-{start:yyyy-MM}.pdf" >/dev/null
}

separate() {
  for m in 01 02 03 04 05 06 07 08 09 10 11 12; do
    "$zw" --tz UTC render "$report" --db "$db" --unit month --date "$year-$m-15T00:00:00" \
      -o "$out/separate/MonthlyEnergy-$year-$m.pdf" >/dev/null
  done
}

median() { sort -n | awk '{ v[NR] = $1 } END { print (NR % 2) ? v[(NR + 1) / 2] : (v[NR / 2] + v[NR / 2 + 1]) / 2 }'; }

mkdir -p "$out/separate"
# One run of each first, so that both find the database in the page cache.
batch
separate
b=() s=()
for _ in $(seq "$runs"); do
  t0=$(now); batch; t1=$(now); separate; t2=$(now)
  b+=("$(awk -v a="$t0" -v b="$t1" 'BEGIN { print b - a }')")
  s+=("$(awk -v a="$t1" -v b="$t2" 'BEGIN { print b - a }')")
done
mb=$(printf '%s\n' "${b[@]}" | median)
ms=$(printf '%s\n' "${s[@]}" | median)
n=$(ls "$out/batch" | wc -l)
printf 'twelve monthly PDFs of %s (%s), median of %s runs\n' "$year" "$db" "$runs"
printf '  one batch run:        %.3f s (%s files)\n' "$mb" "$n"
printf '  twelve render runs:   %.3f s\n' "$ms"
printf '  batch / separate:     %.2f\n' "$(awk -v a="$mb" -v b="$ms" 'BEGIN { print a / b }')"
