# Writes ringwell(1) from the command line's own help: `ringwell help --man`.
# Called with -DPROGRAM=<ringwell> -DOUTPUT=<file>.
get_filename_component(directory ${OUTPUT} DIRECTORY)
file(MAKE_DIRECTORY ${directory})
execute_process(COMMAND ${PROGRAM} help --man
                OUTPUT_FILE ${OUTPUT}.tmp
                RESULT_VARIABLE result)
if(NOT result EQUAL 0)
    message(FATAL_ERROR "`ringwell help --man` failed: ${result}")
endif()
file(RENAME ${OUTPUT}.tmp ${OUTPUT})
