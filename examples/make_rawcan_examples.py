#!/usr/bin/env python3
"""Builds the example projects with raw CAN lines (.trwp) by driving trw as an MCP server.

The text form leaves raw CAN identifiers out, so these two examples are project
files. The tool has no command for a new project and saves a project where it
was opened; so the script writes the CANopen part and the settings as a seed in
the text form, lets the tool open it, and takes the tool's working copy of the
seed (a complete project file, kept under the documented name "trwedatatemp_*"
in its data folder) as the start of the .trwp. It opens that file, adds the CAN
identifiers and data elements with the MCP tools, checks and saves:

    python3 examples/make_rawcan_examples.py [path/to/trw]

Without an argument it takes build/trw of this repository.
"""

import glob
import json
import os
import shutil
import subprocess
import sys
import tempfile

import make_examples as ex

HERE = os.path.dirname(os.path.abspath(__file__))
EXTENDED = 0x20000000


class Session:
    """One trw --mcp process with its own home, so no user settings take part."""

    def __init__(self, binary, home):
        env = dict(os.environ, HOME=home, XDG_CONFIG_HOME=os.path.join(home, 'config'),
                   XDG_DATA_HOME=os.path.join(home, 'data'))
        self.data_home = env['XDG_DATA_HOME']
        self.process = subprocess.Popen([binary, '--mcp'], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                        env=env, text=True, encoding='utf-8')
        self.next_id = 0
        self.request('initialize')

    def request(self, method, params=None):
        self.next_id += 1
        self.process.stdin.write(json.dumps({'jsonrpc': '2.0', 'id': self.next_id, 'method': method,
                                             'params': params or {}}) + '\n')
        self.process.stdin.flush()
        reply = json.loads(self.process.stdout.readline())
        if 'error' in reply:
            raise RuntimeError('%s: %s' % (method, reply['error']['message']))
        return reply['result']

    def call(self, tool, **arguments):
        """Calls a tool and returns its text; a tool failure or an edit that breaks the model stops the run."""
        result = self.request('tools/call', {'name': tool, 'arguments': arguments})
        text = result['content'][0]['text']
        if result.get('isError') or ('check_model:' in text and 'check_model: OK' not in text):
            raise RuntimeError('%s: %s' % (tool, text))
        return text

    def working_copies(self):
        return glob.glob(os.path.join(self.data_home, '**', 'trwedatatemp_*'), recursive=True)

    def close(self):
        self.process.stdin.close()
        self.process.wait()


class Message:
    """A raw CAN identifier with its data elements, each (name, datatype, bits, varname)."""

    def __init__(self, can_id, direction, name, cycle_ms, elements, description=''):
        self.can_id = can_id
        self.direction = direction
        self.name = name
        self.cycle_ms = cycle_ms
        self.elements = elements
        self.description = description


def add_messages(session, line, messages):
    for message in messages:
        session.call('add_can_id', line=line, canId=message.can_id, direction=message.direction,
                     name=message.name, description=message.description, cycleTimeMs=message.cycle_ms)
        position = 0
        for number, (name, datatype, bits, varname) in enumerate(message.elements):
            session.call('add_data_element', line=line, canId=message.can_id, direction=message.direction,
                         number=number, name=name, dataType=datatype, pos=number, bitSize=bits,
                         bitPosition=position, varname=varname)
            position += bits


def build(binary, name, seed, line, messages):
    folder = os.path.join(HERE, name)
    os.makedirs(folder, exist_ok=True)
    target = os.path.join(folder, name + '.trwp')
    with tempfile.TemporaryDirectory() as home:
        seed_path = os.path.join(home, name + '.trwt')
        with open(seed_path, 'w', encoding='utf-8', newline='\n') as out:
            out.write(seed.text())
        session = Session(binary, home)
        try:
            before = set(session.working_copies())
            session.call('open_project', path=seed_path)
            copies = sorted(set(session.working_copies()) - before)
            if len(copies) != 1:
                raise RuntimeError('expected one working copy of the seed, found %d' % len(copies))
            shutil.copyfile(copies[0], target)
            session.call('open_project', path=target)
            add_messages(session, line, messages)
            outcome = json.loads(session.call('check_model'))
            if outcome['errorCount'] != 0:
                raise RuntimeError('%s: %s' % (name, outcome['errors']))
            session.call('save_project')
        finally:
            session.close()
    # The save keeps the file it replaced beside it.
    if os.path.exists(target + '.bak'):
        os.remove(target + '.bak')


TX, RX = 'Transmit', 'Receive'


def io_gateway():
    """A sensor gateway that speaks fixed CAN frames only, standard and extended."""
    project = ex.Project()
    project.general = {'line0type': '4', 'co_timer_interval': '1000', 'receivebuffersize': '16',
                       'transmitbuffersize': '16', 'use_core_headers': 'V4', 'new_init_structure': '1',
                       'endian': '0', 'init_static_variables': '1'}
    project.description = ex.description_settings(
        'Brackwater Controls GmbH', 'GW-4 sensor gateway', 'GW-4-RC', (250, 500), 0, 0, 0, False,
        'Four sensor channels on fixed CAN frames')
    project.line(0, 'Raw CAN')
    messages = [
        Message(0x181, TX, 'Sensor status', 100, [
            ('State', ex.UNSIGNED8, 8, 'gwState'),
            ('Board temperature', ex.INTEGER16, 16, 'gwTemperature'),
            ('Supply voltage', ex.UNSIGNED16, 16, 'gwSupplyVoltage'),
        ], 'State, temperature and supply of the gateway'),
        Message(EXTENDED | 0x18FF1021, TX, 'Sensor values', 50, [
            ('Channel 1', ex.INTEGER16, 16, 'gwChannel1'),
            ('Channel 2', ex.INTEGER16, 16, 'gwChannel2'),
            ('Channel 3', ex.INTEGER16, 16, 'gwChannel3'),
            ('Channel 4', ex.INTEGER16, 16, 'gwChannel4'),
        ]),
        Message(0x201, RX, 'Command', 0, [
            ('Mode', ex.UNSIGNED8, 8, 'gwMode'),
            ('Output enable', ex.UNSIGNED2, 2, 'gwOutputEnable'),
        ], 'Operating mode from the host'),
        Message(EXTENDED | 0x18EF2110, RX, 'Configuration', 0, [
            ('Channel', ex.UNSIGNED8, 8, 'gwConfigChannel'),
            ('Filter time', ex.UNSIGNED16, 16, 'gwFilterTime'),
            ('Scale', ex.UNSIGNED32, 32, 'gwScale'),
        ]),
    ]
    return project, messages


def canopen_rawcan_drive():
    """A pump drive on CANopen that also answers a legacy controller on fixed frames, on one line."""
    project = ex.Project()
    project.general = ex.canopen_general_settings('3', [6])
    project.description = ex.description_settings(
        'Brackwater Controls GmbH', 'PD-2 pump drive', 'PD-2-CR', (250, 500), 0, 1, 1, False,
        'Pump drive on CANopen with the frames of its legacy controller on the same line')
    line = project.line(0, 'CANopen and raw CAN')
    line.device_type('0x00000000')
    line.error_register()
    line.strings('PD-2', '1.0', '1.1.0')
    line.emergency()
    line.heartbeat('1000')
    line.identity('0x00001C5E', '0x00003002', '0x00010001')
    line.sdo_server()
    line.var(0x2000, 'Pump speed setpoint', ex.UNSIGNED16, 'rww', '0', ex.VARIABLE, 'pumpSpeedSetpoint', True)
    line.var(0x2001, 'Pump speed', ex.UNSIGNED16, 'ro', '0', ex.VARIABLE, 'pumpSpeed', True)
    line.rpdo(1, [(0x2000, 0)])
    line.tpdo(1, [(0x2001, 0)], inhibit='100', event_timer='100')
    messages = [
        Message(0x7E0, TX, 'Legacy status', 200, [
            ('Pump running', ex.UNSIGNED2, 2, 'legacyRunning'),
            ('Pressure', ex.UNSIGNED16, 16, 'legacyPressure'),
        ], 'Status frame that the legacy controller expects'),
        Message(0x7E8, RX, 'Legacy command', 0, [
            ('Start request', ex.UNSIGNED2, 2, 'legacyStart'),
            ('Pressure limit', ex.UNSIGNED16, 16, 'legacyPressureLimit'),
        ]),
        Message(EXTENDED | 0x1CFF0003, TX, 'Operating hours', 1000, [
            ('Hours', ex.UNSIGNED32, 32, 'legacyOperatingHours'),
        ]),
    ]
    return project, messages


EXAMPLES = {
    'rawcan_sensor_gateway': io_gateway,
    'pump_drive_canopen_rawcan': canopen_rawcan_drive,
}


def main():
    binary = sys.argv[1] if len(sys.argv) > 1 else os.path.join(HERE, '..', 'build', 'trw')
    for name, make in EXAMPLES.items():
        seed, messages = make()
        build(binary, name, seed, 0, messages)


if __name__ == '__main__':
    main()
