#!/bin/bash
# `ringwell send` against its floor, side by side in one run:
#  - the median time from starting `ringwell send` to its event being on disk,
#    against a process that starts and writes a file of the same size
#    crash-safely (ringwell-write-floor);
#  - 200 concurrent sends against 200 sequential ones, checking that every
#    acknowledged send of the burst is in the store file afterwards: once with
#    `ringwell send` (200 process starts, which the 2 cores here share), once
#    through the API socket from one process (ringwell-send-burst), which
#    measures the daemon alone.
# Targets: median within 1.5x of the floor; the burst under a quarter of the
# sequential time. Run on a release build: bench/send-floor.sh [BIN_DIR]
set -euo pipefail

bin=$(cd "${1:-build/release/bin}" && pwd)
runs=${RUNS:-41}
root=$(mktemp -d "${TMPDIR:-/tmp}/ringwell-send-floor-XXXXXX")
daemon=
cleanup() {
    if [ -n "$daemon" ]; then kill "$daemon" 2>/dev/null; wait "$daemon" 2>/dev/null || true; fi
    rm -rf "$root"
}
trap cleanup EXIT

mkdir -p "$root/data" "$root/config" "$root/run" "$root/home" "$root/floor"
export XDG_DATA_HOME=$root/data XDG_CONFIG_HOME=$root/config XDG_RUNTIME_DIR=$root/run
export HOME=$root/home DBUS_SESSION_BUS_ADDRESS=unix:path=$root/no-bus PULSE_SERVER=unix:$root/no-pulse
store=$root/data/ringwell/ringwell.json

"$bin/ringwell" serve --no-web >"$root/daemon.log" 2>&1 &
daemon=$!
for _ in $(seq 100); do
    [ -S "$root/run/ringwell/ringwell.sock" ] && break
    sleep 0.05
done
# No channel: every send is recorded as `noMatch`, so no alarm or tone runs.
urgent=$("$bin/ringwell" channels --json | sed -n 's/.*"id": "\(.*\)".*/\1/p' | head -1)
"$bin/ringwell" channel delete "$urgent" >/dev/null

now() { echo "${EPOCHREALTIME/./}"; } # microseconds, without forking
median() { sort -n | awk '{ v[NR] = $1 } END { print v[int((NR + 1) / 2)] }'; }
ms() { awk -v us="$1" 'BEGIN { printf "%.2f ms", us / 1000 }'; }

send() {
    "$bin/ringwell" send --app Bench --sender "Sender $1" --title "$1" \
        --body "Could you call me back as soon as you see this? It is about the delivery that was due this morning and the customer is waiting on the line." >/dev/null
}

# 200 sequential sends, which also fill the log to its 200 events.
start=$(now)
for i in $(seq 200); do send "sequential-$i"; done
sequential=$(( $(now) - start ))

size=$(stat -c %s "$store")
: >"$root/send.times"
: >"$root/floor.times"
for i in $(seq "$runs"); do
    start=$(now); send "single-$i"; echo $(( $(now) - start )) >>"$root/send.times"
    grep -q "\"title\":\"single-$i\"" "$store" || { echo "single-$i is not on disk" >&2; exit 1; }
    start=$(now); "$bin/ringwell-write-floor" "$root/floor/ringwell.json" "$size"
    echo $(( $(now) - start )) >>"$root/floor.times"
done
sendMedian=$(median <"$root/send.times")
floorMedian=$(median <"$root/floor.times")

: >"$root/acks"
pids=()
start=$(now)
for i in $(seq 200); do
    ( send "burst-$i" && echo "burst-$i" >>"$root/acks" ) &
    pids+=($!)
done
wait "${pids[@]}"
burst=$(( $(now) - start ))
acked=$(sort -u "$root/acks" | wc -l)
missing=$(sort -u "$root/acks" | while read -r title; do
    grep -q "\"title\":\"$title\"" "$store" || echo "$title"; done | wc -l)

# The same through the API socket from one process, without process starts.
socket=$root/run/ringwell/ringwell.sock
"$bin/ringwell-send-burst" "$socket" sequential 200 socket-sequential- >"$root/socket-sequential"
"$bin/ringwell-send-burst" "$socket" concurrent 200 socket-burst- >"$root/socket-burst"
socketSequential=$(sed -n 's/^elapsed_us //p' "$root/socket-sequential")
socketBurst=$(sed -n 's/^elapsed_us //p' "$root/socket-burst")
socketAcked=$(grep -vc '^elapsed_us ' "$root/socket-burst")
socketMissing=$(grep -v '^elapsed_us ' "$root/socket-burst" | while read -r title; do
    grep -q "\"title\":\"$title\"" "$store" || echo "$title"; done | wc -l)

printf 'store file: %d bytes, %d runs\n' "$size" "$runs"
printf 'send -> on disk, median: %s\n' "$(ms "$sendMedian")"
printf 'floor (start + crash-safe write), median: %s\n' "$(ms "$floorMedian")"
awk -v s="$sendMedian" -v f="$floorMedian" 'BEGIN { printf "ratio: %.2f (target <= 1.5)\n", s / f }'
printf '200 sequential sends: %s\n' "$(ms "$sequential")"
printf '200 concurrent sends: %s\n' "$(ms "$burst")"
awk -v b="$burst" -v s="$sequential" 'BEGIN { printf "burst / sequential: %.2f (target < 0.25)\n", b / s }'
printf 'acknowledged burst sends: %d, missing from the file: %d\n' "$acked" "$missing"
printf 'through the socket, 200 sequential sends: %s\n' "$(ms "$socketSequential")"
printf 'through the socket, 200 concurrent sends: %s\n' "$(ms "$socketBurst")"
awk -v b="$socketBurst" -v s="$socketSequential" \
    'BEGIN { printf "through the socket, burst / sequential: %.2f (target < 0.25)\n", b / s }'
printf 'acknowledged socket burst sends: %d, missing from the file: %d\n' "$socketAcked" \
    "$socketMissing"
[ "$missing" -eq 0 ] && [ "$socketMissing" -eq 0 ]
