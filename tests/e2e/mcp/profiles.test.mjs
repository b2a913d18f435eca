// The reference profiles through the official MCP client, as tools and as
// resources.
import { test } from 'node:test';
import assert from 'node:assert/strict';
import { Client } from '@modelcontextprotocol/sdk/client/index.js';
import { StdioClientTransport } from '@modelcontextprotocol/sdk/client/stdio.js';

const binary = process.env.TRW_BINARY;

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
