# `cpack -G DEB` in the build folder (or `cmake --build BUILD --target
# package`): glintwave_VERSION_ARCH.deb with the installed layout of
# cmake/Install.cmake under /usr, for `apt-get install ./glintwave_*.deb` on
# a render node. Its dependencies are the shared libraries the programs and
# the plug-in link, read by dpkg-shlibdeps (Debian's dpkg-dev).
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME glintwave)
set(CPACK_PACKAGE_VENDOR "Glintwave")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "lens-flare renderer: the Glintwave plug-in and its stand-alone host")
string(JOIN "\n" CPACK_PACKAGE_DESCRIPTION
  "Glintwave is a lens-flare render plug-in for the Korvane 3D host. This"
  "package holds the plug-in, the glintwave command that loads it and renders"
  "flares onto images and image sequences, its settings dialog served to a"
  "web browser, the resource compiler for flare styles, and a Slurm array"
  "script that renders a shot on a farm.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "Glintwave developers <glintwave@example.org>")
set(CPACK_DEBIAN_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)

include(CPack)
