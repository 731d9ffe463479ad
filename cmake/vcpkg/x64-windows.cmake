# vcpkg's triplet x64-windows, with wide file names in spdlog. Narrow ones cannot name every file.
set(VCPKG_TARGET_ARCHITECTURE x64)
set(VCPKG_CRT_LINKAGE dynamic)
set(VCPKG_LIBRARY_LINKAGE dynamic)
set(SPDLOG_WCHAR_FILENAMES ON)
