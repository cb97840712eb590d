# Builds the web app with npm; run by the `ringwell-web` target in script mode
# with NPM, SOURCE_DIR, OUTPUT_DIR and STAMP set.
#
# Without npm or without node_modules the build is skipped with a message
# rather than failing: the daemon and the command line do not need the web
# app, and `make deps` installs what it needs.

if(NOT NPM)
    message(WARNING "npm is missing, so the web app is not built. Run `make deps`.")
    return()
endif()
if(NOT EXISTS ${SOURCE_DIR}/node_modules/.package-lock.json)
    message(WARNING "Views/web/node_modules is missing, so the web app is not built. "
                    "Run `make deps` (it runs `npm ci` in Views/web).")
    return()
endif()

set(ENV{RINGWELL_WEB_OUT} ${OUTPUT_DIR})
execute_process(COMMAND ${NPM} run build --silent
                WORKING_DIRECTORY ${SOURCE_DIR}
                RESULT_VARIABLE result)
if(NOT result EQUAL 0)
    message(FATAL_ERROR "Building the web app failed (npm run build in ${SOURCE_DIR}).")
endif()
file(TOUCH ${STAMP})
