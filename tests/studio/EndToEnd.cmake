# montala-studio from start to a conformed session, in its window on a
# virtual display, driven by its command-line steps since nobody clicks:
# the sample session, both cuts, Generate, Start Montala, save, quit. Then
# montala verify checks that the saved session plays the new cut in sync.
#
# cmake -DSTUDIO=... -DMONTALA=... -DSOURCE=... -DWORK=... -P EndToEnd.cmake

find_program(XVFB_RUN xvfb-run)
if(NOT XVFB_RUN)
  message(FATAL_ERROR "xvfb-run is missing: scripts/setup.sh installs it")
endif()

set(session ${SOURCE}/samples/sessions/short-film-25.json)
set(old ${SOURCE}/samples/edl/short-film-25/old.edl)
set(new ${SOURCE}/samples/edl/short-film-25/new.edl)
set(saved ${WORK}/conformed.json)
file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK})

execute_process(
  COMMAND ${XVFB_RUN} -a -s "-screen 0 1280x1024x24 -noreset" ${STUDIO} ${session} --old ${old} --new ${new} --generate --conform --save ${saved} --quit
  RESULT_VARIABLE status OUTPUT_VARIABLE out ERROR_VARIABLE err TIMEOUT 45)
message("${out}${err}")
if(NOT status EQUAL 0)
  message(FATAL_ERROR "montala-studio ended with ${status}")
endif()
foreach(expected "Change EDL: " "Conformed: " "Saved ${saved}")
  string(FIND "${out}" "${expected}" at)
  if(at EQUAL -1)
    message(FATAL_ERROR "montala-studio did not say \"${expected}\"")
  endif()
endforeach()
if(NOT EXISTS ${saved})
  message(FATAL_ERROR "no session was saved")
endif()

# Without a display: steps that end with --quit run all the same, and a run
# that would leave the window open says that it needs one, instead of crashing.
execute_process(
  COMMAND ${CMAKE_COMMAND} -E env --unset=DISPLAY ${STUDIO} ${session} --old ${old} --new ${new} --generate --quit
  RESULT_VARIABLE status OUTPUT_VARIABLE out ERROR_VARIABLE err TIMEOUT 45)
if(NOT status EQUAL 0 OR NOT out MATCHES "Change EDL: ")
  message(FATAL_ERROR "without a display, --quit steps ended with ${status}: ${out}${err}")
endif()
execute_process(
  COMMAND ${CMAKE_COMMAND} -E env --unset=DISPLAY ${STUDIO} ${session}
  RESULT_VARIABLE status OUTPUT_VARIABLE out ERROR_VARIABLE err TIMEOUT 45)
if(NOT status EQUAL 2 OR NOT err MATCHES "no display")
  message(FATAL_ERROR "without a display, opening the window ended with ${status}: ${out}${err}")
endif()

execute_process(COMMAND ${MONTALA} verify --help RESULT_VARIABLE has_verify OUTPUT_QUIET ERROR_QUIET)
if(NOT has_verify EQUAL 0)
  message("montala verify is not there: the saved session is not checked")
  return()
endif()
execute_process(
  COMMAND ${MONTALA} verify ${session} ${saved} --old ${old} --new ${new}
  RESULT_VARIABLE verified OUTPUT_VARIABLE out ERROR_VARIABLE err TIMEOUT 30)
message("${out}${err}")
if(NOT verified EQUAL 0)
  message(FATAL_ERROR "montala verify found the saved session out of sync (${verified})")
endif()
