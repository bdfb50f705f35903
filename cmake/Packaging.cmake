# Install rules and the Debian packages (make package): dxfimport with the program, its
# desktop integration, manual page, completion and documents; dxfimport-dev with the host
# library, its header and the CMake package (find_package(dxfimport), target
# dxfimport::host).
include(CMakePackageConfigHelpers)

set(packaging ${PROJECT_SOURCE_DIR}/packaging)
set(generated ${PROJECT_BINARY_DIR}/packaging)
set(app_id org.dxfimport.dxfimport)

# --- dxfimport: the program
install(TARGETS dxfimport RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime)
install(FILES ${generated}/dxfimport.1.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT runtime)
install(FILES ${generated}/dxfimport.bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
        RENAME dxfimport COMPONENT runtime)
install(FILES ${packaging}/${app_id}.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications COMPONENT runtime)
install(FILES ${packaging}/dxfimport-mime.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/mime/packages
        RENAME dxfimport.xml COMPONENT runtime)
configure_file(${packaging}/${app_id}.metainfo.xml ${generated}/${app_id}.metainfo.xml @ONLY)
install(FILES ${generated}/${app_id}.metainfo.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo COMPONENT runtime)
foreach(size 16 24 32 48 64 128 256)
  install(FILES ${generated}/icons/${size}.png DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/${size}x${size}/apps
          RENAME dxfimport.png COMPONENT runtime)
endforeach()
install(FILES ${packaging}/dxfimport.svg DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps
        COMPONENT runtime)
# The installation folder (CVDESIGN.INI, the help file) of the installed program.
install(DIRECTORY DESTINATION ${CMAKE_INSTALL_DATADIR}/dxfimport COMPONENT runtime)
install(FILES README.md docs/performance.md docs/fidelity.md docs/corpus.md ${packaging}/copyright
        DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT runtime)
install(FILES docs/viewer.png docs/viewer-zoomed.png docs/layers.png DESTINATION ${CMAKE_INSTALL_DOCDIR}/docs
        COMPONENT runtime)
install(FILES samples/floorplan.dxf DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples COMPONENT runtime)

# --- dxfimport-dev: the host library
set(host_libraries dxfimport_host dxfimport_layers dxfimport_viewer dxfimport_render dxfimport_geo dxfimport_dxf dxfimport_support)
install(TARGETS ${host_libraries} EXPORT dxfimportTargets
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
install(FILES src/app/dxf_class.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/dxfimport COMPONENT development)
set(config_dir ${CMAKE_INSTALL_LIBDIR}/cmake/dxfimport)
install(EXPORT dxfimportTargets NAMESPACE dxfimport:: DESTINATION ${config_dir} COMPONENT development)
configure_package_config_file(cmake/dxfimportConfig.cmake.in ${generated}/dxfimportConfig.cmake
                              INSTALL_DESTINATION ${config_dir})
write_basic_package_version_file(${generated}/dxfimportConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${generated}/dxfimportConfig.cmake ${generated}/dxfimportConfigVersion.cmake
        DESTINATION ${config_dir} COMPONENT development)

# --- the Debian packages
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME dxfimport)
set(CPACK_PACKAGE_VENDOR "The dxfimport developers")
set(CPACK_PACKAGE_CONTACT "The dxfimport developers <dxfimport@localhost>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL runtime development)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME dxfimport)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
# Faces the program draws with: the metric stand-ins for Arial and Courier New, the face
# for SHX fonts, and Japanese and Chinese; Qt's readers of TIFF (and WebP) for the raster
# images of drawings.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS
    "fonts-liberation, fonts-dejavu-core, fonts-ipafont-gothic, fonts-wqy-microhei, qt6-image-formats-plugins")
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "DXF drawing viewer and background-bitmap importer
dxfimport reads DXF drawings of every CAD tool of the last thirty years, draws them
with zoom, pan and per-layer visibility and colour, and writes the picture as a
bitmap that a network-design application uses as its background. It runs as a
desktop viewer, as a modal viewer driven by a host application, and as a headless
command-line renderer.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME dxfimport-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "dxfimport (= ${PROJECT_VERSION}), qt6-base-dev, qt6-svg-dev, libpng-dev, libproj-dev, libtiff-dev, libgeotiff-dev, libpoppler-cpp-dev")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "DXF importer for host applications (development files)
The automation class DXF as a static library with its header and a CMake package,
for host applications that show the importer in their own process and take its
bitmap.")

include(CPack)
