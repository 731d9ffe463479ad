#!/usr/bin/env bash
# Builds the packages for Windows in build/windows-packages: a ZIP, and installers by NSIS and as MSI. They contain the
# same files: DLLs, import libraries, headers and the CMake package of the preset `windows`; programs and C interface of
# the preset `windows-static`, which need nothing except Windows.
#   package-windows.sh          does everything
#   package-windows.sh stage    builds, and collects the files in a folder
#   package-windows.sh pack     makes the packages from this folder
# The files are signed after `stage`, the installers after `pack`. `pack` passes further arguments to makensis.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

output=$PWD/build/windows-packages
toolchain=x86_64-w64-mingw32

read_version() {
  version=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' build/windows/CMakeCache.txt)
  name=QelAnalytics-$version-windows-x86_64
  staged=$output/$name
}

build() {
  local preset
  for preset in windows windows-static; do
    cmake --preset "$preset"
    cmake --build --preset "$preset" --target QelPackageContents
  done
}

# install_component PRESET COMPONENT...
install_components() {
  local preset=$1 component
  shift
  for component; do
    cmake --install "build/$preset" --prefix "$staged" --component "$component" --strip
  done
}

# Microsoft's and other tools make import libraries from .def files. An import library of MinGW has a symbol of type T
# for each exported function, and only the symbol __imp_<name> for exported data.
write_def_file() {
  local library=$1 dll=$2
  {
    echo "LIBRARY $dll"
    echo EXPORTS
    "$toolchain-nm" "$library" | awk '
      $2 == "T" { function_[$3] = 1 }
      $2 == "I" && sub(/^__imp_/, "", $3) { exported[$3] = 1 }
      END { for (name in exported) print "    " name (name in function_ ? "" : " DATA") }' | sort
  } >"$staged/lib/${dll%.dll}.def"
}

# The licences of the run-time libraries, and of the libraries in the DLLs and programs. Boost and kainjow-mustache
# require none in binary files.
copy_licences() {
  local package
  mkdir -p "$staged/licences"
  for package in gcc-mingw-w64-x86-64-posix-runtime mingw-w64-x86-64-dev libcli11-dev libcurl4-openssl-dev libfmt-dev \
    libspdlog-dev libsqlite3-dev libutf8proc-dev nlohmann-json3-dev; do
    cp "/usr/share/doc/$package/copyright" "$staged/licences/$package.txt"
  done
}

stage() {
  build
  read_version
  rm -rf "$output"
  install_components windows library development
  install_components windows-static tools c
  "$toolchain-strip" --strip-unneeded "$staged"/bin/*.dll
  local library dll
  for library in "$staged"/lib/*.dll.a; do
    dll=$("$toolchain-dlltool" --identify "$library")
    write_def_file "$library" "$dll"
  done
  copy_licences
}

pack() {
  read_version
  local sources=$PWD/cmake/windows
  cd "$output"
  rm -f -- *.{zip,exe,msi}
  cmake -E tar cf "$name.zip" --format=zip "$name"
  # Relative names, because wixl takes no others.
  "$sources/list_files.py" "$name" files.nsh files.wxs
  makensis -V2 -WX -NOCD "-DVERSION=$version" "-DOUTPUT=$name.exe" "$@" "$sources/installer.nsi"
  wixl --arch x64 -D "Version=$version" -o "$name.msi" "$sources/installer.wxs" files.wxs
  rm files.nsh files.wxs
  ls -l
}

case ${1:-all} in
  all) stage; pack ;;
  stage) stage ;;
  pack) pack "${@:2}" ;;
  *)
    echo "usage: package-windows.sh [stage | pack [NSIS-OPTION...]]" >&2
    exit 2
    ;;
esac
