# The tests of the programs run on Linux. Here they run the Windows programs through Wine. They need the test programs of
# a build for Linux.
set(QEL_NATIVE_BUILD ${PROJECT_SOURCE_DIR}/build/release
    CACHE PATH "Build for Linux, whose tests run the Windows programs")

set(wrappers ${PROJECT_BINARY_DIR}/by-wine)
foreach(program qel-sample-host qel-support)
  file(CONFIGURE OUTPUT ${wrappers}/${program} CONTENT [[
#!/bin/sh
exec "@PROJECT_SOURCE_DIR@/cmake/run-by-wine" "@CMAKE_RUNTIME_OUTPUT_DIRECTORY@/@program@.exe" "$@"
]] @ONLY)
  file(CHMOD ${wrappers}/${program} PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE)
endforeach()

foreach(target QelSampleHostTest QelSupportTest QelProgramFaultsTest)
  add_executable(${target} IMPORTED)
  set_target_properties(${target} PROPERTIES IMPORTED_LOCATION ${QEL_NATIVE_BUILD}/bin/${target}
                                             CROSSCOMPILING_EMULATOR "")
  gtest_discover_tests(
    ${target}
    TEST_FILTER "SessionTest.*:ReadingTest.*:WritingTest.*:ProgramFaultsTest.*${withoutThese}"
    TEST_PREFIX ByWine.
    DISCOVERY_MODE PRE_TEST
    PROPERTIES TIMEOUT 180 ENVIRONMENT QEL_WINDOWS_PROGRAMS=${wrappers})
endforeach()

add_test(NAME Resources
         COMMAND ${CMAKE_CURRENT_LIST_DIR}/check_resources.sh ${PROJECT_VERSION} $<TARGET_FILE:QelAnalytics>
                 $<TARGET_FILE:QelSql> $<TARGET_FILE:QelC> $<TARGET_FILE:qel-sample-host> $<TARGET_FILE:qel-support>)
