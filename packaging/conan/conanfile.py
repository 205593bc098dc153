"""conan create packaging/conan: the recipe stands among the sources that it builds."""
import pathlib
import re

from conan import ConanFile
from conan.errors import ConanInvalidConfiguration
from conan.tools.build import check_min_cppstd
from conan.tools.cmake import CMake, CMakeToolchain, cmake_layout
from conan.tools.files import copy, rmdir


class Zynaggr(ConanFile):
    name = "zynaggr"
    description = "Strings, text encodings, files and an INI engine that loses no line"
    license = "MIT"
    topics = ("ini", "encoding", "cp1251", "csv", "strings")
    package_type = "library"
    settings = "os", "arch", "compiler", "build_type"
    options = {"shared": [True, False]}
    default_options = {"shared": True}

    @property
    def _root(self):
        return pathlib.Path(self.recipe_folder).parents[1]

    def set_version(self):
        project = (self._root / "CMakeLists.txt").read_text(encoding="utf-8")
        self.version = re.search(r"^project\(.* VERSION ([0-9.]+)", project, re.M)[1]

    def export_sources(self):
        for pattern in ("CMakeLists.txt", "LICENSE", "cmake/*", "zynaggr/*", "zynhost/*", "zynplatform/*"):
            copy(self, pattern, src=str(self._root), dst=self.export_sources_folder)

    def layout(self):
        cmake_layout(self)

    def validate(self):
        if self.settings.os != "Linux":
            raise ConanInvalidConfiguration("zynAggr lives on Linux")
        check_min_cppstd(self, 20)

    def generate(self):
        toolchain = CMakeToolchain(self)
        toolchain.cache_variables["ZYNAGGR_SHARED"] = bool(self.options.shared)
        for part in ("TESTS", "EXAMPLES", "TOOLS"):
            toolchain.cache_variables[f"ZYNAGGR_BUILD_{part}"] = False
        toolchain.generate()

    def build(self):
        cmake = CMake(self)
        cmake.configure()
        cmake.build()

    def package(self):
        CMake(self).install()
        copy(self, "LICENSE", src=self.source_folder, dst=str(pathlib.Path(self.package_folder, "licenses")))
        for folder in ("lib/cmake", "lib/pkgconfig", "share"):  # what the tool makes itself
            rmdir(self, str(pathlib.Path(self.package_folder, folder)))

    def package_info(self):
        self.cpp_info.libs = ["zynaggr"]
        self.cpp_info.set_property("cmake_file_name", "zynaggr")
        self.cpp_info.set_property("cmake_target_name", "zynaggr::zynaggr")
        self.cpp_info.set_property("pkg_config_name", "zynaggr")
        if not self.options.shared:
            entry = "-Wl,--undefined=_Z7DllMainPvjS_"  # see CMakeLists.txt
            self.cpp_info.exelinkflags = self.cpp_info.sharedlinkflags = [entry]
