# The packages, made by `script/package` or `cpack` from what is installed.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME hushbox)
set(CPACK_PACKAGE_VENDOR "The Hushbox authors")
set(CPACK_PACKAGE_CONTACT "${HUSHBOX_CONTACT}")
set(CPACK_PACKAGE_HOMEPAGE_URL ${HUSHBOX_HOMEPAGE})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "speakerphone's mute button for Microsoft Teams")
set(CPACK_PACKAGE_DESCRIPTION
"Hushbox makes the mute button of a Jabra Speak2 75 speakerphone work in
Microsoft Teams. Press the button and Teams mutes. Mute in Teams and the
speakerphone mutes. A wrestler's mask in the panel shows whether you are
muted.
.
Teams is the meeting page in a browser, in English. Hushbox has no window and
no settings file, and opens no network connection.")
# The files name their installed place, so they are installed below a staging folder as if into /usr.
set(CPACK_SET_DESTDIR ON)
set(CPACK_INSTALL_PREFIX /usr)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_STRIP_FILES ON)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION sound)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The first three: without a session bus, accessibility and a battery daemon there is little to do.
# The last one: toolkits read icons in SVG with it.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS
  "default-dbus-session-bus | dbus-session-bus, at-spi2-core, upower, librsvg2-common")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "gnome-shell-extension-appindicator")

set(CPACK_RPM_FILE_NAME RPM-DEFAULT)
set(CPACK_RPM_PACKAGE_LICENSE "MIT AND Unicode-3.0")
set(CPACK_RPM_PACKAGE_URL ${HUSHBOX_HOMEPAGE})
set(CPACK_RPM_PACKAGE_SUGGESTS "at-spi2-core, upower")
# RPM has no lines with a single dot.
string(REPLACE "\n.\n" "\n\n" CPACK_RPM_PACKAGE_DESCRIPTION "${CPACK_PACKAGE_DESCRIPTION}")
# No links to debugging data that is not packaged.
set(CPACK_RPM_SPEC_MORE_DEFINE "%define _build_id_links none")
# Folders that belong to the system.
set(shared_folders)
foreach(folder applications doc icons icons/hicolor icons/hicolor/scalable
    icons/hicolor/scalable/apps icons/hicolor/symbolic icons/hicolor/symbolic/apps man man/man1
    metainfo systemd systemd/user)
  list(APPEND shared_folders /usr/share/${folder})
endforeach()
set(CPACK_RPM_EXCLUDE_FROM_AUTO_FILELIST_ADDITION ${shared_folders} /usr/libexec)

include(CPack)
