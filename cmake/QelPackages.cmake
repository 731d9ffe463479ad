# `cpack -G DEB` in the build directory makes Debian packages of the installed components.
set(CPACK_PACKAGE_VENDOR QEL)
set(CPACK_PACKAGE_CONTACT "QelAnalytics <analytics@qel.example>")
set(CPACK_COMPONENTS_ALL library development)
if(programs)
  list(APPEND CPACK_COMPONENTS_ALL tools)
endif()

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_STRIP_FILES ON)

set(libraryPackage libqelanalytics${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME ${libraryPackage})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
# The symbols alone would be content with an older libcurl.
set(CPACK_DEBIAN_LIBRARY_PACKAGE_DEPENDS "libcurl4 (>= 7.87)")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_RECOMMENDS ca-certificates)
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION
    "The library that a host program loads, and the host framework that it stands on.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libqelanalytics-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${libraryPackage} (= ${PROJECT_VERSION})")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
    "What programs are built with: headers, and the files by which CMake and pkg-config find the library.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME qel-analytics-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "${libraryPackage} (= ${PROJECT_VERSION})")
set(CPACK_COMPONENT_TOOLS_DESCRIPTION
    "The programs: qel-support, which reads a client's databases, a small analytics server, and a sample host.")

include(CPack)
