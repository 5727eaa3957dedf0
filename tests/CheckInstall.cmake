# Installs BUILD into a scratch prefix, then builds the consumer program against it twice,
# with find_package and with pkg-config, and runs both; runs the installed tool and imports
# the installed Python module (PYTHON), with no build tree and no library path set; and builds
# the consumer by the README's pkg-config lines (README).
set(prefix ${WORK}/prefix)
file(REMOVE_RECURSE ${WORK})
macro(run)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
    if(NOT rc EQUAL 0)
        message(FATAL_ERROR "failed: ${ARGN}\n${out}${err}")
    endif()
    message(STATUS "${out}")
endmacro()

run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${prefix})
run(${CMAKE_COMMAND} -S ${SOURCE} -B ${WORK}/consumer -DCMAKE_PREFIX_PATH=${prefix})
run(${CMAKE_COMMAND} --build ${WORK}/consumer)
run(${WORK}/consumer/consumer)

file(GLOB_RECURSE pc ${prefix}/*/talonVireoSFR.pc)
get_filename_component(pcdir "${pc}" DIRECTORY)
set(ENV{PKG_CONFIG_PATH} ${pcdir})
execute_process(COMMAND pkg-config --cflags --libs talonVireoSFR
    RESULT_VARIABLE rc OUTPUT_VARIABLE flags OUTPUT_STRIP_TRAILING_WHITESPACE)
if(NOT rc EQUAL 0)
    message(FATAL_ERROR "pkg-config does not find talonVireoSFR in ${pcdir}")
endif()
separate_arguments(flags UNIX_COMMAND "${flags}")
run(${CXX} -std=c++17 ${SOURCE}/consumer.cpp ${flags} -o ${WORK}/pkgconfig-consumer)
string(REGEX MATCH "-L([^ ;]+)" _ "${flags}")
set(ENV{LD_LIBRARY_PATH} ${CMAKE_MATCH_1})
run(${WORK}/pkgconfig-consumer)

unset(ENV{LD_LIBRARY_PATH})
# The README's pkg-config lines as written, with this prefix and the consumer swapped in: the
# program they build must find the library by itself (its rpath), with no library path set.
if(README)
    file(READ ${README} readme)
    string(REGEX MATCH "export PKG_CONFIG_PATH=[^`]*" lines "${readme}")
    if(NOT lines MATCHES "pkg-config")
        message(FATAL_ERROR "the README shows no pkg-config build")
    endif()
    string(REPLACE "/opt/talonvireo" "${prefix}" lines "${lines}")
    string(REPLACE "app.cpp" "${SOURCE}/consumer.cpp" lines "${lines}")
    file(MAKE_DIRECTORY ${WORK}/readme-consumer)
    file(WRITE ${WORK}/readme-consumer/build.sh "set -e\n${lines}")
    execute_process(COMMAND bash build.sh WORKING_DIRECTORY ${WORK}/readme-consumer
        RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
    if(NOT rc EQUAL 0)
        message(FATAL_ERROR "the README's pkg-config build fails:\n${lines}\n${out}${err}")
    endif()
    run(${WORK}/readme-consumer/a.out)
endif()
execute_process(COMMAND ${prefix}/bin/talonvireo-sfr --version
    RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
if(NOT rc EQUAL 0 OR NOT out MATCHES "^talonvireo-sfr [0-9]")
    message(FATAL_ERROR "the installed tool does not start: ${out}${err}")
endif()
execute_process(COMMAND ${prefix}/bin/talonvireo-sfr render --project HLX6C --width 600
        --height 400 --out ${WORK}/installed-render
    RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
if(NOT rc EQUAL 0)
    message(FATAL_ERROR "the installed tool does not render: ${out}${err}")
endif()
# The installed schemas, one per document; the rendered chart's truth follows its own.
set(schemas ${prefix}/share/talonvireo/schema)
foreach(document frame region chart-truth batch-row batch-run-options failure chart-description)
    if(NOT EXISTS ${schemas}/${document}.schema.json)
        message(FATAL_ERROR "the install lacks ${schemas}/${document}.schema.json")
    endif()
endforeach()
# The built-in charts' description files.
foreach(chart K74T16BX K83P09BQ HLX6C K31R22BX)
    if(NOT EXISTS ${prefix}/share/talonvireo/charts/${chart}.toml)
        message(FATAL_ERROR "the install lacks ${prefix}/share/talonvireo/charts/${chart}.toml")
    endif()
endforeach()
if(PYTHON)
    execute_process(COMMAND ${PYTHON} -c
            "import json, sys, jsonschema; jsonschema.validate(json.load(open(sys.argv[1])), json.load(open(sys.argv[2])))"
            ${WORK}/installed-render.json ${schemas}/chart-truth.schema.json
        RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
    if(NOT rc EQUAL 0)
        message(FATAL_ERROR "the installed tool's chart truth fails its installed schema: ${err}")
    endif()
    execute_process(COMMAND ${PYTHON} -c
            "import json, sys, tomllib, jsonschema; jsonschema.validate(tomllib.load(open(sys.argv[1], 'rb')), json.load(open(sys.argv[2])))"
            ${prefix}/share/talonvireo/charts/K31R22BX.toml ${schemas}/chart-description.schema.json
        RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
    if(NOT rc EQUAL 0)
        message(FATAL_ERROR "an installed chart fails its installed schema: ${err}")
    endif()
endif()
if(PYTHON)
    set(ENV{PYTHONPATH} ${prefix}/lib/python3/dist-packages)
    execute_process(COMMAND ${PYTHON} -c
            "import talonvireo, numpy; print(talonvireo.__version__, talonvireo.__file__)"
        WORKING_DIRECTORY ${WORK} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
    if(NOT rc EQUAL 0 OR NOT out MATCHES "${prefix}/lib/python3/dist-packages/talonvireo")
        message(FATAL_ERROR "the installed Python module does not import: ${out}${err}")
    endif()
    message(STATUS "installed module: ${out}")
endif()
