#!/bin/bash
# install-wine32.sh - install 32-bit Wine (wine32:i386) next to wine64 on Debian 12 (bookworm).
#
# Called by "./run deps" on CI (CI=true) and by "./run deps --wine32". It changes the machine's
# apt configuration (see below) and says so, with the way back, in one line when it is done.
#
# Why a plain "apt-get install wine32:i386" fails on this image: the mirror serves a broken
# i386 index for bookworm-security ("File has unexpected size"), so i386 packages can only come
# from bookworm / bookworm-updates, while some amd64 libraries are at newer bookworm-security
# versions.  Multi-Arch: same libraries must have the same version on both architectures.
#
# What this script does (apt-get, apt-cache and dpkg only; nothing is fetched from elsewhere):
#   1. adds the i386 architecture;
#   2. limits the bookworm-security stanza of debian.sources to the native architecture,
#      so that "apt-get update" succeeds;
#   3. works out (by simulation) which source packages provide the Multi-Arch: same libraries
#      that wine32:i386 pulls in, and pins them on every architecture to their bookworm /
#      bookworm-updates version (Pin-Priority 1001: an amd64 package already at a newer
#      bookworm-security version is downgraded so that both architectures match);
#   4. installs that pin file and wine32:i386 (without Recommends unless WINE32_RECOMMENDS=1),
#      only after a simulation with the new pins shows that apt would remove nothing.
#
# Idempotent: prints nothing and exits 0 when wine32:i386 is already installed.
# Environment: WINE32_RECOMMENDS=1 (also install Recommends: 32-bit GL, SDL, GStreamer plugins),
#              WINE32_LOG=<file> (apt output; default /var/log/install-wine32.log).
set -euo pipefail

PIN_FILE=/etc/apt/preferences.d/wine32-multiarch.pref
SOURCES=/etc/apt/sources.list.d/debian.sources
LOG=${WINE32_LOG:-/var/log/install-wine32.log}

installed() { [ "$(dpkg-query -W -f='${db:Status-Abbrev}' "$1" 2>/dev/null)" = "ii " ]; }
installed wine32:i386 && exit 0

die() {
    echo "install-wine32: $*" >&2
    [ -s "$LOG" ] && { echo "--- last lines of $LOG:" >&2; tail -n 25 "$LOG" >&2; }
    exit 1
}
[ "$(id -u)" = 0 ] || die "must be run as root"

export DEBIAN_FRONTEND=noninteractive
APT=(apt-get -q -y -o DPkg::Lock::Timeout=600
     -o Dpkg::Options::=--force-confdef -o Dpkg::Options::=--force-confold)
REC=(--allow-downgrades --no-install-recommends)
[ "${WINE32_RECOMMENDS:-0}" = 1 ] && REC=(--allow-downgrades)
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
: > "$LOG"
start=$SECONDS

# 1. i386 architecture
dpkg --print-foreign-architectures | grep -x i386 > /dev/null || dpkg --add-architecture i386

# 2. bookworm-security: native architecture only (its i386 index cannot be fetched)
arch=$(dpkg --print-architecture)
if [ -f "$SOURCES" ]; then
    awk -v arch="$arch" '
        function flush(  i) {
            for (i = 1; i <= n; i++) print buf[i]
            if (sec && !has) print "Architectures: " arch
            n = 0; sec = 0; has = 0
        }
        /^[[:space:]]*$/ { flush(); print; next }
        { buf[++n] = $0 }
        /^URIs:.*debian-security/ { sec = 1 }
        /^Architectures:/ { has = 1 }
        END { flush() }' "$SOURCES" > "$tmp/sources"
    if ! cmp -s "$SOURCES" "$tmp/sources"; then
        cp -p "$SOURCES" /var/backups/debian.sources.before-wine32
        cat "$tmp/sources" > "$SOURCES"
    fi
fi
"${APT[@]}" update >> "$LOG" 2>&1 || die "apt-get update failed"

# 3. Source packages of the Multi-Arch: same libraries that wine32:i386 needs.
#    Simulate with every bookworm/bookworm-updates version preferred (temporary preferences),
#    then take the sources of the i386 packages that would be installed.
mkdir "$tmp/prefs"
printf 'Package: *\nPin: release o=Debian,l=Debian\nPin-Priority: 1001\n' > "$tmp/prefs/all.pref"
TMPPREFS=(-o Dir::Etc::PreferencesParts="$tmp/prefs")
"${APT[@]}" -s "${REC[@]}" "${TMPPREFS[@]}" install wine32:i386 > "$tmp/sim1" 2>&1 \
    || { cat "$tmp/sim1" >> "$LOG"; die "wine32:i386 is not installable even from bookworm alone"; }
mapfile -t pkgs < <(awk '$1 == "Inst" && $2 ~ /:i386$/ { print $2 }' "$tmp/sim1")
[ ${#pkgs[@]} -gt 0 ] || { cat "$tmp/sim1" >> "$LOG"; die "simulation installs no i386 package"; }
mapfile -t srcs < <(apt-cache "${TMPPREFS[@]}" show --no-all-versions "${pkgs[@]}" | awk '
    /^Package:/    { p = $2; s = $2; ma = "" }
    /^Source:/     { s = $2 }
    /^Multi-Arch:/ { ma = $2 }
    /^$/           { if (p != "" && ma == "same") print s; p = "" }
    END            { if (p != "" && ma == "same") print s }' | sort -u)
[ ${#srcs[@]} -gt 0 ] || die "could not determine the source packages to pin"
{
    echo "Explanation: written by install-wine32.sh. bookworm-security has no usable i386 index,"
    echo "Explanation: so the sources of the Multi-Arch: same libraries wine32:i386 needs are held"
    echo "Explanation: at their bookworm / bookworm-updates version on amd64 and i386 alike."
    echo "Package: $(printf 'src:%s:any ' "${srcs[@]}" | sed 's/ $//')"
    echo "Pin: release o=Debian,l=Debian"
    echo "Pin-Priority: 1001"
} > "$tmp/pin"

# 4. Simulate with the system's preferences plus the new pin file; install the pin file and
#    wine32:i386 only if that is clean and removes nothing.
mkdir "$tmp/final"
find /etc/apt/preferences.d -maxdepth 1 -type f ! -name "${PIN_FILE##*/}" -exec cp -t "$tmp/final" {} +
cp "$tmp/pin" "$tmp/final/${PIN_FILE##*/}"
"${APT[@]}" -s "${REC[@]}" -o Dir::Etc::PreferencesParts="$tmp/final" install wine32:i386 \
    > "$tmp/sim2" 2>&1 || { cat "$tmp/sim2" >> "$LOG"; die "simulation with the new pins failed"; }
if grep -q '^Remv ' "$tmp/sim2"; then
    grep '^Remv ' "$tmp/sim2" >> "$LOG"
    die "apt would remove packages; nothing installed (see $LOG)"
fi
summary=$(sed -n 's/^\([0-9]* upgraded, .* to remove\).*/\1/p' "$tmp/sim2")
downgraded=$(awk '$1 == "Inst" && $3 ~ /^\[/ { v = substr($3, 2, length($3) - 2); n = substr($4, 2)
    if (system("dpkg --compare-versions \047" n "\047 lt \047" v "\047") == 0) printf " %s", $2 }' "$tmp/sim2")
cmp -s "$tmp/pin" "$PIN_FILE" 2>/dev/null || install -m 644 "$tmp/pin" "$PIN_FILE"
"${APT[@]}" "${REC[@]}" install wine32:i386 >> "$LOG" 2>&1 || die "apt-get install wine32:i386 failed"
installed wine32:i386 || die "wine32:i386 is not installed after apt-get install"

changed="added the i386 architecture, limited bookworm-security to $arch in $SOURCES"
changed+=" (copy of the old file in /var/backups/debian.sources.before-wine32), pinned ${#srcs[@]}"
changed+=" sources in $PIN_FILE"
[ -z "$downgraded" ] || changed+=" (downgraded:$downgraded)"
undo="apt-get purge 'wine32:i386' && apt-get autoremove --purge && rm $PIN_FILE"
undo+=" && cp /var/backups/debian.sources.before-wine32 $SOURCES"
undo+=" && dpkg --remove-architecture i386 && apt-get update"
echo "install-wine32: wine32:i386 $(dpkg-query -W -f='${Version}' wine32:i386) installed in" \
     "$((SECONDS - start)) s ($summary); apt configuration changed: $changed; to undo: $undo"
