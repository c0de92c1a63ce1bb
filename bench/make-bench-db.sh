#!/usr/bin/env bash
# Builds the benchmark databases once: 200 variables of one-minute samples
# for 13 months (about 114 million samples), up to 2026-01-01T00:00:00Z, in
# a SQLite file and in a PostgreSQL database of a private cluster.
#   bench/make-bench-db.sh BUILD_DIR [DATA_DIR]
# DATA_DIR (default /work/bench-data, outside the repository) needs about
# 3 GB for SQLite and 15 GB for PostgreSQL. Set ZW_BENCH_SKIP_PG=1 to build
# the SQLite file only.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
build=${1:?usage: make-bench-db.sh BUILD_DIR [DATA_DIR]}
data=${2:-/work/bench-data}
zw="$build/app/zwinformes"
port=${ZW_BENCH_PG_PORT:-55439}
mkdir -p "$data"
args=(--months 13 --step 1m --variables 200 --until 2026-01-01T00:00:00Z)
export TZ=${TZ:-Europe/Madrid}

if [ ! -f "$data/bench.sqlite.done" ]; then
  rm -f "$data/bench.sqlite" "$data/bench.sqlite-wal" "$data/bench.sqlite-shm"
  echo "== SQLite: $data/bench.sqlite"
  /usr/bin/time -f "%e s, %M KB" "$zw" demo-db --db "sqlite:$data/bench.sqlite" "${args[@]}"
  touch "$data/bench.sqlite.done"
fi

if [ "${ZW_BENCH_SKIP_PG:-0}" != 1 ] && [ ! -f "$data/bench.pg.done" ]; then
  echo "== PostgreSQL: $data/pg (port $port)"
  "$here/pg-cluster.sh" start "$data/pg" "$port"
  /usr/bin/time -f "%e s, %M KB" "$zw" demo-db --replace --db "postgresql://zw@127.0.0.1:$port/zwbench" "${args[@]}"
  runuser -u postgres -- psql -h 127.0.0.1 -p "$port" -U zw -d zwbench -c "VACUUM ANALYZE" 2>/dev/null ||
    psql -h 127.0.0.1 -p "$port" -U zw -d zwbench -c "VACUUM ANALYZE"
  touch "$data/bench.pg.done"
  "$here/pg-cluster.sh" stop "$data/pg"
fi
du -sh "$data"/* 2>/dev/null || true
