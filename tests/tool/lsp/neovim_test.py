#!/usr/bin/env python3
"""Opens an edited copy of the example in headless Neovim, whose built-in client starts
`spatializer-paramtool lsp`, and checks the diagnostic the editor ends up showing.

Usage: neovim_test.py [RUNNER...] TOOL
Exits 77 when Neovim is not installed.
"""
import json
import os
import shutil
import subprocess
import sys
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))
EXAMPLE = os.path.join(HERE, "..", "..", "..", "examples", "kvx-default-spatializer.xml")

# Runs in Neovim (0.7 and later): attaches the server to the file, waits for its diagnostics and
# writes them out, then quits whatever happened, so that a failure cannot leave the editor open.
CLIENT = r"""
local result = { diagnostics = {} }
local exited = false
local ok, err = pcall(function()
    vim.cmd('edit ' .. vim.fn.fnameescape(os.getenv('KORVA_TEST_FILE')))
    local buf = vim.api.nvim_get_current_buf()
    local id = vim.lsp.start_client({
        name = 'spatializer-paramtool',
        cmd = vim.fn.json_decode(os.getenv('KORVA_TEST_COMMAND')),
        root_dir = vim.fn.fnamemodify(os.getenv('KORVA_TEST_FILE'), ':h'),
        on_exit = function(code, signal)
            exited = true
            result.exit = { code, signal }
        end,
    })
    vim.lsp.buf_attach_client(buf, id)
    result.waited = vim.wait(60000, function()
        return #vim.diagnostic.get(buf) > 0 or exited
    end, 20) and #vim.diagnostic.get(buf) > 0
    for _, d in ipairs(vim.diagnostic.get(buf)) do
        table.insert(result.diagnostics, { lnum = d.lnum, message = d.message })
    end
    vim.lsp.stop_client(id)
    result.stopped = vim.wait(10000, function() return exited end, 20)
end)
result.error = not ok and tostring(err) or nil
local out = io.open(os.getenv('KORVA_TEST_RESULT'), 'w')
out:write(vim.fn.json_encode(result))
out:close()
vim.cmd('qall!')
"""


def main():
    neovim = shutil.which("nvim")
    if not neovim:
        print("Neovim is not installed (scripts/setup.sh installs it): skipped")
        return 77
    folder = tempfile.mkdtemp(prefix="neovim-test.")
    try:
        # A comment before the first speaker endpoint's include, where the reader expects the
        # blank text: the include is lost, a finding on the comment's line.
        with open(EXAMPLE, encoding="utf-8") as f:
            lines = f.read().split("\n")
        at = next(i for i, l in enumerate(lines) if '<endpoint_type id="speaker">' in l) + 1
        lines.insert(at, "<!-- louder dialog -->")
        edited = os.path.join(folder, "edited.xml")
        with open(edited, "w", encoding="utf-8") as f:
            f.write("\n".join(lines))
        client = os.path.join(folder, "client.lua")
        with open(client, "w", encoding="utf-8") as f:
            f.write(CLIENT)
        answer = os.path.join(folder, "result.json")
        env = dict(os.environ, KORVA_TEST_FILE=edited, KORVA_TEST_RESULT=answer,
                   KORVA_TEST_COMMAND=json.dumps([os.path.abspath(a) if os.path.exists(a) else a
                                                  for a in sys.argv[1:]] + ["lsp", "--stdio"]))
        subprocess.run([neovim, "-u", "NONE", "-i", "NONE", "--headless", "-c",
                        "luafile " + client.replace(" ", "\\ ")],
                       env=env, cwd=folder, timeout=120, check=True)
        with open(answer, encoding="utf-8") as f:
            result = json.load(f)
        print(json.dumps(result, indent=2))
        failures = []
        if result.get("error") or not result.get("waited") or not result.get("stopped"):
            failures.append("the client ran to its end: %s" % result)
        if result.get("exit") != [0, 0]:
            failures.append("the server ended with status 0 on shutdown and exit: %s" % result)
        found = [(d["lnum"], 'the comment "louder dialog"' in d["message"])
                 for d in result["diagnostics"]]
        if found != [(at, True)]:
            failures.append("one diagnostic on line %d naming the comment, not %s" % (at, found))
        for failure in failures:
            print("FAIL  " + failure)
        print("%d passed, %d failed" % (3 - len(failures), len(failures)))
        return 1 if failures else 0
    finally:
        shutil.rmtree(folder)


if __name__ == "__main__":
    sys.exit(main())
