#!/bin/sh
# Makes the Debian packages and checks their names, what they depend on, and that their programs run from an empty
# directory into which they are unpacked. Takes cpack, the build directory and a directory for the packages.
set -eu
cpack=$1 build=$2 work=$3 tests=$(cd "$(dirname "$0")" && pwd)
rm -rf "$work"
"$cpack" --config "$build/CPackConfig.cmake" -G DEB -B "$work/packages" >/dev/null

# expect_dependencies PACKAGE LIBRARY...: the file of a package that depends on these.
expect_dependencies() {
  depends=", $(dpkg-deb --field "$1" Depends)"
  dpkg-deb --extract "$1" "$work/root"
  rm "$1"
  shift
  for library; do
    case $depends in
      *", $library"*) ;;
      *) echo "$library is not among the dependencies$depends" && exit 1 ;;
    esac
  done
}
cd "$work/packages"
expect_dependencies libqelanalytics[0-9]_*.deb libc6 libcurl4 libspdlog libsqlite3-0 libssl3 libstdc++6
expect_dependencies libqelanalytics-dev_*.deb libqelanalytics
expect_dependencies libqelanalytics-c_*.deb libqelanalytics libstdc++6
expect_dependencies qel-analytics-tools_*.deb libqelanalytics libsqlite3-0 libutf8proc
dpkg-deb --control qel-collector_*.deb "$work/scripts"
expect_dependencies qel-collector_*.deb adduser libcrypt1 libcurl4 libqelanalytics libsqlite3-0 libssl3 libutf8proc
if ls *.deb 2>/dev/null; then
  echo "is no package that is expected" && exit 1
fi

for script in postinst prerm postrm; do
  sh -n "$work/scripts/$script"
done
for file in lib/systemd/system/qel-collector.service share/man/man1/qel-collector.1 \
  share/bash-completion/completions/qel-collector.bash share/doc/qel-collector/examples/haproxy.cfg \
  share/doc/qel-collector/examples/clickhouse/single.sql \
  share/doc/qel-analytics/THIRD-PARTY-NOTICES.md share/doc/qel-analytics/examples/cpp/main.cpp; do
  [ -f "$work/root/usr/$file" ]
done
"$tests/check_collector_service.sh" "$work/root"

for program in "$work"/root/usr/bin/*; do
  "$program" --version
  if ldd "$program" | grep libQel | grep -v "$work/root"; then
    echo "$program loads a library from elsewhere" && exit 1
  fi
done
