# Installation and the Debian package. What is installed has the shape of the build tree: <prefix>/lib/motion-kavo holds bin/,
# lib/ and bundle/, so that the tool finds its host and its bundle by its own place; <prefix>/bin leads there.
set(CMAKE_INSTALL_DOCDIR share/doc/motion-kavo)
include(GNUInstallDirs)
set(kavo_home ${CMAKE_INSTALL_LIBDIR}/motion-kavo)
string(REGEX REPLACE "^lib/[^/]+/" "lib/" kavo_home ${kavo_home})

set(kavo_programs kavo kavo-conformance)
install(TARGETS ${kavo_programs} RUNTIME DESTINATION ${kavo_home}/bin)
install(TARGETS motion_host_shared LIBRARY DESTINATION ${kavo_home}/lib)
install(TARGETS motion_kavo LIBRARY DESTINATION ${kavo_home}/bundle)
install(DIRECTORY ${KAVO_BUNDLE_DIR}/bfbs DESTINATION ${kavo_home}/bundle)
set_target_properties(${kavo_programs} PROPERTIES INSTALL_RPATH "$ORIGIN/../lib")

file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/links ${PROJECT_BINARY_DIR}/man)
foreach(program IN LISTS kavo_programs)
  file(CREATE_LINK ../${kavo_home}/bin/${program} ${PROJECT_BINARY_DIR}/links/${program} SYMBOLIC)
  install(FILES ${PROJECT_BINARY_DIR}/links/${program} DESTINATION ${CMAKE_INSTALL_BINDIR})
endforeach()

install(DIRECTORY ${PROJECT_SOURCE_DIR}/contract/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/motion-kavo)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/schemas/command ${PROJECT_SOURCE_DIR}/schemas/datalayer
  DESTINATION ${CMAKE_INSTALL_DATADIR}/motion-kavo/schemas FILES_MATCHING PATTERN "*.fbs")
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples DESTINATION ${CMAKE_INSTALL_DOCDIR} FILES_MATCHING PATTERN "*.yaml")
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs/ DESTINATION ${CMAKE_INSTALL_DOCDIR}
  FILES_MATCHING PATTERN "*.md" PATTERN "*.svg" PATTERN "*.json" PATTERN "api-main.md" EXCLUDE PATTERN "man" EXCLUDE)
install(FILES ${PROJECT_SOURCE_DIR}/README.md ${PROJECT_SOURCE_DIR}/CHANGELOG.md ${PROJECT_SOURCE_DIR}/contract/conventions.md
  DESTINATION ${CMAKE_INSTALL_DOCDIR})

configure_file(${PROJECT_SOURCE_DIR}/cmake/motion-kavo.pc.in ${PROJECT_BINARY_DIR}/motion-kavo.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/motion-kavo.pc DESTINATION ${CMAKE_INSTALL_DATADIR}/pkgconfig)

# Manual pages travel compressed, as the distribution wants them.
find_program(GZIP gzip REQUIRED)
file(GLOB manual_pages CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/docs/man/*.[1-9])
set(compressed_pages)
foreach(page IN LISTS manual_pages)
  cmake_path(GET page FILENAME name)
  cmake_path(GET page EXTENSION LAST_ONLY section)
  string(SUBSTRING ${section} 1 1 section)
  set(compressed ${PROJECT_BINARY_DIR}/man/${name}.gz)
  add_custom_command(OUTPUT ${compressed} COMMAND ${GZIP} -9nc ${page} > ${compressed} DEPENDS ${page} COMMENT "gzip ${name}" VERBATIM)
  list(APPEND compressed_pages ${compressed})
  install(FILES ${compressed} DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section})
endforeach()
add_custom_target(manual_pages ALL DEPENDS ${compressed_pages})

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME motion-kavo)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "Motion.Kavo <root@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "signals, joins and switching on the path for motion objects")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION misc)
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION "Motion.Kavo is a plug-in component by which the axes and kinematics of a motion-control
runtime synchronise: signals, joins and switching on the path. The package has the bundle, the headers and schemas for whoever
embeds it, the reference host with its tool kavo, and the conformance suite.")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/lib)
include(CPack)
