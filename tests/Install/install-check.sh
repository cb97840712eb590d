#!/bin/bash
# Installs a built tree twice and checks the result:
# - into a DESTDIR staging tree for /usr, as a package would: every file in
#   its place, the service naming the installed daemon;
# - under a real prefix: systemd-analyze verifies the user units, the
#   installed daemon started from there answers `ringwell status`, and a
#   daemon started the way systemd's socket activation starts it
#   (systemd-socket-activate: LISTEN_FDS/LISTEN_PID, fd 3) adopts the socket
#   it was given instead of binding its own.
# Usage: install-check.sh BUILD_DIR. Exits 77 (skipped) only when a tool the
# check needs is missing, saying which.
set -euo pipefail

build=$(cd "$1" && pwd)
work=$(mktemp -d)
daemon_pid=""
cleanup() {
    if [ -n "$daemon_pid" ]; then
        kill "$daemon_pid" 2>/dev/null || true
        wait "$daemon_pid" 2>/dev/null || true
    fi
    rm -rf "$work"
}
trap cleanup EXIT

fail() {
    echo "FAIL: $*" >&2
    exit 1
}

# Waits (polling) for a command to succeed, at most 30 s.
wait_for() {
    for _ in $(seq 300); do
        if "$@" >/dev/null 2>&1; then return 0; fi
        sleep 0.1
    done
    return 1
}

# --- A package's layout: DESTDIR, prefix /usr.
stage=$work/stage
DESTDIR=$stage cmake --install "$build" --prefix /usr >/dev/null
for file in usr/bin/ringwell usr/libexec/ringwell/ringwell-daemon usr/libexec/ringwell/ringwell-rules \
    usr/share/ringwell/Sounds/ringwell-default.caf \
    usr/share/applications/ringwell.desktop \
    usr/share/icons/hicolor/scalable/apps/ringwell.svg \
    usr/share/bash-completion/completions/ringwell \
    usr/share/zsh/vendor-completions/_ringwell \
    usr/share/man/man1/ringwell.1 \
    usr/lib/systemd/user/ringwell.service usr/lib/systemd/user/ringwell.socket; do
    [ -f "$stage/$file" ] || fail "$file was not installed"
done
if [ -d "$build/share/ringwell/web" ]; then
    [ -f "$stage/usr/share/ringwell/web/index.html" ] || fail "the web app was not installed"
fi
grep -qx 'ExecStart=/usr/libexec/ringwell/ringwell-daemon' "$stage/usr/lib/systemd/user/ringwell.service" ||
    fail "ringwell.service does not start the installed daemon"
grep -qx 'SocketMode=0600' "$stage/usr/lib/systemd/user/ringwell.socket" || fail "the socket is not private"
bash -n "$stage/usr/share/bash-completion/completions/ringwell" || fail "the bash completion does not parse"
# Every command of the overview is completed and in the manual page.
for command in $("$stage/usr/bin/ringwell" --help | awk '/^Commands:/{on=1; next} /^$/{on=0} on{print $1}'); do
    grep -qw -- "$command" "$stage/usr/share/bash-completion/completions/ringwell" ||
        fail "the bash completion lacks '$command'"
    grep -q "^.SS \"${command//-/\\\\-}" "$stage/usr/share/man/man1/ringwell.1" ||
        fail "the manual page lacks '$command'"
done
if command -v desktop-file-validate >/dev/null; then
    desktop-file-validate "$stage/usr/share/applications/ringwell.desktop"
fi

# --- Under a real prefix, where the units' paths exist.
prefix=$work/prefix
cmake --install "$build" --prefix "$prefix" >/dev/null
command -v systemd-analyze >/dev/null || { echo "SKIP: systemd-analyze is not installed"; exit 77; }
mkdir -m 700 "$work/analyze"
XDG_RUNTIME_DIR=$work/analyze systemd-analyze --user --man=no verify \
    "$prefix/lib/systemd/user/ringwell.socket" "$prefix/lib/systemd/user/ringwell.service" ||
    fail "systemd-analyze verify found fault with the units"

# A private environment for the daemons: no session bus, own directories.
mkdir -m 700 "$work/run" "$work/run/ringwell"
environment=(XDG_RUNTIME_DIR="$work/run" HOME="$work/home" XDG_DATA_HOME="$work/home/data"
    XDG_CONFIG_HOME="$work/home/config" DBUS_SESSION_BUS_ADDRESS="unix:path=$work/no-bus")
ringwell() { env "${environment[@]}" "$prefix/bin/ringwell" "$@"; }

# `ringwell serve` from the install tree runs the installed daemon.
env "${environment[@]}" "$prefix/bin/ringwell" serve --port 0 >"$work/serve.log" 2>&1 &
daemon_pid=$!
wait_for ringwell status || { cat "$work/serve.log" >&2; fail "the installed daemon did not answer"; }
[ "$(readlink "/proc/$daemon_pid/exe")" = "$prefix/libexec/ringwell/ringwell-daemon" ] ||
    fail "ringwell serve did not run the installed daemon"
ringwell templates | grep -q . || fail "ringwell templates did not run the installed rule tool"
ringwell status --json | grep -q '"webAddress": *"http://127.0.0.1:' || fail "no web app address"
[ -f "$work/home/data/ringwell/Sounds/ringwell-klaxon.caf" ] || fail "the tones were not found"
kill "$daemon_pid"
wait "$daemon_pid" || fail "the daemon did not stop cleanly"
daemon_pid=""

# Socket activation: the listening socket comes first, the daemon with the
# first connection, and it must answer on that very socket.
command -v systemd-socket-activate >/dev/null ||
    { echo "SKIP: systemd-socket-activate is not installed"; exit 77; }
socket=$work/run/ringwell/ringwell.sock
env_flags=()
for assignment in "${environment[@]}"; do env_flags+=(-E "$assignment"); done
systemd-socket-activate -l "$socket" "${env_flags[@]}" \
    "$prefix/libexec/ringwell/ringwell-daemon" --no-web >"$work/activated.log" 2>&1 &
daemon_pid=$!
wait_for test -S "$socket" || fail "systemd-socket-activate did not listen"
inode=$(stat -c %i "$socket")
ringwell status >/dev/null || { cat "$work/activated.log" >&2; fail "the activated daemon did not answer"; }
[ "$(readlink "/proc/$daemon_pid/exe")" = "$prefix/libexec/ringwell/ringwell-daemon" ] ||
    fail "the daemon was not started by the connection"
[ "$(stat -c %i "$socket")" = "$inode" ] || fail "the daemon bound a socket of its own"
kill "$daemon_pid"
wait "$daemon_pid" || fail "the activated daemon did not stop cleanly"
daemon_pid=""
[ -S "$socket" ] || fail "the daemon removed the socket that systemd owns"
echo "install check passed"
