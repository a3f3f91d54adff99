# SPDX-License-Identifier: Apache-2.0
# Builds the checkout that this recipe stands in: name its folder in BBFILES, or link to the recipe's file from a layer
# and set EXTERNALSRC.
SUMMARY = "Hardware inventory of a management controller"
DESCRIPTION = "A library, a parser of BIOS settings and an operator's command over tables in SQLite or MariaDB"
SECTION = "base"
LICENSE = "Apache-2.0"
LIC_FILES_CHKSUM = "file://LICENSE;md5=3b83ef96387f14655fc854ddc3c6bd57"

PV = "1.0.0"
DEPENDS = "cli11 nlohmann-json re2 util-linux"

inherit cmake externalsrc systemd useradd

EXTERNALSRC ??= "${@os.path.abspath(os.path.join(d.getVar('THISDIR'), '..', '..'))}"
EXTERNALSRC_BUILD = "${WORKDIR}/build"

# Without the stand-ins, ZELDB_PLATFORM_LIBRARIES names the controller's own libraries (docs/platform.md), and DEPENDS the
# recipes that they come from.
PACKAGECONFIG ??= "standin"
PACKAGECONFIG[standin] = "-DZELDB_PLATFORM=standin,-DZELDB_PLATFORM=external -DZELDB_PLATFORM_LIBRARIES='${ZELDB_PLATFORM_LIBRARIES}',libnvme mariadb pciutils sqlite3 udev"
ZELDB_PLATFORM_LIBRARIES ??= ""

# The manual would need the built programs to run on the build machine.
EXTRA_OECMAKE = "\
    -DCMAKE_SKIP_INSTALL_RPATH=ON \
    -DZELDB_BUILD_MANUAL=OFF \
    -DZELDB_BUILD_TESTS=OFF \
    -DZELDB_WERROR=OFF \
    -DZELDB_SYSTEMD_UNIT_DIR=${systemd_system_unitdir} \
"

SYSTEMD_SERVICE:${PN} = "ucm-parser.service zeldb-scan.timer"
SYSTEMD_AUTO_ENABLE = "disable"

# The owner of the inventory; members of the group may read it.
USERADD_PACKAGES = "${PN}"
USERADD_PARAM:${PN} = "--system --user-group --no-create-home --home-dir /var/lib/zeldb --shell /sbin/nologin zeldb"

PACKAGES =+ "${PN}-platform"
FILES:${PN}-platform = "${libdir}/libvrel_log.so.* ${libdir}/libzel_db.so.* ${libdir}/libzel_platform.so.*"
# The client library of MariaDB, which the first connection to a server loads.
RRECOMMENDS:${PN}-platform += "libmysqlclient"
