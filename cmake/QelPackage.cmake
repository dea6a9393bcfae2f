# cpack -G DEB: one package, qel-cimserver, of everything cmake --install puts in place.
# Configure with -DCMAKE_INSTALL_PREFIX=/usr so that GNUInstallDirs gives the FHS places
# (/usr/sbin, /usr/lib/<multiarch>, /etc). The maintainer scripts (packaging/deb) create the
# system user qelcim and the password file, and delete the password file and the state only
# on purge.
set(CPACK_PACKAGE_NAME qel-cimserver)
set(CPACK_PACKAGE_VENDOR "QEL")
set(CPACK_PACKAGE_CONTACT "QEL Developers <dev@qel.invalid>")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY
    "CIM server and provider module for the storage array's Fibre Channel ports")
set(CPACK_PACKAGE_DESCRIPTION
    "qel-cimserver serves CIM-XML over HTTP and a local socket from the provider module\n\
libQEL_FCPortProvider (FC ports, SFPs, LESB counters and their associations) on a\n\
simulated array, as a systemd service. It includes the OpenPegasus-compatible runtime's\n\
headers, CMake package and pkg-config file for building other provider modules.")
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_STRIP_FILES TRUE)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION admin)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
# Library dependencies from dpkg-shlibdeps; the runtime's own libraries are private to the
# package (found through their RPATH).
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
    "${CMAKE_INSTALL_PREFIX}/${QEL_INSTALL_PRIVATE_LIBDIR}")
set(CPACK_DEBIAN_PACKAGE_DEPENDS "adduser")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "sblim-wbemcli")

configure_file(${PROJECT_SOURCE_DIR}/packaging/deb/conffiles.in
  ${PROJECT_BINARY_DIR}/packaging/deb/conffiles @ONLY)
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA
    ${PROJECT_BINARY_DIR}/packaging/deb/conffiles
    ${PROJECT_SOURCE_DIR}/packaging/deb/postinst
    ${PROJECT_SOURCE_DIR}/packaging/deb/prerm
    ${PROJECT_SOURCE_DIR}/packaging/deb/postrm)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION TRUE)

include(CPack)
