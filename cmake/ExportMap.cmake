# Writes the linker's version script: the names of a list and nothing else leave the library, all under one version
# that changes with the interface.
function(vq3900_write_export_map list_file version map_file)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${list_file}")
  file(STRINGS "${list_file}" names)
  set(globals "")
  foreach(name ${names})
    string(APPEND globals "    ${name};\n")
  endforeach()
  # Written only when it changes, so that a new configuration alone links nothing.
  file(CONFIGURE OUTPUT "${map_file}" CONTENT "@version@ {\n  global:\n@globals@  local:\n    *;\n};\n" @ONLY)
endfunction()
