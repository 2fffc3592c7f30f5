# Installation as a desktop application and its Debian package.
#
#   P/lib/orvane-template-editor/   the program with what it reads beside it:
#       orvane-template-editor      fonts/LiberationSans-Bold.ttf,
#       templates/ codesets/        and the components shipped to workspaces
#   P/bin/orvane-template-editor    symbolic link to the program, which finds
#                                   its folder through /proc/self/exe
#   P/share/...                     desktop entry, MIME types, AppStream
#                                   metainfo and the icon in the hicolor theme

set(OV_APP_ID org.orvane.TemplateEditor)
set(OV_PROGRAM orvane-template-editor)
set(OV_INSTALL_FOLDER lib/${OV_PROGRAM})

set(OV_SYSTEM_FONT_FILE /usr/share/fonts/truetype/liberation2/LiberationSans-Bold.ttf
    CACHE FILEPATH "Debian's copy of the view font (package fonts-liberation2)")
option(OV_COPY_FONT "Install a copy of the view font instead of a link to the system's copy" OFF)
if(NOT EXISTS ${OV_SYSTEM_FONT_FILE})
  message(WARNING "The view font is missing: ${OV_SYSTEM_FONT_FILE} (install fonts-liberation2)")
endif()

set(ov_data ${PROJECT_SOURCE_DIR}/data)
set(ov_links ${PROJECT_BINARY_DIR}/install-links)
file(MAKE_DIRECTORY ${ov_links}/fonts)

install(TARGETS orvane-template-editor RUNTIME DESTINATION ${OV_INSTALL_FOLDER})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/resources/install/ DESTINATION ${OV_INSTALL_FOLDER})

# Symbolic links are made in the build folder and installed as links.
file(CREATE_LINK ../${OV_INSTALL_FOLDER}/${OV_PROGRAM} ${ov_links}/${OV_PROGRAM} SYMBOLIC)
install(FILES ${ov_links}/${OV_PROGRAM} DESTINATION bin)
if(OV_COPY_FONT)
  install(FILES ${OV_SYSTEM_FONT_FILE} DESTINATION ${OV_INSTALL_FOLDER}/fonts)
else()
  file(CREATE_LINK ${OV_SYSTEM_FONT_FILE} ${ov_links}/fonts/LiberationSans-Bold.ttf SYMBOLIC)
  install(FILES ${ov_links}/fonts/LiberationSans-Bold.ttf DESTINATION ${OV_INSTALL_FOLDER}/fonts)
endif()

install(FILES ${ov_data}/${OV_APP_ID}.desktop DESTINATION share/applications)
install(FILES ${ov_data}/${OV_APP_ID}.metainfo.xml DESTINATION share/metainfo)
install(FILES ${ov_data}/${OV_APP_ID}.mime.xml DESTINATION share/mime/packages RENAME ${OV_APP_ID}.xml)

# The icon: the drawing itself, and bitmaps rendered from it for the sizes
# that menus and docks ask for most.
set(ov_icon_svg ${ov_data}/icons/${OV_APP_ID}.svg)
install(FILES ${ov_icon_svg} DESTINATION share/icons/hicolor/scalable/apps)
find_program(OV_RSVG_CONVERT rsvg-convert REQUIRED)
set(ov_icon_pngs)
foreach(size 48 128)
  set(png ${PROJECT_BINARY_DIR}/icons/${size}x${size}/${OV_APP_ID}.png)
  add_custom_command(OUTPUT ${png}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${PROJECT_BINARY_DIR}/icons/${size}x${size}
    COMMAND ${OV_RSVG_CONVERT} --width=${size} --height=${size} --output=${png} ${ov_icon_svg}
    DEPENDS ${ov_icon_svg}
    COMMENT "Rendering the ${size} pixel application icon")
  list(APPEND ov_icon_pngs ${png})
  install(FILES ${png} DESTINATION share/icons/hicolor/${size}x${size}/apps)
endforeach()
add_custom_target(ov_app_icons ALL DEPENDS ${ov_icon_pngs})

# Outside a staging folder (a package build sets DESTDIR), the desktop's
# caches learn of the new files at once, as a package's triggers would do.
install(CODE [[
  if("$ENV{DESTDIR}" STREQUAL "")
    set(share "${CMAKE_INSTALL_PREFIX}/share")
    find_program(update_mime update-mime-database)
    find_program(update_desktop update-desktop-database)
    find_program(update_icons gtk-update-icon-cache)
    if(update_mime)
      message(STATUS "Updating the MIME database in ${share}/mime")
      execute_process(COMMAND ${update_mime} "${share}/mime" RESULT_VARIABLE failed ERROR_VARIABLE why)
      if(failed)
        message(WARNING "update-mime-database failed: ${why}")
      endif()
    endif()
    if(update_desktop)
      execute_process(COMMAND ${update_desktop} -q "${share}/applications")
    endif()
    if(update_icons)
      execute_process(COMMAND ${update_icons} -q -t -f "${share}/icons/hicolor")
    endif()
  endif()
]])

# cpack -G DEB: a package installed under /usr that depends on the system's
# font package rather than carrying the font.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME ${OV_PROGRAM})
set(CPACK_PACKAGE_VENDOR "Orvane")
set(CPACK_PACKAGE_CONTACT "The Orvane developers <developers@orvane.org>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "designs the templates of condition reports")
set(CPACK_PACKAGE_DESCRIPTION
    "Conservators describe the condition of museum and archive objects in\n\
condition reports. The Orvane Template Editor designs the forms those\n\
reports are written in: basic data and one text sheet per report type,\n\
with multilingual headers, labels, text fields and checkboxes.")
set(CPACK_PACKAGE_HOMEPAGE_URL "https://www.orvane.org/")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION misc)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
if(OV_COPY_FONT)
  set(CPACK_DEBIAN_PACKAGE_DEPENDS "")
else()
  set(CPACK_DEBIAN_PACKAGE_DEPENDS "fonts-liberation2")
endif()
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "hunspell-en-gb | hunspell-dictionary")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
include(CPack)
