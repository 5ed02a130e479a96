#!/usr/bin/env python3
"""The schema that spatializer-paramtool generates: the checked-in copy is current, and xmllint
accepts the files a tuning tool writes and rejects the others.

Usage: schema_test.py [RUNNER...] TOOL -- [unittest arguments]
"""
import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.dirname(os.path.dirname(HERE))
SCHEMA = os.path.join(ROOT, "schema", "kvx-tuning-3.4.xsd")
EXAMPLE = os.path.join(ROOT, "examples", "kvx-default-spatializer.xml")

TOOL = []

# Of the test data's tuning files, only these could have come from a tuning tool in format 3.4;
# the others are older formats, not XML, or break the format on purpose, and must not validate.
DATA_FOLDERS = ("tests/data", "tests/tool/data")
VALID_DATA = {"tests/data/duplicate-profiles.xml"}


def validates(path):
    result = subprocess.run(["xmllint", "--noout", "--schema", SCHEMA, path],
                            capture_output=True, text=True, timeout=60)
    return result.returncode == 0, result.stderr


class SchemaTest(unittest.TestCase):
    def test_checked_in_schema_is_what_the_tool_generates(self):
        generated = subprocess.run(TOOL + ["schema"], capture_output=True, text=True, timeout=60)
        self.assertEqual(generated.returncode, 0, generated.stderr)
        with open(SCHEMA, encoding="utf-8") as f:
            self.assertTrue(generated.stdout == f.read(),
                            "schema/kvx-tuning-3.4.xsd is out of date; regenerate it with "
                            "spatializer-paramtool schema > schema/kvx-tuning-3.4.xsd")

    def test_example_and_data_files(self):
        ok, errors = validates(EXAMPLE)
        self.assertTrue(ok, errors)
        for folder in DATA_FOLDERS:
            for name in sorted(os.listdir(os.path.join(ROOT, folder))):
                path = folder + "/" + name
                if name.endswith(".xml"):
                    with self.subTest(path=path):
                        ok, errors = validates(os.path.join(ROOT, path))
                        self.assertEqual(ok, path in VALID_DATA, errors)

    def test_edits_of_the_example(self):
        with open(EXAMPLE, encoding="utf-8") as f:
            example = f.read()
        cases = [
            # (what, old, new, error xmllint names)
            ("a misspelt parameter", "<volmax-boost ", "<volmax-bost ", "volmax-bost"),
            ("a misspelt record", "<tuning name=\"speaker_game\"", "<tunning name=\"speaker_game\"",
             "tunning"),
            ("an unknown endpoint", "<endpoint_type id=\"headphone\">",
             "<endpoint_type id=\"headphones\">", "headphones"),
            ("an unknown port", "endpoint_port=\"usb\"", "endpoint_port=\"usb2\"", "usb2"),
            ("a tuning's parameter in an endpoint", "<dialog-enhancer-ducking value=\"2\"/>",
             "<regulator-enable value=\"true\"/>", "regulator-enable"),
            ("a list where a number goes", "<volmax-boost value=\"144\"/>",
             "<volmax-boost value=\"1,2\"/>", "volmax-boost"),
            ("a band without its frequency", "<band_ieq frequency=\"47\" target=\"0\"/>",
             "<band_ieq target=\"0\"/>", "frequency"),
        ]
        with tempfile.TemporaryDirectory() as folder:
            for what, old, new, named in cases:
                with self.subTest(what=what):
                    self.assertIn(old, example)
                    path = os.path.join(folder, "edited.xml")
                    with open(path, "w", encoding="utf-8") as f:
                        f.write(example.replace(old, new, 1))
                    ok, errors = validates(path)
                    self.assertFalse(ok, what)
                    self.assertRegex(errors, re.escape(named))


if __name__ == "__main__":
    args = sys.argv[1:]
    split = args.index("--")
    TOOL.extend(args[:split])
    if shutil.which("xmllint") is None:
        print("xmllint is not installed (libxml2-utils): skipped")
        sys.exit(77)
    unittest.main(argv=[sys.argv[0]] + args[split + 1:], verbosity=2)
