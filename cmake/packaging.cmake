# What `cmake --install` puts where, and the zip for Windows that cpack makes of it. Debian's packages
# are made by debian/ of the same installation.

include(GNUInstallDirs)
include(CMakePackageConfigHelpers)
set(varmex_cmake_dir ${CMAKE_INSTALL_LIBDIR}/cmake/varmex)

install(TARGETS varmex EXPORT varmexTargets
  RUNTIME COMPONENT library
  LIBRARY COMPONENT library NAMELINK_COMPONENT development
  ARCHIVE COMPONENT development
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
set_target_properties(varmex_tool PROPERTIES INSTALL_RPATH $ORIGIN/../${CMAKE_INSTALL_LIBDIR})
install(TARGETS varmex_tool COMPONENT tool)
install(DIRECTORY includes/varmex DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development
  FILES_MATCHING PATTERN *.h PATTERN *.hpp)

install(EXPORT varmexTargets NAMESPACE varmex::
  DESTINATION ${varmex_cmake_dir} COMPONENT development)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/varmexConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES cmake/varmexConfig.cmake ${PROJECT_BINARY_DIR}/varmexConfigVersion.cmake
  DESTINATION ${varmex_cmake_dir} COMPONENT development)

# The prefix is found from where the file lies, so that an installed tree can be moved.
file(RELATIVE_PATH varmex_pc_prefix
  ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
configure_file(cmake/varmex.pc.in varmex.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/varmex.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
install(FILES docs/varmex.schema.json DESTINATION ${CMAKE_INSTALL_DATADIR}/varmex
  COMPONENT development)
if(WIN32)
  install(FILES $<TARGET_FILE:varmex>.debug DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT library)
  install(FILES ${CMAKE_ARCHIVE_OUTPUT_DIRECTORY}/varmex.lib ${CMAKE_ARCHIVE_OUTPUT_DIRECTORY}/varmex.def
    DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
  install(DIRECTORY docs examples DESTINATION . COMPONENT development)
else()
  install(DIRECTORY docs/ DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT development
    PATTERN varmex.1 EXCLUDE PATTERN varmex.schema.json EXCLUDE)
  install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT development)
  install(FILES docs/varmex.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tool)
  install(FILES docs/varmex.schema.json DESTINATION ${CMAKE_INSTALL_DATADIR}/varmex COMPONENT tool)
  set(completions tools/varmex/completions)
  install(FILES ${completions}/varmex.bash RENAME varmex COMPONENT tool
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
  install(FILES ${completions}/varmex.fish COMPONENT tool
    DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)
  # Debian's zsh looks into the first of these below /usr, into the second below /usr/local.
  foreach(folder vendor-completions site-functions)
    install(FILES ${completions}/_varmex COMPONENT tool
      DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/${folder})
  endforeach()
endif()

if(WIN32)
  set(CPACK_PACKAGE_VENDOR "varmex maintainers")
  set(CPACK_PACKAGE_CONTACT "varmex maintainers <maintainers@varmex.invalid>")
  set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
  set(CPACK_STRIP_FILES ON)
  set(CPACK_COMPONENTS_ALL library development tool)
  set(CPACK_GENERATOR ZIP)
  include(CPack)
endif()
