#!/usr/bin/env python3
"""Runs spatializer-paramtool as a process on purpose-made tuning files and on the bundled example.

Usage: tool_test.py [RUNNER...] TOOL -- [unittest arguments]
RUNNER is what starts a binary of another architecture (the cross build's emulator), if needed.
"""
import json
import os
import shutil
import subprocess
import sys
import tempfile
import unittest

HERE = os.path.dirname(os.path.abspath(__file__))
DATA = os.path.join(HERE, "data")
EXAMPLE = os.path.join(os.path.dirname(os.path.dirname(HERE)), "examples",
                       "kvx-default-spatializer.xml")
LINT_FINDINGS = os.path.join(DATA, "lint-findings.xml")
VERSION_OVERRIDES = os.path.join(DATA, "version-overrides.xml")
BROKEN = os.path.join(DATA, "broken.xml")

TOOL = []

ALL_DEVICES = 0x40000000


def run(*args):
    return subprocess.run(TOOL + list(args), capture_output=True, text=True, timeout=300)


def run_json(*args):
    result = run(*args, "--json")
    return result, json.loads(result.stdout)


def line_of(path, text):
    """The line number of the one line of the file that contains text."""
    with open(path, encoding="utf-8") as f:
        lines = [n for n, line in enumerate(f, 1) if text in line]
    if len(lines) != 1:
        raise AssertionError("%r is on lines %s of %s, not on one" % (text, lines, path))
    return lines[0]


def setparams(calls):
    return [(c["device"], c["code"], c["values"]) for c in calls if c["call"] == "setParam"]


def entries(blob):
    return [(e["device"], e["code"], e["values"]) for e in blob["entries"]]


class CheckTest(unittest.TestCase):
    # (text found on the finding's line only, severity, part of the message)
    LINT_EXPECTED = [
        ("<lint_findings_tuning>", "error", '"default_bluetooth" for port bluetooth is missing'),
        ("<lint_findings_tuning>", "error", '"default_usb" for port usb is missing'),
        ('dynamic_speaker_optimization_enable="yes"', "warning", '"yes" is neither true nor false'),
        ('dynamic_speaker_optimization_enable="yes"', "warning", '"-4.5" is not a whole decimal'),
        ('dynamic_speaker_optimization_enable="yes"', "warning", 'did you mean "virtual_bass_process"'),
        ("<profiles/>", "warning", "did you mean <profile>"),
        ('name="flat" type="ieq"', "warning", "3 band frequencies but 1 targets"),
        ('<band_ieq frequency="1000"/>', "warning", "no target: the target list is cut here"),
        ('name="flat again"', "warning", "IEQ preset 0 is already defined at line 11"),
        ('name="flat again"', "warning", "has 2 bands, but IEQ preset 0 at line 11 has 3"),
        ("<band_eq ", "warning", "ends the list of <band_ieq> bands"),
        ('id="1.5"', "warning", '"1.5" is not a whole decimal number: read as 1'),
        ('id="1.5"', "warning", "IEQ preset 1 has 1 band, but IEQ preset 0 at line 11 has 3"),
        ('name="short"', "warning", 'makes a "gebs" of 5 values'),
        ('gain="0x10"', "warning", '"0x10" is not a whole decimal number: the gain list is cut'),
        ('name="shorter"', "warning", "profile 1 already has a GEQ preset at line 36"),
        ('name="shorter"', "warning", 'makes a "gebs" of 3 values'),
        ('<band frequency="50" gain="1"/>', None, None),
        ('type="peq"', "warning", '"peq" is neither ieq nor geq'),
        ("<volume-levelr-enable", "warning", "did you mean <volume-leveler-enable>"),
        ('value="12abc"', "warning", "dialog_enhancer_amount, which a profile does not use"),
        ('value="12abc"', "warning", '"12abc" is neither true, false nor a whole decimal number: '
                                     "read as 12"),
        ('value="1.5,2"', "warning", "not a list of whole decimal numbers: read as [1]"),
        ("<bass-enhancer-boost", "warning", "belongs in a tuning's data"),
        ('<headphone-virtualizer-mode value="2"/>', "warning", "again: the value at line 58"),
        ("<drc-metadata/>", "warning", "has no values: read as [0]"),
        ('vaule="true"', "warning", 'did you mean "value"'),
        ('vaule="true"', "warning", "has no value attribute: read as 0"),
        ('id="Speaker"', "warning", '"Speaker" is read as other'),
        ('value="0x10"', "warning", '"0x10" is neither true, false nor a whole decimal number'),
        ('ieq_preset="9"', None, None),
        ('<endpoint_type id="headphone">', "warning", "IEQ preset 9, which the file does not "
                                                      "define"),
        ('value="TRUE"', "warning", "read as 0"),
        ("frequencyhigh=", "warning", "virtual_bass_mix_freq_high, which a profile endpoint does "
                                      "not use"),
        ("frequencyhigh=", "warning", "virtual_bass_mix_freq_low, which a profile endpoint does "
                                      "not use"),
        ("frequencyhigh=", "warning", "has no frequency_high: read as 0"),
        ("frequencyhigh=", "warning", 'did you mean "frequency_high"'),
        ('name="movie twice"', "warning", "profile id 1 is already used at line 52"),
        ('name="no geq"', "warning", "profile 7 has no GEQ preset"),
        ("<data><mi-dv-leveler", "warning", "follows <data> on the same line"),
        ('<volume-modeler-enable value="1"/>', "warning", "after the profile's data element"),
        ('mono_device="no"', "warning", '"no" is neither true nor false'),
        ('mono_device="no"', "warning", '"2.5" is not a whole decimal number: read as 2'),
        ('mono_device="no"', "warning", 'speaker tuning "stereo" has no mix matrix'),
        ('mono_device="no"', "warning", 'speaker tuning "stereo" has no <virtual-bass-mode>'),
        ('endpoint_port="hdmi"', "error", "filed for device 0"),
        ("<datta>", "warning", "is taken as the data element"),
        ("<output-mode>", "warning", "holds no matrix"),
        ('isolated_band="yes"', "warning", '"yes" is neither true nor false'),
        ('id="late_device"', "warning", "device_ids come first"),
        ('endpoint_type="Headphone"', "warning", '"Headphone" of tuning "headphones" is read as '
                                                 "speaker"),
        ('<device_id id="default_headphone" endpoint_port="headphone"/>\n        <data>',
         "warning", 'tuning device "default_headphone" is already bound at line 86'),
        ('value="1,,2"', "warning", "read as [1]"),
        ('name="unbound"', "warning", 'tuning "unbound" has no device_id'),
        ('name="no data"', "error", "has no data element: the reader drops it and stops, so 1 "
                                    "element after it (from line 114) is not read"),
        ('id="default_bluetooth"', "error", 'names tuning "no data", which is not kept'),
    ]

    def findings(self, path, *options):
        result, document = run_json("check", path, *options)
        return result, document

    def test_example_is_clean(self):
        result = run("check")
        self.assertEqual(result.returncode, 0, result.stdout + result.stderr)
        self.assertNotIn(": warning:", result.stdout)
        self.assertNotIn(": error:", result.stdout)
        self.assertIn("tunings usable  yes", result.stdout)
        self.assertEqual(result.stderr, "")

        result, document = self.findings(EXAMPLE)
        self.assertEqual((document["errors"], document["warnings"], document["status"]), (0, 0, 0))
        summary = document["summary"]
        self.assertTrue(summary["tunings_usable"])
        self.assertEqual(summary["profile_blobs"], [0, 1, 2, 3, 4])
        _, dump = run_json("dump")
        self.assertEqual(summary["records"], {kind: len(dump[kind]) for kind in (
            "ieq_presets", "geq_presets", "profiles", "profile_endpoints", "tunings",
            "device_tunings")})
        ports = {p["port"]: p for p in summary["ports"]}
        self.assertEqual(ports["internal_speaker"]["selected"], "")
        # The library lists the empty-named device first, as a leading blank.
        self.assertEqual(ports["internal_speaker"]["tuning_devices"], ["", "speaker_game"])
        for port in ("headphone", "bluetooth", "usb"):
            self.assertEqual(ports[port]["selected"], "default_" + port)
            self.assertIn("default_" + port, ports[port]["tuning_devices"])

    def test_each_finding_is_reported_on_its_line(self):
        result, document = self.findings(LINT_FINDINGS)
        self.assertEqual(result.returncode, 2)
        remaining = list(document["findings"])
        for text, severity, message in self.LINT_EXPECTED:
            line = line_of(LINT_FINDINGS, text.split("\n")[0]) if "\n" not in text else \
                self.line_of_block(text)
            if severity is None:
                # A line that must have no finding at all.
                self.assertFalse([f for f in document["findings"] if f["line"] == line],
                                 "unexpected finding on line %d" % line)
                continue
            match = [f for f in remaining
                     if f["line"] == line and f["severity"] == severity and message in f["message"]]
            self.assertTrue(match, "no %s %r on line %d; findings there: %s" % (
                severity, message, line, [f for f in document["findings"] if f["line"] == line]))
            remaining.remove(match[0])
        self.assertEqual(remaining, [], "findings that no test expects")
        self.assertEqual(document["errors"],
                         sum(1 for _, s, _ in self.LINT_EXPECTED if s == "error"))
        self.assertFalse(document["summary"]["tunings_usable"])

    @staticmethod
    def line_of_block(text):
        """The line of the first line of a block of lines that appears once in the file."""
        with open(LINT_FINDINGS, encoding="utf-8") as f:
            content = f.read()
        self_index = content.find(text)
        if self_index < 0 or content.find(text, self_index + 1) >= 0:
            raise AssertionError("%r is not in the file once" % text)
        return content.count("\n", 0, self_index) + 1

    def test_version_overrides_are_reported_where_written(self):
        result, document = self.findings(VERSION_OVERRIDES)
        self.assertEqual(result.returncode, 0)
        found = [(f["line"], f["severity"], f["message"]) for f in document["findings"]]
        self.assertEqual(found, [
            (line_of(VERSION_OVERRIDES, '<headphone-virtualizer-mode value="2"/>'), "warning",
             "headphone_virtualizer_mode [2] written here is replaced by [1] by the rules of "
             "format version 3.3.0"),
            (line_of(VERSION_OVERRIDES, '<speaker-virtualizer-mode value="2"/>'), "warning",
             "speaker_virtualizer_mode [2] written here is replaced by [1] by the rules of "
             "format version 3.3.0"),
        ])

    def test_exit_statuses(self):
        cases = [
            (EXAMPLE, [], 0),
            (EXAMPLE, ["--strict"], 0),
            (VERSION_OVERRIDES, [], 0),
            (VERSION_OVERRIDES, ["--strict"], 1),
            (LINT_FINDINGS, [], 2),
            (BROKEN, [], 2),
            (os.path.join(DATA, "no-such-file.xml"), [], 2),
        ]
        for path, options, status in cases:
            with self.subTest(path=os.path.basename(path), options=options):
                self.assertEqual(run("check", path, *options).returncode, status)

    def test_unreadable_files_are_one_line_on_stderr_with_the_path(self):
        for path, words in [(BROKEN, "not a readable XML document"),
                            (os.path.join(DATA, "no-such-file.xml"), "cannot open")]:
            for command in (["check"], ["dump"], ["blobs"], ["simulate"]):
                with self.subTest(path=os.path.basename(path), command=command[0]):
                    result = run(*command, path)
                    self.assertEqual(result.returncode, 2)
                    lines = result.stderr.splitlines()
                    self.assertEqual(len(lines), 1, result.stderr)
                    self.assertIn(path, lines[0])
                    self.assertIn(words, lines[0])
        result = run("check", BROKEN)
        self.assertIn("%s:5:" % BROKEN, result.stderr)

    def test_text_reports_the_same_findings_as_json(self):
        text = run("check", LINT_FINDINGS).stdout
        _, document = self.findings(LINT_FINDINGS)
        reported = [line for line in text.splitlines() if line.startswith(LINT_FINDINGS + ":")]
        self.assertEqual(reported, ["%s:%d: %s: %s" % (LINT_FINDINGS, f["line"], f["severity"],
                                                        f["message"])
                                    for f in document["findings"]])
        self.assertIn("findings        5 errors, %d warnings" % document["warnings"], text)


class DumpTest(unittest.TestCase):
    def test_records_as_the_library_holds_them(self):
        result, document = run_json("dump", VERSION_OVERRIDES)
        self.assertEqual(result.returncode, 0)
        self.assertEqual(document["format_version"], "3.3.0")
        self.assertEqual(document["tool_version"], "3.9.2")
        # 3.3.0 names IEQ presets: the id text selects the canonical number and name.
        self.assertEqual([(p["preset_id"], p["name"]) for p in document["ieq_presets"]],
                         [(2, "balanced")])
        self.assertNotIn("ieq_id", document["ieq_presets"][0]["values"])
        profile = document["profiles"][0]
        # The record holds the value after the version rule, not the file's 2.
        self.assertEqual(profile["values"]["headphone_virtualizer_mode"], [1])
        endpoints = document["profile_endpoints"]
        self.assertEqual([(e["endpoint"], e["selected_ieq_preset"]) for e in endpoints],
                         [("speaker", 2), ("headphone", 2)])
        # The dialog enhancer's switch is appended to its steering flag when both are there;
        # here there is no steering flag, so it stays empty.
        self.assertEqual(endpoints[0]["values"]["dialog_enhancer_amount"], [6])
        tunings = {t["name"]: t for t in document["tunings"]}
        self.assertEqual(tunings["speaker"]["values"]["output_mix_matrix"], [1, 0, 0, 1])
        self.assertEqual(tunings["speaker"]["values"]["speaker_virtualizer_mode"], [1])
        self.assertEqual([(d["device"], d["port"], d["tuning"])
                          for d in document["device_tunings"]],
                         [("", "internal_speaker", "speaker"),
                          ("default_headphone", "headphone", "phones"),
                          ("default_bluetooth", "bluetooth", "phones"),
                          ("default_usb", "usb", "phones")])

    def test_text_dump_is_aligned_within_100_columns(self):
        text = run("dump").stdout
        self.assertIn("IEQ preset #1  id=-1  presetId=0  name=off", text)
        self.assertLessEqual(max(len(line) for line in text.splitlines()), 100)


class BlobsTest(unittest.TestCase):
    def test_builtin_tables(self):
        result, document = run_json("blobs", "--builtin")
        self.assertEqual(result.returncode, 0)
        blobs = {b["name"]: b for b in document["blobs"]}
        self.assertEqual(list(blobs), ["common", "dynamic", "movie", "music", "cinema", "custom"])
        self.assertEqual((blobs["common"]["words"], len(blobs["common"]["entries"])), (456, 57))
        for name in ("dynamic", "movie", "music", "cinema", "custom"):
            self.assertEqual((blobs[name]["words"], len(blobs[name]["entries"])), (117, 27))
            self.assertTrue(blobs[name]["valid"])
        movie = entries(blobs["movie"])
        self.assertEqual(movie[:3], [(ALL_DEVICES, "mdle", [0]), (ALL_DEVICES, "miee", [0]),
                                     (ALL_DEVICES, "hvrc", [103, 32568, 11164, 5090, 0, 1, 2, 2])])
        self.assertEqual(movie[7], (2, "dsb", [88]))
        self.assertEqual(blobs["movie"]["entries"][7]["device_name"], "speaker")

    def test_file_blobs_per_profile_and_tuning_device(self):
        result, document = run_json("blobs", VERSION_OVERRIDES)
        self.assertEqual(result.returncode, 0)
        kinds = [(b["kind"], b.get("id"), b["name"]) for b in document["blobs"]]
        self.assertEqual(kinds, [("profile", 0, "dynamic"),
                                 ("tuning_device", None, ""),
                                 ("tuning_device", None, "default_headphone"),
                                 ("tuning_device", None, "default_bluetooth"),
                                 ("tuning_device", None, "default_usb")])
        port_devices = {"internal_speaker": 2, "headphone": 8, "bluetooth": 0x80, "usb": 0x4000}
        for blob in document["blobs"]:
            self.assertTrue(blob["valid"])
            if blob["kind"] == "tuning_device":
                self.assertEqual({e["device"] for e in blob["entries"]},
                                 {port_devices[blob["port"]]})
        profile = entries(document["blobs"][0])
        # The headphone endpoint is translated for Bluetooth and USB, not for wired headphones.
        self.assertEqual(sorted({d for d, _, _ in profile}), [2, 0x80, 0x4000, ALL_DEVICES])
        self.assertIn((ALL_DEVICES, "hvm", [1]), profile)

    def test_selection_by_profile_and_device(self):
        _, document = run_json("blobs", "--profile", "music")
        self.assertEqual([(b["kind"], b["id"]) for b in document["blobs"]], [("profile", 2)])
        _, document = run_json("blobs", "--device", "usb_dac", "--profile", "0")
        self.assertEqual([b["name"] for b in document["blobs"]], ["dynamic", "usb_dac"])
        _, document = run_json("blobs", "--device", "")
        self.assertEqual([(b["name"], b["tuning"]) for b in document["blobs"]],
                         [("", "speaker_stereo")])
        for option in (["--profile", "9"], ["--profile", "opera"], ["--device", "nothing"]):
            with self.subTest(option=option):
                result = run("blobs", *option)
                self.assertEqual(result.returncode, 2)
                self.assertEqual(len(result.stderr.splitlines()), 1)

    def test_text_table_matches_the_entries(self):
        text = run("blobs", "--profile", "movie").stdout
        _, document = run_json("blobs", "--profile", "movie")
        blob = document["blobs"][0]
        lines = text.splitlines()
        self.assertEqual(lines[0], 'profile 1 "movie": %d entries, %d words'
                         % (len(blob["entries"]), blob["words"]))
        rows = [line.split() for line in lines[2:] if line[:6].strip().isdigit()]
        self.assertEqual([(r[1], r[2]) for r in rows][:3], [("all", "mdle"), ("all", "miee"),
                                                           ("all", "msce")])
        self.assertEqual(len(rows), len(blob["entries"]))
        self.assertLessEqual(max(len(line) for line in lines), 100)


class SimulateTest(unittest.TestCase):
    def test_profile_switch_sends_the_builtin_profile_then_commits(self):
        _, builtin = run_json("blobs", "--builtin", "--profile", "music")
        result, document = run_json("simulate", EXAMPLE, "profile=music")
        self.assertEqual(result.returncode, 0)
        step = document["steps"][0]
        self.assertEqual((step["step"], step["result"]), ("profile=music", 0))
        calls = step["calls"]
        self.assertEqual(setparams(calls), entries(builtin["blobs"][0]))
        self.assertEqual(calls[-1], {"call": "commit", "device": ALL_DEVICES,
                                     "device_name": "all", "result": 0})
        self.assertEqual(len(calls), len(builtin["blobs"][0]["entries"]) + 1)

    def test_tuning_selection_sends_the_device_blob_once(self):
        _, blobs = run_json("blobs", "--device", "usb_dac")
        result, document = run_json("simulate", "select=usb:usb_dac", "select=usb:usb_dac",
                                    "select=headphone:usb_dac")
        self.assertEqual(result.returncode, 0)
        first, again, wrong_port = document["steps"]
        self.assertEqual(first["result"], 0)
        self.assertEqual(setparams(first["calls"]), entries(blobs["blobs"][0]))
        self.assertEqual(first["calls"][-1]["call"], "commit")
        # Selecting what the port already has sends nothing; a device of another port is refused.
        self.assertEqual((again["result"], again["calls"]), (0, []))
        self.assertEqual((wrong_port["result"], wrong_port["calls"]), (-22, []))

    def test_user_gains_from_properties_reach_the_graphic_eq(self):
        result, document = run_json("simulate", "--prop", "gains=1,2,3,4,5,6,7,8,9,10",
                                    "content=on", "geq=" + ",".join(str(g) for g in range(20)))
        self.assertEqual(result.returncode, 0)
        self.assertEqual(document["properties"], {"persist.vendor.audio.sfx.hd.eq":
                                                  "1,2,3,4,5,6,7,8,9,10"})
        content, geq = document["steps"]
        gebs = [c for c in content["calls"] if c.get("code") == "gebs"]
        self.assertEqual(len(gebs), 1)
        # Ten user gains in dB, clamped, spread over 20 bands in 1/16 dB and made relative.
        self.assertEqual(gebs[0]["values"][21:], [-58, -50, -42, -34, -26, -18, -10, -2, 6, 14]
                         + [22] * 10)
        self.assertEqual([(c["call"], c.get("code"), c.get("capacity", c.get("count")))
                          for c in geq["calls"]],
                         [("getParam", "gebs", 41), ("setParam", "gebs", 41),
                          ("commit", None, None)])
        self.assertEqual(geq["calls"][1]["values"][21:], list(range(20)))

    def test_the_given_file_loads_whichever_path_the_properties_choose(self):
        _, blobs = run_json("blobs", VERSION_OVERRIDES, "--device", "default_usb")
        for prop in ("product=quenthorn", "smartpa=fs19xx", "ro.product.name=other"):
            with self.subTest(prop=prop):
                result, document = run_json("simulate", "--prop", prop, VERSION_OVERRIDES,
                                            "load=default_usb")
                self.assertEqual(result.returncode, 0, result.stderr)
                self.assertTrue(document["tunings_usable"])
                step = document["steps"][0]
                self.assertEqual(step["result"], 0)
                self.assertEqual(setparams(step["calls"]), entries(blobs["blobs"][0]))

    def test_bad_steps_are_refused_before_anything_runs(self):
        for step in ("profile=opera", "content=maybe", "select=moon:x", "geq=1.5"):
            with self.subTest(step=step):
                result = run("simulate", step)
                self.assertEqual(result.returncode, 2)
                self.assertEqual(result.stdout, "")
                self.assertIn(step, result.stderr)


class DiffTest(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="paramtool-test.")

    def tearDown(self):
        shutil.rmtree(self.folder)

    def changed_copy(self):
        """The example with the movie profile's speaker dialog-enhancer amount 8 made 9."""
        with open(EXAMPLE, encoding="utf-8") as f:
            text = f.read()
        old = '<dialog-enhancer-amount value="8"/>'
        at = text.index(old, text.index('<profile id="1"'))
        self.assertLess(at, text.index('<endpoint_type id="headphone">', text.index(
            '<profile id="1"')))
        path = os.path.join(self.folder, "changed.xml")
        with open(path, "w", encoding="utf-8") as f:
            f.write(text[:at] + '<dialog-enhancer-amount value="9"/>' + text[at + len(old):])
        return path

    def test_a_file_against_itself_is_identical(self):
        result, document = run_json("diff", EXAMPLE, EXAMPLE)
        self.assertEqual(result.returncode, 0)
        self.assertEqual((document["identical"], document["differences"]), (True, []))
        self.assertIn("no differences", run("diff").stdout)

    def test_one_changed_value_is_exactly_one_change(self):
        changed = self.changed_copy()
        result, document = run_json("diff", EXAMPLE, changed)
        self.assertEqual(result.returncode, 1)
        self.assertEqual(document["differences"], [{
            "blob": 'profile 1 "movie"', "change": "changed",
            "entries": [{"change": "changed", "device": 2, "device_name": "speaker",
                         "code": "dea", "old": [8], "new": [9]}]}])
        text = run("diff", EXAMPLE, changed).stdout.splitlines()
        self.assertEqual(text[0], 'profile 1 "movie": 1 entry differs')
        self.assertEqual(text[2].split(), ["changed", "speaker", "dea", "old:", "8"])
        self.assertEqual(text[3].split(), ["new:", "9"])

    def test_blobs_only_one_file_has_are_added_or_removed(self):
        result, document = run_json("diff", VERSION_OVERRIDES, EXAMPLE)
        self.assertEqual(result.returncode, 1)
        changes = {d["blob"]: d["change"] for d in document["differences"]}
        self.assertEqual(changes['profile 1 "movie"'], "added")
        self.assertEqual(changes['tuning device "usb_dac"'], "added")
        self.assertEqual(changes['profile 0 "dynamic"'], "changed")

    def test_an_unreadable_file_fails_the_diff(self):
        result = run("diff", EXAMPLE, BROKEN)
        self.assertEqual(result.returncode, 2)
        self.assertIn(BROKEN, result.stderr)


if __name__ == "__main__":
    args = sys.argv[1:]
    split = args.index("--") if "--" in args else len(args)
    TOOL.extend(args[:split])
    unittest.main(argv=[sys.argv[0]] + args[split + 1:], verbosity=2)
