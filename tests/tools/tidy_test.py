"""Runs tools/tidy on a small project of its own, in whose sources faults are planted."""

import json
import os
import shutil
import subprocess
import tempfile
import unittest

ROOT = os.path.abspath(os.path.join(os.path.dirname(__file__), "..", ".."))
PROJECT = """cmake_minimum_required(VERSION 3.25)
project(small LANGUAGES CXX)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
add_subdirectory(src)
"""
ROOM = """add_library(room STATIC One.cpp Two.cpp)
target_include_directories(room PRIVATE ${CMAKE_SOURCE_DIR}/src)
set_target_properties(room PROPERTIES UNITY_BUILD_CODE_BEFORE_INCLUDE
                      "// NOLINTNEXTLINE(bugprone-suspicious-include)")
add_custom_target(generated_headers)
"""
PRESETS = ("clang", "tidy-UnifiedSource")
FAULT = "int *nothing() {\n  return 0;\n}\n"


class TidyTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = os.path.join(os.path.realpath(folder.name), "a trée")
        for name in ("tools/tidy", "tools/build.sh", ".clang-tidy"):
            os.makedirs(os.path.dirname(os.path.join(self.root, name)), exist_ok=True)
            shutil.copy(os.path.join(ROOT, name), os.path.join(self.root, name))
        # What it needs is there where the tests run.
        self.write("tools/setup", "#!/bin/sh\n")
        os.chmod(os.path.join(self.root, "tools/setup"), 0o755)
        self.write("CMakeLists.txt", PROJECT)
        self.write("CMakePresets.json", json.dumps({
            "version": 6,
            "configurePresets": [
                {"name": name, "generator": "Ninja", "binaryDir": "${sourceDir}/build/" + name,
                 "cacheVariables": {"CMAKE_CXX_COMPILER": "clang++",
                                    "CMAKE_UNITY_BUILD": "OFF" if name == "clang" else "ON"}}
                for name in PRESETS],
            "buildPresets": [{"name": name, "configurePreset": name, "targets": ["generated_headers"]}
                             for name in PRESETS]}))
        self.write("src/CMakeLists.txt", ROOM)
        self.write("src/One.cpp", "int one() {\n  return 1;\n}\n")
        self.write("src/Two.cpp", "int two() {\n  return 2;\n}\n")
        os.makedirs(os.path.join(self.root, "tests/support"))

    def write(self, name, text):
        path = os.path.join(self.root, name)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "w", encoding="utf-8") as file:
            file.write(text)

    def run_tool(self, *files):
        return subprocess.run([os.path.join(self.root, "tools/tidy"), *files], capture_output=True, text=True,
                              cwd=os.path.join(self.root, "src"), check=False)

    def expect_fault(self, result, place):
        self.assertNotEqual(result.returncode, 0, result.stdout + result.stderr)
        self.assertIn(f"/src/{place}: error: use nullptr [modernize-use-nullptr", result.stdout)

    def test_finds_a_fault_in_a_named_file_and_says_nothing_of_others(self):
        self.write("src/Two.cpp", FAULT)
        self.expect_fault(self.run_tool("Two.cpp"), "Two.cpp:2:10")
        result = self.run_tool("One.cpp")
        self.assertEqual((result.returncode, result.stdout), (0, ""), result.stderr)

    def test_finds_a_fault_in_any_file_when_none_is_named(self):
        result = self.run_tool()
        self.assertEqual((result.returncode, result.stdout), (0, ""), result.stderr)
        self.write("src/Two.cpp", FAULT)
        self.expect_fault(self.run_tool(), "Two.cpp:2:10")

    def test_finds_a_fault_in_a_header_of_the_project(self):
        self.write("src/Fault.h", "#pragma once\n\ninline " + FAULT)
        self.write("src/One.cpp", '#include "Fault.h"\n')
        self.expect_fault(self.run_tool("One.cpp"), "Fault.h:4:10")

    def test_refuses_a_file_that_no_target_compiles(self):
        self.write("src/Three.cpp", FAULT)
        result = self.run_tool("Three.cpp")
        self.assertEqual(result.returncode, 1)
        self.assertIn("src/Three.cpp is compiled by no target", result.stderr)


if __name__ == "__main__":
    unittest.main()
