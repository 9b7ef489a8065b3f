# oz_add_phone_test(NAME name COMMAND command [argument...] [PHONE file] [SCENARIO file] [SPEED factor|max] [JUNIT file]
#     [WAIT_FOR open|request|none] [WAIT_LIMIT time] [UNTIL_PLAYED] [WORKING_DIRECTORY folder]):
# a test that runs the command against a simulated phone of its own, which it sees as its device. It passes where the
# command ends with 0, and each step of the scenario and each of its expectations does too. PHONE is a phone's file,
# SCENARIO that of a scenario or the name of an installed one; relative files are beside the CMakeLists.txt. The scenario
# begins when the command has opened its first object, or has done what WAIT_FOR says, or after WAIT_LIMIT (10s). SPEED is
# the phone's time to the real one; max, or 0, is without waiting. With UNTIL_PLAYED, the command is ended when the
# scenario is over. The command can be a target, as for add_test().
function(oz_add_phone_test)
    cmake_parse_arguments(PARSE_ARGV 0 arg "UNTIL_PLAYED"
        "NAME;PHONE;SCENARIO;SPEED;JUNIT;WAIT_FOR;WAIT_LIMIT;WORKING_DIRECTORY" "COMMAND")
    foreach(wanted NAME COMMAND)
        if(NOT arg_${wanted})
            message(FATAL_ERROR "oz_add_phone_test: ${wanted} is missing")
        endif()
    endforeach()
    if(arg_UNPARSED_ARGUMENTS)
        message(FATAL_ERROR "oz_add_phone_test: '${arg_UNPARSED_ARGUMENTS}' means nothing")
    endif()
    # Beside this package, wherever that is installed.
    find_program(OZ_DEVICE_COMMAND ozdevice HINTS ${OZ_DEVICE_PROGRAMS})
    if(NOT OZ_DEVICE_COMMAND)
        message(FATAL_ERROR "oz_add_phone_test: there is no program ozdevice, which starts the phone")
    endif()
    set(run ${OZ_DEVICE_COMMAND} run)
    foreach(file PHONE SCENARIO JUNIT)
        if(arg_${file})
            string(TOLOWER ${file} option)
            set(path ${arg_${file}})
            if(file STREQUAL JUNIT)
                cmake_path(ABSOLUTE_PATH path BASE_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR})
            elseif(file STREQUAL PHONE OR EXISTS ${CMAKE_CURRENT_SOURCE_DIR}/${path})
                cmake_path(ABSOLUTE_PATH path BASE_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR})
            endif()
            list(APPEND run --${option} ${path})
        endif()
    endforeach()
    foreach(value SPEED WAIT_FOR WAIT_LIMIT)
        if(DEFINED arg_${value}) # 0 is a value too
            string(TOLOWER ${value} option)
            string(REPLACE _ - option ${option})
            list(APPEND run --${option} ${arg_${value}})
        endif()
    endforeach()
    if(arg_UNTIL_PLAYED)
        list(APPEND run --until-played)
    endif()
    list(POP_FRONT arg_COMMAND program)
    if(TARGET ${program})
        set(program $<TARGET_FILE:${program}>)
    endif()
    set(folder)
    if(arg_WORKING_DIRECTORY)
        set(folder WORKING_DIRECTORY ${arg_WORKING_DIRECTORY})
    endif()
    add_test(NAME ${arg_NAME} COMMAND ${run} -- ${program} ${arg_COMMAND} ${folder})
endfunction()
