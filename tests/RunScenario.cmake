# Runs one scenario script through vcc-script and compares what it produced with the expected
# files beside it: NAME.console (console transcript), NAME.stdout, NAME.traffic (the simulated
# camera's traffic record, when the script saves one as traffic.txt). A "# device: X" line in
# the script chooses the camera (default: the simulated QM-T77K).
get_filename_component(dir ${SCRIPT} DIRECTORY)
get_filename_component(name ${SCRIPT} NAME_WE)
file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK})
file(STRINGS ${SCRIPT} device_line REGEX "^# device: ")
set(device sim)
if(device_line)
  string(REGEX REPLACE "^# device: *" "" device "${device_line}")
endif()
set(expected_status 0)
file(STRINGS ${SCRIPT} status_line REGEX "^# status: ")
if(status_line)
  string(REGEX REPLACE "^# status: *" "" expected_status "${status_line}")
endif()
execute_process(
  COMMAND ${CMAKE_COMMAND} -E env UVCLINK_DEVICE=${device}
          ${VCC_SCRIPT} --fast --console ${WORK}/console.txt --date 2026-01-02T03:04:05 ${SCRIPT}
  WORKING_DIRECTORY ${WORK}
  OUTPUT_FILE ${WORK}/stdout.txt
  ERROR_FILE ${WORK}/stderr.txt
  RESULT_VARIABLE status
  TIMEOUT 240)
# The tool's own folder and the run's folder differ between machines: name them by role.
get_filename_component(bindir ${VCC_SCRIPT} DIRECTORY)
foreach(produced stdout.txt console.txt)
  if(EXISTS ${WORK}/${produced})
    file(READ ${WORK}/${produced} text)
    string(REPLACE "${WORK}" "%WORK%" text "${text}")
    string(REPLACE "${bindir}" "%BIN%" text "${text}")
    file(WRITE ${WORK}/${produced} "${text}")
  endif()
endforeach()
file(READ ${WORK}/stdout.txt out)
file(READ ${WORK}/stderr.txt err)
if(NOT "${status}" STREQUAL "${expected_status}")
  message(FATAL_ERROR "vcc-script exited with ${status}, expected ${expected_status}\n--- stdout\n${out}\n--- stderr\n${err}")
endif()
foreach(pair "console;console.txt" "stdout;stdout.txt" "traffic;traffic.txt")
  list(GET pair 0 ext)
  list(GET pair 1 produced)
  if(EXISTS ${dir}/${name}.${ext})
    execute_process(COMMAND ${CMAKE_COMMAND} -E compare_files ${dir}/${name}.${ext} ${WORK}/${produced}
                    RESULT_VARIABLE differs)
    if(differs)
      execute_process(COMMAND diff -u ${dir}/${name}.${ext} ${WORK}/${produced} OUTPUT_VARIABLE delta)
      message(FATAL_ERROR "${name}.${ext} differs from what the run produced:\n${delta}")
    endif()
  endif()
endforeach()
