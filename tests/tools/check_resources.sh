#!/bin/sh
# Checks that Windows files carry their names and this version, and the programs their settings:
# check_resources.sh VERSION FILE...
set -eu
version=$1
shift
complain() {
  echo "$1"
  status=1
}
status=0
for file; do
  for text in "$(basename "$file")" "$version"; do
    strings --encoding=l "$file" | grep -qx "$text" || complain "$file: no resource has the text $text"
  done
  case $file in *.exe)
    for setting in longPathAware activeCodePage asInvoker; do
      grep -q "$setting" "$file" || complain "$file: the manifest lacks $setting"
    done
    ;;
  esac
done
exit $status
