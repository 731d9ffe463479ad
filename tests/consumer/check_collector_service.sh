#!/bin/sh
# Checks the unit, the manual page and the completion of the collector in a directory into which its package is
# unpacked. Needs systemd-analyze and mandoc for the first two; says which of them it could not check.
set -eu
root=$1

if command -v systemd-analyze >/dev/null; then
  install -D /bin/kill "$root/bin/kill" # the unit uses it, from another package
  problems=$(systemd-analyze verify --man=no --recursive-errors=no --root="$root" qel-collector.service 2>&1) ||
    { echo "$problems" && exit 1; }
  [ -z "$problems" ] || { echo "$problems" && exit 1; }
  systemd-analyze security --offline=true --threshold=20 --root="$root" qel-collector.service >/dev/null
else
  echo "The unit is not checked, because there is no systemd-analyze (Debian: systemd)."
fi

if command -v mandoc >/dev/null; then
  mandoc -T lint -W warning "$root/usr/share/man/man1/qel-collector.1"
else
  echo "The manual page is not checked, because there is no mandoc."
fi

# Every option is completed and has a description in the manual page.
program=$root/usr/bin/qel-collector
for command in "" erase import; do
  # shellcheck disable=SC2086
  options=$("$program" $command --help | grep -o -e '--[a-z][a-z-]*' | sort -u)
  for option in $options; do
    grep -q -e "$option\b" "$root/usr/share/bash-completion/completions/qel-collector.bash" ||
      { echo "$option is not completed" && exit 1; }
    grep -q -e "Fl -${option#--}\b" "$root/usr/share/man/man1/qel-collector.1" ||
      { echo "$option is not in the manual page" && exit 1; }
  done
done
