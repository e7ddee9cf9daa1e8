# What `cmake --install` puts in place, for programs outside this repository: the libraries, the public headers with the
# paths they are included by, the tool, and descriptions of all that for CMake and pkg-config.
include(CMakePackageConfigHelpers)

set(include_dir ${CMAKE_INSTALL_INCLUDEDIR}/poveixme)
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/poveixme)

# Every header in the facade's folder is public, and none below it.
file(GLOB facade_headers CONFIGURE_DEPENDS
  RELATIVE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/module/smm/smm_inventory/*.h)
set(public_headers ${facade_headers} platform/ConnectionInfo.h)
set(installed_libraries poveixme)
if(POVEIXME_PLATFORM STREQUAL standalone)
  list(APPEND public_headers
    platform/SMMInfo.h
    platform/standalone/globalconfig/ConfigControl.h
    platform/standalone/globalconfig/ThreadConfig.h
    platform/standalone/ipmi_client/ConnectResult.h
    platform/standalone/ipmi_client/LastExchange.h
    platform/standalone/logger/LogControl.h
    platform/standalone/logger/ThreadLog.h
    platform/standalone/smmcommoninfo/LastDetection.h)
  list(APPEND installed_libraries ${platform_libraries})
endif()

foreach(header IN LISTS public_headers)
  cmake_path(GET header PARENT_PATH folder)
  install(FILES ${header} DESTINATION ${include_dir}/${folder})
endforeach()

# An installed tree can be moved: libraries find each other, and the tool finds them, relative to where they are.
file(RELATIVE_PATH bin_to_lib ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
set_target_properties(${installed_libraries} PROPERTIES INSTALL_RPATH "$ORIGIN")
install(TARGETS ${installed_libraries} EXPORT poveixme INCLUDES DESTINATION ${include_dir})
if(TARGET smm-inventory)
  set_target_properties(smm-inventory PROPERTIES INSTALL_RPATH "$ORIGIN/${bin_to_lib}")
  install(TARGETS smm-inventory)
endif()

install(EXPORT poveixme NAMESPACE poveixme:: DESTINATION ${package_dir} FILE poveixmeTargets.cmake)
configure_package_config_file(
  cmake/poveixmeConfig.cmake.in ${PROJECT_BINARY_DIR}/poveixmeConfig.cmake
  INSTALL_DESTINATION ${package_dir} NO_SET_AND_CHECK_MACRO NO_CHECK_REQUIRED_COMPONENTS_MACRO)
write_basic_package_version_file(
  ${PROJECT_BINARY_DIR}/poveixmeConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(
  FILES ${PROJECT_BINARY_DIR}/poveixmeConfig.cmake ${PROJECT_BINARY_DIR}/poveixmeConfigVersion.cmake
  DESTINATION ${package_dir})

set(pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX
  BASE_DIRECTORY ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig OUTPUT_VARIABLE pkgconfig_to_prefix)
configure_file(cmake/poveixme.pc.in ${PROJECT_BINARY_DIR}/poveixme.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/poveixme.pc DESTINATION ${pkgconfig_dir})
