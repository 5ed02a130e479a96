#!/usr/bin/env node
// Drives `spatializer-paramtool lsp` through vscode-jsonrpc, the protocol library under VS Code's
// language client, the way an editor does: initialize, open the example, edit it into a finding,
// hover, complete, take the quick fix, list the outline, shut down. Every check runs even when an
// earlier one fails, and the last line counts them.
//
// Usage: node lsp_client_test.js MODULES_DIR [RUNNER...] TOOL
// MODULES_DIR is the folder whose node_modules has vscode-jsonrpc (scripts/setup.sh installs it there).
// Exits 77 when vscode-jsonrpc cannot be found.
'use strict';
const assert = require('assert');
const childProcess = require('child_process');
const fs = require('fs');
const os = require('os');
const path = require('path');
const url = require('url');

const [modules, ...command] = process.argv.slice(2);
let rpc;
try {
    rpc = require(require.resolve('vscode-jsonrpc/node', {paths: [modules, __dirname]}));
} catch (e) {
    console.log(`vscode-jsonrpc is not installed in ${modules} (scripts/setup.sh installs it)`);
    process.exit(77);
}

const EXAMPLE = path.join(__dirname, '..', '..', '..', 'examples', 'kvx-default-spatializer.xml');
const TIMEOUT_MS = 60000;
const results = {passed: 0, failed: []};

async function check(name, body) {
    try {
        await body();
        results.passed++;
        console.log(`ok    ${name}`);
    } catch (e) {
        results.failed.push(name);
        console.log(`FAIL  ${name}\n      ${String(e.stack || e).split('\n').join('\n      ')}`);
    }
}

// Rejected when the server ends before it is told to, so that no check waits for it in vain.
let serverGone;
const serverEnded = new Promise((_, reject) => {
    serverGone = reject;
});
serverEnded.catch(() => {});

function within(promise, what, untilExit = true) {
    let timer;
    const timeout = new Promise((_, reject) => {
        timer = setTimeout(() => reject(new Error(`no ${what} in ${TIMEOUT_MS} ms`)), TIMEOUT_MS);
    });
    return Promise.race([promise, timeout, ...(untilExit ? [serverEnded] : [])])
            .finally(() => clearTimeout(timer));
}

function offsetOf(text, position) {
    let offset = 0;
    for (let line = 0; line < position.line; line++) {
        offset = text.indexOf('\n', offset) + 1;
    }
    return offset + position.character;  // JavaScript strings count UTF-16 units, as LSP does.
}

function applyEdits(text, edits) {
    const sorted = [...edits].sort((a, b) => offsetOf(text, b.range.start) -
                                             offsetOf(text, a.range.start));
    for (const e of sorted) {
        text = text.slice(0, offsetOf(text, e.range.start)) + e.newText +
               text.slice(offsetOf(text, e.range.end));
    }
    return text;
}

function editsOf(workspaceEdit, uri) {
    if (workspaceEdit.changes) {
        return workspaceEdit.changes[uri] || [];
    }
    return (workspaceEdit.documentChanges || [])
            .filter((c) => c.textDocument && c.textDocument.uri === uri)
            .flatMap((c) => c.edits);
}

function symbolNames(symbols) {
    return (symbols || []).flatMap((s) => [s.name, ...symbolNames(s.children)]);
}

function hoverText(hover) {
    const parts = Array.isArray(hover.contents) ? hover.contents : [hover.contents];
    return parts.map((p) => (typeof p === 'string' ? p : p.value)).join('\n');
}

async function main() {
    const temporary = fs.mkdtempSync(path.join(os.tmpdir(), 'lsp-client-test.'));
    const server = childProcess.spawn(command[0], [...command.slice(1), 'lsp', '--stdio'], {
        env: {...process.env, TMPDIR: temporary},
        stdio: ['pipe', 'pipe', 'inherit'],
    });
    const exited = new Promise((resolve) => server.on('exit', (code, signal) => {
        serverGone(new Error(`the server ended: status ${code}, signal ${signal}`));
        resolve({code, signal});
    }));
    const connection = rpc.createMessageConnection(new rpc.StreamMessageReader(server.stdout),
                                                   new rpc.StreamMessageWriter(server.stdin));
    // Diagnostics as published, and those waiting for a version of the document.
    const waiting = [];
    connection.onNotification('textDocument/publishDiagnostics', (params) => {
        const index = waiting.findIndex((w) => w.uri === params.uri &&
                                        (params.version === undefined ||
                                         params.version === w.version));
        if (index >= 0) {
            waiting.splice(index, 1)[0].resolve(params.diagnostics);
        }
    });
    connection.listen();
    const request = (method, params) => within(connection.sendRequest(method, params), method);
    const diagnosticsOf = (uri, version) =>
        within(new Promise((resolve) => waiting.push({uri, version, resolve})),
               `diagnostics of version ${version}`);

    const exampleText = fs.readFileSync(EXAMPLE, 'utf8');
    const lines = exampleText.split('\n');
    const uri = url.pathToFileURL(EXAMPLE).href;
    const doc = {uri};
    let version = 1;
    const change = (text) => {
        const diagnostics = diagnosticsOf(uri, ++version);
        connection.sendNotification('textDocument/didChange',
                                    {textDocument: {uri, version}, contentChanges: [{text}]});
        return diagnostics;
    };

    await check('initialize announces the features', async () => {
        const {capabilities} = await request('initialize', {
            processId: process.pid, rootUri: null, capabilities: {},
        });
        const sync = capabilities.textDocumentSync;
        assert.ok(sync === 1 || sync === 2 || (sync && (sync.change === 1 || sync.change === 2)),
                  `textDocumentSync ${JSON.stringify(sync)}`);
        for (const feature of ['hoverProvider', 'completionProvider', 'codeActionProvider',
                               'documentSymbolProvider']) {
            assert.ok(capabilities[feature], `${feature} in ${JSON.stringify(capabilities)}`);
        }
        connection.sendNotification('initialized', {});
    });

    await check('the example opens without diagnostics', async () => {
        const diagnostics = diagnosticsOf(uri, 1);
        connection.sendNotification('textDocument/didOpen', {
            textDocument: {uri, languageId: 'xml', version: 1, text: exampleText},
        });
        assert.deepStrictEqual(await diagnostics, []);
    });

    await check('hover on a parameter element shows its engine code and value', async () => {
        const movie = lines.findIndex((l) => l.includes('<profile id="1" name="movie"'));
        const line = lines.findIndex((l, i) => i > movie && l.includes('<dialog-enhancer-amount'));
        const character = lines[line].indexOf('<dialog') + 3;
        const hover = await request('textDocument/hover', {
            textDocument: doc, position: {line, character},
        });
        assert.ok(hover, 'a hover');
        const text = hoverText(hover);
        for (const word of ['dea', 'speaker', '8']) {
            assert.ok(text.includes(word), `${word} in ${text}`);
        }
    });

    await check('the outline lists the example\'s profiles', async () => {
        const symbols = await request('textDocument/documentSymbol', {textDocument: doc});
        const names = symbolNames(symbols).join('\n');
        const profiles = [...exampleText.matchAll(/<profile id="\d+" name="([^"]+)"/g)];
        assert.ok(profiles.length >= 5, 'the example has its profiles');
        for (const [, name] of profiles) {
            assert.ok(names.includes(name), `profile ${name} in ${names}`);
        }
    });

    // A comment before the first speaker endpoint's include: the reader steps over it in place
    // of the blank text, so the include is lost (a finding whose undo removes the line).
    const edited = {line: lines.findIndex((l) => l.includes('<endpoint_type id="speaker">')) + 1};
    edited.text = [...lines.slice(0, edited.line), '<!-- louder dialog -->',
                   ...lines.slice(edited.line)].join('\n');
    let finding;
    await check('an edit with a finding gets its diagnostic', async () => {
        const diagnostics = await change(edited.text);
        assert.strictEqual(diagnostics.length, 1, JSON.stringify(diagnostics));
        [finding] = diagnostics;
        assert.strictEqual(finding.range.start.line, edited.line);
        assert.ok(finding.message.includes('the comment "louder dialog"'), finding.message);
        // The same finding as check's, on the same text (from a file: Node's pipes to a child
        // are sockets, which the tool cannot open as /dev/stdin).
        const folder = fs.mkdtempSync(path.join(os.tmpdir(), 'lsp-client-check.'));
        fs.writeFileSync(path.join(folder, 'edited.xml'), edited.text);
        const check = childProcess.spawnSync(command[0], [...command.slice(1), 'check',
                                                          path.join(folder, 'edited.xml'),
                                                          '--json']);
        fs.rmSync(folder, {recursive: true, force: true});
        const [found] = JSON.parse(check.stdout).findings;
        assert.deepStrictEqual([finding.code, finding.range.start.line + 1, finding.message],
                               [found.rule, found.line, found.message]);
        assert.ok(finding.relatedInformation && finding.relatedInformation.length > 0,
                  'the effect as related information');
    });

    await check('the quick fix undoes the finding', async () => {
        assert.ok(finding, 'a diagnostic to fix');
        const actions = await request('textDocument/codeAction', {
            textDocument: doc, range: finding.range, context: {diagnostics: [finding]},
        });
        const fixes = (actions || []).filter((a) => a.kind === 'quickfix' && a.edit);
        assert.strictEqual(fixes.length, 1, JSON.stringify(actions));
        // Titled by what the fix measurably brings back: the include's IEQ preset.
        const preset = lines[edited.line].match(/<include ieq_preset="(\d+)"/)[1];
        assert.ok(new RegExp(`speaker ieid\\b.* 0 → ${preset}\\b`).test(fixes[0].title),
                  fixes[0].title);
        const fixed = applyEdits(edited.text, editsOf(fixes[0].edit, uri));
        assert.ok(!fixed.includes('louder dialog'), 'the comment is gone');
        assert.deepStrictEqual(await change(fixed), []);
    });

    await check('completion in a profile\'s data offers parameter elements', async () => {
        const data = lines.findIndex((l) => l.includes('<profile id="1"')) + 1;
        assert.ok(lines[data].includes('<data>'), lines[data]);
        const typed = [...lines];
        typed.splice(data + 1, 0, '            <');
        const published = change(typed.join('\n'));
        const items = await request('textDocument/completion', {
            textDocument: doc, position: {line: data + 1, character: 13},
        });
        await published;
        const labels = (Array.isArray(items) ? items : items.items).map((i) => i.label);
        // What the example has in that data element, up to its first endpoint.
        const endpoint = lines.findIndex((l, i) => i > data && l.includes('<endpoint_type'));
        const names = lines.slice(data + 1, endpoint).map((l) => l.trim().match(/^<([\w-]+)/)[1]);
        assert.ok(names.length > 5, names.join(' '));
        for (const name of [...names, 'endpoint_type']) {
            assert.ok(labels.includes(name), `${name} in ${labels.join(' ')}`);
        }
        assert.ok(!labels.includes('band_ieq'), 'no IEQ band in a profile\'s data');
    });

    await check('shutdown and exit end the server with status 0', async () => {
        assert.strictEqual(await request('shutdown'), null);
        connection.sendNotification('exit');
        assert.deepStrictEqual(await within(exited, 'exit', false), {code: 0, signal: null});
    });
    connection.dispose();
    server.kill();

    await check('no temporary file is left behind', async () => {
        assert.deepStrictEqual(fs.readdirSync(temporary), []);
    });
    fs.rmSync(temporary, {recursive: true, force: true});

    console.log(`${results.passed} passed, ${results.failed.length} failed`);
    process.exit(results.failed.length ? 1 : 0);
}

main().catch((e) => {
    console.log(e.stack || e);
    process.exit(1);
});
