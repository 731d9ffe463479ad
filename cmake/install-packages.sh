#!/usr/bin/env bash
# Installs those of the named Debian packages that are missing. For Debian 12. If none is missing, the script changes
# nothing and needs neither a network nor root privileges.
set -euo pipefail

if ! command -v dpkg-query >/dev/null; then
  echo "install-packages.sh: this is not a Debian system; install these Debian packages or their equivalents: $*" >&2
  exit 1
fi

missing=()
for package in "$@"; do
  # dpkg-query expands the format, not the shell.
  # shellcheck disable=SC2016
  state=$(dpkg-query --show --showformat='${db:Status-Status}' "$package" 2>/dev/null || true)
  if [[ "$state" != installed ]]; then
    missing+=("$package")
  fi
done

if [[ ${#missing[@]} -eq 0 ]]; then
  exit 0
fi

as_root=()
if [[ $EUID -ne 0 ]]; then
  as_root=(sudo)
fi

echo "Installing: ${missing[*]}"
"${as_root[@]}" apt-get update --quiet
"${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
  apt-get install --quiet --yes --no-install-recommends "${missing[@]}"
