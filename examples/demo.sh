#!/usr/bin/env bash
# The demonstration behind 'make demo'.
set -euo pipefail
BUILD=${1:-build}
ZW="$BUILD/app/zwinformes"
echo "zwinformes built at $ZW"
"$ZW" --help
