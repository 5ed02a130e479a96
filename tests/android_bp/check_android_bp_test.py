#!/usr/bin/env python3
"""The Android.bp check must fail on every kind of drift, and only then."""

import os
import subprocess
import sys
import tempfile
import unittest

SCRIPT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "scripts",
                      "check-android-bp.py")

BASE_LIST = [
    "product korva_model model/Parameter.cpp",
    "product korva_store store/SpatializerParamArray.cpp",
    "report korva_observer observer/LoadObserver.cpp",
    "engine vexparamstore engine/VexParamStore.cpp",
    "support korva_test_support tests/support/LogCapture.cpp",
    "test model_tests tests/model/ParameterValuesTest.cpp",
    "report-test store_observer_tests tests/store/LoadObserverTest.cpp",
]

FUZZ_CMAKE = """# korva_add_fuzzer(<name> [TOOL] SOURCES <files...>)
function(korva_add_fuzzer name)
endfunction()
korva_add_fuzzer(fuzz_tuning_file REPORT SOURCES TuningFileFuzzer.cpp)
korva_add_fuzzer(fuzz_blob
                 SOURCES BlobFuzzer.cpp)
korva_add_fuzzer(fuzz_seed_dump TOOL SOURCES SeedDump.cpp)
"""


class CheckAndroidBpTest(unittest.TestCase):
    def setUp(self):
        self.tmp = tempfile.TemporaryDirectory()
        self.root = self.tmp.name
        os.makedirs(os.path.join(self.root, "fuzz"))
        with open(os.path.join(self.root, "fuzz", "CMakeLists.txt"), "w") as f:
            f.write(FUZZ_CMAKE)
        open(os.path.join(self.root, "fuzz", "tuning.dict"), "w").close()
        self.sources = os.path.join(self.root, "android-bp-sources.txt")
        self.write_list(BASE_LIST)
        self.run_script("--write")

    def tearDown(self):
        self.tmp.cleanup()

    def write_list(self, lines):
        with open(self.sources, "w") as f:
            f.write("\n".join(lines) + "\n")

    def run_script(self, *extra):
        return subprocess.run(
            [sys.executable, SCRIPT, "--root", self.root, "--sources", self.sources, *extra],
            capture_output=True, text=True)

    def read(self, name):
        with open(os.path.join(self.root, name)) as f:
            return f.read()

    def block(self, start):
        """The block of Android.bp that starts with start, to its closing brace."""
        bp = self.read("Android.bp")
        text = bp[bp.index(start):]
        return text[:text.index("\n}\n")]

    def test_freshly_written_files_pass_and_a_hand_edit_fails(self):
        result = self.run_script()
        self.assertEqual(0, result.returncode, result.stdout)
        self.assertIn("Android.bp: in step", result.stdout)
        self.assertIn("TEST_MAPPING: in step", result.stdout)
        with open(os.path.join(self.root, "Android.bp"), "a") as f:
            f.write("// local change\n")
        self.assertEqual(1, self.run_script().returncode)

    def test_drift_fails_and_names_the_difference(self):
        cases = [
            ("product source added",
             BASE_LIST + ["product korva_cache cache/SpatializerParamCache.cpp"],
             ["built by CMake, missing from Android.bp: cache/SpatializerParamCache.cpp"]),
            ("product source removed",
             [line for line in BASE_LIST if "store/" not in line],
             ["in Android.bp, not built by CMake: store/SpatializerParamArray.cpp"]),
            ("test program added",
             BASE_LIST + ["test store_tests tests/store/ParserBufferTest.cpp"],
             ["TEST_MAPPING: out of step",
              "+      \"name\": \"libspatializerparamstorage_store_tests\""]),
            ("test source added",
             BASE_LIST + ["test model_tests tests/model/RecordsTest.cpp"],
             ["+        \"tests/model/RecordsTest.cpp\","]),
            ("report source built into the library",
             [line.replace("report korva_observer", "product korva_observer")
              for line in BASE_LIST],
             ["built by CMake, missing from Android.bp: observer/LoadObserver.cpp"]),
            ("engine stand-in source added",
             BASE_LIST + ["engine vexparamstore engine/EffectParamParser.cpp"],
             ["+        \"engine/EffectParamParser.cpp\","]),
        ]
        for name, lines, expected in cases:
            with self.subTest(name):
                self.write_list(lines)
                result = self.run_script()
                self.assertEqual(1, result.returncode, result.stdout)
                for text in expected:
                    self.assertIn(text, result.stdout)
                self.assertIn("--write", result.stdout)

    def test_device_library_leaves_the_host_stand_ins_out(self):
        bp = self.read("Android.bp")
        library = self.block("cc_library_shared {")
        self.assertIn('vendor: true', bp)
        self.assertIn('"libvexparamstore"', library)
        group = self.block("filegroup {")
        self.assertIn('"model/Parameter.cpp"', group)
        for text, stand_in in [(library, "engine/"), (library, '"platform/'), (group, "engine/"),
                               (group, "platform/"), (group, "observer/")]:
            self.assertNotIn(stand_in, text)
        # Test and fuzz programs read properties from the in-process stand-in, on a device too.
        self.assertIn('whole_static_libs: ["libspatializerparamstorage_property_standin"]', bp)

    def test_listening_programs_build_the_report_and_fuzzers_leave_the_fuzz_tools_out(self):
        def module(name):
            return self.block(f'name: "libspatializerparamstorage_{name}"')
        for name, listens in [("store_observer_tests", True), ("model_tests", False),
                              ("fuzz_tuning_file", True), ("fuzz_blob", False)]:
            with self.subTest(name):
                self.assertEqual(listens,
                                 '"libspatializerparamstorage_report_defaults"' in module(name))
        self.assertIn('"libspatializerparamstorage_store_observer_tests"',
                      self.read("TEST_MAPPING"))
        # The fuzzers come from the fuzz build, without its tools.
        self.assertNotIn("seed_dump", self.read("Android.bp"))
        self.assertIn('dictionary: "fuzz/tuning.dict"', module("fuzz_tuning_file"))
        self.assertNotIn("dictionary", module("fuzz_blob"))

    def test_unreadable_list_is_refused(self):
        cases = [("unknown kind", ["header korva_model model/Parameter.h"]),
                 ("no product", ["test model_tests tests/model/ParameterValuesTest.cpp"])]
        for name, lines in cases:
            with self.subTest(name):
                self.write_list(lines)
                result = self.run_script()
                self.assertNotEqual(0, result.returncode)


if __name__ == "__main__":
    unittest.main()
