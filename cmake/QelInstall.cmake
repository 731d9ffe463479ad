# Installs the libraries, headers and programs, and the files with which other projects find the libraries. Components:
# `library` (needed to run programs), `development` (needed to build them), `tools` and `collector`.

include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(includeDirectory ${CMAKE_INSTALL_INCLUDEDIR}/qel-analytics)
set(configDirectory ${CMAKE_INSTALL_LIBDIR}/cmake/QelAnalytics)
set(pkgConfigDirectory ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH toPrefix "/${pkgConfigDirectory}" "/")

# The user of a static library must find and link its dependencies. A shared library loads them itself.
get_target_property(libraryType QelAnalytics TYPE)
if(libraryType STREQUAL STATIC_LIBRARY)
  set(static ON)
else()
  set(static OFF)
endif()

# In linking order: each library comes before the libraries that it uses.
set(hostLibraries
    QelNotification
    QelBroadcaster
    QelIssueUi
    QelCore
    QelAssert
    QelHttp
    QelSql
    QelJson
    QelId
    QelDateTime
    QelPlatformWindows
    QelLog
    QelUtilities)

set(programs)
foreach(program qel-collector qel-sample-host qel-support)
  if(TARGET ${program})
    list(APPEND programs ${program})
  endif()
endforeach()

if(UNIX AND NOT APPLE)
  # Relative paths, so that the installed tree can be moved.
  file(RELATIVE_PATH fromPrograms "/${CMAKE_INSTALL_BINDIR}" "/${CMAKE_INSTALL_LIBDIR}")
  set_target_properties(QelAnalytics ${hostLibraries} PROPERTIES INSTALL_RPATH "$ORIGIN")
  if(programs)
    set_target_properties(${programs} PROPERTIES INSTALL_RPATH "$ORIGIN/${fromPrograms}")
  endif()
endif()

install(
  TARGETS QelAnalytics ${hostLibraries}
  EXPORT QelAnalyticsTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_COMPONENT development
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT library
  INCLUDES DESTINATION ${includeDirectory})
install(
  EXPORT QelAnalyticsTargets
  NAMESPACE Qel::
  DESTINATION ${configDirectory}
  COMPONENT development)

configure_package_config_file(cmake/QelAnalyticsConfig.cmake.in QelAnalyticsConfig.cmake
                              INSTALL_DESTINATION ${configDirectory})
if(PROJECT_VERSION_MAJOR EQUAL 0)
  set(compatibility SameMinorVersion) # before 1.0 a minor version may change the interface
else()
  set(compatibility SameMajorVersion)
endif()
write_basic_package_version_file(QelAnalyticsConfigVersion.cmake COMPATIBILITY ${compatibility})
install(
  FILES ${PROJECT_BINARY_DIR}/QelAnalyticsConfig.cmake ${PROJECT_BINARY_DIR}/QelAnalyticsConfigVersion.cmake
  DESTINATION ${configDirectory}
  COMPONENT development)

# The examples of the guides, and the notices.
set(documentationDirectory ${CMAKE_INSTALL_DATADIR}/doc/qel-analytics)
install(FILES THIRD-PARTY-NOTICES.md DESTINATION ${documentationDirectory} COMPONENT library)
install(
  DIRECTORY samples/c samples/cpp docs/snippets
  DESTINATION ${documentationDirectory}/examples
  COMPONENT development)

foreach(header IN LISTS QEL_PUBLIC_HEADERS)
  cmake_path(GET header PARENT_PATH folder)
  install(FILES ${header} DESTINATION ${includeDirectory}/${folder} COMPONENT development)
endforeach()
install(
  FILES ${PROJECT_BINARY_DIR}/Application/Log/Analytics/export/QelAnalyticsExport.h
  DESTINATION ${includeDirectory}
  COMPONENT development)

list(TRANSFORM hostLibraries PREPEND -l OUTPUT_VARIABLE linkHostLibraries)
list(JOIN linkHostLibraries " " linkHostLibraries)
set(staticRequires)
set(staticDefinition)
if(static)
  set(staticRequires "sqlite3 >= 3.38, libcurl >= 7.87, libcrypto >= 3, spdlog")
  set(staticDefinition -DQEL_ANALYTICS_STATIC_DEFINE)
endif()
foreach(name qel-analytics qel-host-framework)
  configure_file(cmake/${name}.pc.in ${name}.pc @ONLY)
  install(
    FILES ${PROJECT_BINARY_DIR}/${name}.pc
    DESTINATION ${pkgConfigDirectory}
    COMPONENT development)
endforeach()

if(TARGET QelC)
  if(UNIX AND NOT APPLE)
    set_target_properties(QelC PROPERTIES INSTALL_RPATH "$ORIGIN")
  endif()
  install(
    TARGETS QelC
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT c
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT c
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT c)
  install(FILES host/QelC/qel_analytics.h DESTINATION ${includeDirectory} COMPONENT c)
  configure_file(cmake/qel-analytics-c.pc.in qel-analytics-c.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/qel-analytics-c.pc DESTINATION ${pkgConfigDirectory} COMPONENT c)
endif()

foreach(program IN LISTS programs)
  set(component tools)
  if(program STREQUAL qel-collector)
    set(component collector)
  endif()
  install(TARGETS ${program} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT ${component})
  if(NOT WIN32)
    # A program's folder may contain its manual page and its completion for bash.
    file(GLOB manualPages CONFIGURE_DEPENDS tools/*/${program}.1)
    file(GLOB completions CONFIGURE_DEPENDS tools/*/${program}.bash)
    install(FILES ${manualPages} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT ${component})
    install(FILES ${completions} DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
            COMPONENT ${component})
  endif()
endforeach()
if(TARGET qel-collector)
  install(FILES deploy/collector/qel-collector.service DESTINATION lib/systemd/system COMPONENT collector)
  install(FILES deploy/collector/haproxy.cfg DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/qel-collector/examples
          COMPONENT collector)
  install(DIRECTORY deploy/clickhouse DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/qel-collector/examples
          COMPONENT collector)
endif()

if(MINGW AND libraryType STREQUAL SHARED_LIBRARY)
  # The compiler's run-time libraries, which Windows does not have.
  foreach(name libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll)
    execute_process(
      COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${name}
      OUTPUT_VARIABLE file
      OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    install(FILES ${file} DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT library)
  endforeach()
endif()

if(WIN32)
  # All that is installed, for package-windows.sh.
  add_custom_target(QelPackageContents DEPENDS QelAnalytics QelC ${hostLibraries} ${programs})
endif()

if(PROJECT_IS_TOP_LEVEL AND NOT WIN32 AND libraryType STREQUAL SHARED_LIBRARY)
  include(cmake/QelPackages.cmake)
endif()
