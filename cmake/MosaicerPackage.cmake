# Debian packages by CPack: `cpack --config build/release/CPackConfig.cmake` makes mosaicer, with what a user runs and
# reads, and mosaicer-dev.
if(NOT PROJECT_IS_TOP_LEVEL)
  return()
endif()

set(debian_dir ${CMAKE_CURRENT_BINARY_DIR}/debian)
find_program(MOSAICER_GZIP gzip)
if(MOSAICER_GZIP)
  # What the distribution asks of every package: a changelog in its own form, beside the one for people.
  configure_file(${CMAKE_CURRENT_LIST_DIR}/debian/changelog.in ${debian_dir}/changelog)
  foreach(package mosaicer mosaicer-dev)
    string(REGEX REPLACE "^mosaicer-dev$" "development" component ${package})
    string(REGEX REPLACE "^mosaicer$" "programs" component ${component})
    execute_process(COMMAND ${MOSAICER_GZIP} -9nc ${debian_dir}/changelog OUTPUT_FILE ${debian_dir}/changelog.gz)
    install(FILES ${debian_dir}/changelog.gz DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package} COMPONENT ${component}
      EXCLUDE_FROM_ALL)
    install(FILES ${CMAKE_CURRENT_LIST_DIR}/debian/copyright DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package}
      COMPONENT ${component} EXCLUDE_FROM_ALL)
  endforeach()
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME mosaicer)
set(CPACK_PACKAGE_VENDOR "The mosaicer authors")
set(CPACK_PACKAGE_CONTACT "The mosaicer authors <mosaicer@example.org>" CACHE STRING "Maintainer of the packages")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/debian/compress_man_pages.cmake)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_COMPONENTS_ALL programs development)
set(CPACK_COMPONENTS_GROUPING ONE_PER_GROUP)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PROGRAMS_PACKAGE_NAME mosaicer)
set(CPACK_DEBIAN_PROGRAMS_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PROGRAMS_PACKAGE_SUGGESTS ninja-build)
set(CPACK_COMPONENT_PROGRAMS_DESCRIPTION "The batch step of a game engine's asset pipeline: mosaicer packs a tree of
source textures into atlases with mip chains, DXT-compressed DDS files, texture
sets and small XML databases. kst looks at the files around it and plans runs.")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME mosaicer-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "mosaicer (= ${PROJECT_VERSION}), libfreeimage-dev")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "Libraries, headers and CMake package of mosaicer, for programs of one's own:
packing, mip filters, DXT compression, and the engine's foundation with its
script language.")
include(CPack)
