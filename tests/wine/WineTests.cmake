# Tests of the Windows build, run under Wine through the cross-compiling emulator.
# Wine takes seconds to start a program, so each program runs once with all of its tests.

add_test(NAME wine.conformance COMMAND conformance_tests)
set_tests_properties(wine.conformance PROPERTIES LABELS wine TIMEOUT 300)

add_executable(wine_smoke_tests ${CMAKE_CURRENT_LIST_DIR}/WineSmokeTest.cpp)
target_link_libraries(wine_smoke_tests PRIVATE enginelib test_support engine_options)
add_test(NAME wine.engine_smoke COMMAND wine_smoke_tests)
set_tests_properties(wine.engine_smoke PROPERTIES LABELS wine TIMEOUT 300)

# The host loads the real Engine.dll and validates a good and a bad script.
function(wine_path out path)
  string(REPLACE "/" "\\" windows "Z:${path}")
  set(${out} "${windows}" PARENT_SCOPE)
endfunction()
wine_path(good ${CMAKE_CURRENT_LIST_DIR}/data/good.isf)
wine_path(bad ${CMAKE_CURRENT_LIST_DIR}/data/bad.isf)
add_test(NAME wine.installcli_validate_good COMMAND installcli validate ${good})
add_test(NAME wine.installcli_validate_bad COMMAND installcli validate ${bad})
set_tests_properties(wine.installcli_validate_bad PROPERTIES WILL_FAIL TRUE)
set_tests_properties(wine.installcli_validate_good wine.installcli_validate_bad
                     PROPERTIES LABELS wine TIMEOUT 120)

find_program(MINGW_OBJDUMP NAMES x86_64-w64-mingw32-objdump REQUIRED)
add_test(NAME wine.dll_export_list
         COMMAND ${CMAKE_COMMAND} -DLIBRARY=$<TARGET_FILE:Engine> -DMODE=pe
                 -DOBJDUMP=${MINGW_OBJDUMP} -DEXPECTED=${PROJECT_SOURCE_DIR}/Main/Engine.def
                 -P ${CMAKE_CURRENT_LIST_DIR}/../support/CheckExports.cmake)
