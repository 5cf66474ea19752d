# Installs the build as a packager does (DESTDIR, a prefix of its own), then: the schema script
# stands where the library looks for it, the installed mdb tool makes a catalogue with it, and the
# C99 consumer builds and runs twice, once with pkg-config and a plain compiler call, once as a
# CMake project using find_package(mdb).
file(REMOVE_RECURSE ${WORK_DIR})
set(destdir ${WORK_DIR}/root)
set(prefix ${destdir}/opt/mdb)

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "failed: ${ARGN}\n${out}\n${err}")
  endif()
  message(STATUS "${out}")
endfunction()

run(${CMAKE_COMMAND} -E env DESTDIR=${destdir} ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix /opt/mdb)
foreach(f include/mdb.h include/mdb_platform.h lib/libmdb.so lib/pkgconfig/mdb.pc
          lib/cmake/mdb/mdbConfig.cmake lib/libmdbadapt.so lib/libmdbdlna.so lib/libmdbserver.so
          share/mdb/create_db.sql bin/mdb)
  if(NOT EXISTS ${prefix}/${f})
    message(FATAL_ERROR "not installed: ${f}")
  endif()
endforeach()
if(NOT EXISTS ${destdir}/${SCHEMA_SCRIPT})
  message(FATAL_ERROR "the schema script is not installed at ${SCHEMA_SCRIPT}")
endif()
run(${CMAKE_COMMAND} -E env MDB_SCHEMA_SCRIPT=${destdir}/${SCHEMA_SCRIPT} ${prefix}/bin/mdb init ${WORK_DIR}/x.db)

# pkg-config and a plain C99 compile with every warning an error.
set(ENV{PKG_CONFIG_PATH} ${prefix}/lib/pkgconfig)
execute_process(COMMAND pkg-config --cflags --libs mdb OUTPUT_VARIABLE flags RESULT_VARIABLE rc
                OUTPUT_STRIP_TRAILING_WHITESPACE)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "pkg-config cannot find mdb")
endif()
separate_arguments(flags UNIX_COMMAND "${flags}")
run(cc -std=c99 -pedantic -Wall -Wextra -Werror ${SOURCE_DIR}/consumer.c -o ${WORK_DIR}/consumer_pc
    ${flags} -lmdbadapt -lmdbdlna -lmdbserver -Wl,-rpath,${prefix}/lib)
run(${WORK_DIR}/consumer_pc)

# find_package(mdb)
run(${CMAKE_COMMAND} -S ${SOURCE_DIR} -B ${WORK_DIR}/cmake_build -DCMAKE_PREFIX_PATH=${prefix}
    -DCMAKE_BUILD_RPATH=${prefix}/lib)
run(${CMAKE_COMMAND} --build ${WORK_DIR}/cmake_build)
run(${WORK_DIR}/cmake_build/consumer)
