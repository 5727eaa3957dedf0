# Fails when any C++ file of the project differs from what clang-format makes of it.
file(GLOB_RECURSE sources
    ${ROOT}/include/*.h ${ROOT}/src/*.h ${ROOT}/src/*.cpp ${ROOT}/tools/*.h ${ROOT}/tools/*.cpp
    ${ROOT}/station/*.h ${ROOT}/station/*.cpp ${ROOT}/python/*.cpp ${ROOT}/fuzz/*.h ${ROOT}/fuzz/*.cpp
    ${ROOT}/tests/*.h ${ROOT}/tests/*.cpp ${ROOT}/bench/*.h ${ROOT}/bench/*.cpp)
execute_process(COMMAND ${CLANG_FORMAT} --style=file --dry-run --Werror ${sources}
    RESULT_VARIABLE rc ERROR_VARIABLE err)
if(NOT rc EQUAL 0)
    message(FATAL_ERROR "not clang-formatted (run clang-format -i on these):\n${err}")
endif()
