# `cpack -G DEB` in the build directory makes a Debian package of each installed component.
set(CPACK_PACKAGE_VENDOR QEL)
set(CPACK_PACKAGE_CONTACT "QelAnalytics <analytics@qel.example>")
set(CPACK_COMPONENTS_ALL library development)
if(TARGET QelC)
  list(APPEND CPACK_COMPONENTS_ALL c)
endif()
if(programs)
  list(APPEND CPACK_COMPONENTS_ALL tools)
endif()
if(TARGET qel-collector)
  list(APPEND CPACK_COMPONENTS_ALL collector)
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
# dpkg-shlibdeps would accept an older libcurl, because it has the same symbols.
set(CPACK_DEBIAN_LIBRARY_PACKAGE_DEPENDS "libcurl4 (>= 7.87)")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_RECOMMENDS ca-certificates)
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION
    "The library that a host program loads, and the host framework that it uses.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libqelanalytics-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${libraryPackage} (= ${PROJECT_VERSION})")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
    "Headers, and the files by which CMake and pkg-config find the library.")

set(CPACK_DEBIAN_C_PACKAGE_NAME libqelanalytics-c)
set(CPACK_DEBIAN_C_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_C_PACKAGE_DEPENDS "${libraryPackage} (= ${PROJECT_VERSION})")
set(CPACK_COMPONENT_C_DESCRIPTION "The C interface of the library: a shared library and its header.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME qel-analytics-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "${libraryPackage} (= ${PROJECT_VERSION})")
set(CPACK_COMPONENT_TOOLS_DESCRIPTION
    "Programs: qel-support, which reads the databases of a client, and a sample host.")

set(CPACK_DEBIAN_COLLECTOR_PACKAGE_NAME qel-collector)
set(CPACK_DEBIAN_COLLECTOR_PACKAGE_SECTION net)
set(CPACK_DEBIAN_COLLECTOR_PACKAGE_DEPENDS "${libraryPackage} (= ${PROJECT_VERSION}), adduser")
set(CPACK_DEBIAN_COLLECTOR_PACKAGE_SUGGESTS "haproxy, sqlite3, whois")
set(CPACK_COMPONENT_COLLECTOR_DESCRIPTION
    "The analytics server: receives the packages of clients over HTTPS and stores them in an SQLite file.")
set(CPACK_DEBIAN_COLLECTOR_PACKAGE_CONTROL_EXTRA postinst prerm postrm)
list(TRANSFORM CPACK_DEBIAN_COLLECTOR_PACKAGE_CONTROL_EXTRA PREPEND ${PROJECT_SOURCE_DIR}/deploy/collector/)

include(CPack)
