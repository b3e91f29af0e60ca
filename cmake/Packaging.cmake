# The Debian package: "cpack -G DEB" in a build folder in which everything is built. What goes in is
# what the install() rules say; packaging/try_deb.sh builds it and tries it out.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tarnwick)
set(CPACK_PACKAGE_CONTACT "The Tarnwick maintainers")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "archive for the mail of old Outlook Express stores")
set(CPACK_PACKAGE_DESCRIPTION
"Takes the mail out of the stores that Outlook Express left on an old disk, keeps
it in an encrypted repository of its own and finds and shows it there, without
the program or the Windows that wrote it. Nothing is ever written to the old
disk, and every message found is accounted for.

tarnwick is the desktop program, tarnwick-cli its companion for scripts.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION mail)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# A stored message and the help are opened with whatever the desktop opens such files with.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS xdg-utils)
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "kchmviewer | xchm | okular")

include(CPack)
