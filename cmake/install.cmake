include(CMakePackageConfigHelpers)

install(TARGETS orx EXPORT orx-targets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
if(ORX_APPS)
  install(TARGETS orx-cli RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()

# The public headers: all but the seam and what is internal to a room.
install(DIRECTORY orx/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/orx FILES_MATCHING PATTERN "*.h"
  REGEX "platform/|/(any_null|application_data_folder|box_corners|calendar|never_destroyed|number_text|octree_levels|shell_sort|static_defaults|text_format|xml_handle)\\.h$" EXCLUDE)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/orx)
install(EXPORT orx-targets NAMESPACE orx:: FILE orx-config.cmake DESTINATION ${package_dir})
write_basic_package_version_file(orx-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/orx-config-version.cmake DESTINATION ${package_dir})

# Relative to the file itself, so that an installed copy may be moved.
cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX BASE_DIRECTORY
  ${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}/pkgconfig OUTPUT_VARIABLE pc_prefix)
configure_file(cmake/orx.pc.in orx.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/orx.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
