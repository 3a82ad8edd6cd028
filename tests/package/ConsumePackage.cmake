# Installs the built library into a scratch prefix, builds the consumer project against it
# and runs the consumer. Any failing step fails the test.
function(run)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc)
    if(NOT rc EQUAL 0)
        message(FATAL_ERROR "failed (${rc}): ${ARGN}")
    endif()
endfunction()

set(prefix ${WORK_DIR}/prefix)
set(build ${WORK_DIR}/consumer-build)
file(REMOVE_RECURSE ${prefix} ${build})

run(${CMAKE_COMMAND} --install ${FILEIO_BUILD_DIR} --prefix ${prefix})

set(configure ${CMAKE_COMMAND} -S ${CONSUMER_SOURCE_DIR} -B ${build} -G ${GENERATOR}
    -DCMAKE_PREFIX_PATH=${prefix})
if(TOOLCHAIN_FILE)
    # A cross toolchain confines package searches to its target root, so the consumer is
    # pointed at the package's folder itself.
    list(APPEND configure -DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN_FILE}
        -DFileIO_DIR=${prefix}/lib/cmake/FileIO)
endif()
run(${configure})
run(${CMAKE_COMMAND} --build ${build})

# The consumer finds the library beside it (Windows) or through its run path (Linux).
file(GLOB dlls ${prefix}/bin/*.dll)
if(dlls)
    file(COPY ${dlls} DESTINATION ${build})
endif()
file(GLOB consumer ${build}/consumer ${build}/consumer.exe)
run(${EMULATOR} ${consumer})

# The pkg-config file names the library, and its prefix follows the file wherever the
# package is installed.
file(GLOB_RECURSE pc_files ${prefix}/*/fileio.pc)
file(READ ${pc_files} pc)
string(FIND "${pc}" "prefix=\${pcfiledir}/../.." relocatable)
string(FIND "${pc}" "-lFileIO" links)
if(relocatable EQUAL -1 OR links EQUAL -1)
    message(FATAL_ERROR "unexpected fileio.pc:\n${pc}")
endif()
