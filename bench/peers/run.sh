#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Prints the side-by-side table as Markdown: bench/peers/run.sh [case name pattern] [options of bifun_peers]
set -euo pipefail
cd "$(dirname "$0")/../.."

[ -e build/peers/libduckdb.so ] && [ -e build/peers/libchdb.so ] || bench/peers/fetch.sh
cmake --preset release >/dev/null
cmake --build --preset release --target bifun_peers -- --quiet
pattern=()
if [ $# -gt 0 ] && [[ $1 != --* ]]; then
    pattern=("--filter=$1")
    shift
fi
exec build/release/bin/bifun_peers "${pattern[@]}" "$@"
