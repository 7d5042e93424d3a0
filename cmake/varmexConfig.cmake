include(${CMAKE_CURRENT_LIST_DIR}/varmexTargets.cmake)

# Microsoft's linker has an import library of its own.
get_filename_component(varmex_import ${CMAKE_CURRENT_LIST_DIR}/../../varmex.lib ABSOLUTE)
if(MSVC AND EXISTS ${varmex_import})
  get_target_property(varmex_configurations varmex::varmex IMPORTED_CONFIGURATIONS)
  foreach(configuration IN LISTS varmex_configurations)
    set_property(TARGET varmex::varmex PROPERTY IMPORTED_IMPLIB_${configuration} ${varmex_import})
  endforeach()
endif()
