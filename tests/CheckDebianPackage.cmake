# Builds the Debian package of BUILD with cpack, checks what it holds (library, headers, CMake
# and pkg-config files, tool, man page, Python module) and what it depends on, unpacks it into
# a scratch root and runs the tool and `import talonvireo` from there.
file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK})
macro(run)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err
        WORKING_DIRECTORY ${WORK})
    if(NOT rc EQUAL 0)
        message(FATAL_ERROR "failed: ${ARGN}\n${out}${err}")
    endif()
endmacro()

run(cpack -G DEB --config ${BUILD}/CPackConfig.cmake -B ${WORK})
file(GLOB deb ${WORK}/*.deb)
list(LENGTH deb count)
if(NOT count EQUAL 1)
    message(FATAL_ERROR "expected one .deb in ${WORK}, found: ${deb}")
endif()
run(dpkg-deb --contents ${deb})
foreach(want "usr/bin/talonvireo-sfr" "usr/include/talonvireo/talonVireoSFR.h"
        "libtalonVireoSFR.so" "cmake/talonVireoSFR/talonVireoSFRConfig.cmake"
        "pkgconfig/talonVireoSFR.pc" "usr/share/man/man1/talonvireo-sfr.1"
        "usr/lib/python3/dist-packages/talonvireo"
        "usr/share/talonvireo/schema/frame.schema.json")
    if(NOT out MATCHES "${want}")
        message(FATAL_ERROR "the package lacks ${want}:\n${out}")
    endif()
endforeach()
run(dpkg-deb --field ${deb} Depends)
if(NOT out MATCHES "libopencv-core" OR NOT out MATCHES "python3-numpy"
        OR NOT out MATCHES "python3-pandas")
    message(FATAL_ERROR "the package's dependencies miss OpenCV, numpy or pandas: ${out}")
endif()

set(root ${WORK}/root)
run(dpkg-deb -x ${deb} ${root})
unset(ENV{LD_LIBRARY_PATH})
run(${root}/usr/bin/talonvireo-sfr --version)
if(NOT out MATCHES "^talonvireo-sfr [0-9]")
    message(FATAL_ERROR "the packaged tool printed: ${out}")
endif()
run(${root}/usr/bin/talonvireo-sfr render --project HLX6C --width 600 --height 400
    --out ${WORK}/packaged-render)
set(ENV{PYTHONPATH} ${root}/usr/lib/python3/dist-packages)
run(${PYTHON} -c "import talonvireo\nprint(talonvireo.__version__, talonvireo.__file__)")
if(NOT out MATCHES "${root}/usr/lib/python3/dist-packages/talonvireo")
    message(FATAL_ERROR "import talonvireo did not take the packaged module: ${out}")
endif()
message(STATUS "packaged module: ${out}")
