import os
import re

from conan import ConanFile
from conan.tools.cmake import CMake, CMakeDeps, CMakeToolchain, cmake_layout
from conan.tools.files import load
from conan.tools.gnu import PkgConfigDeps


class QelAnalytics(ConanFile):
    name = "qel-analytics"
    description = "In-process analytics client"
    package_type = "library"
    settings = "os", "compiler", "build_type", "arch"
    options = {"shared": [True, False], "tools": [True, False]}
    default_options = {"shared": True, "tools": False, "boost/*:header_only": True}
    exports = "CMakeLists.txt"
    exports_sources = "CMakeLists.txt", "cmake/*", "Application/*", "Core/*", "host/*", "tools/*"

    def set_version(self):
        cmake = load(self, os.path.join(self.recipe_folder, "CMakeLists.txt"))
        self.version = re.search(r"project\(\S+ VERSION ([\d.]+)", cmake)[1]

    def requirements(self):
        self.requires("boost/[>=1.74]")
        self.requires("libcurl/[>=7.87]")
        self.requires("nlohmann_json/[>=3.11]")
        self.requires("spdlog/[>=1.10]")
        self.requires("sqlite3/[>=3.38]")
        if self.settings.os != "Windows" or self.options.tools:
            self.requires("openssl/[>=3]")
        if self.options.tools:
            self.requires("cli11/[>=2.1.2]")
            self.requires("cpp-httplib/[>=0.11]")
            self.requires("kainjow-mustache/[>=4.1]")
            self.requires("utf8proc/[>=2.8]")

    def layout(self):
        cmake_layout(self)

    def generate(self):
        CMakeDeps(self).generate()
        if self.options.tools:
            PkgConfigDeps(self).generate()
        toolchain = CMakeToolchain(self)
        toolchain.cache_variables["QEL_BUILD_TESTS"] = False
        toolchain.cache_variables["QEL_BUILD_TOOLS"] = bool(self.options.tools)
        toolchain.generate()

    def build(self):
        cmake = CMake(self)
        cmake.configure()
        cmake.build()

    def package(self):
        CMake(self).install()

    def package_info(self):
        # The installed tree has a configuration for find_package of its own.
        self.cpp_info.set_property("cmake_find_mode", "none")
        self.cpp_info.builddirs = ["lib/cmake/QelAnalytics"]
