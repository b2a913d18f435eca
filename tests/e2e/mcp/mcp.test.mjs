// Drives trw --mcp with the official MCP client over standard input and
// output, as an agent would. The binary comes from TRW_BINARY.
import { test } from 'node:test';
import assert from 'node:assert/strict';
import { copyFileSync, existsSync, mkdirSync, mkdtempSync, readdirSync, readFileSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { dirname, join } from 'node:path';
import { fileURLToPath } from 'node:url';
import { Client } from '@modelcontextprotocol/sdk/client/index.js';
import { StdioClientTransport } from '@modelcontextprotocol/sdk/client/stdio.js';

const binary = process.env.TRW_BINARY;
const sourceDir = process.env.TRW_SOURCE_DIR ?? join(dirname(fileURLToPath(import.meta.url)), '../../..');

// What clients have been told about the tools, kept with the unit tests.
const knownTools = JSON.parse(readFileSync(join(sourceDir, 'tests/mcp/toolslist.json'), 'utf8')).tools;

async function connect(command = binary, args = ['--mcp']) {
  assert.ok(binary, 'TRW_BINARY must name the trw executable');
  const transport = new StdioClientTransport({ command, args, stderr: 'pipe' });
  const client = new Client({ name: 'trw-e2e', version: '1.0.0' });
  // A line on standard output that is not a JSON-RPC message shows up here.
  client.streamErrors = [];
  client.onerror = (error) => client.streamErrors.push(error);
  await client.connect(transport);
  return client;
}

async function call(client, name, args = {}) {
  const result = await client.callTool({ name, arguments: args });
  assert.equal(result.content.length, 1, name);
  assert.equal(result.content[0].type, 'text', name);
  return { text: result.content[0].text, isError: result.isError === true };
}

async function callOk(client, name, args = {}) {
  const { text, isError } = await call(client, name, args);
  assert.ok(!isError, `${name}: ${text}`);
  return text;
}

async function callJson(client, name, args = {}) {
  return JSON.parse(await callOk(client, name, args));
}

// A copy of an example project in a folder of its own, removed afterwards.
function exampleCopy(t, name = 'cia402_servo_drive', suffix = 'trwt') {
  const folder = mkdtempSync(join(tmpdir(), 'trw-mcp-e2e-'));
  t.after(() => rmSync(folder, { recursive: true, force: true }));
  const project = join(folder, `${name}.${suffix}`);
  copyFileSync(join(sourceDir, `examples/${name}/${name}.${suffix}`), project);
  return { folder, project };
}

test('the client connects and lists the 38 tools in order', async () => {
  const client = await connect();
  try {
    assert.deepEqual(client.getServerVersion(), { name: 'trw-mcp', version: '4.3.2' });
    assert.deepEqual(client.getServerCapabilities(), { tools: {}, resources: {} });
    assert.match(client.getInstructions(), /^CAN Tarnwick MCP server\. /);

    const { tools } = await client.listTools();
    assert.equal(tools.length, 38);
    assert.deepEqual(
      tools.map(({ name, description, inputSchema }) => ({ name, description, inputSchema })),
      knownTools.map(({ name, description, inputSchema }) => ({ name, description, inputSchema })),
    );
  } finally {
    await client.close();
  }
});

// The stream check of the other tests relies on the client reporting every
// line that is not a JSON-RPC message; a server that printed one is caught.
test('a line on standard output that is not JSON-RPC is reported', async () => {
  const client = await connect('sh', ['-c', 'echo "Generation started"; echo "{}"; exec "$0" --mcp', binary]);
  try {
    assert.equal((await client.listTools()).tools.length, 38);
    assert.equal(client.streamErrors.length, 2);
  } finally {
    await client.close();
  }
});

test('a project is edited, checked, generated, saved and reopened', async (t) => {
  const { folder, project } = exampleCopy(t);
  const output = join(folder, 'generated');
  mkdirSync(output);

  const client = await connect();
  try {
    const closed = await call(client, 'list_lines');
    assert.deepEqual(closed, { text: 'No project open. Call open_project first.', isError: true });

    assert.equal(await callOk(client, 'open_project', { path: project }), `Project opened: ${project}`);
    assert.deepEqual(await callJson(client, 'list_lines'), [{ line: 0, lineTypeCode: 1 }]);

    const added = await callOk(client, 'add_line', { line: 1, lineType: 'CANopen', name: 'Service' });
    assert.match(added, /^Line 1 added\.\n\ncheck_model: /);
    assert.deepEqual(await callJson(client, 'list_lines'), [
      { line: 0, lineTypeCode: 1 },
      { line: 1, lineTypeCode: 1 },
    ]);
    assert.equal((await callJson(client, 'get_line', { line: 1 })).name, 'Service');
    assert.match(await callOk(client, 'delete_line', { line: 1 }), /^Line 1 deleted\.\n\ncheck_model: /);

    const record = { line: 0, index: 0x2100, name: 'Tuning', objectType: 'Record', dataType: 0 };
    assert.match(await callOk(client, 'add_index', record), /^Index 0X2100 added on line 0\.\n\ncheck_model: /);
    const subs = [
      { sub: 0, name: 'Highest sub-index supported', dataType: 5, accessType: 'const', defaultValue: '2' },
      { sub: 1, name: 'Gain', dataType: 7, accessType: 'rw', defaultValue: '0x64' },
      { sub: 2, name: 'Offset', dataType: 4, accessType: 'rw', defaultValue: '-3' },
    ];
    for (const sub of subs) {
      const text = await callOk(client, 'add_subindex', { line: 0, index: 0x2100, ...sub });
      assert.match(text, new RegExp(`^Subindex 0X2100:${sub.sub} added on line 0\\.\\n\\ncheck_model: `));
    }
    assert.match(await callOk(client, 'check_model'), /^\{"errorCount":0,"errors":\[/);

    const index = await callJson(client, 'get_index', { line: 0, index: 0x2100 });
    assert.equal(index.index, '0X2100');
    assert.equal(index.objectTypeCode, 9);
    assert.deepEqual(
      index.subs.map(({ sub, name, dataTypeCode, accessType, defaultValue }) => ({
        sub, name, dataType: dataTypeCode, accessType, defaultValue,
      })),
      subs,
    );
    const found = await callJson(client, 'find_indices', { line: 0, globPattern: 'TUNING' });
    assert.deepEqual(found, [{ index: '0X2100', indexDec: 0x2100, name: 'Tuning' }]);

    const generated = await callOk(client, 'generate', { outputPath: output });
    assert.match(generated, /^Generation completed\.\n/);
    assert.ok(existsSync(join(output, 'gen_objdict.c')), readdirSync(output).join(', '));
    assert.ok(readdirSync(output).some((name) => name.endsWith('.eds')));

    assert.match(await callOk(client, 'save_project'), /^Project saved\./);
    assert.match(
      await callOk(client, 'set_index_name', { line: 0, index: 0x2100, name: 'Unsaved' }),
      /^Index 0X2100 on line 0 renamed to "Unsaved"\./,
    );
    assert.deepEqual(client.streamErrors, []);
  } finally {
    await client.close();
  }

  const reopened = await connect();
  try {
    await callOk(reopened, 'open_project', { path: project });
    const index = await callJson(reopened, 'get_index', { line: 0, index: 0x2100 });
    assert.equal(index.name, 'Tuning');
    assert.deepEqual(index.subs.map((sub) => sub.defaultValue), ['2', '0x64', '-3']);
    assert.deepEqual(await callJson(reopened, 'list_lines'), [{ line: 0, lineTypeCode: 1 }]);

    const edsName = readdirSync(output).find((name) => name.endsWith('.eds'));
    assert.match(await callOk(reopened, 'delete_index', { line: 0, index: 0x2100 }), /^Index 0X2100 deleted/);
    assert.match(await callOk(reopened, 'import_file', { path: join(output, edsName) }), /^Import successful: /);
    assert.equal((await callJson(reopened, 'get_index', { line: 0, index: 0x2100 })).name, 'Tuning');
    assert.deepEqual(reopened.streamErrors, []);
  } finally {
    await reopened.close();
  }
});

test('bad calls are answered as errors and the session goes on', async (t) => {
  const { folder, project } = exampleCopy(t);
  const client = await connect();
  try {
    await assert.rejects(client.callTool({ name: 'no_such_tool', arguments: {} }), /Unknown tool: no_such_tool/);
    assert.deepEqual(await call(client, 'open_project', { path: folder }), {
      text: `Failed to open project: ${folder}`,
      isError: true,
    });
    await callOk(client, 'open_project', { path: project });
    await assert.rejects(client.callTool({ name: 'get_index', arguments: { line: 0 } }),
      /Missing required argument: line and\/or index/);
    // A string where a number belongs reads as 0.
    assert.deepEqual(await call(client, 'get_index', { line: 'zero', index: '24641' }), {
      text: 'Index 0X0000 does not exist on line 0.',
      isError: true,
    });
    assert.equal((await callJson(client, 'get_index', { line: 256, index: 24641 + 65536 })).index, '0X6041');
    assert.deepEqual(client.streamErrors, []);
  } finally {
    await client.close();
  }
});

test('a PGN and a CAN identifier are added with their signals, saved and read back', async (t) => {
  const j1939 = exampleCopy(t, 'j1939_engine_ecu');
  const rawCan = exampleCopy(t, 'rawcan_sensor_gateway', 'trwp');
  const pgn = { line: 0, pgn: 61455, direction: 'Transmit' };
  const spns = [
    { spn: 3226, name: 'Aftertreatment 1 Outlet NOx', dataType: 6, pos: 0, bitSize: 16, bitPosition: 0, varname: 'outletNox' },
    { spn: 3227, name: 'Aftertreatment 1 Outlet O2', dataType: 6, pos: 1, bitSize: 16, bitPosition: 16, varname: 'outletO2' },
  ];
  // An extended identifier: bit 29 of the stored value is the flag.
  const canId = { line: 0, canId: 0x20000000 + 0x18ff3021, direction: 'Transmit' };
  const elements = [
    { number: 0, name: 'Flow', dataType: 6, pos: 0, bitSize: 16, bitPosition: 0, varname: 'gwFlow' },
    { number: 1, name: 'Valve open', dataType: 100, pos: 1, bitSize: 2, bitPosition: 16, varname: 'gwValveOpen' },
  ];
  const summaryOk = /\n\ncheck_model: OK \(0 errors\)\.$/;

  const client = await connect();
  try {
    await callOk(client, 'open_project', { path: j1939.project });
    const added = await callOk(client, 'add_pgn', { ...pgn, name: 'AT1O1', priority: 6, cycleTimeMs: 50 });
    assert.match(added, /^PGN 61455 \(Transmit\) added on line 0\.\n\ncheck_model: 1 error\(s\):\n.*does not contain any SPNs\.$/);
    for (const spn of spns) assert.match(await callOk(client, 'add_spn', { ...pgn, ...spn }), summaryOk);
    assert.equal((await callJson(client, 'check_model')).errorCount, 0);
    await callOk(client, 'save_project');

    await callOk(client, 'open_project', { path: rawCan.project });
    assert.match(await callOk(client, 'add_can_id', { ...canId, name: 'Flow meter' }), summaryOk);
    for (const element of elements) assert.match(await callOk(client, 'add_data_element', { ...canId, ...element }), summaryOk);
    assert.equal((await callJson(client, 'check_model')).errorCount, 0);
    await callOk(client, 'save_project');
    assert.deepEqual(client.streamErrors, []);
  } finally {
    await client.close();
  }

  const reopened = await connect();
  try {
    await callOk(reopened, 'open_project', { path: j1939.project });
    const readPgn = await callJson(reopened, 'get_pgn', pgn);
    assert.equal(readPgn.name, 'AT1O1');
    assert.deepEqual(
      readPgn.spns.map(({ spn, name, dataTypeCode, pos, bitSize, bitPosition, varname }) => ({
        spn, name, dataType: dataTypeCode, pos, bitSize, bitPosition, varname,
      })),
      spns,
    );

    await callOk(reopened, 'open_project', { path: rawCan.project });
    const readId = await callJson(reopened, 'get_can_id', canId);
    assert.equal(readId.canId, '0X38FF3021');
    assert.deepEqual(
      readId.dataElements.map(({ number, name, dataTypeCode, pos, bitSize, bitPosition, varname }) => ({
        number, name, dataType: dataTypeCode, pos, bitSize, bitPosition, varname,
      })),
      elements,
    );
    assert.equal((await callJson(reopened, 'check_model')).errorCount, 0);
    assert.deepEqual(reopened.streamErrors, []);
  } finally {
    await reopened.close();
  }
});
