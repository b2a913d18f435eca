// Drives trw --mcp with the official MCP client over standard input and
// output, as an agent would. The binary comes from TRW_BINARY.
import { test } from 'node:test';
import assert from 'node:assert/strict';
import { Client } from '@modelcontextprotocol/sdk/client/index.js';
import { StdioClientTransport } from '@modelcontextprotocol/sdk/client/stdio.js';

const binary = process.env.TRW_BINARY;

const toolNames = [
  'open_project', 'import_file', 'generate', 'save_project', 'check_model', 'list_lines', 'get_line',
  'list_indices', 'get_index', 'get_subindex', 'find_indices',
  'add_line', 'delete_line',
  'add_index', 'delete_index', 'add_subindex', 'delete_subindex', 'set_subindex_value', 'set_index_name',
  'copy_index',
  'list_profiles', 'list_profile_indices', 'get_profile_index', 'import_profile_indices',
  'list_pgns', 'get_pgn', 'add_pgn', 'delete_pgn', 'list_spns', 'get_spn', 'add_spn', 'delete_spn',
  'list_can_ids', 'get_can_id', 'add_can_id', 'delete_can_id', 'add_data_element', 'delete_data_element',
];

async function connect() {
  assert.ok(binary, 'TRW_BINARY must name the trw executable');
  const transport = new StdioClientTransport({ command: binary, args: ['--mcp'], stderr: 'pipe' });
  const client = new Client({ name: 'trw-e2e', version: '1.0.0' });
  await client.connect(transport);
  return client;
}

test('the client connects and lists the 38 tools in order', async () => {
  const client = await connect();
  try {
    assert.deepEqual(client.getServerVersion(), { name: 'trw-mcp', version: '4.3.2' });
    assert.deepEqual(client.getServerCapabilities(), { tools: {}, resources: {} });
    assert.match(client.getInstructions(), /^CAN Tarnwick MCP server\. /);

    const { tools } = await client.listTools();
    assert.equal(tools.length, 38);
    assert.deepEqual(tools.map((tool) => tool.name), toolNames);
    for (const tool of tools) {
      assert.equal(tool.inputSchema.type, 'object', tool.name);
      for (const key of tool.inputSchema.required ?? [])
        assert.ok(key in tool.inputSchema.properties, `${tool.name} requires unknown ${key}`);
    }
  } finally {
    await client.close();
  }
});
