#!/usr/bin/env python3
"""Opens spatializer-paramtool's HTML report in headless Chromium: the page of the bundled example
and the page of the example against a copy with one GEQ gain changed. The DOM Chromium built must
hold every section, curves with data and no script error; its screenshot must show the curves.
Skips (exit 77) when Chromium is missing or cannot start here.

Usage: report_browser_test.py [RUNNER...] TOOL
"""
import os
import re
import shutil
import struct
import subprocess
import sys
import tempfile
import zlib

HERE = os.path.dirname(os.path.abspath(__file__))
EXAMPLE = os.path.join(os.path.dirname(os.path.dirname(HERE)), "examples",
                       "kvx-default-spatializer.xml")
SKIP = 77
# The first curve's colour (SvgPlot::color(0)).
CURVE = (0x1f, 0x77, 0xb4)


def chromium(*args):
    return subprocess.run(["chromium", "--headless", "--no-sandbox", "--disable-gpu",
                           "--enable-logging=stderr", "--v=0"] + list(args),
                          capture_output=True, text=True, timeout=60)


def png_pixels(path):
    """(width, height, rows of RGB tuples) of an 8-bit RGB or RGBA, non-interlaced PNG."""
    with open(path, "rb") as f:
        data = f.read()
    assert data[:8] == b"\x89PNG\r\n\x1a\n", "not a PNG"
    at, idat, header = 8, b"", None
    while at < len(data):
        length, kind = struct.unpack(">I4s", data[at:at + 8])
        if kind == b"IHDR":
            header = struct.unpack(">IIBBBBB", data[at + 8:at + 21])
        elif kind == b"IDAT":
            idat += data[at + 8:at + 8 + length]
        at += 12 + length
    width, height, depth, colour, _, _, interlace = header
    assert depth == 8 and colour in (2, 6) and interlace == 0, header
    channels = 3 if colour == 2 else 4
    raw = zlib.decompress(idat)
    stride = width * channels
    rows, previous = [], bytearray(stride)
    for y in range(height):
        kind = raw[y * (stride + 1)]
        line = bytearray(raw[y * (stride + 1) + 1:(y + 1) * (stride + 1)])
        for i in range(stride):
            left = line[i - channels] if i >= channels else 0
            up = previous[i]
            corner = previous[i - channels] if i >= channels else 0
            if kind == 1:
                line[i] = (line[i] + left) & 0xff
            elif kind == 2:
                line[i] = (line[i] + up) & 0xff
            elif kind == 3:
                line[i] = (line[i] + (left + up) // 2) & 0xff
            elif kind == 4:
                p = left + up - corner
                pa, pb, pc = abs(p - left), abs(p - up), abs(p - corner)
                line[i] = (line[i] + (left if pa <= pb and pa <= pc else up if pb <= pc
                                      else corner)) & 0xff
        rows.append([tuple(line[x:x + 3]) for x in range(0, stride, channels)])
        previous = line
    return width, height, rows


def check_page(page, sections, series):
    """Failures of one page, or None when Chromium cannot start here."""
    failures = []
    loaded = chromium("--dump-dom", "file://" + page)
    if "<html" not in loaded.stdout:
        return None
    dom = loaded.stdout
    for section in sections:
        if 'id="%s"' % section not in dom:
            failures.append("no section %s" % section)
    # The page's own script counts the curves once the document is parsed; errors mark it.
    plots = re.search(r'<html[^>]*data-plots="(\d+)"', dom)
    if not plots or int(plots.group(1)) == 0:
        failures.append("the page's script counted no curves")
    if re.search(r"<html[^>]*data-errors", dom) or re.search(r"Uncaught|CONSOLE\(\d+\)", loaded.stderr):
        failures.append("script errors: " + loaded.stderr[-2000:])
    for name in series:
        paths = re.findall(r'<path class="series" data-series="%s" d="([^"]*)"' % name, dom)
        if not paths or max(p.count(" L") for p in paths) < 10:
            failures.append("no curve %r with its bands" % name)
    shot = page + ".png"
    taken = chromium("--screenshot=" + shot, "--window-size=1200,3000", "file://" + page)
    if not os.path.exists(shot):
        return failures + ["no screenshot: " + taken.stderr[-2000:]]
    width, height, rows = png_pixels(shot)
    drawn = sum(1 for row in rows for pixel in row if pixel == CURVE)
    blank = all(pixel == rows[0][0] for row in rows[::50] for pixel in row[::50])
    if (width, height) != (1200, 3000) or blank or drawn < 500:
        failures.append("screenshot %dx%d, %d curve pixels" % (width, height, drawn))
    return failures


def main():
    tool = sys.argv[1:]
    if shutil.which("chromium") is None:
        print("SKIP: chromium is not installed (scripts/setup.sh installs it)")
        return SKIP
    folder = tempfile.mkdtemp(prefix="report-browser.")
    try:
        with open(EXAMPLE, encoding="utf-8") as f:
            text = f.read()
        old = '<band_geq frequency="141" gain="24"/>'
        changed = os.path.join(folder, "changed.xml")
        # B also misspells the first "value", which check warns about.
        misspelt = text.replace(old, '<band_geq frequency="141" gain="96"/>', 1)
        misspelt = misspelt.replace(' value="', ' vaule="', 1)
        with open(changed, "w", encoding="utf-8") as f:
            f.write(misspelt)
        one, two = os.path.join(folder, "one.html"), os.path.join(folder, "two.html")
        for args in ([EXAMPLE, "-o", one], [EXAMPLE, changed, "-o", two]):
            result = subprocess.run(tool + ["report"] + args, capture_output=True, text=True,
                                    timeout=120)
            if result.returncode != 0:
                print("FAIL: report %s: %s" % (args, result.stderr))
                return 1
        with open(two, encoding="utf-8") as f:
            page = f.read()
        # The one changed band shows in the differences as the command line shows it, its two
        # values marked; the mix matrices' rows are named by the file's row elements.
        diff = page[page.index('id="diff"'):page.index('id="blobs"')]
        band = ('<td>band 2 (141 Hz) gain</td><td class="line"><a href="#f1-L%d">line %d</a></td>'
                '<td class="old">1.5 dB (24)</td><td class="new">6 dB (96)</td>')
        line = text.count("\n", 0, text.index(old)) + 1
        failures = []
        if diff.count(" gebs</p>") != 1 or band % (line, line) not in diff:
            failures.append("the differences do not show the one GEQ change by band")
        # Each finding's and note's severity word is coloured by its class.
        findings = page[page.index('id="findings"'):page.index('id="ports"')]
        if any('<span class="%s">%s</span>: ' % (w, w) not in findings for w in ("warning", "note")):
            failures.append("the findings' severity words are not marked")
        matrices = page[page.index('id="matrices"'):page.index('id="diff"')]
        if ("&lt;c&gt;</text>" not in matrices or "&lt;rtr&gt;</text>" not in matrices
                or ">in 1</text>" in matrices):
            failures.append("the mix matrices' rows are not named by the file's elements")
        sections = ["findings", "ports", "curves", "matrices", "blobs", "source"]
        results = [check_page(one, sections, ["target", "gain", "gain_l", "threshold_low"]),
                   check_page(two, sections + ["diff"], ["gain A", "gain B"])]
        if None in results and not failures:
            print("SKIP: chromium cannot start here")
            return SKIP
        failures += [f for r in results if r for f in r]
        for failure in failures:
            print("FAIL: " + failure)
        if not failures:
            print("OK: both pages load without errors and show their curves")
        return 1 if failures else 0
    finally:
        shutil.rmtree(folder)


if __name__ == "__main__":
    sys.exit(main())
