# The consumer is a separate project. These tests configure, build and run it in each way in which a program can use the
# library. The steps of one way are fixtures of each other.
set(consumerSource ${PROJECT_SOURCE_DIR}/samples/cpp)
set(consumerTests ${CMAKE_CURRENT_LIST_DIR})
set(consumerBuild ${CMAKE_CURRENT_BINARY_DIR}/consumer)

# qel_add_consumer_test(<name> OPTIONS <option>... SAYS <text>): a test that builds the consumer with these CMake
# options and runs it. The consumer must log the text.
function(qel_add_consumer_test name)
  cmake_parse_arguments(test "" "SAYS" "OPTIONS" ${ARGN})
  add_test(
    NAME Adoption.${name}
    COMMAND
      ${CMAKE_CTEST_COMMAND} --build-and-test ${consumerSource} ${consumerBuild}/${name} --build-noclean
      --build-generator ${CMAKE_GENERATOR} --build-options -DCMAKE_CXX_COMPILER=${CMAKE_CXX_COMPILER} ${test_OPTIONS}
      --test-command ${consumerTests}/check_consumer.sh ${consumerBuild}/${name}/consumer $<TARGET_FILE:qel-collector>
      ${QEL_ANALYTICS_SERVER_HOST} ${test_SAYS} crash)
endfunction()

# qel_add_pkg_config_test(<name> <kind> <package> <compilation> SAYS <text> [<crash>]): a test that compiles a program with
# the installed package of this kind and runs it, like the consumer.
function(qel_add_pkg_config_test name kind package compilation)
  cmake_parse_arguments(test "" "SAYS" "" ${ARGN})
  set(libraries ${consumerBuild}/installed-${kind}/${CMAKE_INSTALL_LIBDIR})
  set(program ${consumerBuild}/${name})
  file(CONFIGURE OUTPUT ${program}.sh CONTENT [[
export PKG_CONFIG_PATH="@libraries@/pkgconfig"
@compilation@ -o "@program@" $(pkg-config --cflags --libs @package@) -Wl,-rpath,"@libraries@"
"@consumerTests@/check_consumer.sh" "@program@" "$@"
]] @ONLY)
  add_test(NAME Adoption.${name} COMMAND sh -e ${program}.sh $<TARGET_FILE:qel-collector> ${QEL_ANALYTICS_SERVER_HOST}
                                         ${test_SAYS} ${test_UNPARSED_ARGUMENTS})
  set_tests_properties(Adoption.${name} PROPERTIES FIXTURES_REQUIRED Installed${kind})
endfunction()

# qel_add_package_tests(<kind> <build directory> SAYS <text>): tests that install the build and use the installed
# library with find_package and with pkg-config.
function(qel_add_package_tests kind build)
  set(prefix ${consumerBuild}/installed-${kind})
  add_test(NAME Adoption.Install${kind}
           COMMAND sh -c "rm -rf '${prefix}' && '${CMAKE_COMMAND}' --install '${build}' --prefix '${prefix}'")
  qel_add_consumer_test(FindPackage${kind} OPTIONS -DCMAKE_PREFIX_PATH=${prefix} ${ARGN})
  qel_add_pkg_config_test(PkgConfig${kind} ${kind} qel-analytics
                          "'${CMAKE_CXX_COMPILER}' -std=c++20 '${consumerSource}/main.cpp'" crash ${ARGN})
  set_tests_properties(Adoption.Install${kind} PROPERTIES FIXTURES_SETUP Installed${kind})
  set_tests_properties(Adoption.FindPackage${kind} PROPERTIES FIXTURES_REQUIRED Installed${kind})
endfunction()

qel_add_package_tests(Shared ${PROJECT_BINARY_DIR} SAYS "received, level 3")

if(TARGET QelC)
  qel_add_pkg_config_test(PkgConfigC Shared qel-analytics-c
                          "'${CMAKE_C_COMPILER}' '${PROJECT_SOURCE_DIR}/samples/c/session.c'" SAYS "sending CIP data has failed")
endif()

# FetchContent with the local sources, without network: static, and with the consumer's own log.
qel_add_consumer_test(
  FetchContent
  OPTIONS -DCONSUMER_FETCHES=ON -DFETCHCONTENT_SOURCE_DIR_QELANALYTICS=${PROJECT_SOURCE_DIR} -DBUILD_SHARED_LIBS=OFF
          -DQEL_INSTALL=ON -DQEL_ANALYTICS_SERVER_HOST=${QEL_ANALYTICS_SERVER_HOST} -DCMAKE_BUILD_TYPE=Debug
          -DCMAKE_CXX_FLAGS_DEBUG=-O0
  SAYS "own log")
set_tests_properties(Adoption.FetchContent PROPERTIES FIXTURES_SETUP Fetched PROCESSORS 2 TIMEOUT 900)

# Shared, and with the consumer's own HTTPS client too, whose errors do not name the address.
qel_add_consumer_test(
  OwnHttps
  OPTIONS -DCONSUMER_FETCHES=ON -DCONSUMER_HAS_HTTPS=ON -DFETCHCONTENT_SOURCE_DIR_QELANALYTICS=${PROJECT_SOURCE_DIR}
          -DBUILD_SHARED_LIBS=ON -DQEL_ANALYTICS_SERVER_HOST=${QEL_ANALYTICS_SERVER_HOST} -DCMAKE_BUILD_TYPE=Debug
          -DCMAKE_CXX_FLAGS_DEBUG=-O0
  SAYS "own log.*posting to [^ ]* failed")
set_tests_properties(Adoption.OwnHttps PROPERTIES PROCESSORS 2 TIMEOUT 900)
qel_add_package_tests(Static ${consumerBuild}/FetchContent SAYS "own log")
set_tests_properties(Adoption.InstallStatic PROPERTIES FIXTURES_REQUIRED Fetched)

find_program(QEL_DPKG_DEB dpkg-deb)
mark_as_advanced(QEL_DPKG_DEB)
if(QEL_DPKG_DEB)
  add_test(NAME Adoption.DebianPackages
           COMMAND ${consumerTests}/check_packages.sh ${CMAKE_CPACK_COMMAND} ${PROJECT_BINARY_DIR}
                   ${consumerBuild}/debian)
endif()
