# make package: a Debian package of both programs (CPack, DEB), kilnova_VERSION_ARCH.deb.
#
# The libraries the programs link come from dpkg-shlibdeps. Qt loads some of what Kilnova needs as
# plugins, which dpkg-shlibdeps cannot see: the SQLite and ODBC drivers of Qt Sql and the X11
# platform. For those the packages are asked of dpkg here, from the files Qt's CMake files name.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME kilnova)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_VENDOR "Kilnova")
set(CPACK_PACKAGE_CONTACT "${KILNOVA_MAINTAINER}")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "raw-material planning for cement plants")
# Lines of at most 80 characters: CPack takes them as they are.
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION "Kilnova keeps the quarry blasts, stockpiles, raw meal, clinker, coal and
additives of a cement plant with tonnage, cost factor and chemical analysis
in one project database, imports laboratory results from text files and
workbooks, and computes blends along the chain quarry, stockpile, raw meal,
clinker that meet limits on oxides and moduli (LSF, silica and alumina
modulus, Bogue phases) while minimising, maximising or targeting one element.

The package holds the kilnova planning program, kilnova-cli for scripts and
nightly runs, and a demo plant.")

set(plugin_packages)
set(linked_packages)
find_program(KILNOVA_DPKG_QUERY dpkg-query)
if(KILNOVA_DPKG_QUERY)
  get_target_property(gui_configs Qt6::Gui IMPORTED_CONFIGURATIONS)
  list(GET gui_configs 0 gui_config)
  get_target_property(gui_library Qt6::Gui IMPORTED_LOCATION_${gui_config})
  execute_process(COMMAND ${KILNOVA_DPKG_QUERY} --search ${gui_library}
    OUTPUT_VARIABLE owner ERROR_QUIET OUTPUT_STRIP_TRAILING_WHITESPACE)
  if(owner MATCHES "^([^:,]+)")
    list(APPEND linked_packages ${CMAKE_MATCH_1})
  endif()
endif()
foreach(plugin sqldrivers/libqsqlite.so sqldrivers/libqsqlodbc.so platforms/libqxcb.so)
  set(file ${QT6_INSTALL_PREFIX}/${QT6_INSTALL_PLUGINS}/${plugin})
  set(owner)
  if(KILNOVA_DPKG_QUERY AND EXISTS ${file})
    execute_process(COMMAND ${KILNOVA_DPKG_QUERY} --search ${file}
      OUTPUT_VARIABLE owner RESULT_VARIABLE status ERROR_QUIET OUTPUT_STRIP_TRAILING_WHITESPACE)
  endif()
  # "libqt6sql6-sqlite:amd64: /usr/lib/..."
  if(owner MATCHES "^([^:,]+)")
    # The X11 platform comes with Qt Gui itself on Debian: dpkg-shlibdeps names that one already.
    if(NOT CMAKE_MATCH_1 IN_LIST linked_packages)
      list(APPEND plugin_packages ${CMAKE_MATCH_1})
    endif()
  else()
    set(KILNOVA_PACKAGE_BLOCKED "no Debian package holds Qt's plugin ${file}")
    message(STATUS "Packaging: ${KILNOVA_PACKAGE_BLOCKED}; make package will say so.")
  endif()
endforeach()
list(REMOVE_DUPLICATES plugin_packages)
list(JOIN plugin_packages ", " CPACK_DEBIAN_PACKAGE_DEPENDS)
if(KILNOVA_PACKAGE_BLOCKED)
  # CPack runs this before it builds anything: the message reaches whoever runs make package.
  set(CPACK_PROJECT_CONFIG_FILE ${PROJECT_BINARY_DIR}/CPackBlocked.cmake)
  file(WRITE ${CPACK_PROJECT_CONFIG_FILE}
    "message(FATAL_ERROR \"Cannot build a Debian package here: ${KILNOVA_PACKAGE_BLOCKED}.\")\n")
endif()

include(CPack)
