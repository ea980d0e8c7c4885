# Installs programs, libraries, headers and the CMake package. Component `programs` is what a user runs, `development`
# what a program is built with.
include(CMakePackageConfigHelpers)

get_property(rooms GLOBAL PROPERTY MOSAICER_ROOMS)
set(kst_rooms ${rooms})
list(FILTER kst_rooms INCLUDE REGEX "^kst_")
list(TRANSFORM kst_rooms REPLACE "^kst_" "")
list(JOIN kst_rooms " " kst_rooms)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/mosaicer)
install(TARGETS ${rooms} EXPORT mosaicerTargets ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
install(TARGETS mosaicer kst EXPORT mosaicerTargets RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT programs)
foreach(floor driver objects packing texture compression script source)
  install(DIRECTORY ${mosaicer_SOURCE_DIR}/${floor} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/mosaicer
    COMPONENT development FILES_MATCHING PATTERN "*.h")
endforeach()
install(EXPORT mosaicerTargets NAMESPACE mosaicer:: DESTINATION ${package_dir} COMPONENT development)
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/mosaicerConfig.cmake.in
  ${CMAKE_CURRENT_BINARY_DIR}/mosaicerConfig.cmake INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/mosaicerConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/mosaicerConfig.cmake ${CMAKE_CURRENT_BINARY_DIR}/mosaicerConfigVersion.cmake
  ${CMAKE_CURRENT_LIST_DIR}/FindFreeImage.cmake ${CMAKE_CURRENT_LIST_DIR}/MosaicerAtlases.cmake
  DESTINATION ${package_dir} COMPONENT development)

install(FILES ${mosaicer_SOURCE_DIR}/docs/man/mosaicer.1 ${mosaicer_SOURCE_DIR}/docs/man/kst.1
  DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT programs)
install(FILES ${mosaicer_SOURCE_DIR}/completions/kst.bash
  DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME kst COMPONENT programs)
install(FILES ${mosaicer_SOURCE_DIR}/completions/mosaicer.bash
  DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME mosaicer COMPONENT programs)
install(FILES ${mosaicer_SOURCE_DIR}/completions/_kst ${mosaicer_SOURCE_DIR}/completions/_mosaicer
  DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions COMPONENT programs)
install(FILES ${mosaicer_SOURCE_DIR}/LICENSE ${mosaicer_SOURCE_DIR}/README.md ${mosaicer_SOURCE_DIR}/CHANGELOG.md
  DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT programs)
install(DIRECTORY ${mosaicer_SOURCE_DIR}/docs DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT programs
  PATTERN man EXCLUDE)
install(DIRECTORY ${mosaicer_SOURCE_DIR}/examples DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT programs)

# The schema of definition files comes out of the program that was built, and so cannot be out of date. A kst that
# knows none installs none.
install(CODE "
  set(schema \"${CMAKE_CURRENT_BINARY_DIR}/mosaicer.rng\")
  execute_process(COMMAND \"$<TARGET_FILE:kst>\" atlas schema -o \"\${schema}\" RESULT_VARIABLE code ERROR_QUIET)
  if(code EQUAL 0)
    file(INSTALL \"\${schema}\" DESTINATION \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_DATADIR}/mosaicer\")
  endif()" COMPONENT programs)

include(MosaicerPackage)
