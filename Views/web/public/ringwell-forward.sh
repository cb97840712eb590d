#!/bin/sh
# ringwell-forward.sh — forwards desktop notifications to Ringwell.
#
# Run it in your desktop session (it needs that session's D-Bus), with the
# apps that might ring, or with no app to forward every notification:
#
#     sh ringwell-forward.sh                 # every app
#     sh ringwell-forward.sh Signal Thunderbird
#
# To keep it on, start it with your session, for example with an autostart
# entry (~/.config/autostart/ringwell-forward.desktop):
#
#     [Desktop Entry]
#     Type=Application
#     Name=Ringwell forwarding
#     Exec=sh /path/to/ringwell-forward.sh Signal Thunderbird
#
# It watches the session bus for notifications (the Notify calls of the
# freedesktop notification interface, as dbus-monitor shows them) and hands
# each one to `ringwell send` with its fields mapped: the app name to --app,
# the summary to --title, the body to --body, both to --notification, and a
# critical urgency to --time-sensitive. Apps that post through GNOME's own
# notification portal instead of Notify are not seen.
#
# Needs: dbus-monitor (Debian package dbus-bin) and `ringwell` on PATH, or
# its path in RINGWELL. Ringwell's daemon (`ringwell serve`) must be running.

set -u

ringwell=${RINGWELL:-ringwell}
separator=$(printf '\037')

if ! command -v dbus-monitor >/dev/null 2>&1; then
    echo "ringwell-forward: dbus-monitor is missing (install the dbus-bin package)" >&2
    exit 1
fi
if ! command -v "$ringwell" >/dev/null 2>&1; then
    echo "ringwell-forward: cannot find $ringwell (put it on PATH or set RINGWELL)" >&2
    exit 1
fi
if [ -z "${DBUS_SESSION_BUS_ADDRESS:-}" ] && [ ! -S "${XDG_RUNTIME_DIR:-/run/user/$(id -u)}/bus" ]; then
    echo "ringwell-forward: no session bus; run it inside your desktop session" >&2
    exit 1
fi

# mawk reads a pipe in large blocks unless told it is interactive, which
# would hold notifications back until several had arrived.
if command -v mawk >/dev/null 2>&1; then
    awk_command="mawk -W interactive"
else
    awk_command=awk
fi

lower() {
    printf '%s' "$1" | tr '[:upper:]' '[:lower:]'
}

# Whether notifications of this app are forwarded: every app when the script
# was given none, else only the apps named (ignoring case).
wanted() {
    [ "$#" -gt 1 ] || return 0
    wanted_app=$(lower "$1")
    shift
    for wanted_name in "$@"; do
        [ "$wanted_app" = "$(lower "$wanted_name")" ] && return 0
    done
    return 1
}

# dbus-monitor prints each argument of a call on its own line, three spaces
# in; a string runs from `string "` to the closing quote, across lines when
# the text has line breaks. The awk program turns each Notify call into one
# line: app, summary, body and "yes"/"no" for a critical urgency, separated by
# the unit separator, with backslashes, tabs and line breaks escaped for
# printf %b.
dbus-monitor --session "interface='org.freedesktop.Notifications',member='Notify'" 2>/dev/null |
$awk_command -v sep="$separator" '
function escaped(text) {
    gsub(/\\/, "\\\\", text)
    gsub(/\t/, "\\t", text)
    gsub(/\n/, "\\n", text)
    gsub(sep, " ", text)
    return text
}
function finishString() {
    value = substr(buffer, 1, length(buffer) - 1)
    inString = 0
    if (!topLevel) {
        if (!inHints) return
        if (value == "urgency") wantUrgency = 1
        else if (value == "desktop-entry") wantEntry = 1
        else if (wantEntry) { entry = value; wantEntry = 0 }
        return
    }
    arg += 1
    if (arg == 1) app = value
    else if (arg == 4) summary = value
    else if (arg == 5) body = value
}
function isItem(line) {
    return line ~ /^   +(string|u?int(16|32|64)|byte|boolean|double|variant|array|dict entry|struct|object path|\]|\))/ ||
           line ~ /^(method call|method return|signal|error) /
}
function emit() {
    if (app == "" && entry != "") app = entry
    printf "%s%s%s%s%s%s%s\n", escaped(app), sep, escaped(summary), sep, escaped(body), sep, (urgent ? "yes" : "no")
    fflush()
    inCall = 0
}
{
    line = $0
    if (inString) {
        if (buffer ~ /"$/ && isItem(line)) finishString()
        else { buffer = buffer "\n" line; next }
    }
    if (line ~ /^method call .*member=Notify$/) {
        inCall = 1; arg = 0; inHints = 0; urgent = 0; wantUrgency = 0; wantEntry = 0
        app = ""; summary = ""; body = ""; entry = ""
        next
    }
    if (!inCall) next
    if (line ~ /^ +string "/) {
        buffer = substr(line, index(line, "\"") + 1)
        topLevel = (line ~ /^   string/)
        inString = 1
        next
    }
    if (line ~ /^   array \[/) { arg += 1; if (arg == 7) inHints = 1; next }
    if (line ~ /^   \]/) { inHints = 0; next }
    if (wantEntry && line ~ /variant +string "/) {
        entry = line
        sub(/^[^"]*"/, "", entry)
        sub(/"$/, "", entry)
        wantEntry = 0
        next
    }
    if (wantUrgency && line ~ /byte /) {
        level = line
        sub(/.*byte /, "", level)
        urgent = (level + 0 == 2)
        wantUrgency = 0
        next
    }
    if (line ~ /^   (u?int32|uint32) /) {
        arg += 1
        if (arg >= 8) emit()
        next
    }
}
' |
while IFS="$separator" read -r app summary body urgent; do
    app=$(printf '%b' "$app")
    summary=$(printf '%b' "$summary")
    body=$(printf '%b' "$body")
    wanted "$app" "$@" || continue
    if [ -n "$body" ]; then
        notification="$summary
$body"
    else
        notification=$summary
    fi
    "$ringwell" send --app "$app" --title "$summary" --body "$body" \
        --notification "$notification" --time-sensitive "$urgent" ||
        echo "ringwell-forward: ringwell send failed for a notification of $app" >&2
done
