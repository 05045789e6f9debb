#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Gets libduckdb.so and libchdb.so (ClickHouse) from the npm registry into build/peers, or into the directory given.
set -euo pipefail
peers=${1:-$(cd "$(dirname "$0")/../.." && pwd)/build/peers}
mkdir -p "$peers"

work=$(mktemp -d -p "$peers")
trap 'rm -rf "$work"' EXIT
fetch() {
    local package=$1 file=$2 archive
    [ -e "$peers/$file" ] && return
    archive=$(cd "$work" && npm pack --silent "$package")
    tar -xzf "$work/$archive" -C "$work" "package/$file"
    mv "$work/package/$file" "$peers/$file"
    echo "$peers/$file from $archive"
}
fetch @duckdb/node-bindings-linux-x64 libduckdb.so
fetch @chdb/lib-linux-x64-gnu libchdb.so
