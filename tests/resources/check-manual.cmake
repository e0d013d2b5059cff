# cmake -D PROGRAM=<vignar-cli> -D MANUAL=<its page> -P check-manual.cmake
# The manual page names the options that the program's help names, and no others.
cmake_minimum_required(VERSION 3.25)

execute_process(COMMAND ${PROGRAM} --help OUTPUT_VARIABLE help COMMAND_ERROR_IS_FATAL ANY)
file(READ ${MANUAL} manual)
string(REPLACE "\\-" "-" manual "${manual}")
set(option "--[a-z]+")
string(REGEX MATCHALL "${option}" offered "${help}")
string(REGEX MATCHALL "${option}" described "${manual}")
list(REMOVE_DUPLICATES offered)
list(REMOVE_DUPLICATES described)
list(SORT offered)
list(SORT described)
if(NOT offered OR NOT offered STREQUAL described)
    message(FATAL_ERROR "offered: ${offered}\ndescribed: ${described}")
endif()
