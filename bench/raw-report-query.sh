#!/usr/bin/env bash
# The baseline of the report benchmarks: the period values of the example
# monthly report's seven variables computed by one plain SQL aggregate over
# the raw samples (gauges: the mean; counters: the sum of the rises, a fall
# counting its new reading), with the sqlite3 shell.
#   bench/raw-report-query.sh DB.sqlite START_UTC_SECONDS END_UTC_SECONDS
set -euo pipefail
db=$1 s=$2 e=$3
ids=$(sqlite3 "$db" "SELECT group_concat(id) FROM variables WHERE name IN ('Main meter.Active energy',
  'Main meter.Active power','Gas meter.Volume','Water meter.Volume','Boiler room.Temperature',
  'Office.Temperature','PV inverter.Energy')")
exec sqlite3 "$db" "SELECT w.variable_id,
  AVG(CASE WHEN w.t >= $s AND w.t < $e THEN w.value END),
  SUM(CASE WHEN w.t > $s AND w.prev IS NOT NULL THEN
      CASE WHEN w.value >= w.prev THEN w.value - w.prev ELSE w.value END END)
  FROM (SELECT variable_id, t, value, LAG(value) OVER (PARTITION BY variable_id ORDER BY t) AS prev
        FROM samples WHERE variable_id IN ($ids) AND t >= $s - 3600 AND t <= $e) w
  GROUP BY w.variable_id"
