# cmake -P BuildHost.cmake: installs the SDK from BUILD_DIR into a fresh PREFIX, then configures
# and builds the README's host (Host/) in HOST_BUILD_DIR against that prefix alone.
foreach(variable BUILD_DIR PREFIX HOST_BUILD_DIR README VERSION)
    if(NOT DEFINED ${variable})
        message(FATAL_ERROR "BuildHost.cmake needs -D${variable}=...")
    endif()
endforeach()

function(run)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE result)
    if(NOT result EQUAL 0)
        list(JOIN ARGN " " command)
        message(FATAL_ERROR "failed (${result}): ${command}")
    endif()
endfunction()

file(REMOVE_RECURSE ${PREFIX})
run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${PREFIX})
set(host_options -DCMAKE_PREFIX_PATH=${PREFIX} -DLUMORA_README=${README}
    -DLUMORA_EXPECTED_VERSION=${VERSION} -DCMAKE_BUILD_TYPE=RelWithDebInfo)
if(COMPILER_LAUNCHER)
    list(APPEND host_options -DCMAKE_CXX_COMPILER_LAUNCHER=${COMPILER_LAUNCHER})
endif()
if(SANITIZE)
    # An SDK built with the sanitizers needs their runtime in the host too.
    list(APPEND host_options "-DCMAKE_CXX_FLAGS=-fsanitize=address,undefined"
         "-DCMAKE_EXE_LINKER_FLAGS=-fsanitize=address,undefined")
endif()
run(${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR}/Host -B ${HOST_BUILD_DIR} ${host_options})
run(${CMAKE_COMMAND} --build ${HOST_BUILD_DIR})
