// The reference profiles through the official MCP client: the profiles as
// tools and resources, and objects of CiA 402 copied into a project line.
import { test } from 'node:test';
import assert from 'node:assert/strict';
import { copyFileSync, mkdtempSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { dirname, join } from 'node:path';
import { fileURLToPath } from 'node:url';
import { Client } from '@modelcontextprotocol/sdk/client/index.js';
import { StdioClientTransport } from '@modelcontextprotocol/sdk/client/stdio.js';

const binary = process.env.TRW_BINARY;
const sourceDir = process.env.TRW_SOURCE_DIR ?? join(dirname(fileURLToPath(import.meta.url)), '../../..');

async function connect() {
  assert.ok(binary, 'TRW_BINARY must name the trw executable');
  const transport = new StdioClientTransport({ command: binary, args: ['--mcp'], stderr: 'pipe' });
  const client = new Client({ name: 'trw-e2e-profiles', version: '1.0.0' });
  await client.connect(transport);
  return client;
}

async function callJson(client, name, args = {}) {
  const result = await client.callTool({ name, arguments: args });
  assert.ok(!result.isError, `${name}: ${result.content[0].text}`);
  return JSON.parse(result.content[0].text);
}

test('profiles are listed as tools and as resources', async () => {
  const client = await connect();
  try {
    const ids = await callJson(client, 'list_profiles');
    assert.equal(ids.length, 22);
    assert.ok(ids.includes('402') && ids.includes('454-2'));

    const { resources } = await client.listResources();
    assert.deepEqual(resources.map((resource) => resource.uri), ids.map((id) => `codb://${id}`));
    const drive = resources.find((resource) => resource.uri === 'codb://402');
    assert.equal(drive.name, 'DS-402');
    assert.equal(drive.description, 'EXAMPLE DATABASE FOR DS402V2.0');
    assert.equal(drive.mimeType, 'application/json');
  } finally {
    await client.close();
  }
});

test('a profile object reads alike as resource and as tool', async () => {
  const client = await connect();
  try {
    const { contents } = await client.readResource({ uri: 'codb://402/0x6041' });
    assert.equal(contents.length, 1);
    assert.equal(contents[0].uri, 'codb://402/0x6041');
    assert.equal(contents[0].mimeType, 'application/json');
    const resource = JSON.parse(contents[0].text);
    assert.equal(resource.index, '0X6041');
    assert.equal(resource.name, 'Statusword');

    const record = await callJson(client, 'get_profile_index', { profile: '402', index: 24641 });
    assert.equal(record.profile, '402');
    delete record.profile;
    assert.deepEqual(record, resource);

    await assert.rejects(client.readResource({ uri: 'codb://402/' }), /Index {2}not found in codb profile 402/);
  } finally {
    await client.close();
  }
});

test('objects of CiA 402 are imported into a line of an example project', async () => {
  const folder = mkdtempSync(join(tmpdir(), 'trw-profiles-'));
  const project = join(folder, 'cia401_io_module.trwt');
  copyFileSync(join(sourceDir, 'examples/cia401_io_module/cia401_io_module.trwt'), project);
  const client = await connect();
  try {
    const opened = await client.callTool({ name: 'open_project', arguments: { path: project } });
    assert.ok(!opened.isError, opened.content[0].text);

    const imported = await client.callTool({
      name: 'import_profile_indices',
      arguments: { profile: '402', line: 0, indices: [24640, 24641] },
    });
    assert.ok(!imported.isError, imported.content[0].text);
    assert.match(imported.content[0].text,
      /^Imported 2 object\(s\) from profile 402 into line 0: 0X6040, 0X6041\.\n\ncheck_model: /);

    const profileStatus = await callJson(client, 'get_profile_index', { profile: '402', index: 24641 });
    for (const [index, name] of [[24640, 'Controlword'], [24641, 'Statusword']]) {
      const record = await callJson(client, 'get_index', { line: 0, index });
      assert.equal(record.line, 0);
      assert.equal(record.name, name);
      assert.equal(record.objectTypeCode, 7);
      assert.equal(record.subs.length, 1);
      assert.equal(record.subs[0].dataTypeCode, 6);
    }
    const statusword = await callJson(client, 'get_index', { line: 0, index: 24641 });
    assert.deepEqual(statusword.subs, profileStatus.subs);

    const again = await client.callTool({
      name: 'import_profile_indices',
      arguments: { profile: '402', line: 0, indices: [24641] },
    });
    assert.equal(again.isError, true);
    assert.match(again.content[0].text, /\nSkipped 1: 0X6041 \(already exists on line 0\)\./);
  } finally {
    await client.close();
    rmSync(folder, { recursive: true, force: true });
  }
});
