# Usage requirements and install properties for the library's own targets,
# applied per folder so that a new folder or target only needs one call.

# rotor_targets_in(<dir> <out-var>): every target defined in <dir> and below.
function(rotor_targets_in dir out)
  get_property(targets DIRECTORY ${dir} PROPERTY BUILDSYSTEM_TARGETS)
  get_property(subdirs DIRECTORY ${dir} PROPERTY SUBDIRECTORIES)
  foreach(sub ${subdirs})
    rotor_targets_in(${sub} more)
    list(APPEND targets ${more})
  endforeach()
  set(${out} ${targets} PARENT_SCOPE)
endfunction()

# rotor_library(<target> <include-root> [EXPORT]): headers of <target> are
# included relative to <include-root> in the tree and relative to the package's
# include directory once installed; consumers get C++20 with them. EXPORT
# marks a target that is installed and exported in the package: a shared
# library gets its versioned file name (RotorRouteMap-<target> for the
# platform's) and finds its sibling libraries next to itself.
function(rotor_library target root)
  cmake_parse_arguments(L "EXPORT" "" "" ${ARGN})
  get_target_property(type ${target} TYPE)
  if(type STREQUAL "INTERFACE_LIBRARY")
    set(scope INTERFACE)
  else()
    set(scope PUBLIC)
  endif()
  target_include_directories(${target} ${scope}
    $<BUILD_INTERFACE:${root}> $<INSTALL_INTERFACE:${ROTOR_INSTALL_INCLUDEDIR}>)
  target_compile_features(${target} ${scope} cxx_std_20)
  if(NOT type STREQUAL "INTERFACE_LIBRARY")
    # Only what is marked ROTOR_API leaves a shared object; everything else
    # binds inside it, without the PLT.
    set_target_properties(${target} PROPERTIES
      CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
  endif()
  if(NOT L_EXPORT)
    return()
  endif()
  if(type STREQUAL "SHARED_LIBRARY")
    if(NOT target STREQUAL "RotorRouteMap")
      set_target_properties(${target} PROPERTIES OUTPUT_NAME RotorRouteMap-${target})
    endif()
    set_target_properties(${target} PROPERTIES
      VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR} INSTALL_RPATH "$ORIGIN")
  endif()
  set_property(GLOBAL APPEND PROPERTY ROTOR_EXPORTED_TARGETS ${target})
endfunction()
