# The consumer is a project of its own: these tests configure, build and run it in the ways in which a program may come
# by the library.
find_package(Python3 REQUIRED COMPONENTS Interpreter)

set(consumerSource ${CMAKE_CURRENT_LIST_DIR})
set(consumerBuild ${CMAKE_CURRENT_BINARY_DIR}/consumer)
set(prefix ${consumerBuild}/installed)

add_test(NAME Adoption.Install COMMAND Python3::Interpreter ${consumerSource}/check_install.py ${CMAKE_COMMAND}
                                       ${PROJECT_BINARY_DIR} ${prefix})
set_tests_properties(Adoption.Install PROPERTIES FIXTURES_SETUP QelInstalled)

# qel_add_consumer_test(<name> <collector> OPTIONS <option>... [SAYS <text>]): a test that builds the consumer with these
# options of CMake's.
function(qel_add_consumer_test name collector)
  cmake_parse_arguments(test "" "SAYS" "OPTIONS" ${ARGN})
  add_test(
    NAME Adoption.${name}
    COMMAND
      ${CMAKE_CTEST_COMMAND} --build-and-test ${consumerSource} ${consumerBuild}/${name} --build-noclean
      --build-generator ${CMAKE_GENERATOR} --build-options -DCMAKE_CXX_COMPILER=${CMAKE_CXX_COMPILER} ${test_OPTIONS}
      --test-command ${Python3_EXECUTABLE} ${consumerSource}/check_consumer.py ${consumerBuild}/${name}/consumer
      ${collector} ${QEL_ANALYTICS_SERVER_HOST} ${test_SAYS})
endfunction()

qel_add_consumer_test(FindPackage ${prefix}/bin/qel-collector OPTIONS -DCMAKE_PREFIX_PATH=${prefix})
qel_add_consumer_test(
  FetchContentWithOwnLog $<TARGET_FILE:qel-collector>
  OPTIONS -DCONSUMER_FETCHES=ON -DFETCHCONTENT_SOURCE_DIR_QELANALYTICS=${PROJECT_SOURCE_DIR}
          -DBUILD_SHARED_LIBS=OFF -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS_DEBUG=-O0
          -DQEL_ANALYTICS_SERVER_HOST=${QEL_ANALYTICS_SERVER_HOST}
  SAYS "own log")

file(CONFIGURE OUTPUT consumer/compile.sh CONTENT [[
export PKG_CONFIG_PATH=@prefix@/@CMAKE_INSTALL_LIBDIR@/pkgconfig
"@CMAKE_CXX_COMPILER@" -std=c++20 "@consumerSource@/main.cpp" -o "@consumerBuild@/with-pkg-config" \
  $(pkg-config --cflags --libs qel-analytics) -Wl,-rpath,"@prefix@/@CMAKE_INSTALL_LIBDIR@"
]] @ONLY)
add_test(NAME Adoption.PkgConfigCompiles COMMAND sh -e ${consumerBuild}/compile.sh)
add_test(NAME Adoption.PkgConfig COMMAND Python3::Interpreter ${consumerSource}/check_consumer.py
                                         ${consumerBuild}/with-pkg-config ${prefix}/bin/qel-collector
                                         ${QEL_ANALYTICS_SERVER_HOST})
set_tests_properties(Adoption.PkgConfigCompiles PROPERTIES FIXTURES_SETUP QelCompiledWithPkgConfig)
set_tests_properties(Adoption.PkgConfig PROPERTIES FIXTURES_REQUIRED QelCompiledWithPkgConfig)
set_tests_properties(Adoption.FindPackage Adoption.PkgConfigCompiles PROPERTIES FIXTURES_REQUIRED QelInstalled)

set_tests_properties(Adoption.FetchContentWithOwnLog PROPERTIES PROCESSORS 2 TIMEOUT 900)
