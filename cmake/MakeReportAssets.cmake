# Puts what reports are drawn with into OUTPUT: the page's own files from ASSETS, and ECharts with its licences, either
# the file ECHARTS_JS or what NPM fetches into WORK.
if(ECHARTS_JS)
  set(library ${ECHARTS_JS})
  cmake_path(GET ECHARTS_JS PARENT_PATH folder)
  cmake_path(GET folder PARENT_PATH package)  # where the file lies as npm puts it, its licence is above
else()
  set(package ${WORK}/node_modules/echarts)
  set(library ${package}/dist/echarts.min.js)
  file(COPY ${ASSETS}/package.json ${ASSETS}/package-lock.json DESTINATION ${WORK})
  execute_process(COMMAND ${NPM} ci --ignore-scripts --no-audit --no-fund --loglevel=error WORKING_DIRECTORY ${WORK}
                  RESULT_VARIABLE result)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "npm could not fetch ECharts. -DKALMIA_ECHARTS_JS=FILE takes an echarts.min.js that is there "
                        "already, -DKALMIA_REPORT=OFF builds a command without --report.")
  endif()
endif()

file(MAKE_DIRECTORY ${OUTPUT})
file(COPY_FILE ${library} ${OUTPUT}/echarts.min.js)
foreach(file report.js report.css)
  file(COPY_FILE ${ASSETS}/${file} ${OUTPUT}/${file})
endforeach()

# The minified file holds zrender and tslib too, whose licences ask for their texts beside it.
set(licence "The licence of ECharts came without a file beside ${library}; it is the Apache License 2.0.\n")
if(EXISTS ${package}/LICENSE)
  file(READ ${package}/LICENSE licence)
endif()
file(WRITE ${OUTPUT}/LICENSE.echarts "${licence}")
set(notice "Apache ECharts\nThe Apache Software Foundation (https://www.apache.org/)\n")
if(EXISTS ${package}/NOTICE)
  file(READ ${package}/NOTICE notice)
endif()
foreach(part zrender/LICENSE tslib/LICENSE.txt)
  if(EXISTS ${package}/../${part})
    file(READ ${package}/../${part} text)
    string(APPEND notice "\n${part}\n\n${text}")
  endif()
endforeach()
file(WRITE ${OUTPUT}/NOTICE "${notice}")
