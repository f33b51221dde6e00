# Runs every subcommand of the demo host once (on Windows under Wine, through
# CMAKE_CROSSCOMPILING_EMULATOR), with the arguments in host_smoke.txt.
set(LUMXML_HOST_SMOKE_LIST ${CMAKE_CURRENT_SOURCE_DIR}/host_smoke.txt)
set(LUMXML_HOST_SMOKE_OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/host_smoke)
file(MAKE_DIRECTORY ${LUMXML_HOST_SMOKE_OUTPUT})
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${LUMXML_HOST_SMOKE_LIST})

# Paths relative to the scratch folder the runs start in, which Linux and
# Windows (Wine) programs read alike.
file(RELATIVE_PATH lumxml_host_smoke_examples ${LUMXML_HOST_SMOKE_OUTPUT}
     ${PROJECT_SOURCE_DIR}/examples)
file(STRINGS ${LUMXML_HOST_SMOKE_LIST} lumxml_host_smoke_lines REGEX "^[a-z]")
foreach(line IN LISTS lumxml_host_smoke_lines)
  string(REPLACE "@EXAMPLES@" "${lumxml_host_smoke_examples}" line "${line}")
  string(REPLACE "@OUTPUT@" "." line "${line}")
  separate_arguments(arguments UNIX_COMMAND "${line}")
  list(GET arguments 0 command)
  add_test(NAME DemoHostSmoke.${command} COMMAND lumxml-host ${arguments}
           WORKING_DIRECTORY ${LUMXML_HOST_SMOKE_OUTPUT})
endforeach()

add_test(NAME DemoHostSmoke.EveryCommandHasALine
         COMMAND ${CMAKE_COMMAND} "-DHOST=$<TARGET_FILE:lumxml-host>"
                 "-DEMULATOR=${CMAKE_CROSSCOMPILING_EMULATOR}"
                 "-DLIST=${LUMXML_HOST_SMOKE_LIST}"
                 -P ${CMAKE_CURRENT_SOURCE_DIR}/host_smoke_listed.cmake)
