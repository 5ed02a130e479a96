#!/usr/bin/env python3
"""Measures how long the language server takes to publish the diagnostics of a change: the time
from writing a didChange of a tuning file to reading the publishDiagnostics of that version, as an
editor sees it through the server's pipes.

    lsp_latency.py [RUNNER...] TOOL [--file FILE] [--changes N] [--burst K]

Each change alternates between the file and a copy with one number changed, so that every
version is new to the server. Then --burst sends K changes at once and measures the time to the
last one's diagnostics, counting those published for the older versions that the newer ones were
meant to cancel. Prints what it measured; judges nothing.
"""
import argparse
import json
import os
import re
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

EXAMPLE = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "examples",
                       "kvx-default-spatializer.xml")
TIMEOUT_S = 60


class Server:
    """The server as a child process, spoken to through its standard input and output."""

    def __init__(self, command, temporary):
        self.process = subprocess.Popen(command + ["lsp", "--stdio"], stdin=subprocess.PIPE,
                                        stdout=subprocess.PIPE,
                                        env=dict(os.environ, TMPDIR=temporary))
        self.next_id = 0

    def send(self, method, params, request=False):
        message = {"jsonrpc": "2.0", "method": method}
        if params is not None:
            message["params"] = params
        if request:
            self.next_id += 1
            message["id"] = self.next_id
        body = json.dumps(message).encode("utf-8")
        self.process.stdin.write(b"Content-Length: %d\r\n\r\n%s" % (len(body), body))
        self.process.stdin.flush()
        return message.get("id")

    def receive(self):
        length = None
        while True:
            line = self.process.stdout.readline()
            if not line:
                raise RuntimeError("the server closed its output")
            if line in (b"\r\n", b"\n"):
                break
            name, _, value = line.decode("ascii").partition(":")
            if name.strip().lower() == "content-length":
                length = int(value)
        return json.loads(self.process.stdout.read(length))

    def call(self, method, params):
        number = self.send(method, params, request=True)
        return self.wait_for(lambda m: m.get("id") == number and "method" not in m)

    def change(self, uri, version, text):
        self.send("textDocument/didChange", {"textDocument": {"uri": uri, "version": version},
                                             "contentChanges": [{"text": text}]})

    def wait_for(self, matches):
        """Reads messages until one matches; answers the server's own requests with null."""
        deadline = time.monotonic() + TIMEOUT_S
        while time.monotonic() < deadline:
            message = self.receive()
            if "method" in message and "id" in message:
                body = json.dumps({"jsonrpc": "2.0", "id": message["id"], "result": None})
                self.process.stdin.write(b"Content-Length: %d\r\n\r\n%s"
                                         % (len(body), body.encode("utf-8")))
                self.process.stdin.flush()
            elif matches(message):
                return message
        raise RuntimeError("no answer within %d s" % TIMEOUT_S)


def diagnostics_of(uri, version):
    """Matches the publication for a version (or any, from a server that leaves versions out)."""
    return lambda m: (m.get("method") == "textDocument/publishDiagnostics"
                      and m["params"]["uri"] == uri
                      and m["params"].get("version", version) == version)


def milliseconds(nanoseconds):
    return "%.1f ms" % (nanoseconds / 1e6)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("command", nargs="+", help="[RUNNER...] TOOL")
    parser.add_argument("--file", default=EXAMPLE)
    parser.add_argument("--changes", type=int, default=20)
    parser.add_argument("--burst", type=int, default=5)
    args = parser.parse_args()
    with open(args.file, encoding="utf-8") as f:
        text = f.read()
    # One number changed: the last value="..." of the file plus one.
    last = list(re.finditer(r'value="(-?\d+)"', text))[-1]
    texts = [text, text[:last.start(1)] + str(int(last.group(1)) + 1) + text[last.end(1):]]
    uri = "file://" + os.path.abspath(args.file)

    temporary = tempfile.mkdtemp(prefix="lsp-latency.")
    server = Server(args.command, temporary)
    try:
        server.call("initialize", {"processId": os.getpid(), "rootUri": None, "capabilities": {}})
        server.send("initialized", {})
        server.send("textDocument/didOpen", {"textDocument": {
            "uri": uri, "languageId": "xml", "version": 1, "text": text}})
        server.wait_for(diagnostics_of(uri, 1))

        version = 1
        times = []
        for n in range(args.changes):
            version += 1
            started = time.perf_counter_ns()
            server.change(uri, version, texts[n % 2])
            server.wait_for(diagnostics_of(uri, version))
            times.append(time.perf_counter_ns() - started)

        stale = 0
        started = time.perf_counter_ns()
        for n in range(args.burst):
            version += 1
            server.change(uri, version, texts[n % 2])
        last_version = version

        def count_stale(message):
            nonlocal stale
            if message.get("method") != "textDocument/publishDiagnostics":
                return False
            if message["params"].get("version", last_version) == last_version:
                return True
            stale += 1
            return False
        server.wait_for(count_stale)
        burst = time.perf_counter_ns() - started

        server.call("shutdown", None)
        server.send("exit", None)
        status = server.process.wait(timeout=TIMEOUT_S)
    finally:
        if server.process.poll() is None:
            server.process.kill()
            server.process.wait()
        left = os.listdir(temporary)
        shutil.rmtree(temporary)

    print("didChange to publishDiagnostics, %s (%d lines), %d changes one at a time:"
          % (os.path.basename(args.file), text.count("\n"), len(times)))
    print("  median %s, min %s, max %s" % (milliseconds(statistics.median(times)),
                                           milliseconds(min(times)), milliseconds(max(times))))
    print("%d changes sent at once: %s to the last one's diagnostics, %d published for older "
          "versions" % (args.burst, milliseconds(burst), stale))
    print("server exit status %d, %d temporary files left" % (status, len(left)))
    return 0 if status == 0 and not left else 1


if __name__ == "__main__":
    sys.exit(main())
