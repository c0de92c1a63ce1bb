#!/usr/bin/env bash
# A private PostgreSQL cluster on loopback, for benchmarks:
#   pg-cluster.sh start DIR PORT   (initdb on first use)
#   pg-cluster.sh stop DIR
# PostgreSQL refuses to run as root: as root the cluster belongs to the
# system user "postgres" (made by Debian's package), otherwise to the caller.
set -euo pipefail
PGBIN=${PGBIN:-$(ls -d /usr/lib/postgresql/*/bin 2>/dev/null | sort -V | tail -1)}
[ -x "$PGBIN/initdb" ] || { echo "PostgreSQL server binaries not found (apt-get install postgresql)" >&2; exit 1; }
cmd=$1 dir=$2
as_owner() {
  if [ "$(id -u)" -eq 0 ]; then runuser -u postgres -- "$@"; else "$@"; fi
}
case "$cmd" in
start)
  port=$3
  mkdir -p "$dir"
  [ "$(id -u)" -eq 0 ] && chown postgres: "$dir"
  if [ ! -f "$dir/data/PG_VERSION" ]; then
    as_owner "$PGBIN/initdb" -D "$dir/data" -U zw --auth=trust -E UTF8 --locale=C >/dev/null
    cat >>"$dir/data/postgresql.conf" <<CONF
listen_addresses = '127.0.0.1'
unix_socket_directories = '$dir'
shared_buffers = 2GB
effective_cache_size = 8GB
work_mem = 64MB
maintenance_work_mem = 1GB
max_wal_size = 8GB
checkpoint_timeout = 30min
fsync = off
full_page_writes = off
synchronous_commit = off
CONF
  fi
  as_owner "$PGBIN/pg_ctl" -D "$dir/data" -o "-p $port" -l "$dir/server.log" -w start >/dev/null
  as_owner "$PGBIN/psql" -h 127.0.0.1 -p "$port" -U zw -d postgres -tAc \
    "SELECT 1 FROM pg_database WHERE datname = 'zwbench'" | grep -q 1 ||
    as_owner "$PGBIN/createdb" -h 127.0.0.1 -p "$port" -U zw zwbench
  ;;
stop)
  [ -f "$dir/data/postmaster.pid" ] && as_owner "$PGBIN/pg_ctl" -D "$dir/data" -m fast -w stop >/dev/null || true
  ;;
*)
  echo "usage: $0 start DIR PORT | stop DIR" >&2; exit 2 ;;
esac
