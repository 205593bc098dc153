# The port stands among the sources that it builds: vcpkg install zynaggr --overlay-ports=packaging/vcpkg
get_filename_component(SOURCE_PATH "${CURRENT_PORT_DIR}/../../.." ABSOLUTE)

string(COMPARE EQUAL "${VCPKG_LIBRARY_LINKAGE}" dynamic shared)
vcpkg_cmake_configure(
  SOURCE_PATH "${SOURCE_PATH}"
  OPTIONS -DZYNAGGR_SHARED=${shared} -DZYNAGGR_BUILD_TESTS=OFF -DZYNAGGR_BUILD_EXAMPLES=OFF -DZYNAGGR_BUILD_TOOLS=OFF)
vcpkg_cmake_install()
vcpkg_cmake_config_fixup(CONFIG_PATH lib/cmake/zynaggr)
vcpkg_fixup_pkgconfig()

file(REMOVE_RECURSE "${CURRENT_PACKAGES_DIR}/debug/include" "${CURRENT_PACKAGES_DIR}/debug/share"
                    "${CURRENT_PACKAGES_DIR}/share/doc")
file(INSTALL "${CURRENT_PORT_DIR}/usage" DESTINATION "${CURRENT_PACKAGES_DIR}/share/${PORT}")
vcpkg_install_copyright(FILE_LIST "${SOURCE_PATH}/LICENSE")
