# What `cmake --install` puts where, and the packages that cpack makes of it: on Debian one each for
# the library, for developing with it and for the command, on Windows one zip.

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
if(WIN32)
  install(FILES $<TARGET_FILE:varmex>.debug DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT library)
  install(FILES ${CMAKE_ARCHIVE_OUTPUT_DIRECTORY}/varmex.lib ${CMAKE_ARCHIVE_OUTPUT_DIRECTORY}/varmex.def
    DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
  install(DIRECTORY docs examples DESTINATION . COMPONENT development)
else()
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

set(CPACK_PACKAGE_VENDOR "varmex maintainers")
set(CPACK_PACKAGE_CONTACT "varmex maintainers <maintainers@varmex.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "What a PXI or PXI Express installation holds")
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL library development tool)
if(WIN32)
  set(CPACK_GENERATOR ZIP)
else()
  set(CPACK_GENERATOR DEB)
  set(CPACK_DEB_COMPONENT_INSTALL ON)
  set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
  set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
  set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME libvarmex19)
  set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
  set(CPACK_DEBIAN_LIBRARY_PACKAGE_GENERATE_SHLIBS ON)
  set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libvarmex-dev)
  set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
  set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "libvarmex19 (= ${PROJECT_VERSION})")
  set(CPACK_DEBIAN_TOOL_PACKAGE_NAME varmex)
  set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION utils)
  set(CPACK_DEBIAN_TOOL_PACKAGE_DEPENDS "libvarmex19 (>= ${PROJECT_VERSION})")
  if(TARGET varmex_python)
    list(APPEND CPACK_COMPONENTS_ALL python)
    set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-varmex)
    set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
    set(CPACK_DEBIAN_PYTHON_PACKAGE_ARCHITECTURE all)
    set(CPACK_DEBIAN_PYTHON_PACKAGE_SHLIBDEPS OFF)
    set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "python3 (>= 3.9), libvarmex19 (>= ${PROJECT_VERSION})")
  endif()
endif()
include(CPack)
