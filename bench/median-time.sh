# Sourced by the benchmark scripts: `median CMD ARGS...` runs the command
# $runs times (its output thrown away) and prints the median wall time in
# seconds.
median() {
  local times=()
  for _ in $(seq "$runs"); do
    local t0 t1
    t0=$(date +%s.%N)
    "$@" >/dev/null
    t1=$(date +%s.%N)
    times+=("$(echo "$t1 - $t0" | bc -l)")
  done
  printf '%s\n' "${times[@]}" | sort -g | awk '{a[NR]=$1} END {print a[int((NR+1)/2)]}'
}
