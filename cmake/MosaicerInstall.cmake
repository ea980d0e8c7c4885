# Installs programs, libraries, headers and the CMake package.
include(CMakePackageConfigHelpers)

get_property(rooms GLOBAL PROPERTY MOSAICER_ROOMS)
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/mosaicer)
install(TARGETS ${rooms} EXPORT mosaicerTargets ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(TARGETS mosaicer kst RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
foreach(floor driver objects packing texture compression script source)
  install(DIRECTORY ${mosaicer_SOURCE_DIR}/${floor} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/mosaicer
    FILES_MATCHING PATTERN "*.h")
endforeach()
install(EXPORT mosaicerTargets NAMESPACE mosaicer:: DESTINATION ${package_dir})
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/mosaicerConfig.cmake.in
  ${CMAKE_CURRENT_BINARY_DIR}/mosaicerConfig.cmake INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/mosaicerConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/mosaicerConfig.cmake ${CMAKE_CURRENT_BINARY_DIR}/mosaicerConfigVersion.cmake
  ${CMAKE_CURRENT_LIST_DIR}/FindFreeImage.cmake
  DESTINATION ${package_dir})
install(FILES ${mosaicer_SOURCE_DIR}/LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(FILES ${mosaicer_SOURCE_DIR}/docs/man/mosaicer.1 ${mosaicer_SOURCE_DIR}/docs/man/kst.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
