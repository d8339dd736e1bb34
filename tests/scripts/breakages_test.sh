#!/usr/bin/env bash
# Each breakage of tests/oracle/check-breakages still changes a line of the sources.
set -euo pipefail
root=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")/../.." && pwd)

count=0
stale=0
while read -r room file expression; do
    [[ -n $room && $room != \#* ]] || continue
    count=$((count + 1))
    source=$root/src/$room/$file
    if [[ ! -f $source ]] || sed "$expression" "$source" | cmp --silent - "$source"; then
        echo "does not apply: $room $file $expression"
        stale=$((stale + 1))
    fi
done <"$root/tests/oracle/breakages.txt"
echo "$count breakages, $stale that do not apply"
((count > 20 && stale == 0))
