#!/usr/bin/env python3
"""Writes the seeds of fuzz_lsp_server: message streams of whole editor sessions (on a small
tuning file and on each given file), and streams with the faults a careless client makes.

Usage: lsp_seeds.py DIR [TUNING_FILE...]
"""
import json
import os
import sys

URI = "file:///tmp/tuning.xml"
SMALL = ('<?xml version="1.0"?>\n<kvx_spatializer_tuning>\n'
         '    <format_version major="3" minor="4" maintenance="0"/>\n'
         '    <profile id="0" name="a">\n        <data>\n'
         '            <volume-modeler-enable value="true"/>\n        </data>\n'
         '        <endpoint_type id="speaker">\n            <include ieq_preset="2"/>\n'
         '            <dialog-enhancer-amount value="4"/>\n        </endpoint_type>\n'
         '    </profile>\n</kvx_spatializer_tuning>\n')


def frame(message):
    body = json.dumps(message, ensure_ascii=False).encode("utf-8")
    return b"Content-Length: %d\r\n\r\n%s" % (len(body), body)


def request(number, method, params=None):
    message = {"jsonrpc": "2.0", "id": number, "method": method}
    if params is not None:
        message["params"] = params
    return message


def notification(method, params=None):
    message = request(None, method, params)
    del message["id"]
    return message


def session(text):
    at = {"textDocument": {"uri": URI}, "position": {"line": 5, "character": 14}}
    whole = {"start": {"line": 0, "character": 0}, "end": {"line": 9, "character": 0}}
    return [
        request(1, "initialize", {"processId": None, "rootUri": None, "capabilities": {}}),
        notification("initialized", {}),
        notification("textDocument/didOpen", {"textDocument": {
            "uri": URI, "languageId": "xml", "version": 1, "text": text}}),
        request(2, "textDocument/hover", at),
        request(3, "textDocument/completion", at),
        request(4, "textDocument/documentSymbol", {"textDocument": {"uri": URI}}),
        request(5, "textDocument/codeAction", {"textDocument": {"uri": URI}, "range": whole,
                                               "context": {"diagnostics": []}}),
        notification("textDocument/didChange", {
            "textDocument": {"uri": URI, "version": 2},
            "contentChanges": [{"text": text[:len(text) // 2]}]}),
        notification("$/cancelRequest", {"id": 3}),
        notification("textDocument/didSave", {"textDocument": {"uri": URI}}),
        notification("textDocument/didClose", {"textDocument": {"uri": URI}}),
        request(6, "shutdown"),
        notification("exit"),
    ]


def main():
    folder = sys.argv[1]
    os.makedirs(folder, exist_ok=True)
    streams = {"small-session": b"".join(map(frame, session(SMALL)))}
    for path in sys.argv[2:]:
        with open(path, encoding="utf-8") as f:
            streams["session-" + os.path.basename(path)] = b"".join(map(frame, session(f.read())))
    opening = session(SMALL)[:3]
    streams.update({
        "typed-header": b"Content-Type: application/vscode-jsonrpc; charset=utf-8\r\n"
                        + frame(opening[0]),
        "bad-json": b"Content-Length: 9\r\n\r\n{\"id\":1,}" + frame(notification("exit")),
        "short-body": b"Content-Length: 400\r\n\r\n" + frame(opening[0])[:60],
        "unknown-method": frame(request(7, "workspace/unknown", [1, 2])),
        "batch": frame(opening[:2]),
        "before-initialize": frame(opening[2]) + frame(request(2, "textDocument/hover", {})),
        "no-shutdown": b"".join(map(frame, opening)) + frame(notification("exit")),
        "wrong-types": frame(request("x", "textDocument/completion", {
            "textDocument": {"uri": 3}, "position": {"line": -1, "character": 1e9}})),
    })
    for name, stream in streams.items():
        with open(os.path.join(folder, name), "wb") as f:
            f.write(stream)


if __name__ == "__main__":
    main()
