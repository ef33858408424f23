# SPDX-License-Identifier: Apache-2.0
# Builds the locale NAME, whose decimals have a comma, into FOLDER.
file(MAKE_DIRECTORY ${FOLDER})
execute_process(COMMAND localedef --no-archive -i de_DE -f UTF-8 ${FOLDER}/${NAME}
  RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
if(NOT result STREQUAL 0)
  message(FATAL_ERROR
    "The locale ${NAME} cannot be built (${result}): install the package `locales`. ${output}")
endif()
