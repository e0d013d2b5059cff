#!/bin/sh
# install-packages.sh [SECTION…]
# Installs the packages of packages.txt that are missing; without a section, those of
# every section. Says nothing when there is nothing to do.
# Exit status: 0 all present, 1 something is missing and could not be installed.
set -eu

here=$(CDPATH='' cd -- "$(dirname -- "$0")" && pwd)

# Prints the packages of one section, or of all of them for the name "".
packages_of() {
    awk -v wanted="$1" '
        /^[[:space:]]*(#|$)/ { next }
        /^\[/ { section = substr($0, 2, length($0) - 2); next }
        wanted == "" || section == wanted { print $1 }' "$here/packages.txt"
}

is_installed() {
    case $(dpkg-query -W -f='${db:Status-Status}' "$1" 2>/dev/null) in
        installed) return 0 ;;
        *) return 1 ;;
    esac
}

missing_packages() {
    if [ $# -eq 0 ]; then set -- ''; fi
    for section in "$@"; do
        for package in $(packages_of "$section"); do
            is_installed "$package" || printf '%s\n' "$package"
        done
    done
}

# The first try may find no package lists at all, or old ones that name packages the
# mirror no longer has; the second one follows a passing network failure.
install_all() {
    for try in first second; do
        $as_root apt-get update -q || echo "apt-get update failed ($try try)"
        if $as_root env DEBIAN_FRONTEND=noninteractive apt-get install -q -y \
            --no-install-recommends -o DPkg::Lock::Timeout=300 -o Acquire::Retries=2 "$@"; then
            return 0
        fi
    done
    return 1
}

if ! command -v dpkg-query >/dev/null || ! command -v apt-get >/dev/null; then
    echo "Not a Debian system; these must be there already (named as in Debian 12):" >&2
    packages_of '' >&2
    exit 0
fi

missing=$(missing_packages "$@" | tr '\n' ' ')
[ -n "$missing" ] || exit 0

if [ "$(id -u)" -eq 0 ]; then
    as_root=
elif sudo -n true 2>/dev/null; then
    as_root='sudo -n'
else
    {
        echo "Vignar needs these packages: $missing"
        echo 'Type this once, then start again:'
        if command -v sudo >/dev/null; then
            echo "  sudo '$here/install-packages.sh' $*"
        else
            echo "  su -c \"'$here/install-packages.sh' $*\""
        fi
    } >&2
    exit 1
fi

echo "Installing $missing" >&2
log=$(mktemp)
trap 'rm -f "$log"' EXIT
# shellcheck disable=SC2086 # one word per package
if ! install_all $missing >"$log" 2>&1 </dev/null; then
    tail -n 40 "$log" >&2
    echo 'The packages could not be installed; the last lines of apt-get stand above.' >&2
    exit 1
fi
