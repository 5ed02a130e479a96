#!/usr/bin/env python3
"""Runs spatializer-paramtool as a process on purpose-made tuning files and on the bundled example.

Usage: tool_test.py [RUNNER...] TOOL -- [unittest arguments]
RUNNER is what starts a binary of another architecture (the cross build's emulator), if needed.
"""
import json
import os
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import time
import unittest
import urllib.parse

HERE = os.path.dirname(os.path.abspath(__file__))
DATA = os.path.join(HERE, "data")
EXAMPLE = os.path.join(os.path.dirname(os.path.dirname(HERE)), "examples",
                       "kvx-default-spatializer.xml")
VERSION_OVERRIDES = os.path.join(DATA, "version-overrides.xml")
BROKEN = os.path.join(DATA, "broken.xml")

TOOL = []

ALL_DEVICES = 0x40000000


def run(*args):
    return subprocess.run(TOOL + list(args), capture_output=True, text=True, timeout=300)


def run_json(*args):
    result = run(*args, "--json")
    return result, json.loads(result.stdout)


def read(path):
    with open(path, encoding="utf-8") as f:
        return f.read()


def line_of(path, text):
    """The line number of the one line of the file that contains text."""
    lines = [n for n, line in enumerate(read(path).split("\n"), 1) if text in line]
    if len(lines) != 1:
        raise AssertionError("%r is on lines %s of %s, not on one" % (text, lines, path))
    return lines[0]


def assert_fits_80(test, text, *user_paths):
    """Every line the tool composes fits 80 columns. A line that carries a path the user gave is
    as long as that path, wherever the checkout lives, so it is not judged."""
    judged = [line for line in text.splitlines() if not any(p in line for p in user_paths)]
    test.assertTrue(judged, text)
    test.assertEqual([line for line in judged if len(line) > 80], [], text)


def setparams(calls):
    return [(c["device"], c["code"], c["values"]) for c in calls if c["call"] == "setParam"]


def entries(blob):
    return [(e["device"], e["code"], e["values"]) for e in blob["entries"]]


def read_lines(source):
    """The lines of every element a source (an entry's provenance) was read from."""
    return [e["line"] for p in source["parameters"] for s in p["steps"] for e in s["elements"]]


def tuning(body, version="3.4.0", tail=""):
    """A tuning file of the given format version: body inside the root, after the version."""
    major, minor, maintenance = version.split(".")
    return ('<?xml version="1.0"?>\n<kvx_spatializer_tuning>\n'
            '    <format_version major="%s" minor="%s" maintenance="%s"/>\n%s'
            '</kvx_spatializer_tuning>\n%s' % (major, minor, maintenance, body, tail))


def profile(pid, name, endpoints, data='<volume-modeler-enable value="true"/>'):
    return ('    <profile id="%d" name="%s">\n        <data>\n            %s\n%s'
            '        </data>\n    </profile>\n' % (pid, name, data, endpoints))


def device_tuning(name, data):
    """A speaker tuning of two channels for device "dev" of port usb."""
    return ('    <tuning name="%s" endpoint_type="speaker" orientation="1" output_channels="2">\n'
            '        <device_id id="dev" endpoint_port="usb"/>\n%s    </tuning>\n' % (name, data))


SPEAKER = ('            <endpoint_type id="speaker">\n                <include ieq_preset="2"/>\n'
           '                <dialog-enhancer-amount value="4"/>\n            </endpoint_type>\n')


class FolderTest(unittest.TestCase):
    """A private folder for the test's tuning files."""

    def interrupt(self, args, ready, **popen):
        """Runs the tool with TMPDIR a folder of its own, stops it by SIGTERM, then by SIGINT, as
        soon as ready(folder) holds, and checks that each run leaves the folder empty."""
        temporary = os.path.join(self.folder, "tmp")
        os.mkdir(temporary)
        for stop in (signal.SIGTERM, signal.SIGINT):
            with self.subTest(signal=stop):
                tool = subprocess.Popen(TOOL + args, stdout=subprocess.DEVNULL,
                                        stderr=subprocess.DEVNULL,
                                        env=dict(os.environ, TMPDIR=temporary), **popen)
                if tool.stdin:
                    tool.stdin.write(b"<?xml")
                    tool.stdin.flush()
                for _ in range(5000):
                    if ready(temporary) or tool.poll() is not None:
                        break
                    time.sleep(0.002)
                self.assertTrue(ready(temporary), "the private copy is made")
                tool.send_signal(stop)
                self.assertEqual(tool.wait(timeout=60), -stop)
                if tool.stdin:
                    tool.stdin.close()
                # The loads under way end, each removing its copy.
                for _ in range(1000):
                    if not os.listdir(temporary):
                        break
                    time.sleep(0.01)
                self.assertEqual(os.listdir(temporary), [])

    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="paramtool-test.")

    def tearDown(self):
        shutil.rmtree(self.folder)

    def write(self, text, name="tuning.xml"):
        path = os.path.join(self.folder, name)
        with open(path, "w", encoding="utf-8") as f:
            f.write(text)
        return path


class CheckTest(FolderTest):

    def check(self, text, *options):
        path = self.write(text)
        return path, run_json("check", path, *options)[1]

    def finding(self, text, marker, words, *options):
        """The one finding on the line of marker whose message has words."""
        path, document = self.check(text, *options)
        line = line_of(path, marker)
        found = [f for f in document["findings"] if f["line"] == line and words in f["message"]]
        self.assertEqual(len(found), 1, "%r on line %d: %s" % (words, line, document["findings"]))
        return found[0], path

    def test_example_is_clean(self):
        result = run("check")
        self.assertEqual(result.returncode, 0, result.stdout + result.stderr)
        self.assertIn("no findings", result.stdout)
        self.assertIn("tunings usable  yes", result.stdout)
        self.assertEqual(result.stderr, "")
        result, document = run_json("check", EXAMPLE)
        summary = document["summary"]
        self.assertEqual(summary["profile_blobs"], [0, 1, 2, 3, 4])
        _, dump = run_json("dump")
        self.assertEqual(summary["records"], {kind: len(dump[kind]) for kind in (
            "ieq_presets", "geq_presets", "profiles", "profile_endpoints", "tunings",
            "device_tunings")})
        ports = {p["port"]: p for p in summary["ports"]}
        # The library lists the empty-named device first, as a leading blank.
        self.assertEqual(ports["internal_speaker"]["tuning_devices"], ["", "speaker_game"])
        self.assertIn("default_usb", ports["usb"]["tuning_devices"])

    def test_a_repeated_record_points_at_the_earlier_one(self):
        def stress(name, amount):
            return device_tuning(name, '        <data>\n            <regulator-stress-amount '
                                 'value="%d"/>\n        </data>\n' % amount)
        cases = [(tuning(profile(1, "first", SPEAKER) + profile(1, "second", SPEAKER.replace(
            '"4"', '"5"'))), '"second"', "profile id 1 is used again", '"first"',
            'profile 1 "first" is here'),
            (tuning(stress("a", 1) + stress("b", 2)), '"b"',
             'tuning "b" replaces the blob of "dev"', '"a"', 'tuning "a" is here')]
        found = {}
        for text, marker, words, earlier, note in cases:
            with self.subTest(words=words):
                found[marker], path = self.finding(text, marker, words)
                # The note locates the earlier record; what its blob holds is for blobs to show.
                self.assertEqual([(n["line"], n["message"]) for n in found[marker]["notes"]],
                                 [(line_of(path, earlier), note)])
        found, path = found['"second"'], self.write(cases[0][0])
        self.assertIn('"second" is dropped', found["message"])
        self.assertIn("the endpoints of both go into it", found["message"])
        _, blobs = run_json("blobs", path)
        (kept,) = [b for b in blobs["blobs"] if b["kind"] == "profile"]
        self.assertEqual((kept["id"], kept["name"]), (1, "first"))
        self.assertEqual([e[2] for e in entries(kept) if e[:2] == (2, "dea")], [[4], [5]])

    def test_rules_that_change_what_reaches_the_effect(self):
        cases = [
            # A 3.3.0 file names its preset; ieq_preset is not read and the preset is 0.
            (tuning(profile(0, "p", SPEAKER), "3.3.0"), "<include", '"ieq_preset" of <include> '
             "is not read", ['<include> has no "preset"']),
            (tuning('    <authorized_technologies>\n        <global_setting '
                    'orbex_game_system_gain="-48"/>\n    </authorized_technologies>\n', "3.2.0"),
             "<authorized_technologies>", "is passed over", []),
            (tuning(profile(0, "p", SPEAKER)), '<profile id="0"', "has no reverb_suppression_"
             "enable: the effect gets \"rvse\" with no values", []),
            # Renamed, it changes nothing that reaches the effect: shown under --verbose only.
            (tuning(profile(0, "p", SPEAKER, '<volume-levelr-enable value="1"/>')), "levelr",
             "did you mean <volume-leveler-enable>?", [], "--verbose"),
            (tuning(profile(0, "p", SPEAKER, '<surround-boost value="1.5"/>')), "surround-boost",
             '"1.5" is not a whole number: read as 1', []),
            (tuning(profile(0, "p", SPEAKER.replace('"speaker"', '"Speaker"'))), '"Speaker"',
             '"Speaker" is not a word the reader knows: read as 2', []),
            (tuning(profile(0, "p", SPEAKER, '<headphone-virtualizer-mode value="2"/>'), "3.3.0"),
             "virtualizer-mode", "headphone_virtualizer_mode [2] written here is replaced by [1] "
             "by the rules of format version 3.3.0", []),
            (tuning(profile(0, "p", SPEAKER, '<volume-modeler-enable value="1"/>\n'
                            '<volume-modeler-enable value="0"/>')), 'value="0"/>', "again", []),
            # The reader steps over the comment, not the blank text, and misses the include: the
            # endpoint takes preset 0 and preset 2 reaches nothing, a consequence of the comment,
            # which taking the comment away clears (EffectTest measures what it costs).
            (tuning('    <preset id="2" name="p2" type="ieq">\n    </preset>\n' + profile(
                0, "p", SPEAKER.replace('"speaker">', '"speaker"><!-- note -->'))),
             "<!-- note -->", 'the comment "note" is the first child', []),
            (tuning(device_tuning("t", "") + '    <profile id="0" name="late"/>\n'),
             '<tuning name="t"', 'tuning "t" has no data element: the reader drops it and stops',
             []),
        ]
        for text, marker, words, notes, *options in cases:
            with self.subTest(words=words):
                found, path = self.finding(text, marker, words, *options)
                # Notes only locate the cause; what it changes is its effect or its message.
                self.assertEqual([n["message"] for n in found["notes"]], notes)
        # What the dropped tuning keeps from being read is not a finding of its own.
        path, document = self.check(cases[-1][0])
        self.assertEqual([f for f in document["findings"] if f["line"] == line_of(path, '"late"')],
                         [])
        found, _ = self.finding(cases[-2][0], "<!-- note -->", "first child")
        self.assertIn("IEQ preset 2 goes into no blob: nothing of it reaches the effect",
                      [c["message"] for c in found["clears"]])

    def test_lines_past_libxml2s_limit_say_at_least(self):
        path, document = self.check(tuning("\n" * 70000 + "    <profiles/>\n"))
        found = [f for f in document["findings"] if "<profiles>" in f["message"]]
        self.assertEqual((found[0]["line"], found[0].get("at_least")), (65535, True))
        self.assertIn("%s:65535+: warning: <profiles>" % path, run("check", path).stdout)

    def test_pipes_and_stdin_are_read_once_with_the_same_findings(self):
        text = tuning(profile(0, "p", SPEAKER, '<surround-boost value="1.5"/>'))
        path = self.write(text)
        expected = run_json("check", path)[1]["findings"]
        # "-" is standard input, also when it is a socket (as Node.js connects a child's pipes),
        # which cannot be opened again by its /dev/stdin name.
        for name in ("/dev/stdin", "-"):
            result = subprocess.run(TOOL + ["check", name, "--json"], input=text,
                                    capture_output=True, text=True, timeout=300)
            self.assertEqual(json.loads(result.stdout)["findings"], expected, name)
        fifo = os.path.join(self.folder, "fifo")
        os.mkfifo(fifo)
        writer = subprocess.Popen(["sh", "-c", 'cat "$0" > "$1"', path, fifo])
        # The private copy goes to TMPDIR and is removed when the run ends.
        result = subprocess.run(TOOL + ["check", fifo, "--json"], capture_output=True, text=True,
                                timeout=300, env=dict(os.environ, TMPDIR=self.folder))
        writer.wait(timeout=60)
        self.assertEqual(json.loads(result.stdout)["findings"], expected)
        self.assertEqual(sorted(os.listdir(self.folder)), ["fifo", "tuning.xml"])
        ours, theirs = socket.socketpair()
        with ours, theirs:
            tool = subprocess.Popen(TOOL + ["check", "-", "--json"], stdin=theirs,
                                    stdout=subprocess.PIPE, stderr=subprocess.PIPE)
            theirs.close()
            ours.sendall(text.encode())
            ours.shutdown(socket.SHUT_WR)
            out, err = tool.communicate(timeout=300)
        self.assertEqual(json.loads(out)["findings"], expected, err)

    def test_an_interrupted_run_removes_its_private_copy(self):
        # Standard input stays open, so the run is still copying it when stopped.
        self.interrupt(["check", "-"], os.listdir, stdin=subprocess.PIPE)

    def test_exit_statuses_and_unreadable_inputs(self):
        cases = [(EXAMPLE, [], 0), (EXAMPLE, ["--strict"], 0), (VERSION_OVERRIDES, [], 0),
                 (VERSION_OVERRIDES, ["--strict"], 1), (BROKEN, [], 2)]
        for path, options, status in cases:
            with self.subTest(path=os.path.basename(path), options=options):
                self.assertEqual(run("check", path, *options).returncode, status)
        for path, words in [(BROKEN, "not a readable XML document"),
                            (os.path.join(DATA, "no-such-file.xml"), "cannot open"),
                            (DATA, "is a directory")]:
            for command in (["check"], ["dump"], ["blobs"], ["simulate"], ["diff", EXAMPLE]):
                with self.subTest(path=os.path.basename(path), command=command):
                    result = run(*command, path)
                    self.assertEqual(result.returncode, 2)
                    lines = result.stderr.splitlines()
                    self.assertEqual(len(lines), 1, result.stderr)
                    self.assertIn(path, lines[0])
                    self.assertIn(words, lines[0])
        # libxml2 names the line where the document ends unclosed.
        self.assertIn("%s:7: not a readable" % BROKEN, run("check", BROKEN).stderr)


class RecordsTest(unittest.TestCase):
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

    def test_text_table_lists_the_entries_bands_and_rows_with_their_sources(self):
        text = run("blobs", EXAMPLE, "--profile", "movie").stdout
        _, document = run_json("blobs", EXAMPLE, "--profile", "movie")
        blob = document["blobs"][0]
        lines = text.splitlines()
        self.assertEqual(lines[0], 'profile 1 "movie": %d entries, %d words'
                         % (len(blob["entries"]), blob["words"]))
        rows = [line.split() for line in lines[2:] if line[:6].strip().isdigit()]
        self.assertEqual([(r[1], r[2]) for r in rows][:3], [("all", "mdle"), ("all", "miee"),
                                                           ("all", "msce")])
        self.assertEqual(len(rows), len(blob["entries"]))
        assert_fits_80(self, text, EXAMPLE)
        # IEQ preset "detailed" (line 52), first band on line 55; the speaker_stereo matrix's
        # third row on line 699.
        self.assertRegex(text, r"speaker +iebs +41 +ieq_frequency, ieq_target line 52\n +"
                         r"band 1: 47 Hz  target 5 dB \(80\)\n")
        self.assertIn("row 3: 0.7070 0.7070  (11583 11583)", text)
        raw = run("blobs", EXAMPLE, "--profile", "movie", "--raw").stdout
        self.assertNotIn("band 1:", raw)
        self.assertIn("20 47 141 234", raw)
        iebs = [e for e in blob["entries"] if e["code"] == "iebs" and e["device"] == 2][0]
        self.assertEqual(iebs["view"]["raw"], iebs["values"])
        self.assertEqual([c["name"] for c in iebs["view"]["columns"]], ["frequency", "target"])
        self.assertEqual(iebs["view"]["columns"][1]["values"][0], 5.0)
        self.assertEqual(iebs["source"]["summary"], "ieq_frequency, ieq_target line 52")


class SimulateTest(FolderTest):
    def test_a_step_sends_the_blob_the_store_holds_then_commits(self):
        # (blobs' arguments, simulate's, (result, calls) of the steps after the first)
        cases = [(["--builtin", "--profile", "music"], [EXAMPLE, "profile=music"], []),
                 # Selecting what the port already has sends nothing; a device of another port
                 # is refused.
                 (["--device", "usb_dac"], ["select=usb:usb_dac", "select=usb:usb_dac",
                                            "select=headphone:usb_dac"], [(0, []), (-22, [])])]
        # The given file loads whichever path the properties choose.
        cases += [([VERSION_OVERRIDES, "--device", "default_usb"],
                   ["--prop", prop, VERSION_OVERRIDES, "load=default_usb"], [])
                  for prop in ("product=quenthorn", "smartpa=fs19xx", "ro.product.name=other")]
        for blob_args, args, then in cases:
            with self.subTest(args=args):
                (blob,) = run_json("blobs", *blob_args)[1]["blobs"]
                result, document = run_json("simulate", *args)
                self.assertEqual(result.returncode, 0, result.stderr)
                self.assertTrue(document["tunings_usable"])
                first, *rest = document["steps"]
                self.assertEqual((first["step"], first["result"]), (args[-1 - len(then)], 0))
                self.assertEqual(setparams(first["calls"]), entries(blob))
                self.assertEqual(first["calls"][-1], {"call": "commit", "device": ALL_DEVICES,
                                                      "device_name": "all", "result": 0})
                self.assertEqual(len(first["calls"]), len(blob["entries"]) + 1)
                self.assertEqual([(s["result"], s["calls"]) for s in rest], then)

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

    def test_rows_name_the_blob_entry_and_its_lines(self):
        _, document = run_json("simulate", EXAMPLE, "profile=movie", "content=on", "tuning")
        profile, content, tuning_step = document["steps"]
        calls = [c for step in document["steps"] for c in step["calls"] if c["call"] != "commit"]
        self.assertTrue(all(c["source"] is not None for c in calls))
        self.assertEqual({c["source"]["blob"]["kind"] for c in profile["calls"][:-1]},
                         {"builtin"})

        def call(step, device, code):
            [found] = [c for c in step["calls"]
                       if (c.get("device_name"), c.get("code")) == (device, code)]
            return found
        # Hand-read: the movie speaker's dialog-enhancer amount (line 387), the movie GEQ preset
        # (line 183), the wired headphone's audio-optimiser bands (line 1042, first band 1043).
        cases = [(content, "speaker", "dea", "profile", 387, "as_is"),
                 (content, "all", "gebs", "profile", 183, "user_geq_gains"),
                 (tuning_step, "wired headphone", "aobs", "tuning_device", 1043, "as_is")]
        for step, device, code, kind, line, delivery in cases:
            with self.subTest(code=code):
                source = call(step, device, code)["source"]
                self.assertEqual(source["blob"]["kind"], kind)
                self.assertIn(line, read_lines(source["provenance"]))
                self.assertEqual(source["delivery"]["kind"], delivery)
        gebs = call(content, "all", "gebs")
        self.assertEqual(gebs["source"]["delivery"]["gains"], gebs["values"][21:])
        self.assertEqual(gebs["view"]["raw"], gebs["values"])

        text = run("simulate", EXAMPLE, "profile=movie", "content=on").stdout
        self.assertIn('from profile 1 "movie" #7: reverb_suppression_amount line 377', text)
        self.assertRegex(text, r'from profile 1 "movie" #13: geq_frequency, geq_gain line 183\n'
                         r' +with the user\'s GEQ gains of profile 1 "movie"\n'
                         r' +band 1: 47 Hz  gain 3 dB \(48\)\n')
        self.assertIn('from built-in profile 1 "movie" #1\n', text)
        raw = run("simulate", EXAMPLE, "content=on", "--raw").stdout
        self.assertNotIn("band 1:", raw)
        assert_fits_80(self, text, EXAMPLE)

    def test_substitutions_name_the_user_gains_and_the_tuning_matrix(self):
        # Speaker tunings with four output channels take the tuning's mix matrix into "dom".
        four = self.write(read(EXAMPLE).replace('output_channels="2">', 'output_channels="4">'))
        gains = [g - 10 for g in range(20)]
        _, document = run_json("simulate", four, "content=on", "select=internal_speaker:speaker_game",
                               "geq=" + ",".join(map(str, gains)), "content=off")
        content, select, geq, off = [s["calls"] for s in document["steps"]]
        # The stereo speaker tuning's output mode is on line 694, the game one's matrix on 828.
        cases = [(content, "setParam", "profile", "tuning_mix_matrix", "", 694),
                 (select, "getParam", "effect", "tuning_mix_matrix", "speaker_game", 828),
                 (select, "setParam", "effect", "tuning_mix_matrix", "speaker_game", 828),
                 (off, "getParam", "profile", "effect_matrix_off", None, None),
                 (off, "setParam", "profile", "effect_matrix_off", None, None)]
        for calls, kind, blob, delivery, device, line in cases:
            with self.subTest(kind=kind, delivery=delivery, device=device):
                [dom] = [c for c in calls if (c["call"], c.get("device"), c.get("code")) ==
                         (kind, 2, "dom")]
                source = dom["source"]
                self.assertEqual((source["blob"]["kind"], source["delivery"]["kind"]),
                                 (blob, delivery))
                if device is None:
                    continue
                self.assertEqual(source["delivery"]["device"], device)
                matrix = source["delivery"]["words"]
                if kind == "setParam":
                    self.assertEqual(dom["values"][1:len(matrix) + 1], matrix)
                self.assertIn(line, read_lines(source["delivery"]["provenance"]))
        [get, sent, _] = geq
        for call in (get, sent):
            self.assertEqual(call["source"]["blob"], {"kind": "effect"})
            self.assertEqual(call["source"]["delivery"]["kind"], "user_geq_gains")
            self.assertEqual(call["source"]["delivery"]["gains"], gains)
        self.assertEqual(sent["values"][21:], gains)
        text = run("simulate", four, "content=on", "geq=" + ",".join(map(str, gains))).stdout
        self.assertIn("read back, to send with the user's GEQ gains of profile 1", text)
        self.assertRegex(text, r"from the effect's own gebs, read back\n +with the user's GEQ "
                         r'gains of profile 1 "movie"\n +band 1: 47 Hz  gain -0.625 dB \(-10\)')

    def test_the_effect_starts_empty_or_from_the_builtin_common_table(self):
        _, common = run_json("blobs", "--builtin", "--profile", "common")
        builtin_dom = {e["device"]: e["values"] for e in common["blobs"][0]["entries"]
                       if e["code"] == "dom"}
        for flags, start in (([], "empty"), (["--effect-from-builtin"], "builtin")):
            with self.subTest(start=start):
                result, document = run_json("simulate", *flags, EXAMPLE, "content=off")
                self.assertEqual((result.returncode, document["effect_start"]), (0, start))
                doms = [c for c in document["steps"][0]["calls"] if c.get("code") == "dom"]
                reads, sends = doms[0::2], doms[1::2]
                self.assertEqual({c["call"] for c in reads}, {"getParam"})
                self.assertEqual([c["device"] for c in sends], [c["device"] for c in reads])
                for read, sent in zip(reads, sends):
                    if start == "empty":
                        # Nothing was sent before: every read fails and the zeroed buffer goes.
                        self.assertEqual(read["result"], -22)
                        self.assertTrue(sent["read_failed"])
                        self.assertEqual(set(sent["values"]), {0})
                        self.assertEqual(sent["count"], read["capacity"])
                    else:
                        # The effect answers with the built-in matrix; only its switch goes off.
                        self.assertEqual(read["result"], 0)
                        self.assertEqual(read["values"], builtin_dom[read["device"]])
                        self.assertNotIn("read_failed", sent)
                        self.assertEqual(sent["values"], [0] + read["values"][1:])
        text = run("simulate", EXAMPLE, "content=off").stdout
        self.assertIn("effect starts   empty\n", text)
        self.assertRegex(text, r"instead: the effect's own mix matrix, switched off\n"
                         r" +getParam failed: the zeroed buffer is sent\n")
        self.assertIn("effect starts   from the built-in common table\n",
                      run("simulate", "--effect-from-builtin", "content=off").stdout)
        self.assertIn("starts empty", run("simulate", "--help").stdout)

    def test_what_the_library_takes_only_in_part_is_said_in_one_line(self):
        # (args, the one line on stderr, the step's note)
        cases = [(["--prop", "gains=1,2,3", "tuning"],
                  "the store started with persist.vendor.audio.sfx.hd.eq=1,2,3 says: "
                  "restoreUserGEQ(): the length of user GEQ gains", None),
                 (["--prop", "gains=" + ",".join(["1"] * 10), "tuning"], None, None),
                 (["geq=1,2,3"], None, "3 gains given; the graphic EQ has 20 bands"),
                 (["geq=" + ",".join(["1"] * 21)], None,
                  "21 gains given; the graphic EQ has 20 bands"),
                 (["geq=" + ",".join(["1"] * 20)], None, None)]
        for args, stderr, note in cases:
            with self.subTest(args=args):
                result = run("simulate", "--effect-from-builtin", EXAMPLE, *args)
                self.assertEqual(result.returncode, 0, result.stderr)
                lines = result.stderr.splitlines()
                self.assertEqual(len(lines), 0 if stderr is None else 1, result.stderr)
                if stderr is not None:
                    self.assertIn(stderr, lines[0])
                notes = [line for line in result.stdout.splitlines() if "note:" in line]
                self.assertEqual(notes, [] if note is None else ["  note: " + note])
                _, document = run_json("simulate", EXAMPLE, *args)
                self.assertEqual(document["steps"][0].get("note"), note)


class DiffTest(FolderTest):
    def changed_copy(self, old, new, after):
        """The example with the first old after the text after made new, and that line."""
        text = read(EXAMPLE)
        at = text.index(old, text.index(after))
        return (self.write(text[:at] + new + text[at + len(old):], "changed.xml"),
                text.count("\n", 0, at) + 1)

    def test_a_file_against_itself_is_identical(self):
        result, document = run_json("diff", EXAMPLE, EXAMPLE)
        self.assertEqual(result.returncode, 0)
        self.assertEqual((document["identical"], document["differences"]), (True, []))
        self.assertIn("no differences", run("diff", EXAMPLE, EXAMPLE).stdout)

    def test_one_changed_value_is_exactly_one_change(self):
        # The movie speaker's dialog-enhancer amount (hand-read line 387) and the third band of
        # the movie GEQ preset (line 188 of the preset on line 183).
        cases = [
            ('<dialog-enhancer-amount value="8"/>', '<dialog-enhancer-amount value="9"/>',
             '<profile id="1"', 2, "dea", [8], [9], "dialog_enhancer_amount line 387",
             [("value 1", "8", "9")], None),
            ('<band_geq frequency="234" gain="16"/>', '<band_geq frequency="234" gain="32"/>',
             '<preset id="1" type="geq">', ALL_DEVICES, "gebs", None, None,
             "geq_frequency, geq_gain line 183",
             [("band 3 (234 Hz) gain", "1 dB (16)", "2 dB (32)")], 188),
        ]
        for old, new, after, device, code, was, now, source, values, row_line in cases:
            with self.subTest(code=code):
                changed, _ = self.changed_copy(old, new, after)
                result, document = run_json("diff", EXAMPLE, changed)
                self.assertEqual(result.returncode, 1)
                self.assertEqual(document["store"], [])
                [difference] = document["differences"]
                self.assertEqual((difference["blob"], difference["change"]),
                                 ('profile 1 "movie"', "changed"))
                [entry] = difference["entries"]
                self.assertEqual((entry["device"], entry["code"]), (device, code))
                if was is not None:
                    self.assertEqual((entry["old"], entry["new"]), (was, now))
                self.assertEqual((entry["source_a"], entry["source_b"]), (source, source))
                self.assertEqual([(v["where"], v["old_text"], v["new_text"])
                                  for v in entry["values"]], values)
                # A band's change is traced to the band's own row.
                self.assertEqual([(v.get("line_a"), v.get("line_b")) for v in entry["values"]],
                                 [(row_line, row_line)])
                text = run("diff", EXAMPLE, changed).stdout.splitlines()
                self.assertEqual(text[0], 'profile 1 "movie": 1 entry differs')
                self.assertEqual(text[1].split()[:2], ["changed", entry["device_name"]])
                self.assertEqual(text[2].split(None, 1), ["from", source])
                # Only what changed: one row under the header.
                self.assertEqual(len(text), 5)
                where, old_text, new_text = values[0]
                self.assertEqual(text[4].split(),
                                 " ".join([where, str(row_line or ""), old_text, new_text]).split())

    def test_changes_to_the_store_state_are_named(self):
        # Without a default_usb binding the start-up check disables every tuning.
        changed, _ = self.changed_copy('<device_id id="default_usb"',
                                       '<device_id id="usb_other"', "<tuning ")
        result, document = run_json("diff", EXAMPLE, changed)
        self.assertEqual(result.returncode, 1)
        state = {c["what"]: (c["a"], c["b"]) for c in document["store"]}
        self.assertEqual(state["tunings usable"], ("true", "false"))
        self.assertEqual(state["tuning devices of usb"],
                         ("default_usb usb_dac", "usb_dac usb_other"))
        self.assertIn("tunings usable", run("diff", EXAMPLE, changed).stdout)

    def test_a_mix_matrix_change_names_its_row_element_line_and_tuning_device(self):
        # The speaker_stereo tuning's <c> row (the third input channel), which the speaker
        # tuning device "" serves as its mix matrix and every profile's speaker dom carries.
        changed, line = self.changed_copy('<c value="11583,11583"/>', '<c value="11583,8192"/>',
                                          '<tuning name="speaker_stereo"')
        result, document = run_json("diff", EXAMPLE, changed)
        self.assertEqual(result.returncode, 1)
        [change] = [c for c in document["store"] if c.get("tuning_device") == ""]
        self.assertEqual((change["element"], change["line_a"], change["line_b"]), ("c", line, line))
        self.assertEqual(change["what"], 'mix matrix of "" matrix 1 (layout 15) row 3 right '
                         '<c> line %d' % line)
        self.assertEqual((change["a"], change["b"]), ("0.7070 (11583)", "0.5000 (8192)"))
        self.assertEqual(len(document["differences"]), 5)
        text = run("diff", EXAMPLE, changed).stdout
        self.assertIn('<c> line %d' % line, text)

    def test_blobs_only_one_file_has_are_added_or_removed(self):
        result, document = run_json("diff", VERSION_OVERRIDES, EXAMPLE)
        self.assertEqual(result.returncode, 1)
        changes = {d["blob"]: d["change"] for d in document["differences"]}
        self.assertEqual(changes['profile 1 "movie"'], "added")
        self.assertEqual(changes['tuning device "usb_dac"'], "added")
        self.assertEqual(changes['profile 0 "dynamic"'], "changed")


class ExplainTest(FolderTest):
    def test_entries_trace_back_to_their_lines(self):
        # Lines read by hand from the example.
        cases = [
            (["dea", "--profile", "movie"], 387,
             ['line 387 <dialog-enhancer-amount> value="8"',
              "dialog_enhancer_amount of speaker endpoint of profile 1 (line 382)"]),
            (["svm", "--device", ""], 685,
             ['line 685 <speaker-virtualizer-mode> value="2"',
              'speaker_virtualizer_mode of tuning "speaker_stereo" (line 682)']),
            (["dom", "--profile", "1"], 694,
             ["loader rule: the speaker tuning's mix matrix",
              'line 694 <output-mode>', 'line 696 <layout> value="15,24"',
              'line 699 <c> value="11583,11583"', "row 3: 0.7070 0.7070  (11583 11583)"]),
            # A global setting's value points at the <global_setting> element, not the endpoint.
            (["vbon", "--profile", "0"], line_of(EXAMPLE, "<global_setting "),
             ["virtual_bass_type of speaker endpoint of profile 0",
              "global setting: values 1\n      line %d <global_setting>"
              % line_of(EXAMPLE, "<global_setting "), 'virtual_bass_process="1"']),
        ]
        for args, line, texts in cases:
            with self.subTest(code=args[0]):
                result = run("explain", EXAMPLE, *args)
                self.assertEqual(result.returncode, 0, result.stderr)
                for text in texts:
                    self.assertIn(text, result.stdout)
                assert_fits_80(self, result.stdout, EXAMPLE)
                _, document = run_json("explain", EXAMPLE, *args)
                self.assertIn(line, [n for entry in document["entries"]
                                     for n in read_lines(entry["source"])])

    def test_dump_and_blobs_fit_80_columns(self):
        for command in ("dump", "blobs"):
            with self.subTest(command=command):
                assert_fits_80(self, run(command, EXAMPLE).stdout, EXAMPLE)
        self.assertRegex(run("dump", EXAMPLE).stdout, r"\n  readonly +true\n")

    def test_attributes_are_shown_as_the_file_has_them_and_codes_in_any_case(self):
        path = self.write(read(EXAMPLE).replace('<dialog-enhancer-amount value="4"/>',
                                                '<dialog-enhancer-amount vaule="4"/>', 1))
        result = run("explain", path, "DEA", "--profile", "0")
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertIn('<dialog-enhancer-amount> vaule="4" (no value)', result.stdout)
        self.assertNotIn('value=""', result.stdout)
        self.assertIn("speaker dea, 1 value\n", result.stdout)
        _, document = run_json("explain", path, "dea", "--profile", "0")
        elements = [e for entry in document["entries"] for p in entry["source"]["parameters"]
                    for step in p["steps"] for e in step["elements"] if e["absent"]]
        self.assertEqual([(e["attributes"], e["absent"]) for e in elements],
                         [({"vaule": "4"}, ["value"])])


class CommandLineTest(FolderTest):
    def test_wrong_command_lines_name_what_is_wrong(self):
        cases = [
            (["chek"], "unknown subcommand 'chek'"),
            (["simulate", "profil=1"], "unknown step 'profil=1'"),
            (["simulate", EXAMPLE, "tuning", "bogus"], "unknown step 'bogus'"),
            (["simulate", "tuning", EXAMPLE], "only the first word may be a file"),
            (["simulate", "--prop", "gain=1", "tuning"], "unknown short name 'gain'"),
            (["simulate", "--prop", "gains", "tuning"], "--prop takes KEY=VALUE"),
            (["diff"], "A is required"),
            (["diff", EXAMPLE], "B is required"),
            (["check", "--sarif", "--json"], "excludes"),
            (["explain", EXAMPLE, "zzz", "--profile", "movie"], 'no entry "zzz"'),
            (["explain", EXAMPLE, "dea", "--profile", "9"], ": no profile 9\n"),
            (["blobs", "--profile", "9"], ": no blob for profile 9\n"),
            (["blobs", "--profile", "opera"], ": no profile named opera\n"),
            (["blobs", "--device", "nothing"], ': no blob for tuning device "nothing"\n'),
        ] + [(["simulate", step], step)  # refused before anything runs
             for step in ("profile=opera", "content=maybe", "select=moon:x", "geq=1.5")]
        for args, words in cases:
            with self.subTest(args=args):
                result = run(*args)
                self.assertEqual((result.returncode, result.stdout), (2, ""))
                self.assertEqual(len(result.stderr.splitlines()), 1, result.stderr)
                self.assertIn(words, result.stderr)

    def test_reports_of_an_unreadable_file_and_of_a_files_ports(self):
        page = os.path.join(self.folder, "report.html")
        result = run("report", BROKEN, EXAMPLE, "-o", page)
        self.assertEqual(result.returncode, 0, result.stderr)
        text = read(page)
        # The file that could not be read is said to be so; the other one is shown whole.
        for words in ("not a readable XML document", "the store could not read the file",
                      "profile 1 &quot;movie&quot;"):
            self.assertIn(words, text)
        self.assertEqual(run("report", VERSION_OVERRIDES, "-o", page).returncode, 0)
        text = read(page)
        ports = text[text.index('id="ports"'):text.index('id="curves"')]
        # A port whose one tuning device has an empty name is listed, as check lists it.
        self.assertIn("<td>internal_speaker</td><td>&quot;&quot;</td><td>&quot;&quot;</td>", ports)

    def test_version_and_help(self):
        result = run("--version")
        self.assertEqual(result.returncode, 0)
        lines = result.stdout.splitlines()
        self.assertRegex(lines[0], r"^spatializer-paramtool \d+\.\d+\.\d+$")
        # The version of the library file the tool actually loaded, and where it is.
        self.assertRegex(lines[1], r"^libspatializerparamstorage \d+\.\d+\.\d+ \(/.*\.so\.")
        for command in ([], ["check"], ["simulate"], ["diff"], ["blobs"], ["explain"],
                        ["report"]):
            with self.subTest(command=command):
                text = run(*command, "--help").stdout
                self.assertIn("Usage: spatializer-paramtool", text)
                self.assertNotRegex(text, r"\(\d+x\)|TEXT")
                assert_fits_80(self, text)
        self.assertIn("simulate [OPTIONS] [FILE] STEP...", run("simulate", "--help").stdout)

    def test_a_refused_step_says_why_and_getparam_shows_what_came_back(self):
        result, document = run_json("simulate", "select=headphone:usb_dac", "load=nothing",
                                    "geq=1,2", "content=on", "geq=" + ",".join(["1"] * 20))
        select, load, refused, _, geq = document["steps"]
        self.assertEqual([s["result"] for s in (select, load, refused)], [-22] * 3)
        self.assertIn("usb_dac is not available for port headphone", select["why"])
        self.assertIn('no tuning blob for device "nothing"', load["why"])
        self.assertIn("could not get proper GEQ parameters", refused["why"])
        self.assertNotIn("why", geq)
        self.assertEqual([(c["capacity"], c["returned"]) for c in geq["calls"]
                          if c["call"] == "getParam"], [(41, 41)])
        text = run("simulate", "load=nothing", "content=on", "geq=" + ",".join(["1"] * 20))
        self.assertIn('  why: the store holds no tuning blob for device "nothing"', text.stdout)
        self.assertIn("getParam all gebs, count 41 of 41: result 0", text.stdout)

    def test_sarif_log_of_the_findings(self):
        result, check = run_json("check", VERSION_OVERRIDES)
        sarif_run = run("check", VERSION_OVERRIDES, "--sarif")
        self.assertEqual(sarif_run.returncode, result.returncode)
        log = json.loads(sarif_run.stdout)
        self.assertEqual(log["version"], "2.1.0")
        self.assertIn("sarif-2.1.0", log["$schema"])
        (sarif,) = log["runs"]
        driver = sarif["tool"]["driver"]
        self.assertEqual(driver["name"], "spatializer-paramtool")
        rule_ids = [r["id"] for r in driver["rules"]]
        self.assertEqual(len(rule_ids), len(set(rule_ids)))
        results = sarif["results"]
        self.assertEqual(len(results), len(check["findings"]))
        self.assertGreater(len(results), 0)
        for found, finding in zip(results, check["findings"]):
            self.assertIn(found["ruleId"], rule_ids)
            self.assertEqual(found["level"], finding["severity"])
            self.assertEqual(found["message"]["text"], finding["message"])
            (where,) = found["locations"]
            place = where["physicalLocation"]
            uri = place["artifactLocation"]["uri"]
            # A URI: wherever the checkout lives, its path arrives percent-encoded.
            self.assertRegex(uri, r"^file://[A-Za-z0-9%/._~!$&'()*+,;=:@-]+$")
            self.assertEqual(urllib.parse.unquote(uri), "file://" + VERSION_OVERRIDES)
            self.assertEqual(place["region"]["startLine"], finding["line"])
            self.assertEqual([r["message"]["text"] for r in found.get("relatedLocations", [])],
                             [n["message"] for n in finding["notes"]])
        broken = json.loads(run("check", BROKEN, "--sarif").stdout)["runs"][0]["results"]
        self.assertEqual([(r["ruleId"], r["level"]) for r in broken], [("unreadable", "error")])


def effect_entries(finding):
    """(device, code, change) of every blob entry the finding's measured effect changes."""
    return [(e["device_name"], e["code"], e["change"]) for d in finding["effect"]["differences"]
            if isinstance(d["entries"], list) for e in d["entries"]]


IEQ_PRESETS = "".join(
    '    <preset id="%d" name="p%d" type="ieq">\n        <data>\n            <ieq>\n'
    '                <band_ieq frequency="100" target="%d"/>\n            </ieq>\n'
    '        </data>\n    </preset>\n' % (n, n, 16 * n) for n in (0, 2))
HEADPHONE = ('            <endpoint_type id="headphone">\n'
             '                <dialog-enhancer-amount value="3"/>\n            </endpoint_type>\n')


class EffectTest(FolderTest):
    """Each finding's cause undone in a copy, loaded through the library, compared."""

    def check(self, text, *options):
        path = self.write(text)
        result, document = run_json("check", path, *options)
        self.assertEqual(read(path), text, "the user's file is never written")
        return path, document

    def test_an_interrupted_measurement_leaves_no_undone_copy_behind(self):
        # Many causes, each measured by a load of its undone copy from a private file.
        text = tuning("".join(profile(n, "p%d" % n, SPEAKER.replace('value="4"', 'vaule="4"'))
                              for n in range(200)))
        path = self.write(text)
        self.interrupt(["check", path], lambda folder: [
            n for n in os.listdir(folder) if n.startswith("paramtool-undone")])
        self.assertEqual(read(path), text, "the user's file is never written")

    def test_each_undo_rule_measures_the_blob_entries_it_changes(self):
        # Removing a comment, moving an include back and renaming an attribute are measured on
        # the example by ExampleEditTest.
        def endpoint(old, new, extra=""):
            return tuning(IEQ_PRESETS + profile(0, "p", SPEAKER.replace(old, new) + extra))
        cases = [
            (endpoint("dialog-enhancer-amount", "dialog-enhancer-amout"), "amout",
             {"action": "rename", "renames": "dialog-enhancer-amout",
              "to": "dialog-enhancer-amount"}, [("speaker", "dea", "changed")]),
            (endpoint('"speaker"', '"Speaker"', HEADPHONE), '"Speaker"',
             {"action": "replace", "attribute": "id", "to": "speaker"},
             [("speaker", "ieid", "removed"), ("speaker", "dea", "removed")]),
            # Without the reference the endpoint selects preset 0, which the file defines.
            (endpoint('ieq_preset="2"', 'ieq_preset="7"'), 'ieq_preset="7"',
             {"action": "remove", "removes": "ieq_preset"}, None),
        ]
        for text, marker, undo, entries in cases:
            with self.subTest(undo=undo):
                path, document = self.check(text, "--verbose")
                line = line_of(path, marker)
                found = [f for f in document["findings"] if f["undo"] and f["line"] == line]
                self.assertEqual(len(found), 1, document["findings"])
                self.assertEqual({k: found[0]["undo"][k] for k in undo}, undo)
                self.assertEqual(found[0]["undo"]["line"], line)
                self.assertEqual(set(found[0]["effect"]), {"differences", "store"})
                if entries is None:
                    self.assertIn("IEQ preset 7", found[0]["message"])
                    self.assertEqual(found[0]["effect"]["store"], [])
                    continue
                changed = effect_entries(found[0])
                for entry in entries:
                    self.assertIn(entry, changed)

    def test_what_a_cause_keeps_from_being_read_is_said_by_its_effect(self):
        # Nothing reads the misspelt profile, so nothing below it is read either. (A comment read
        # in place of an include is ExampleEditTest's first case.)
        second = profile(1, "q", SPEAKER).replace("profile", "profiel")
        path, document = self.check(tuning(IEQ_PRESETS + profile(0, "p", SPEAKER) + second))
        line = line_of(path, "<profiel")
        (found,) = [f for f in document["findings"] if f["line"] == line and f["undo"]]
        self.assertIn("did you mean <profile>?", found["message"])
        # No note narrates what it costs, and no finding of its own says it again.
        self.assertEqual(found["notes"], [])
        self.assertEqual([f["message"] for f in document["findings"] if f["line"] > line], [])
        (removed,) = found["effect"]["differences"]
        self.assertEqual((removed["blob"], removed["change"]), ('profile 1 "q"', "removed"))
        self.assertGreater(removed["entries"], 20)

    def test_the_effect_has_diffs_shape_and_goes_with_no_effects_and_into_sarif_fixes(self):
        text = tuning(IEQ_PRESETS + profile(0, "p", SPEAKER.replace("amount value=",
                                                                     "amount vaule=")))
        path, document = self.check(text)
        (found,) = [f for f in document["findings"] if f["undo"]]
        # The undone copy is a, the file as it stands b.
        fixed = self.write(text.replace("vaule=", "value="), "fixed.xml")
        _, diff = run_json("diff", fixed, path)
        self.assertEqual(found["effect"]["differences"], diff["differences"])
        self.assertEqual(found["effect"]["store"], diff["store"])
        (entry,) = diff["differences"][0]["entries"]
        self.assertEqual((entry["code"], entry["old"], entry["new"]), ("dea", [4], [0]))
        self.assertEqual(found["rule"], "text-read")
        _, document = self.check(text, "--no-effects")
        (found,) = [f for f in document["findings"] if f["undo"]]
        self.assertIsNone(found["effect"])
        text = run("check", "--no-effects", path).stdout
        for measuring in ("undo:", "effect, undone", "effect not measured", "effect: none"):
            self.assertNotIn(measuring, text)
        sarif = json.loads(run("check", "--sarif", path).stdout)["runs"][0]["results"]
        (fixed,) = [r for r in sarif if "fixes" in r]
        (change,) = fixed["fixes"][0]["artifactChanges"]
        (replacement,) = change["replacements"]
        self.assertEqual(replacement["deletedRegion"]["startLine"], found["line"])
        self.assertEqual(replacement["insertedContent"]["text"],
                         '<dialog-enhancer-amount value="4"/>')
        self.assertIn('rename attribute "vaule"', fixed["fixes"][0]["description"]["text"])


class ExampleEditTest(FolderTest):
    """The edits engineers make most often, on copies of the bundled example."""

    def setUp(self):
        super().setUp()
        self.lines = read(EXAMPLE).split("\n")

    def edited(self, edit):
        lines = list(self.lines)
        edit(lines)
        path = self.write("\n".join(lines), "edited.xml")
        return path, run_json("check", path)[1]["findings"]

    def undone(self, edit, line, **undo):
        """The one finding of the edited example: on line, its undo there and as undo says."""
        path, findings = self.edited(edit)
        (found,) = findings
        self.assertEqual(found["line"], line)
        self.assertEqual({k: found["undo"][k] for k in undo} | {"line": found["undo"]["line"]},
                         undo | {"line": line})
        self.assertEqual(set(found["effect"]), {"differences", "store"})
        return path, found

    def index(self, text, after=0):
        return next(i for i in range(after, len(self.lines)) if text in self.lines[i])

    def changes(self, finding):
        return {(e["device_name"], e["code"]): (e.get("old"), e.get("new"))
                for d in finding["effect"]["differences"] for e in d["entries"]}

    def test_a_comment_before_an_endpoints_include_costs_its_ieq_preset(self):
        at = self.index('<endpoint_type id="speaker">') + 1
        _, found = self.undone(lambda l: l.insert(at, "<!-- louder dialog -->"), at + 1,
                               action="remove", removes="<!-- louder dialog -->")
        self.assertIn('the comment "louder dialog"', found["message"])
        self.assertEqual(self.changes(found)[("speaker", "ieid")], ([2], [0]))
        self.assertIn(("speaker", "iebs"), self.changes(found))
        self.assertTrue(found["clears"])

    def test_an_include_moved_below_ieq_enable_is_moved_back(self):
        at = self.index("<include", self.index('<profile id="1"'))
        _, found = self.undone(lambda l: l.insert(at + 2, l.pop(at)), at + 3, action="move",
                               moves=self.lines[at].strip(), before_line=at + 1)
        self.assertEqual(self.changes(found)[("speaker", "ieid")], ([1], [0]))

    def test_a_comment_after_a_profiles_start_is_named_with_what_it_costs(self):
        at = self.index('<profile id="1"') + 1
        _, found = self.undone(lambda l: l.insert(at, "<!-- movie -->"), at + 1, action="remove")
        self.assertIn('the comment "movie"', found["message"])
        (movie,) = [d for d in found["effect"]["differences"] if d["blob"] == 'profile 1 "movie"']
        self.assertGreater(len(movie["entries"]), 50)
        self.assertGreaterEqual(len(found["clears"]), 12)

    def test_a_self_closing_band_list_is_one_finding_with_the_aobs_change(self):
        start = self.index("<audio-optimizer-bands>")
        end = self.index("</audio-optimizer-bands>", start)

        def close(lines):
            lines[start] = lines[start].replace("<audio-optimizer-bands>",
                                                "<audio-optimizer-bands/>")
            del lines[start + 1:end + 1]
        _, found = self.undone(close, start + 1, action="remove")
        self.assertEqual([code for _, code in self.changes(found)], ["aobs"])
        self.assertGreaterEqual(len(found["clears"]), 20)

    def test_a_misspelt_value_says_only_what_it_costs(self):
        at = self.index("<dialog-enhancer-amount", self.index('<endpoint_type id="speaker">'))
        path, found = self.undone(lambda l: l.__setitem__(at, l[at].replace("value=", "vaule=")),
                                  at + 1, action="rename", renames="vaule", to="value")
        self.assertEqual(self.changes(found), {("speaker", "dea"): ([4], [0])})
        self.assertIn("findings        0 errors, 1 warning\n", run("check", path).stdout)
        self.assertFalse([n for n in found["notes"] if "IEQ preset" in n["message"]])

    def test_a_comment_right_after_a_profiles_data_changes_nothing(self):
        at = self.index("<data>", self.index('<profile id="1"')) + 1
        path, findings = self.edited(lambda l: l.insert(at, "<!-- after data -->"))
        self.assertEqual([f for f in findings if f["effect"]], [])

    def test_a_3_2_file_does_not_put_other_rules_values_under_global_settings(self):
        at = self.index("<format_version")
        path, findings = self.edited(
            lambda l: l.__setitem__(at, l[at].replace('minor="4"', 'minor="2"')))
        (passed,) = [f for f in findings if "<authorized_technologies> is passed over"
                     in f["message"]]
        self.assertFalse([n for n in passed["notes"] if "instead" in n["message"]])
        self.assertIn("format version", passed["effect_not_measured"])


if __name__ == "__main__":
    args = sys.argv[1:]
    split = args.index("--") if "--" in args else len(args)
    TOOL.extend(args[:split])
    unittest.main(argv=[sys.argv[0]] + args[split + 1:], verbosity=2)
