# Install rules: the shared libraries, the public headers, the CMake package
# (find_package(RotorRouteMap) gives RotorRouteMap::RotorRouteMap), the
# pkg-config file rotor-route-map.pc and the tools.
include(CMakePackageConfigHelpers)

set(ROTOR_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/RotorRouteMap)
get_property(exported GLOBAL PROPERTY ROTOR_EXPORTED_TARGETS)

install(TARGETS ${exported} EXPORT RotorRouteMapTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(EXPORT RotorRouteMapTargets NAMESPACE RotorRouteMap:: DESTINATION ${ROTOR_CMAKE_DIR})

foreach(tree platform RotorRouteMap)
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/${tree}/ DESTINATION ${ROTOR_INSTALL_INCLUDEDIR}
    FILES_MATCHING PATTERN "*.h")
endforeach()

configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/RotorRouteMapConfig.cmake.in
  ${PROJECT_BINARY_DIR}/RotorRouteMapConfig.cmake INSTALL_DESTINATION ${ROTOR_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/RotorRouteMapConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/RotorRouteMapConfig.cmake
              ${PROJECT_BINARY_DIR}/RotorRouteMapConfigVersion.cmake
        DESTINATION ${ROTOR_CMAKE_DIR})

# pkg-config: the library first, then the platform libraries it uses; paths
# are relative to the .pc file, so `cmake --install --prefix` may move it.
set(ROTOR_PC_LIBS "-lRotorRouteMap")
foreach(target ${exported})
  get_target_property(type ${target} TYPE)
  get_target_property(name ${target} OUTPUT_NAME)
  if(type STREQUAL "SHARED_LIBRARY" AND NOT target STREQUAL "RotorRouteMap")
    string(APPEND ROTOR_PC_LIBS " -l${name}")
  endif()
endforeach()
file(RELATIVE_PATH ROTOR_PC_TO_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" ROTOR_PC_TO_PREFIX "${ROTOR_PC_TO_PREFIX}")
configure_file(${PROJECT_SOURCE_DIR}/cmake/rotor-route-map.pc.in
  ${PROJECT_BINARY_DIR}/rotor-route-map.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/rotor-route-map.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

if(TARGET policy-replay)
  file(RELATIVE_PATH binToLib /${CMAKE_INSTALL_BINDIR} /${CMAKE_INSTALL_LIBDIR})
  set_target_properties(policy-replay PROPERTIES INSTALL_RPATH "$ORIGIN/${binToLib}")
  install(TARGETS policy-replay RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()
