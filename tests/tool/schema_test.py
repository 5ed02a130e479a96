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

# Every tuning file of the test data, and whether the schema accepts it: only what a tuning tool
# could have written, in format 3.4, validates.
DATA_FILES = [
    ("tests/data/duplicate-profiles.xml", True, "a 3.4 file as a tool writes it"),
    ("tests/data/bands-foreign-element.xml", False, "foreign elements among the bands"),
    ("tests/data/childless-elements.xml", False, "settings outside authorized_technologies"),
    ("tests/data/childless-profile-3.2.xml", False, "format 3.2: include after the profile"),
    ("tests/data/childless-tuning.xml", False, "a tuning without its attributes and data"),
    ("tests/data/deep-nesting.xml", False, "elements no setter reads"),
    ("tests/data/empty-root.xml", False, "no versions"),
    ("tests/data/empty.xml", False, "not XML"),
    ("tests/data/endpoint-case.xml", False, "endpoint names in other cases"),
    ("tests/data/format-3.2.xml", False, "format 3.2: presets named, not numbered"),
    ("tests/data/format-3.3.0.xml", False, "format 3.3: presets named, TRUE in capitals"),
    ("tests/data/format-3.4.xml", False, "an unknown setting and preset type on purpose"),
    ("tests/data/garbage-numbers.xml", False, "numbers that are not numbers"),
    ("tests/data/iterator-walk.xml", False, "not a tuning file"),
    ("tests/data/loader-missing-default.xml", False, "a preset without data"),
    ("tests/data/loader-no-speaker.xml", False, "tunings without their attributes"),
    ("tests/data/loader-profiles.xml", False, "tunings without their attributes"),
    ("tests/data/loader-tunings.xml", False, "tunings without their attributes"),
    ("tests/data/matrices.xml", False, "tunings without their attributes"),
    ("tests/data/misplaced-elements.xml", False, "parameters outside any record"),
    ("tests/data/no-root.xml", False, "not XML"),
    ("tests/data/no-tuning-data.xml", False, "a tuning without data"),
    ("tests/data/not-xml.xml", False, "not XML"),
    ("tests/data/processing-instructions.xml", False, "entity references and instructions"),
    ("tests/data/setters.xml", False, "not a tuning file: one element per setter"),
    ("tests/data/too-deep.xml", False, "nested deeper than XML parsers allow"),
    ("tests/data/truncated.xml", False, "not XML"),
    ("tests/data/version-after-settings.xml", False, "format 3.2, versions after the settings"),
    ("tests/data/versions-template.xml", False, "a template: versions are placeholders"),
    ("tests/tool/data/broken.xml", False, "not XML"),
    ("tests/tool/data/version-overrides.xml", False, "format 3.3, another root"),
]


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

    def test_every_data_file_is_listed(self):
        listed = {path for path, _, _ in DATA_FILES}
        for folder in ("tests/data", "tests/tool/data"):
            for name in os.listdir(os.path.join(ROOT, folder)):
                if name.endswith(".xml"):
                    self.assertIn(folder + "/" + name, listed)

    def test_example_and_data_files(self):
        ok, errors = validates(EXAMPLE)
        self.assertTrue(ok, errors)
        for path, expected, why in DATA_FILES:
            with self.subTest(path=path, why=why):
                ok, errors = validates(os.path.join(ROOT, path))
                self.assertEqual(ok, expected, errors)

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
