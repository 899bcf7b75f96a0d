# Install layout.  Components:
#   library   libke_omci_tapi, its headers, pkg-config file and CMake package
#   platform  the platform stand-in (libke_platform, kestub headers)
#   tools     the programs for people
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(KE_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/ke_omci_tapi)

install(TARGETS ke_omci_tapi EXPORT ke_omci_tapi_targets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_COMPONENT library
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/ke_omci_tapi
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT library)
install(EXPORT ke_omci_tapi_targets NAMESPACE ke_omci_tapi::
  DESTINATION ${KE_CMAKE_DIR} COMPONENT library)

install(TARGETS ke_platform EXPORT ke_platform_targets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT platform NAMELINK_COMPONENT platform
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/ke_platform)
install(FILES ${PROJECT_SOURCE_DIR}/platform/include/kestub.h
              ${PROJECT_SOURCE_DIR}/platform/include/kestub_c.h
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/ke_platform COMPONENT platform)
install(EXPORT ke_platform_targets NAMESPACE ke_omci_tapi::
  DESTINATION ${KE_CMAKE_DIR} COMPONENT platform)

configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/ke_omci_tapi-config.cmake.in
  ${CMAKE_CURRENT_BINARY_DIR}/ke_omci_tapi-config.cmake
  INSTALL_DESTINATION ${KE_CMAKE_DIR})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/ke_omci_tapi-config-version.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/ke_omci_tapi-config.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/ke_omci_tapi-config-version.cmake
  DESTINATION ${KE_CMAKE_DIR} COMPONENT library)

# The .pc files name the prefix the install is made for (--prefix counts),
# so they are written at install time.
foreach(module ke_omci_tapi ke_platform)
  if(module STREQUAL ke_omci_tapi)
    set(component library)
  else()
    set(component platform)
  endif()
  install(CODE "
    set(PROJECT_VERSION ${PROJECT_VERSION})
    set(CMAKE_INSTALL_LIBDIR ${CMAKE_INSTALL_LIBDIR})
    set(CMAKE_INSTALL_INCLUDEDIR ${CMAKE_INSTALL_INCLUDEDIR})
    configure_file(${CMAKE_CURRENT_LIST_DIR}/${module}.pc.in
                   ${CMAKE_CURRENT_BINARY_DIR}/${module}.pc @ONLY)"
    COMPONENT ${component})
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${module}.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT ${component})
endforeach()
