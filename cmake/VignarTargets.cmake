# One set of compile options for everything that is ours.
set(fuzz_sanitizers -fsanitize=address,undefined,fuzzer-no-link)
add_library(vignar_options INTERFACE)
target_compile_definitions(vignar_options INTERFACE
    QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_FOREACH QT_NO_KEYWORDS
    QT_DISABLE_DEPRECATED_BEFORE=0x060400)
target_compile_options(vignar_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow
    -Wnon-virtual-dtor -Woverloaded-virtual -Wno-missing-field-initializers
    $<$<BOOL:${VIGNAR_WARNINGS_AS_ERRORS}>:-Werror>
    $<$<BOOL:${VIGNAR_SANITIZE}>:-fsanitize=address,undefined -fno-omit-frame-pointer
        -fno-sanitize-recover=undefined>
    $<$<BOOL:${VIGNAR_FUZZ}>:${fuzz_sanitizers} -fno-sanitize-recover=undefined>)
target_link_options(vignar_options INTERFACE
    $<$<BOOL:${VIGNAR_SANITIZE}>:-fsanitize=address,undefined>
    $<$<BOOL:${VIGNAR_FUZZ}>:${fuzz_sanitizers}>)

# vignar_library(<folder> SOURCES <file>… LINKS <target>…)
# The static library of one folder of src/. LINKS is the architecture: a folder
# may include only from folders it links.
function(vignar_library folder)
    cmake_parse_arguments(ARG "" "" "SOURCES;LINKS" ${ARGN})
    add_library(vignar_${folder} STATIC ${ARG_SOURCES})
    target_include_directories(vignar_${folder} PUBLIC ${PROJECT_SOURCE_DIR}/src)
    target_link_libraries(vignar_${folder} PUBLIC ${ARG_LINKS} PRIVATE vignar_options)
endfunction()

# vignar_test(<name> SOURCES <file>… LINKS <target>… [TIMEOUT <seconds>] [ON_SCREEN])
# One Qt Test program, run offscreen with a home, configuration, state and
# temporary folder of its own (tests/support/run-isolated.sh); ON_SCREEN: on a real screen,
# where one can be had (tests/support/with-screen.sh).
function(vignar_test name)
    cmake_parse_arguments(ARG "ON_SCREEN" "TIMEOUT" "SOURCES;LINKS" ${ARGN})
    if(NOT ARG_TIMEOUT)
        set(ARG_TIMEOUT 120)
    endif()
    add_executable(${name} ${ARG_SOURCES})
    target_link_libraries(${name} PRIVATE ${ARG_LINKS} Qt6::Test vignar_options)
    target_compile_definitions(${name} PRIVATE
        VIGNAR_TEST_DATA="${CMAKE_CURRENT_SOURCE_DIR}/data")
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
    add_test(NAME ${name}
        COMMAND ${PROJECT_SOURCE_DIR}/tests/support/run-isolated.sh
            $<$<BOOL:${ARG_ON_SCREEN}>:${PROJECT_SOURCE_DIR}/tests/support/with-screen.sh>
            $<TARGET_FILE:${name}>
        COMMAND_EXPAND_LISTS)
    set_tests_properties(${name} PROPERTIES TIMEOUT ${ARG_TIMEOUT} SKIP_RETURN_CODE 77
        ENVIRONMENT "QT_QPA_PLATFORM=offscreen;QT_FORCE_STDERR_LOGGING=1")
endfunction()
