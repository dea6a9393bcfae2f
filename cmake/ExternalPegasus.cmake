# Builds the provider modules against an installed OpenPegasus instead of the
# bundled runtime: QEL_PEGASUS_HOME holds its include/ (Pegasus/Common/...)
# and lib/ (libpegcommon, libpegprovider, libpegclient).
#
# Defines the imported targets pegcommon, pegprovider and pegclient and the
# aliases Pegasus::common, Pegasus::provider and Pegasus::client that the
# module's build uses either way.

set(_qel_pegasus_include "${QEL_PEGASUS_HOME}/include")
set(_qel_pegasus_lib "${QEL_PEGASUS_HOME}/lib")

if(NOT EXISTS "${_qel_pegasus_include}/Pegasus/Common/Config.h")
  message(FATAL_ERROR
    "QEL_PEGASUS_HOME=${QEL_PEGASUS_HOME}: ${_qel_pegasus_include}/Pegasus/Common/Config.h not found; "
    "point QEL_PEGASUS_HOME at an OpenPegasus installation with include/ and lib/")
endif()

find_package(Threads REQUIRED)

# The installed Config.h selects its platform header from this definition.
set(QEL_PEGASUS_DEFINITIONS PEGASUS_PLATFORM_LINUX_X86_64_GNU)

function(_qel_import_pegasus_library target libname alias)
  find_library(_qel_lib_${libname} NAMES ${libname}
    PATHS "${_qel_pegasus_lib}" NO_DEFAULT_PATH)
  if(NOT _qel_lib_${libname})
    message(FATAL_ERROR
      "QEL_PEGASUS_HOME=${QEL_PEGASUS_HOME}: lib${libname} not found in ${_qel_pegasus_lib}")
  endif()
  add_library(${target} SHARED IMPORTED GLOBAL)
  set_target_properties(${target} PROPERTIES
    IMPORTED_LOCATION "${_qel_lib_${libname}}"
    INTERFACE_INCLUDE_DIRECTORIES "${_qel_pegasus_include}"
    INTERFACE_COMPILE_DEFINITIONS "${QEL_PEGASUS_DEFINITIONS}"
    INTERFACE_LINK_LIBRARIES Threads::Threads)
  add_library(${alias} ALIAS ${target})
endfunction()

_qel_import_pegasus_library(pegcommon pegcommon Pegasus::common)
_qel_import_pegasus_library(pegprovider pegprovider Pegasus::provider)
_qel_import_pegasus_library(pegclient pegclient Pegasus::client)

# The provider and client libraries sit on the common one.
set_property(TARGET pegprovider APPEND PROPERTY INTERFACE_LINK_LIBRARIES pegcommon)
set_property(TARGET pegclient APPEND PROPERTY INTERFACE_LINK_LIBRARIES pegcommon)

unset(_qel_pegasus_include)
unset(_qel_pegasus_lib)
