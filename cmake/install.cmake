# What is installed, in components: "runtime" is what a finished program needs, "dev" what building one needs, "tools"
# the programs. packaging/debian makes a package of each.
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/zynaggr)

install(TARGETS zynaggr EXPORT zynaggrTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT dev
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT dev)
if(ZYNAGGR_SHARED)
  configure_file(cmake/ldconfig.cmake.in ldconfig.cmake @ONLY)
  install(SCRIPT ${CMAKE_CURRENT_BINARY_DIR}/ldconfig.cmake COMPONENT runtime)
endif()

# Every header is public but these. scripts/common.sh reads the list too.
install(DIRECTORY zynaggr zynhost zynplatform DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT dev
        FILES_MATCHING PATTERN "*.h"
        PATTERN "*_impl.h" EXCLUDE
        PATTERN "*_traits.h" EXCLUDE
        PATTERN "fork.h" EXCLUDE
        PATTERN "locale_table.h" EXCLUDE
        PATTERN "moduleentry.h" EXCLUDE
        PATTERN "sharelock.h" EXCLUDE
        PATTERN "zynplatform/utf8.h" EXCLUDE
        PATTERN "vectors.h" EXCLUDE)

install(EXPORT zynaggrTargets NAMESPACE zynaggr:: DESTINATION ${package_dir} COMPONENT dev)
configure_package_config_file(cmake/zynaggrConfig.cmake.in zynaggrConfig.cmake INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(zynaggrConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/zynaggrConfig.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/zynaggrConfigVersion.cmake
        DESTINATION ${package_dir} COMPONENT dev)

# The file tells its prefix from where it stands itself, so that an installation can be moved.
file(RELATIVE_PATH pkgconfig_prefix /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
configure_file(cmake/zynaggr.pc.in zynaggr.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/zynaggr.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT dev)

# Packages have it in a form of their own.
install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT licence)
