# What `cmake --install` puts where. Everything may be moved as a whole afterwards. Components: runtime (the library),
# development (header, the CMake and pkg-config packages, the tool with its manual page and completion).
include(CMakePackageConfigHelpers)
include(GNUInstallDirs)

# From one folder of the installed tree to another. Folders that are given absolute stay what they are.
function(vq3900_relative_folder result from to)
  if(IS_ABSOLUTE "${from}" OR IS_ABSOLUTE "${to}")
    cmake_path(ABSOLUTE_PATH to BASE_DIRECTORY "${CMAKE_INSTALL_PREFIX}" NORMALIZE)
  else()
    cmake_path(SET to NORMALIZE "/${to}/.")
    cmake_path(SET from NORMALIZE "/${from}/.")
    cmake_path(RELATIVE_PATH to BASE_DIRECTORY "${from}")
  endif()
  set(${result} "${to}" PARENT_SCOPE)
endfunction()

install(
  TARGETS vq3900_depth_engine
  EXPORT vq3900_depth_engine-targets
  RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT runtime
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT runtime NAMELINK_COMPONENT development
  ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT development
  INCLUDES DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
install(
  FILES "${PROJECT_SOURCE_DIR}/include/vq3900_depth_engine.h"
  DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}"
  COMPONENT development)

set(vq3900_package_folder "${CMAKE_INSTALL_LIBDIR}/cmake/vq3900_depth_engine")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/vq3900_depth_engine-config-version.cmake"
                                 COMPATIBILITY SameMajorVersion)
install(
  EXPORT vq3900_depth_engine-targets
  NAMESPACE vq3900::
  FILE vq3900_depth_engine-targets.cmake
  DESTINATION "${vq3900_package_folder}"
  COMPONENT development)
install(
  FILES "${PROJECT_SOURCE_DIR}/cmake/vq3900_depth_engine-config.cmake"
        "${PROJECT_BINARY_DIR}/vq3900_depth_engine-config-version.cmake"
  DESTINATION "${vq3900_package_folder}"
  COMPONENT development)

set(vq3900_pkgconfig_folder "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
vq3900_relative_folder(vq3900_includes_from_pc "${vq3900_pkgconfig_folder}" "${CMAKE_INSTALL_INCLUDEDIR}")
vq3900_relative_folder(vq3900_libraries_from_pc "${vq3900_pkgconfig_folder}" "${CMAKE_INSTALL_LIBDIR}")
vq3900_relative_folder(vq3900_prefix_from_pc "${vq3900_pkgconfig_folder}" ".")
foreach(variable vq3900_includes_from_pc vq3900_libraries_from_pc vq3900_prefix_from_pc)
  if(NOT IS_ABSOLUTE "${${variable}}")
    set(${variable} "\${pcfiledir}/${${variable}}")
  endif()
endforeach()
configure_file(cmake/vq3900_depth_engine.pc.in "${PROJECT_BINARY_DIR}/vq3900_depth_engine.pc" @ONLY)
install(
  FILES "${PROJECT_BINARY_DIR}/vq3900_depth_engine.pc"
  DESTINATION "${vq3900_pkgconfig_folder}"
  COMPONENT development)

if(VQ3900_BUILD_TOOL)
  if(NOT WIN32)
    vq3900_relative_folder(vq3900_libraries_from_tool "${CMAKE_INSTALL_BINDIR}" "${CMAKE_INSTALL_LIBDIR}")
    if(NOT IS_ABSOLUTE "${vq3900_libraries_from_tool}")
      set(vq3900_libraries_from_tool "$ORIGIN/${vq3900_libraries_from_tool}")
    endif()
    set_target_properties(vq3900-tool PROPERTIES INSTALL_RPATH "${vq3900_libraries_from_tool}")
  endif()
  install(TARGETS vq3900-tool RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT development)
  install(
    FILES "${PROJECT_SOURCE_DIR}/docs/man/vq3900-tool.1"
    DESTINATION "${CMAKE_INSTALL_MANDIR}/man1"
    COMPONENT development)
  install(
    FILES "${PROJECT_SOURCE_DIR}/packaging/vq3900-tool.bash"
    DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions"
    RENAME vq3900-tool
    COMPONENT development)
endif()

# Each package has a copy of the licence of its own, where Debian looks for it.
foreach(package_and_component "libvq3900-depth-engine2 runtime" "libvq3900-depth-engine-dev development")
  separate_arguments(words UNIX_COMMAND "${package_and_component}")
  list(GET words 0 package)
  list(GET words 1 component)
  install(
    FILES "${PROJECT_SOURCE_DIR}/LICENSE"
    DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/${package}"
    RENAME copyright
    COMPONENT ${component})
endforeach()
