# The plug-in alone, for an image that has the head unit's host library: name its file, and the recipe
# that installs it, in a .bbappend. Without it the stand-in is built beside, for a bench.
SUMMARY = "CAN service plug-in for Ford decoder boxes"
LICENSE = "CLOSED"

inherit cmake_qt5

# The sources of this release; set it to where they are kept.
SRC_URI = "file://varne-ford-${PV}.tar.gz"
S = "${WORKDIR}/varne-ford-${PV}"

DEPENDS = "qtbase"

# The closed library, for example ${STAGING_LIBDIR}/libhost.so.2.
CANSERVICE_HOST_LIBRARY ??= ""
DEPENDS += "${@'' if d.getVar('CANSERVICE_HOST_LIBRARY') else 'qtserialport'}"

EXTRA_OECMAKE = " \
    -DCANSERVICE_HOST_LIBRARY=${CANSERVICE_HOST_LIBRARY} \
    -DBUILD_TESTING=OFF \
"

# Hosts load the name without a version, so it belongs to the package that runs, not to -dev.
SOLIBS = ".so*"
FILES_SOLIBSDEV = ""
FILES:${PN} = "${libdir}/libvarne_Ford.so*"

# The stand-in, its headers and the bench, where they are built.
PACKAGES =+ "${PN}-bench"
FILES:${PN}-bench = " \
    ${bindir}/canbench \
    ${libdir}/libcanservicehost.so \
    ${datadir}/canbench \
    ${datadir}/bash-completion \
"
FILES:${PN}-dev = "${includedir} ${libdir}/cmake ${libdir}/pkgconfig"
INSANE_SKIP:${PN} += "dev-so"
INSANE_SKIP:${PN}-bench += "dev-so"
