# cmake --install: the programs, the runtime libraries, the provider modules, the schema,
# the demo array, the configuration, the systemd unit and the runtime's SDK (headers, a
# CMake package and a pkg-config file) so that other provider modules build against it as
# against an OpenPegasus SDK. Directories: cmake/QelInstallDirs.cmake.

# Libraries and modules find their neighbours by $ORIGIN, so no LD_LIBRARY_PATH is needed,
# wherever the tree is installed. The build tree keeps its own (absolute) RPATHs.
set(_qel_runtime_libraries pegcommon pegprovider pegclient qelapi QELInternalCacheService)
set(_qel_provider_modules QEL_FCPortProvider QEL_InternalCacheProvider)
set(_qel_admin_programs qel-cimserver qel-passwd qel-certmap)
set(_qel_user_programs qelsim qel-mofcheck)

foreach(t ${_qel_runtime_libraries})
  set_target_properties(${t} PROPERTIES INSTALL_RPATH "$ORIGIN")
endforeach()
foreach(t ${_qel_provider_modules})
  set_target_properties(${t} PROPERTIES INSTALL_RPATH "$ORIGIN/${QEL_PROVIDERDIR_TO_PRIVATE_LIBDIR}")
endforeach()
foreach(t ${_qel_admin_programs})
  if(TARGET ${t})
    set_target_properties(${t} PROPERTIES INSTALL_RPATH "$ORIGIN/${QEL_SBIN_TO_PRIVATE_LIBDIR}")
    install(TARGETS ${t} RUNTIME DESTINATION ${CMAKE_INSTALL_SBINDIR})
  endif()
endforeach()
foreach(t ${_qel_user_programs})
  set_target_properties(${t} PROPERTIES INSTALL_RPATH "$ORIGIN/${QEL_BIN_TO_PRIVATE_LIBDIR}")
  install(TARGETS ${t} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endforeach()

install(TARGETS qelapi QELInternalCacheService LIBRARY DESTINATION ${QEL_INSTALL_PRIVATE_LIBDIR})
install(TARGETS ${_qel_provider_modules} LIBRARY DESTINATION ${QEL_INSTALL_PROVIDERDIR})

# The runtime as a CMake package: Pegasus::common, Pegasus::provider, Pegasus::client, the
# names the module's own build uses (cmake/ExternalPegasus.cmake gives the same names for a
# real OpenPegasus). Its include path points into the source tree only while building.
foreach(part common provider client)
  set_target_properties(peg${part} PROPERTIES EXPORT_NAME ${part})
  get_target_property(_qel_includes peg${part} INTERFACE_INCLUDE_DIRECTORIES)
  if(_qel_includes)
    set_target_properties(peg${part} PROPERTIES
      INTERFACE_INCLUDE_DIRECTORIES "$<BUILD_INTERFACE:${_qel_includes}>")
  endif()
endforeach()
install(TARGETS pegcommon pegprovider pegclient EXPORT QelPegasusTargets
  LIBRARY DESTINATION ${QEL_INSTALL_PRIVATE_LIBDIR}
  INCLUDES DESTINATION ${QEL_INSTALL_INCLUDEDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/src/Pegasus/ DESTINATION ${QEL_INSTALL_INCLUDEDIR}/Pegasus
  FILES_MATCHING PATTERN "*.h")
install(EXPORT QelPegasusTargets NAMESPACE Pegasus:: DESTINATION ${QEL_INSTALL_CMAKEDIR})

include(CMakePackageConfigHelpers)
configure_package_config_file(${PROJECT_SOURCE_DIR}/packaging/QelPegasusConfig.cmake.in
  ${PROJECT_BINARY_DIR}/packaging/QelPegasusConfig.cmake
  INSTALL_DESTINATION ${QEL_INSTALL_CMAKEDIR}
  PATH_VARS QEL_INSTALL_PROVIDERDIR QEL_INSTALL_DATADIR)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/packaging/QelPegasusConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES
  ${PROJECT_BINARY_DIR}/packaging/QelPegasusConfig.cmake
  ${PROJECT_BINARY_DIR}/packaging/QelPegasusConfigVersion.cmake
  DESTINATION ${QEL_INSTALL_CMAKEDIR})

# pkg-config: paths relative to the .pc file itself, so a staged tree works too.
qel_relative_path(QEL_PC_TO_PREFIX "${CMAKE_INSTALL_LIBDIR}/pkgconfig" "")
configure_file(${PROJECT_SOURCE_DIR}/packaging/qel-pegasus.pc.in
  ${PROJECT_BINARY_DIR}/packaging/qel-pegasus.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/packaging/qel-pegasus.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# Schema with the registrations, the demo array, the example configuration.
install(DIRECTORY ${PROJECT_SOURCE_DIR}/schema/ DESTINATION ${QEL_INSTALL_DATADIR}/schema
  FILES_MATCHING PATTERN "*.mof")
install(FILES ${PROJECT_SOURCE_DIR}/examples/demo-array.json DESTINATION ${QEL_INSTALL_DATADIR})
configure_file(${PROJECT_SOURCE_DIR}/packaging/qel-cimserver.conf.in
  ${PROJECT_BINARY_DIR}/packaging/qel-cimserver.conf @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/packaging/qel-cimserver.conf
  DESTINATION ${QEL_INSTALL_DATADIR} RENAME qel-cimserver.conf.example)
# The FULL form: GNUInstallDirs puts the configuration of a /usr installation in /etc.
install(FILES ${PROJECT_BINARY_DIR}/packaging/qel-cimserver.conf
  DESTINATION ${CMAKE_INSTALL_FULL_SYSCONFDIR}/qel-cimserver)

# The systemd unit.
configure_file(${PROJECT_SOURCE_DIR}/packaging/qel-cimserver.service.in
  ${PROJECT_BINARY_DIR}/packaging/qel-cimserver.service @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/packaging/qel-cimserver.service
  DESTINATION ${QEL_SYSTEMD_UNITDIR})
