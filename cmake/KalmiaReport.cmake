# What reports are drawn with, in share/kalmia/report, where the command looks from its own place: the same path below
# the build folder and below the prefix of an installation. ECharts is fetched by npm, held to the checksums of the
# lockfile, and no script of a package is run.
find_program(KALMIA_NPM npm)
mark_as_advanced(KALMIA_NPM)
if(KALMIA_NPM)
  set(npm_found ON)
else()
  set(npm_found OFF)
endif()
option(KALMIA_REPORT "Fetch by npm what --report draws with" ${npm_found})
set(KALMIA_ECHARTS_JS "" CACHE FILEPATH "echarts.min.js that is taken in place of the one npm fetches")
if(NOT KALMIA_REPORT AND NOT KALMIA_ECHARTS_JS)
  return()
endif()

set(assets ${PROJECT_SOURCE_DIR}/kalmia/analysis/report/assets)
set(drawn_with ${PROJECT_BINARY_DIR}/share/kalmia/report)
set(made ${drawn_with}/echarts.min.js ${drawn_with}/LICENSE.echarts ${drawn_with}/NOTICE ${drawn_with}/report.js
         ${drawn_with}/report.css)
set(script ${PROJECT_SOURCE_DIR}/cmake/MakeReportAssets.cmake)
add_custom_command(
  OUTPUT ${made} VERBATIM COMMENT "Fetching what reports are drawn with"
  COMMAND ${CMAKE_COMMAND} -DASSETS=${assets} -DOUTPUT=${drawn_with} -DWORK=${PROJECT_BINARY_DIR}/report-packages
          -DNPM=${KALMIA_NPM} -DECHARTS_JS=${KALMIA_ECHARTS_JS} -P ${script}
  DEPENDS ${assets}/package.json ${assets}/package-lock.json ${assets}/report.js ${assets}/report.css ${script}
          ${KALMIA_ECHARTS_JS})
add_custom_target(kalmia_report_assets ALL DEPENDS ${made})
install(FILES ${made} DESTINATION ${CMAKE_INSTALL_DATADIR}/kalmia/report)
