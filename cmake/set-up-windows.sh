#!/usr/bin/env bash
# Installs what the builds and tests for Windows need, in addition to set-up.sh: the compiler, Wine, the makers of
# installers, and the libraries in build/windows-libraries. Debian has these libraries only as source for Windows, so
# they are built here, once. APT verifies the sources with Debian's signed checksums.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

packages=(
  # compiler; tools with which the libraries are built
  g++-mingw-w64-x86-64-posix make perl tcl
  # Windows programs on Linux
  wine wine64
  # installers
  nsis wixl
)

cmake/set-up.sh
cmake/install-packages.sh "${packages[@]}"

prefix=$PWD/build/windows-libraries
work=$prefix/work
toolchain=$PWD/cmake/toolchains/mingw-w64.cmake
jobs=$(nproc)

# The Debian archives that this machine uses, with their sources. The second list is without security updates, for
# mirrors that do not have the newest source yet.
apt_options=(-o "Dir::Etc::SourceParts=-" -o "Dir::State::Lists=$work/lists" -o "Dir::Cache=$work"
  -o "Dir::Etc::SourceList=$work/sources.list" -o "APT::Sandbox::User=")

prepare_archives() {
  mkdir -p "$work/lists/partial"
  apt-get indextargets --format 'deb-src $(REPO_URI) $(RELEASE) $(COMPONENT)' \
    'Created-By: Packages' 'Origin: Debian' | sort -u >"$work/sources.list"
  grep -v security "$work/sources.list" >"$work/sources-release.list"
  apt-get "${apt_options[@]}" update --quiet
}

# Unpacks the Debian source of a package into $work/<package>, with Debian's patches.
fetch() {
  local package=$1 list
  rm -rf "${work:?}/$package" "$work/download"
  for list in sources sources-release; do
    mkdir -p "$work/download"
    cd "$work/download"
    if apt-get "${apt_options[@]}" -o "Dir::Etc::SourceList=$work/$list.list" source --download-only "$package"; then
      break
    fi
    cd "$work"
    rm -rf download
    if [[ $list == sources-release ]]; then
      return 1
    fi
    echo "The newest source of $package is not available; taking the one of the release"
    apt-get "${apt_options[@]}" -o "Dir::Etc::SourceList=$work/sources-release.list" update --quiet
  done
  dpkg-source --no-check --extract ./*.dsc "$work/$package"
  cd "$work"
  rm -rf download
}

# Builds a CMake project and installs it in the prefix.
build_cmake() {
  local source=$1
  shift
  cmake -G Ninja -S "$source" -B "$work/build" -DCMAKE_TOOLCHAIN_FILE="$toolchain" -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_INSTALL_PREFIX="$prefix" -DBUILD_SHARED_LIBS=OFF -DBUILD_TESTING=OFF "$@"
  cmake --build "$work/build" --parallel "$jobs"
  cmake --install "$work/build"
  rm -rf "$work/build"
}

# Header-only libraries: the files of the Debian packages, without the system's other headers.
install_headers() {
  local library
  mkdir -p "$prefix/include" "$prefix/share/cmake"
  for library in boost CLI kainjow nlohmann; do
    ln -sfn "/usr/include/$library" "$prefix/include/$library"
  done
  cp -r /usr/share/cmake/CLI11 /usr/share/cmake/nlohmann_json "$prefix/share/cmake"
}

install_fmt() {
  fetch fmtlib
  build_cmake "$work/fmtlib" -DFMT_DOC=OFF -DFMT_TEST=OFF
}

install_spdlog() {
  fetch spdlog
  # With wide file names; the narrow ones cannot name every file.
  build_cmake "$work/spdlog" -DSPDLOG_FMT_EXTERNAL=ON -DSPDLOG_BUILD_EXAMPLE=OFF -DSPDLOG_WCHAR_FILENAMES=ON
}

install_sqlite() {
  fetch sqlite3
  mkdir "$work/sqlite3/build"
  cd "$work/sqlite3/build"
  ../configure --disable-tcl --disable-readline --disable-shared
  make sqlite3.c
  x86_64-w64-mingw32-gcc-posix -O2 -DSQLITE_THREADSAFE=1 -c sqlite3.c
  x86_64-w64-mingw32-ar rcs "$prefix/lib/libsqlite3.a" sqlite3.o
  cp sqlite3.h "$prefix/include"
}

install_curl() {
  fetch curl
  # TLS by Schannel, with the certificates of Windows; no other protocol than HTTP.
  build_cmake "$work/curl" -DCURL_USE_SCHANNEL=ON -DENABLE_UNICODE=ON -DCURL_TARGET_WINDOWS_VERSION=0x0A00 \
    -DHTTP_ONLY=ON -DCURL_ZLIB=OFF -DUSE_LIBIDN2=OFF -DCURL_USE_LIBPSL=OFF -DCURL_USE_LIBSSH2=OFF \
    -DBUILD_CURL_EXE=OFF -DENABLE_MANUAL=OFF
}

install_utf8proc() {
  fetch utf8proc
  build_cmake "$work/utf8proc"
  # The file is for the shared library, whose functions a header declares in another way.
  sed -i 's/-DUTF8PROC_EXPORTS/-DUTF8PROC_STATIC/' "$prefix/lib/pkgconfig/libutf8proc.pc"
}

install_googletest() {
  build_cmake /usr/src/googletest
}

# For the HTTPS server of the tests.
install_openssl() {
  fetch openssl
  cd "$work/openssl"
  ./Configure mingw64 --cross-compile-prefix=x86_64-w64-mingw32- --prefix="$prefix" --libdir=lib \
    no-shared no-tests no-engine no-dso no-legacy no-cmp no-cms no-ts no-srp no-psk
  make -j"$jobs" build_generated
  make -j"$jobs" build_libs_nodep
  make install_dev
}

explain_failure() {
  local status=$?
  if [[ $status -ne 0 && -n ${log:-} ]]; then
    tail -n 30 "$log" >&2
    echo "set-up-windows.sh: failed; the log is $log" >&2
  fi
}
trap explain_failure EXIT

# Nothing of a run that failed is used.
rm -rf "$work"

# A stamp carries the checksum of the commands and of the toolchain, so that changed ones build the library again. A
# security update of Debian's source does not; delete build/windows-libraries to take it.
for library in headers fmt spdlog sqlite curl utf8proc googletest openssl; do
  checksum=$( (declare -f fetch build_cmake "install_$library" && cat "$toolchain") | sha256sum | cut -c1-16)
  stamp=$prefix/stamps/$library-$checksum
  if [[ -e $stamp ]]; then
    continue
  fi
  echo "Building for Windows: $library"
  mkdir -p "$work" "$prefix/lib" "$prefix/include" "$prefix/stamps"
  log=$work/$library.log
  if [[ ! -d $work/lists ]]; then
    prepare_archives >"$log" 2>&1
  fi
  ("install_$library") >>"$log" 2>&1
  touch "$stamp"
done
rm -rf "$work"
