# The libraries and headers as a package: find_package(TavrinXmlEditor), then link Tavrin::tavrin_qt_widget.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/TavrinXmlEditor)
set(layers
  tavrin_core tavrin_schema tavrin_buffer tavrin_files tavrin_parsers tavrin_document tavrin_recovery tavrin_ui
  tavrin_view tavrin_autocomplete tavrin_options tavrin_control tavrin_headless)
if(TAVRIN_QT)
  list(APPEND layers tavrin_qt tavrin_qt_widget)
endif()

install(TARGETS ${layers} EXPORT TavrinXmlEditorTargets)
install(DIRECTORY ${CMAKE_SOURCE_DIR}/src/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/tavrin-xml-editor
  FILES_MATCHING PATTERN "*.h")
install(EXPORT TavrinXmlEditorTargets NAMESPACE Tavrin:: DESTINATION ${package_folder})

configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/TavrinXmlEditorConfig.cmake.in
  ${CMAKE_BINARY_DIR}/TavrinXmlEditorConfig.cmake INSTALL_DESTINATION ${package_folder})
write_basic_package_version_file(${CMAKE_BINARY_DIR}/TavrinXmlEditorConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_BINARY_DIR}/TavrinXmlEditorConfig.cmake
  ${CMAKE_BINARY_DIR}/TavrinXmlEditorConfigVersion.cmake DESTINATION ${package_folder})
