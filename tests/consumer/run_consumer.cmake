# Configures, builds and runs the consumer project against an Ostrel package.
# With OSTREL_BUILD set, first installs that build into OSTREL_LOCATION.
if(OSTREL_BUILD)
    file(REMOVE_RECURSE ${OSTREL_LOCATION})
    execute_process(COMMAND ${CMAKE_COMMAND} --install ${OSTREL_BUILD} --prefix ${OSTREL_LOCATION}
        RESULT_VARIABLE rc OUTPUT_QUIET)
    if(rc)
        message(FATAL_ERROR "install failed: ${rc}")
    endif()
endif()
file(REMOVE_RECURSE ${CONSUMER_BINARY})
execute_process(COMMAND ${CMAKE_COMMAND} -S ${CONSUMER_SOURCE} -B ${CONSUMER_BINARY} -G Ninja
        -DCMAKE_CXX_COMPILER=${CXX_COMPILER} -DCMAKE_PREFIX_PATH=${OSTREL_LOCATION}
        -DCMAKE_FIND_USE_PACKAGE_REGISTRY=OFF
    RESULT_VARIABLE rc)
if(rc)
    message(FATAL_ERROR "configure failed: ${rc}")
endif()
execute_process(COMMAND ${CMAKE_COMMAND} --build ${CONSUMER_BINARY} RESULT_VARIABLE rc)
if(rc)
    message(FATAL_ERROR "build failed: ${rc}")
endif()
execute_process(COMMAND ${CONSUMER_BINARY}/ostrel_consumer RESULT_VARIABLE rc
    OUTPUT_VARIABLE out ERROR_VARIABLE err)
message("${out}${err}")
if(rc)
    message(FATAL_ERROR "consumer failed: ${rc}")
endif()
if(NOT out MATCHES "consumer: ok")
    message(FATAL_ERROR "consumer printed no verdict")
endif()
