# Where an installation puts things (GNUInstallDirs, under CMAKE_INSTALL_PREFIX):
#   sbin/       qel-cimserver, qel-passwd (and qel-certmap)     bin/  qelsim, qel-mofcheck
#   <libdir>/qel-cimserver/             the runtime libraries (private: not on the
#                                       loader's path; the programs find them by RPATH)
#   <libdir>/qel-cimserver/providers/   the provider modules
#   share/qel-cimserver/                schema/ (with the registrations), the demo array,
#                                       the example configuration
#   <sysconfdir>/qel-cimserver/         qel-cimserver.conf
#   include/qel-cimserver/, <libdir>/cmake/QelPegasus/, <libdir>/pkgconfig/qel-pegasus.pc
#                                       the runtime's SDK for other provider modules
# Relative paths between them are compiled in or set as $ORIGIN RPATHs, so an installed
# tree works wherever it is copied (a DESTDIR staging area, a package).
include(GNUInstallDirs)

set(QEL_INSTALL_PRIVATE_LIBDIR "${CMAKE_INSTALL_LIBDIR}/qel-cimserver")
set(QEL_INSTALL_PROVIDERDIR "${QEL_INSTALL_PRIVATE_LIBDIR}/providers")
set(QEL_INSTALL_DATADIR "${CMAKE_INSTALL_DATADIR}/qel-cimserver")
set(QEL_INSTALL_INCLUDEDIR "${CMAKE_INSTALL_INCLUDEDIR}/qel-cimserver")
set(QEL_INSTALL_CMAKEDIR "${CMAKE_INSTALL_LIBDIR}/cmake/QelPegasus")
set(QEL_INSTALL_CONFIG_FILE "${CMAKE_INSTALL_FULL_SYSCONFDIR}/qel-cimserver/qel-cimserver.conf")
set(QEL_SYSTEMD_UNITDIR "lib/systemd/system" CACHE STRING
    "Where the systemd unit is installed, under the prefix")

# "a/b" relative to "c/d" (both under the prefix): what $ORIGIN-relative paths need.
function(qel_relative_path out from to)
  file(RELATIVE_PATH rel "${CMAKE_INSTALL_PREFIX}/${from}" "${CMAKE_INSTALL_PREFIX}/${to}")
  string(REGEX REPLACE "/$" "" rel "${rel}")
  if(rel STREQUAL "")
    set(rel ".")
  endif()
  set(${out} "${rel}" PARENT_SCOPE)
endfunction()

qel_relative_path(QEL_SBIN_TO_PRIVATE_LIBDIR "${CMAKE_INSTALL_SBINDIR}" "${QEL_INSTALL_PRIVATE_LIBDIR}")
qel_relative_path(QEL_BIN_TO_PRIVATE_LIBDIR "${CMAKE_INSTALL_BINDIR}" "${QEL_INSTALL_PRIVATE_LIBDIR}")
qel_relative_path(QEL_SBIN_TO_PROVIDERDIR "${CMAKE_INSTALL_SBINDIR}" "${QEL_INSTALL_PROVIDERDIR}")
qel_relative_path(QEL_SBIN_TO_DATADIR "${CMAKE_INSTALL_SBINDIR}" "${QEL_INSTALL_DATADIR}")
qel_relative_path(QEL_PROVIDERDIR_TO_PRIVATE_LIBDIR "${QEL_INSTALL_PROVIDERDIR}" "${QEL_INSTALL_PRIVATE_LIBDIR}")
