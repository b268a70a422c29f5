# Installs the built library into a scratch prefix, then builds and runs a small
# program against it twice: once through find_package(OrvUtility), once through
# pkg-config.
file(REMOVE_RECURSE ${WORK_DIR})
set(prefix ${WORK_DIR}/prefix)
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BINARY_DIR} --prefix ${prefix}
  RESULT_VARIABLE rc OUTPUT_QUIET)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "install failed")
endif()

execute_process(COMMAND ${CMAKE_COMMAND} -S ${SOURCE_DIR}/tests/install/consumer -B ${WORK_DIR}/cm
  -DCMAKE_PREFIX_PATH=${prefix} RESULT_VARIABLE rc)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "find_package consumer did not configure")
endif()
execute_process(COMMAND ${CMAKE_COMMAND} --build ${WORK_DIR}/cm RESULT_VARIABLE rc)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "find_package consumer did not build")
endif()
execute_process(COMMAND ${WORK_DIR}/cm/consumer RESULT_VARIABLE rc OUTPUT_VARIABLE out)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "find_package consumer failed: ${out}")
endif()

file(GLOB_RECURSE pcfile ${prefix}/*/OrvUtility.pc)
if(NOT pcfile)
  message(FATAL_ERROR "OrvUtility.pc was not installed")
endif()
get_filename_component(pcdir ${pcfile} DIRECTORY)
set(ENV{PKG_CONFIG_PATH} ${pcdir})
execute_process(COMMAND pkg-config --cflags --libs OrvUtility
  OUTPUT_VARIABLE flags OUTPUT_STRIP_TRAILING_WHITESPACE RESULT_VARIABLE rc)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "pkg-config does not know OrvUtility")
endif()
separate_arguments(flags UNIX_COMMAND "${flags}")
execute_process(COMMAND c++ -std=c++17 ${SOURCE_DIR}/tests/install/consumer/main.cpp ${flags}
  -o ${WORK_DIR}/pc_consumer RESULT_VARIABLE rc)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "pkg-config consumer did not build")
endif()
string(REGEX MATCH "-L([^ ;]+)" _ "${flags}")
set(ENV{LD_LIBRARY_PATH} ${CMAKE_MATCH_1})
execute_process(COMMAND ${WORK_DIR}/pc_consumer RESULT_VARIABLE rc OUTPUT_VARIABLE out)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "pkg-config consumer failed: ${out}")
endif()
message(STATUS "both consumers built and ran")
