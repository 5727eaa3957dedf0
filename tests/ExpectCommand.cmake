# Runs COMMAND ("|"-separated) in WORKDIR and checks its exit status (STATUS), that its
# output (stdout and stderr together) matches MATCH and does not match NOMATCH, that every
# file of FILES ("|"-separated, relative to WORKDIR) exists and is not empty, and with
# STRICT_JSON that stdout and every file of JSON_FILES parse as strict JSON (python3's
# json module refuses NaN and Infinity there), and that JSON_CHECK, a Python expression on the
# document `d` read from stdout, holds.
string(REPLACE "|" ";" command "${COMMAND}")
file(MAKE_DIRECTORY "${WORKDIR}")
execute_process(COMMAND ${command} WORKING_DIRECTORY "${WORKDIR}"
    RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
set(all "${out}${err}")
if(NOT "${rc}" STREQUAL "${STATUS}")
    message(FATAL_ERROR "exit status ${rc}, expected ${STATUS}\n${all}")
endif()
if(DEFINED MATCH AND NOT "${MATCH}" STREQUAL "" AND NOT all MATCHES "${MATCH}")
    message(FATAL_ERROR "output does not match '${MATCH}':\n${all}")
endif()
if(DEFINED NOMATCH AND NOT "${NOMATCH}" STREQUAL "" AND all MATCHES "${NOMATCH}")
    message(FATAL_ERROR "output matches '${NOMATCH}', which it must not:\n${all}")
endif()
if(DEFINED FILES AND NOT "${FILES}" STREQUAL "")
    string(REPLACE "|" ";" files "${FILES}")
    foreach(f IN LISTS files)
        if(NOT EXISTS "${WORKDIR}/${f}")
            message(FATAL_ERROR "${f} was not written")
        endif()
        file(SIZE "${WORKDIR}/${f}" size)
        if(size EQUAL 0)
            message(FATAL_ERROR "${f} is empty")
        endif()
    endforeach()
endif()
function(expect_strict_json path)
    execute_process(COMMAND python3 -c
            "import json,sys; json.load(open(sys.argv[1]), parse_constant=lambda c: sys.exit('bare ' + c))"
            "${path}"
        RESULT_VARIABLE json_rc ERROR_VARIABLE json_err)
    if(NOT json_rc EQUAL 0)
        message(FATAL_ERROR "${path} is not strict JSON: ${json_err}")
    endif()
    execute_process(COMMAND python3 -m json.tool "${path}" RESULT_VARIABLE tool_rc
        OUTPUT_QUIET ERROR_VARIABLE tool_err)
    if(NOT tool_rc EQUAL 0)
        message(FATAL_ERROR "python3 -m json.tool refuses ${path}: ${tool_err}")
    endif()
endfunction()
if(STRICT_JSON)
    string(MD5 tag "${COMMAND}")
    set(stdout_file "${WORKDIR}/stdout-${tag}.json")
    file(WRITE "${stdout_file}" "${out}")
    expect_strict_json("${stdout_file}")
    if(DEFINED JSON_CHECK AND NOT "${JSON_CHECK}" STREQUAL "")
        execute_process(COMMAND python3 -c
                "import json,sys; d = json.load(open(sys.argv[1])); sys.exit(0 if (${JSON_CHECK}) else 'does not hold: ' + sys.argv[2] + '\\n' + json.dumps(d)[:2000])"
                "${stdout_file}" "${JSON_CHECK}"
            RESULT_VARIABLE check_rc ERROR_VARIABLE check_err)
        if(NOT check_rc EQUAL 0)
            message(FATAL_ERROR "stdout's document fails the check: ${check_err}")
        endif()
    endif()
    file(REMOVE "${stdout_file}")
endif()
if(DEFINED JSON_FILES AND NOT "${JSON_FILES}" STREQUAL "")
    string(REPLACE "|" ";" json_files "${JSON_FILES}")
    foreach(f IN LISTS json_files)
        expect_strict_json("${WORKDIR}/${f}")
    endforeach()
endif()
