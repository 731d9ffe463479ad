# Settings that all targets of this repository share.

if(PROJECT_IS_TOP_LEVEL)
  set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")
  set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/lib")
endif()

find_package(Threads REQUIRED)
include(${CMAKE_CURRENT_LIST_DIR}/QelResources.cmake)

# The system in the names of sources that differ by system, such as SystemError.windows.cpp.
if(WIN32)
  set(QEL_SYSTEM windows)
else()
  set(QEL_SYSTEM posix)
endif()

if(MINGW)
  set(CMAKE_SHARED_LIBRARY_PREFIX "") # DLLs have the names that other compilers would give them
endif()

# Warnings and sanitizers, only for the sources of this repository.
add_library(QelBuildSettings INTERFACE)
if(MSVC)
  # 4251, 4275: a class that is exported from a DLL has members or a base from the standard library. Program and DLL must
  # use the same compiler and run-time library anyway. No warnings about headers in angle brackets.
  target_compile_options(QelBuildSettings INTERFACE /W4 /utf-8 /EHsc /wd4251 /wd4275 /external:anglebrackets
                                                    /external:W0)
  target_compile_definitions(QelBuildSettings INTERFACE _CRT_SECURE_NO_WARNINGS) # standard functions, such as std::getenv
else()
  target_compile_options(QelBuildSettings INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
endif()
if(WIN32)
  # Windows 10 or newer; wide texts; windows.h without macros that break other headers.
  target_compile_definitions(QelBuildSettings INTERFACE _WIN32_WINNT=0x0A00 UNICODE _UNICODE NOMINMAX
                                                        WIN32_LEAN_AND_MEAN)
endif()
if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
  # Checks the annotations in host/QelUtilities/Mutex.h: members are used only while their lock is held.
  target_compile_options(QelBuildSettings INTERFACE -Wthread-safety)
endif()
if(PROJECT_IS_TOP_LEVEL AND NOT MSVC)
  # Not in an embedding project, whose build must not break because a newer compiler has new warnings. The warnings of
  # Microsoft's compiler are not known yet.
  target_compile_options(QelBuildSettings INTERFACE -Werror)
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # A false warning about concatenated strings: https://gcc.gnu.org/bugzilla/show_bug.cgi?id=105651
  target_compile_options(QelBuildSettings INTERFACE -Wno-restrict)
endif()
if(QEL_SANITIZE)
  target_compile_options(QelBuildSettings INTERFACE -fsanitize=${QEL_SANITIZE}
                                                    -fno-sanitize-recover=all)
  target_link_options(QelBuildSettings INTERFACE -fsanitize=${QEL_SANITIZE})
endif()

# qel_configure_target(<name>): applies the settings of every library and program.
function(qel_configure_target target)
  target_compile_features(${target} PUBLIC cxx_std_20)
  set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF)
  target_link_libraries(${target} PRIVATE $<BUILD_INTERFACE:QelBuildSettings>)
endfunction()

# qel_add_library(<name> <source>...): defines a library and its Qel:: alias. All symbols are visible, except in
# QelAnalytics, which hides its internal symbols. Include paths start at the repository's root.
function(qel_add_library target)
  add_library(${target} ${ARGN})
  add_library(Qel::${target} ALIAS ${target})
  qel_configure_target(${target})
  target_include_directories(${target} PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>)
  set_target_properties(
    ${target} PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}
                         WINDOWS_EXPORT_ALL_SYMBOLS ON POSITION_INDEPENDENT_CODE ON)
  if(MINGW)
    # Otherwise the DLL would also export the symbols of the static libraries that it contains, such as SQLite.
    target_link_options(${target} PRIVATE LINKER:--exclude-libs,ALL)
  endif()
  qel_add_resources(${target} "${PROJECT_DESCRIPTION}")
endfunction()

# qel_keep_loaded(<name>): keeps a shared library loaded until the process ends, because its threads or exit handlers may
# still run when a plug-in that loaded it is unloaded. On Windows, utilities::keepLoaded does this.
function(qel_keep_loaded target)
  get_target_property(type ${target} TYPE)
  if(UNIX AND NOT APPLE AND NOT type STREQUAL STATIC_LIBRARY)
    target_link_options(${target} PRIVATE LINKER:-z,nodelete)
  endif()
endfunction()
