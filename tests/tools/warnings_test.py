"""Asks cmake/Warnings.cmake on which systems a warning is an error, and the presets where that is said."""

import json
import os
import subprocess
import tempfile
import unittest

ROOT = os.path.abspath(os.path.join(os.path.dirname(__file__), "..", ".."))
SCRIPT = """include({root}/cmake/Warnings.cmake)
tavril_warnings_are_errors(answer)
if(answer)
  message(STATUS "errors")
else()
  message(STATUS "warnings")
endif()
"""


class WarningsTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name
        os.mkdir(os.path.join(self.folder, "etc"))
        self.script = os.path.join(self.folder, "script.cmake")
        with open(self.script, "w", encoding="utf-8") as file:
            file.write(SCRIPT.format(root=ROOT))

    def answer(self, setting, system):
        with open(os.path.join(self.folder, "etc", "os-release"), "w", encoding="utf-8") as file:
            file.write(system)
        result = subprocess.run(
            ["cmake", f"-DTAVRIL_WERROR={setting}", f"-DCMAKE_SYSROOT={self.folder}", "-P", self.script],
            capture_output=True, text=True, check=True)
        return result.stdout.strip().removeprefix("-- ")

    def test_are_errors_on_the_one_system_that_is_named(self):
        self.assertEqual(self.answer("debian-12", 'ID=debian\nVERSION_ID="12"\n'), "errors")

    def test_are_warnings_on_every_other_system(self):
        for system in ('ID=debian\nVERSION_ID="13"\n', "ID=debian\n", 'ID=ubuntu\nVERSION_ID="12"\n'):
            self.assertEqual(self.answer("debian-12", system), "warnings", system)

    def test_are_errors_everywhere_or_nowhere_when_that_is_said(self):
        self.assertEqual(self.answer("ON", "ID=other\n"), "errors")
        self.assertEqual(self.answer("OFF", 'ID=debian\nVERSION_ID="12"\n'), "warnings")

    def test_no_preset_but_the_one_for_development_makes_them_errors(self):
        with open(os.path.join(ROOT, "CMakePresets.json"), encoding="utf-8") as file:
            presets = json.load(file)["configurePresets"]
        said = {preset["name"]: preset["cacheVariables"]["TAVRIL_WERROR"]
                for preset in presets if "TAVRIL_WERROR" in preset.get("cacheVariables", {})}
        self.assertEqual(said, {"dev": "debian-12"})
        with open(os.path.join(ROOT, "CMakeLists.txt"), encoding="utf-8") as file:
            self.assertIn("set(TAVRIL_WERROR OFF CACHE", file.read())

    def test_only_this_decides(self):
        result = subprocess.run(["grep", "-rn", "--include=CMakeLists.txt", "--include=*.cmake", "--exclude-dir=build",
                                 "-e", "-Werror", "."], cwd=ROOT, capture_output=True, text=True, check=True)
        self.assertEqual(len(result.stdout.splitlines()), 1, result.stdout)


if __name__ == "__main__":
    unittest.main()
