#!/usr/bin/env bash
# Installs the packages for Windows in a new Wine that does not know the compiler, uses what they contain, and removes
# them. Programs are built with nothing except the unpacked ZIP. Takes the directory of the packages.
set -euo pipefail
packages=$(realpath "$1")
source=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
compiler=x86_64-w64-mingw32

work=$(mktemp -d)
trap '/usr/lib/wine/wineserver -k || true; rm -rf "$work"' EXIT
export HOME=$work WINEPREFIX=$work/wine WINEARCH=win64 WINEDEBUG=-all
export WINEDLLOVERRIDES='winedbg.exe=d;mscoree=d;mshtml=d;winemenubuilder.exe=d'
unset WINEPATH
cd "$work"

fail() {
  echo "check_windows_packages.sh: $*" >&2
  exit 1
}

# run COMMAND...: runs a command. Its output is shown only if it fails.
run() {
  timeout 300 "$@" >output 2>&1 || fail "$* failed: $(cat output)"
}

wine() {
  run /usr/lib/wine/wine64 "$@"
}

# expect TEXT: the last command has printed this.
expect() {
  grep -q -- "$1" output || fail "'$1' is not in this output: $(cat output)"
}

# Plays a session with the sample host in a folder, and reads it with qel-support.
use_programs() {
  local program
  for program in qel-sample-host qel-support; do
    wine "$1/$program.exe" --version
    expect "^$program [0-9]"
  done
  rm -rf data
  mkdir data
  echo '{"notify": "onApplicationStarted", "text": "Desktop"}' >script
  wine "$1/qel-sample-host.exe" --directory data --session script --no-sending
  wine "$1/qel-support.exe" show data --session last
  expect 'Started: Desktop'
}

# Runs a program that broadcasts one event. No server listens at its address, so it must keep the event.
use_client() {
  rm -rf data
  mkdir data
  wine "$1" data analytics.qel.example 127.0.0.1:1 authority.pem secret
  wine "$unpacked/bin/qel-support.exe" show data --session last
  expect 'Network: Borrowed'
}

check_zip() {
  unpacked=$work/$(basename "$packages"/*.zip .zip)
  cmake -E tar xf "$packages"/*.zip
  use_programs "$unpacked/bin"

  echo secret >secret
  run openssl req -x509 -newkey rsa:2048 -nodes -subj /CN=Authority -keyout key -out authority.pem
  run cmake -G Ninja -S "$source/samples/cpp" -B build -DCMAKE_SYSTEM_NAME=Windows \
    -DCMAKE_CXX_COMPILER=$compiler-g++-posix -DCMAKE_PREFIX_PATH="$unpacked"
  run cmake --build build
  cp build/consumer.exe "$unpacked/bin"
  use_client "$unpacked/bin/consumer.exe"
  rm "$unpacked/bin/consumer.exe"

  # A program in C needs one DLL. Its import library is made as other compilers make theirs.
  mkdir c
  cp "$unpacked/bin/QelC.dll" c
  run $compiler-dlltool --input-def "$unpacked/lib/QelC.def" --output-lib QelC.lib
  run $compiler-gcc -std=c99 -I "$unpacked/include/qel-analytics" "$source/samples/c/session.c" QelC.lib -o c/session.exe
  use_client c/session.exe
}

# expect_smaller BYTES FILE...: the files together are smaller.
expect_smaller() {
  local limit=$1 size
  size=$(cat "${@:2}" | wc -c)
  echo "$(basename -a "${@:2}" | xargs): $size bytes"
  [[ $size -lt $limit ]] || fail "more than $limit bytes"
}

# What Windows consists of, except temporary files and the own files of Windows Installer.
state() {
  /usr/lib/wine/wineserver -w # it writes the registry last
  (cd "$WINEPREFIX" && find drive_c -not -ipath '*/Temp/*' -not -path '*/windows/Installer*' | sort)
  grep -l QelAnalytics "$WINEPREFIX"/*.reg || true
}

# installer KIND /i|/x: installs or removes.
installer() {
  case $1$2 in
    exe/i) wine "$packages"/*.exe /S ;;
    exe/x) wine "$folder/uninstall.exe" /S ;;
    msi*) wine msiexec "$2" "$packages"/*.msi /qn ;;
  esac
}

# While a program runs, the installer by NSIS must change nothing.
refuse_while_in_use() {
  rm -rf data
  mkdir data
  echo '{"wait": 300}' >script
  timeout 300 /usr/lib/wine/wine64 "$folder/bin/qel-sample-host.exe" --directory data --session script >/dev/null 2>&1 &
  run timeout 60 sh -c 'until test -e data/Databases.lock; do sleep 0.1; done'
  timeout 300 /usr/lib/wine/wine64 "$packages"/*.exe /S && fail "a running program has been replaced"
  run diff -r --exclude uninstall.exe "$unpacked" "$folder"
  kill $!
  wait $! || true
}

# check_installer KIND: installs twice, as a repair does, and removes. Only a file of the user may remain.
check_installer() {
  state >before
  installer "$1" /i
  installer "$1" /i
  run diff -r --exclude uninstall.exe "$unpacked" "$folder"
  use_programs "$folder/bin"
  [[ $1 == msi ]] || refuse_while_in_use
  echo mine >"$folder/lib/mine"
  installer "$1" /x
  /usr/lib/wine/wineserver -w # the uninstaller ends before its work is done
  rm "$folder/lib/mine" || fail "the file of the user is gone"
  rmdir --parents --ignore-fail-on-non-empty "$folder/lib"
  state >after
  run diff before after
}

wine wineboot --init
folder=$(echo "$WINEPREFIX"/drive_c/users/*/AppData/Local)/Programs/QelAnalytics
check_zip
expect_smaller 6000000 "$unpacked/bin/QelC.dll"
expect_smaller 8000000 "$unpacked"/bin/Qel*.dll
check_installer exe
check_installer msi
