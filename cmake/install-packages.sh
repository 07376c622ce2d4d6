#!/usr/bin/env bash
# Installs the named Debian packages that are not installed yet, as root or through sudo.
set -euo pipefail

missing=()
for package in "$@"; do
    if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed'; then
        missing+=("$package")
    fi
done
[ ${#missing[@]} -eq 0 ] && exit 0

if ! command -v apt-get >/dev/null 2>&1; then
    echo "Missing packages: ${missing[*]} (install them with your package manager)" >&2
    exit 1
fi
if [ "$(id -u)" -eq 0 ]; then
    run=()
elif command -v sudo >/dev/null 2>&1; then
    run=(sudo)
else
    echo "Missing packages: ${missing[*]} (run as root, or install them first)" >&2
    exit 1
fi

echo "Installing ${missing[*]}" >&2
"${run[@]}" apt-get update -qq
DEBIAN_FRONTEND=noninteractive "${run[@]}" apt-get install -y -qq "${missing[@]}"
