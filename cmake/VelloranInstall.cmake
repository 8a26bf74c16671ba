# What `cmake --install` (and `make install PREFIX=...`) puts on a Linux
# desktop: the two programs, the standard components they load, and the
# files that make the editor show in menus and open documents from file
# managers, all named by the application id.
include(GNUInstallDirs)

set(VELLORAN_APP_ID org.velloran.Velloran)
set(velloran_desktop_files ${PROJECT_SOURCE_DIR}/resources/desktop)

install(TARGETS velloran velloran-cli RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
# Found beside the program as ../share/velloran/standard-components.
install(DIRECTORY ${PROJECT_SOURCE_DIR}/resources/standard-components
        DESTINATION ${CMAKE_INSTALL_DATADIR}/velloran)
install(FILES ${velloran_desktop_files}/${VELLORAN_APP_ID}.desktop
        DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES ${velloran_desktop_files}/${VELLORAN_APP_ID}.metainfo.xml
        DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
install(FILES ${velloran_desktop_files}/${VELLORAN_APP_ID}.xml
        DESTINATION ${CMAKE_INSTALL_DATADIR}/mime/packages)
# Rendered at build time by tools/icons.
install(DIRECTORY ${CMAKE_BINARY_DIR}/icons/hicolor DESTINATION ${CMAKE_INSTALL_DATADIR}/icons)
