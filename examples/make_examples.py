#!/usr/bin/env python3
"""Writes the example projects of this folder in the project text form (.trwt).

The text form is an INI file as QSettings writes it: one section per table,
keys are the column names below a group per record. Run from anywhere:

    python3 examples/make_examples.py

Every record carries all columns that the text form holds, so that a project
opened from the text reads the same as one built in the tool.
"""

import os

# CANopen data types (CiA 301) and the project's own bit-field types.
BOOLEAN, INTEGER8, INTEGER16, INTEGER32 = 1, 2, 3, 4
UNSIGNED8, UNSIGNED16, UNSIGNED32, VISIBLE_STRING = 5, 6, 7, 9
UNSIGNED2, UNSIGNED4 = 100, 102
# Complex types of CiA 301, the data type of the standard records.
PDO_COMM_PAR, PDO_MAPPING_PAR, SDO_PAR, IDENTITY = 0x20, 0x21, 0x22, 0x23

VAR, ARRAY, RECORD = 7, 8, 9
MANDATORY, OPTIONAL = 0, 1
MANAGED_VARIABLE, MANAGED_CONST, VARIABLE = 0, 1, 2
TRANSMIT, RECEIVE = 85, 119

DATA_BITS = {BOOLEAN: 1, INTEGER8: 8, INTEGER16: 16, INTEGER32: 32, UNSIGNED8: 8, UNSIGNED16: 16,
             UNSIGNED32: 32, UNSIGNED2: 2, UNSIGNED4: 4}


def ini_value(text):
    """Quotes a value the way QSettings needs it to read it back as one string."""
    text = str(text)
    special = any(c in text for c in ',;="\\\n') or text != text.strip() or text.startswith('@')
    if not special:
        return text
    escaped = text.replace('\\', '\\\\').replace('"', '\\"').replace('\n', '\\n')
    return '"' + escaped + '"'


def sub(name, datatype, access, default, implementation=MANAGED_VARIABLE, varname='', mappable=False,
        description=''):
    """One sub-index with the defaults of a freshly created record."""
    return {
        'name': name, 'datatype': datatype, 'accesstype': access, 'defaultvalue': default,
        'currentvalue': '', 'pdomapping': 1 if mappable else 0, 'lowlimit': '0', 'uplimit': '0',
        'size': len(default) if datatype == VISIBLE_STRING else 0, 'defaultineds': 1, 'limitineds': 0,
        'refuseread': 0, 'refusewrite': 0, 'allowedaccesstypes': 'const,ro,rw,wo,rww,rwr',
        'implementation': implementation, 'varname': varname, 'description': description, 'category': 1,
        'writedefaulttoeds': 1, 'sharedlines': 0, 'managedbyobn': 0, 'nvstorage': 0,
    }


class Line:
    """The object dictionary, PGNs and SPNs of one CAN line."""

    def __init__(self, number, name):
        self.number = number
        self.name = name
        self.objects = {}
        self.pgns = []
        self.spns = []

    def add_object(self, index, name, objecttype, datatype, subs, category=OPTIONAL, description=''):
        self.objects[index] = ({'name': name, 'datatype': datatype, 'objecttype': objecttype,
                                'description': description, 'category': category, 'device_class': 0,
                                'fwsupported': 0}, subs)

    def var(self, index, name, datatype, access, default, implementation=MANAGED_VARIABLE, varname='',
            mappable=False, category=OPTIONAL):
        self.add_object(index, name, VAR, datatype,
                        {0: sub(name, datatype, access, default, implementation, varname, mappable)}, category)

    def compound(self, index, name, objecttype, datatype, entries, category=OPTIONAL, sub0_access='const',
                 sub0_name='Highest sub-index supported'):
        """An ARRAY or RECORD whose sub-index 0 holds the highest sub-index."""
        highest = max(entries)
        sub0 = sub(sub0_name, UNSIGNED8, sub0_access, str(highest),
                   MANAGED_CONST if sub0_access == 'const' else MANAGED_VARIABLE)
        self.add_object(index, name, objecttype, datatype, {0: sub0, **entries}, category)

    # Communication objects of CiA 301

    def device_type(self, value):
        self.var(0x1000, 'Device type', UNSIGNED32, 'ro', value, MANAGED_CONST, category=MANDATORY)

    def error_register(self):
        self.var(0x1001, 'Error register', UNSIGNED8, 'ro', '0', mappable=True, category=MANDATORY)

    def strings(self, device_name, hardware, software):
        for index, name, text in ((0x1008, 'Manufacturer device name', device_name),
                                  (0x1009, 'Manufacturer hardware version', hardware),
                                  (0x100A, 'Manufacturer software version', software)):
            self.var(index, name, VISIBLE_STRING, 'const', text, MANAGED_CONST)

    def emergency(self):
        self.var(0x1014, 'COB-ID EMCY', UNSIGNED32, 'rw', '$NODEID+0x80')
        self.var(0x1015, 'Inhibit time EMCY', UNSIGNED16, 'rw', '0')

    def heartbeat(self, producer_time, consumers=0):
        if consumers:
            self.compound(0x1016, 'Consumer heartbeat time', ARRAY, UNSIGNED32,
                          {n: sub('Consumer heartbeat time %d' % n, UNSIGNED32, 'rw', '0x00000000')
                           for n in range(1, consumers + 1)})
        self.var(0x1017, 'Producer heartbeat time', UNSIGNED16, 'rw', producer_time)

    def identity(self, vendor, product, revision):
        self.compound(0x1018, 'Identity object', RECORD, IDENTITY, {
            1: sub('Vendor-ID', UNSIGNED32, 'ro', vendor, MANAGED_CONST),
            2: sub('Product code', UNSIGNED32, 'ro', product, MANAGED_CONST),
            3: sub('Revision number', UNSIGNED32, 'ro', revision, MANAGED_CONST),
            4: sub('Serial number', UNSIGNED32, 'ro', '0', VARIABLE, 'serialNumber'),
        }, MANDATORY)

    def store_restore(self):
        self.compound(0x1010, 'Store parameters', ARRAY, UNSIGNED32,
                      {1: sub('Save all parameters', UNSIGNED32, 'rw', '0x00000001')})
        self.compound(0x1011, 'Restore default parameters', ARRAY, UNSIGNED32,
                      {1: sub('Restore all default parameters', UNSIGNED32, 'rw', '0x00000001')})

    def sdo_server(self):
        self.compound(0x1200, 'SDO server parameter', RECORD, SDO_PAR, {
            1: sub('COB-ID client to server', UNSIGNED32, 'ro', '$NODEID+0x600'),
            2: sub('COB-ID server to client', UNSIGNED32, 'ro', '$NODEID+0x580'),
        })

    def rpdo(self, number, mapping, dynamic=False, enabled=True):
        """RPDO number (1-based) with its communication and mapping object."""
        cob_id = 0x200 + 0x100 * (number - 1)
        self.compound(0x1400 + number - 1, 'RPDO communication parameter %d' % number, RECORD, PDO_COMM_PAR, {
            1: sub('COB-ID used by RPDO', UNSIGNED32, 'rw', cob_id_text(cob_id, enabled)),
            2: sub('Transmission type', UNSIGNED8, 'rw', '255'),
        })
        self.pdo_mapping(0x1600 + number - 1, 'RPDO mapping parameter %d' % number, mapping, dynamic)

    def tpdo(self, number, mapping, inhibit='0', event_timer='0', dynamic=False, enabled=True):
        """TPDO number (1-based); inhibit time in 100 us, event timer in ms."""
        cob_id = 0x180 + 0x100 * (number - 1)
        self.compound(0x1800 + number - 1, 'TPDO communication parameter %d' % number, RECORD, PDO_COMM_PAR, {
            1: sub('COB-ID used by TPDO', UNSIGNED32, 'rw', cob_id_text(cob_id, enabled)),
            2: sub('Transmission type', UNSIGNED8, 'rw', '255'),
            3: sub('Inhibit time', UNSIGNED16, 'rw', inhibit),
            5: sub('Event timer', UNSIGNED16, 'rw', event_timer),
        })
        self.pdo_mapping(0x1A00 + number - 1, 'TPDO mapping parameter %d' % number, mapping, dynamic)

    def pdo_mapping(self, index, name, mapping, dynamic):
        """Static mapping is constant; dynamic mapping offers eight writable entries."""
        entries = []
        for mapped_index, mapped_sub in mapping:
            bits = DATA_BITS[self.objects[mapped_index][1][mapped_sub]['datatype']]
            entries.append('0x%04X%02X%02X' % (mapped_index, mapped_sub, bits))
        count_name = 'Number of mapped application objects'
        if not dynamic:
            self.compound(index, name, RECORD, PDO_MAPPING_PAR, {
                n: sub('Application object %d' % n, UNSIGNED32, 'const', entry, MANAGED_CONST)
                for n, entry in enumerate(entries, 1)}, sub0_name=count_name)
            return
        entries += ['0x00000000'] * (8 - len(entries))
        subs = {n: sub('Application object %d' % n, UNSIGNED32, 'rw', entry) for n, entry in enumerate(entries, 1)}
        self.compound(index, name, RECORD, PDO_MAPPING_PAR, subs, sub0_access='rw', sub0_name=count_name)
        # Sub-index 0 of a writable mapping counts the active entries, not the highest sub-index.
        self.objects[index][1][0]['defaultvalue'] = str(len(mapping))

    # J1939

    def pgn(self, number, direction, name, priority, cycletime, spns, description=''):
        """A PGN with its SPNs, each (spn, name, datatype, bitposition, implementation, varname)."""
        self.pgns.append({'number': number, 'edp_dp_key': 0, 'priority': priority, 'cycletime_ms': cycletime,
                          'inhibittime_ms': 0, 'mappingcount': len(spns), 'direction': direction,
                          'name': name, 'desc': description, 'issafe': 0, 'srvt_ms': 0,
                          'FD_TrailerFormat': 0, 'FD_AssuranceType': 0, 'FD_AssuranceDataSize': 0,
                          'multisourceaddress': 0, 'safetytype': 0, 'FD_DataId': 0})
        for pos, (spn, spn_name, datatype, bitposition, implementation, varname) in enumerate(spns):
            self.spns.append({'pgnnumber': number, 'spnnumber': spn, 'datatype': datatype,
                              'implementation': implementation, 'varname': varname, 'defaultvalue': '0',
                              'name': spn_name, 'desc': '', 'pos': pos, 'bitsize': DATA_BITS[datatype],
                              'direction': direction, 'slot_df': 0, 'bitposition': bitposition})


def cob_id_text(cob_id, enabled):
    return '$NODEID+0x%X' % cob_id if enabled else '$NODEID+0x%08X' % (0x80000000 | cob_id)


NODE_DEFAULTS = {
    'edspath': '', 'xddpath': '', 'dcfpath': '', 'tpdocnt': 0, 'rpdocnt': 0, 'ismaster': 0,
    'issyncproducer': 0, 'issyncconsumer': 0, 'ishbconsumer': 0, 'isemergencyproducer': 0,
    'isemergencyconsumer': 0, 'ismpdosupported': 0, 'iscanopengateway': 0, 'allpdosstatic': 0,
    'excludegeneration': 0, 'generatedcf': 1, 'prefix': '_', 'outputpath': 'C:/', 'iconpath': '',
    'isbootupmanager': 0, 'isconfigmanager': 0, 'excludepdolinking': 0, 'multilinedata': 0, 'lssslave': 0,
}


def description_settings(vendor, product, order_code, baud_rates, granularity, rx_pdos, tx_pdos, lss,
                         comment):
    keys = {'BaudRate_%d' % rate: '1' if rate in baud_rates else '0'
            for rate in (10, 20, 50, 125, 250, 500, 800, 1000)}
    keys.update({'Dummy%04d' % n: '0' for n in range(1, 8)})
    keys.update({'LSS_Supported': '1' if lss else '0', 'SelfStarting': '0', 'VendorName': vendor,
                 'ProductName': product, 'CreatedBy': vendor, 'ModifiedBy': '', 'FileVersion': '1',
                 'FileRevision': '1', 'OrderCode': order_code, 'Granularity': str(granularity),
                 'Comment': comment, 'AdditionalSections': ''})
    if rx_pdos or tx_pdos:
        keys.update({'NrOfRXPDO': str(rx_pdos), 'NrOfTXPDO': str(tx_pdos)})
    return keys


MISC_SETTINGS = {'DatabaseVersion': '107', 'CreateToolName': 'CANopen Tarnwick', 'CreateToolVersion': '4.3.2'}


class Project:
    def __init__(self):
        self.lines = []
        self.general = {}
        self.description = {}
        self.j1939 = {}

    def line(self, number, name):
        line = Line(number, name)
        self.lines.append(line)
        return line

    def text(self):
        out = []

        def section(name, keys):
            out.append('[%s]' % name)
            out.extend('%s=%s' % (key, ini_value(value)) for key, value in keys)
            out.append('')

        section('Nodes', [('%d\\%s' % (line.number, key), value) for line in self.lines
                          for key, value in [('name', line.name)] + list(NODE_DEFAULTS.items())])
        section('GeneralSettings', sorted(self.general.items()))
        section('DescriptionSettings', sorted(self.description.items()))
        section('MiscSettings', sorted(MISC_SETTINGS.items()))
        if self.j1939:
            section('J1939Settings', sorted(self.j1939.items()))
        for line in self.lines:
            if line.objects:
                section('Objects%d' % line.number,
                        [('0x%x\\%s' % (index, key), value) for index, (obj, _) in sorted(line.objects.items())
                         for key, value in obj.items()])
                section('SubObjects%d' % line.number,
                        [('0x%x\\0x%x\\%s' % (index, subindex, key), value)
                         for index, (_, subs) in sorted(line.objects.items())
                         for subindex, record in sorted(subs.items()) for key, value in record.items()])
            if line.pgns:
                section('PGNs%d' % line.number,
                        [('%d\\%s' % (pgn['number'], key), value) for pgn in line.pgns
                         for key, value in pgn.items() if key != 'number'])
                section('SPNs%d' % line.number,
                        [('%d\\%d\\%s' % (spn['pgnnumber'], spn['spnnumber'], key), value) for spn in line.spns
                         for key, value in spn.items() if key not in ('pgnnumber', 'spnnumber')])
        return '\n'.join(out)


# CANopen settings that every generated CANopen device needs: node-ID, timer
# tick of the stack in microseconds, CAN buffer sizes, slave behaviour.
def canopen_general_settings(node_ids, line_types, receive_buffers='10', transmit_buffers='10'):
    settings = {
        'co_node_id': node_ids, 'co_node_id_fct': '', 'nmtmaster': ','.join('0' for _ in line_types),
        'co_timer_interval': '1000', 'receivebuffersize': receive_buffers,
        'transmitbuffersize': transmit_buffers, 'use_core_headers': 'V4', 'new_init_structure': '1',
        'endian': '0', 'limit_check': '0', 'sdo_blocktransfer_supported': '0', 'lss_supported': '0',
        'generate_generation_counter': '0', 'init_static_variables': '1',
    }
    settings.update({'line%dtype' % n: str(t) for n, t in enumerate(line_types)})
    return settings


def cia401_io_module():
    """Digital and analog I/O module after CiA 401, statically mapped PDOs."""
    project = Project()
    project.general = canopen_general_settings('16', [1])
    project.description = description_settings(
        'Brackwater Controls GmbH', 'BIO-8/4 CANopen I/O module', 'BIO-8-4-CO', (125, 250, 500, 1000), 0,
        2, 2, False, '8 digital inputs, 8 digital outputs, 4 analog inputs, 2 analog outputs')
    line = project.line(0, 'CANopen')
    # Profile 401 with digital inputs, digital outputs, analog inputs and analog outputs.
    line.device_type('0x000F0191')
    line.error_register()
    line.strings('BIO-8/4', '1.0', '2.3.0')
    line.store_restore()
    line.emergency()
    line.heartbeat('0')
    line.identity('0x00001C5E', '0x00004801', '0x00010003')
    line.sdo_server()

    line.compound(0x6000, 'Read input 8-bit', ARRAY, UNSIGNED8, {
        1: sub('Read input 1h to 8h', UNSIGNED8, 'ro', '0', VARIABLE, 'digitalInputs', True)})
    line.compound(0x6002, 'Polarity input 8-bit', ARRAY, UNSIGNED8, {
        1: sub('Polarity input 1h to 8h', UNSIGNED8, 'rw', '0x00')})
    line.compound(0x6200, 'Write output 8-bit', ARRAY, UNSIGNED8, {
        1: sub('Write output 1h to 8h', UNSIGNED8, 'rww', '0', VARIABLE, 'digitalOutputs', True)})
    line.compound(0x6206, 'Error mode output 8-bit', ARRAY, UNSIGNED8, {
        1: sub('Error mode output 1h to 8h', UNSIGNED8, 'rw', '0xFF')})
    line.compound(0x6207, 'Error value output 8-bit', ARRAY, UNSIGNED8, {
        1: sub('Error value output 1h to 8h', UNSIGNED8, 'rw', '0x00')})
    line.compound(0x6401, 'Read analog input 16-bit', ARRAY, INTEGER16, {
        n: sub('Analog input %d' % n, INTEGER16, 'ro', '0', VARIABLE, 'analogInput%d' % n, True)
        for n in range(1, 5)})
    line.compound(0x6411, 'Write analog output 16-bit', ARRAY, INTEGER16, {
        n: sub('Analog output %d' % n, INTEGER16, 'rww', '0', VARIABLE, 'analogOutput%d' % n, True)
        for n in range(1, 3)})
    line.compound(0x6443, 'Analog output error mode', ARRAY, UNSIGNED8, {
        n: sub('Error mode analog output %d' % n, UNSIGNED8, 'rw', '1') for n in range(1, 3)})
    line.compound(0x6444, 'Analog output error value integer', ARRAY, INTEGER32, {
        n: sub('Error value analog output %d' % n, INTEGER32, 'rw', '0') for n in range(1, 3)})

    line.rpdo(1, [(0x6200, 1)])
    line.rpdo(2, [(0x6411, 1), (0x6411, 2)])
    line.tpdo(1, [(0x6000, 1)])
    line.tpdo(2, [(0x6401, n) for n in range(1, 5)], inhibit='100', event_timer='100')
    return project


def cia402_servo_drive():
    """Servo drive after CiA 402 with the default PDO set, dynamically mappable."""
    project = Project()
    project.general = canopen_general_settings('2', [1], receive_buffers='20', transmit_buffers='20')
    project.general['lss_supported'] = '1'
    project.description = description_settings(
        'Brackwater Controls GmbH', 'SD-400 servo drive', 'SD-400-CO', (125, 250, 500, 1000), 8, 4, 4, True,
        'Servo drive with profile position, profile velocity and cyclic modes')
    line = project.line(0, 'CANopen')
    # Profile 402, additional information: servo drive.
    line.device_type('0x00020192')
    line.error_register()
    line.compound(0x1003, 'Pre-defined error field', ARRAY, UNSIGNED32,
                  {n: sub('Standard error field %d' % n, UNSIGNED32, 'ro', '0x00000000') for n in range(1, 5)},
                  sub0_access='rw')
    line.objects[0x1003][1][0].update({'name': 'Number of errors', 'defaultvalue': '0'})
    line.var(0x1005, 'COB-ID SYNC message', UNSIGNED32, 'rw', '0x00000080')
    line.strings('SD-400', '2.1', '4.0.7')
    line.store_restore()
    line.emergency()
    line.heartbeat('0', consumers=1)
    line.identity('0x00001C5E', '0x00009402', '0x00040007')
    line.compound(0x1029, 'Error behaviour', ARRAY, UNSIGNED8,
                  {1: sub('Communication error', UNSIGNED8, 'rw', '0')})
    line.sdo_server()

    line.var(0x603F, 'Error code', UNSIGNED16, 'ro', '0', VARIABLE, 'driveErrorCode', True)
    line.var(0x6040, 'Controlword', UNSIGNED16, 'rww', '0', VARIABLE, 'controlword', True)
    line.var(0x6041, 'Statusword', UNSIGNED16, 'ro', '0', VARIABLE, 'statusword', True)
    line.var(0x605A, 'Quick stop option code', INTEGER16, 'rw', '2')
    line.var(0x6060, 'Modes of operation', INTEGER8, 'rww', '0', VARIABLE, 'modesOfOperation', True)
    line.var(0x6061, 'Modes of operation display', INTEGER8, 'ro', '0', VARIABLE, 'modesOfOperationDisplay',
             True)
    line.var(0x6064, 'Position actual value', INTEGER32, 'ro', '0', VARIABLE, 'positionActualValue', True)
    line.var(0x606C, 'Velocity actual value', INTEGER32, 'ro', '0', VARIABLE, 'velocityActualValue', True)
    line.var(0x6071, 'Target torque', INTEGER16, 'rww', '0', VARIABLE, 'targetTorque', True)
    line.var(0x6077, 'Torque actual value', INTEGER16, 'ro', '0', VARIABLE, 'torqueActualValue', True)
    line.var(0x607A, 'Target position', INTEGER32, 'rww', '0', VARIABLE, 'targetPosition', True)
    line.compound(0x607D, 'Software position limit', ARRAY, INTEGER32, {
        1: sub('Min position limit', INTEGER32, 'rw', '-2147483648'),
        2: sub('Max position limit', INTEGER32, 'rw', '2147483647')})
    line.var(0x6081, 'Profile velocity', UNSIGNED32, 'rw', '0')
    line.var(0x6083, 'Profile acceleration', UNSIGNED32, 'rw', '0')
    line.var(0x6084, 'Profile deceleration', UNSIGNED32, 'rw', '0')
    line.var(0x60FF, 'Target velocity', INTEGER32, 'rww', '0', VARIABLE, 'targetVelocity', True)
    # Profile position, profile velocity, homing, cyclic synchronous position and velocity.
    line.var(0x6502, 'Supported drive modes', UNSIGNED32, 'ro', '0x000001A5', MANAGED_CONST)

    line.rpdo(1, [(0x6040, 0)], dynamic=True)
    line.rpdo(2, [(0x6040, 0), (0x6060, 0)], dynamic=True)
    line.rpdo(3, [(0x6040, 0), (0x607A, 0)], dynamic=True)
    line.rpdo(4, [(0x6040, 0), (0x60FF, 0)], dynamic=True)
    line.tpdo(1, [(0x6041, 0)], inhibit='100', dynamic=True)
    line.tpdo(2, [(0x6041, 0), (0x6061, 0)], inhibit='100', dynamic=True)
    line.tpdo(3, [(0x6041, 0), (0x6064, 0)], event_timer='10', dynamic=True)
    line.tpdo(4, [(0x6041, 0), (0x606C, 0)], event_timer='10', dynamic=True)
    return project


def j1939_name_settings(function, vehicle_system, industry_group, start_address):
    """The NAME fields of an ECU and the transport protocol it offers."""
    return {
        'identitynumber': '4711', 'manufacturercode': '1234', 'ecuinstance': '0', 'functioninstance': '0',
        'function': str(function), 'vehiclesystem': str(vehicle_system), 'vehicleinstance': '0',
        'industrygroup': str(industry_group), 'startaddress': str(start_address), 'addresscapable': '0',
        'bamsupport': '1', 'bamcycletime': '50', 'cmdtsupport': '0', 'cmdtpackets': '0',
        'requestsupport': '1', 'propsupport': '0', 'dynsupport': '0', 'safetysupport': '0',
    }


def valve_controller():
    """Hydraulic valve controller with a CANopen line and a J1939 line."""
    project = Project()
    project.general = canopen_general_settings('5,5', [1, 2], receive_buffers='10,10',
                                               transmit_buffers='10,10')
    project.description = description_settings(
        'Brackwater Controls GmbH', 'HVC-2 hydraulic valve controller', 'HVC-2-CJ', (250, 500), 0, 1, 1,
        False, 'Valve control over CANopen on line 0 and J1939 on line 1')
    project.description.update({'VendorName_1': 'Brackwater Controls GmbH',
                                'ProductName_1': 'HVC-2 hydraulic valve controller'})
    # Auxiliary valve control of agricultural and forestry equipment, a self-configurable address.
    project.j1939 = j1939_name_settings(function=129, vehicle_system=0, industry_group=2, start_address=128)

    canopen = project.line(0, 'CANopen')
    canopen.device_type('0x00000000')
    canopen.error_register()
    canopen.strings('HVC-2', '1.2', '1.5.1')
    canopen.emergency()
    canopen.heartbeat('1000')
    canopen.identity('0x00001C5E', '0x00002002', '0x00010005')
    canopen.sdo_server()
    canopen.var(0x2000, 'Valve setpoint', INTEGER16, 'rww', '0', VARIABLE, 'coValveSetpoint', True)
    canopen.var(0x2001, 'Valve actual position', INTEGER16, 'ro', '0', VARIABLE, 'coValvePosition', True)
    canopen.var(0x2002, 'Valve status', UNSIGNED8, 'ro', '0', VARIABLE, 'coValveStatus', True)
    canopen.var(0x2100, 'Ramp time', UNSIGNED16, 'rw', '200')
    canopen.rpdo(1, [(0x2000, 0)])
    canopen.tpdo(1, [(0x2001, 0), (0x2002, 0)], inhibit='50', event_timer='100')

    j1939 = project.line(1, 'J1939')
    j1939.pgn(65296, TRANSMIT, 'Valve Status', 6, 100, [
        (520192, 'Valve actual position', INTEGER16, 0, VARIABLE, 'j1939ValvePosition'),
        (520193, 'Valve fault code', UNSIGNED8, 16, VARIABLE, 'j1939ValveFault'),
    ], 'Position and fault state of the valve')
    j1939.pgn(65128, TRANSMIT, 'Vehicle Fluids', 6, 1000, [
        (1638, 'Hydraulic Temperature', UNSIGNED8, 0, VARIABLE, 'hydraulicTemperature'),
    ])
    j1939.pgn(65297, RECEIVE, 'Valve Command', 3, 50, [
        (520200, 'Valve setpoint', INTEGER16, 0, VARIABLE, 'j1939ValveSetpoint'),
        (520201, 'Valve enable', UNSIGNED2, 16, VARIABLE, 'j1939ValveEnable'),
    ], 'Setpoint and enable from the implement controller')
    return project


def engine_ecu():
    """Engine ECU on J1939 that sends engine data and receives vehicle speed."""
    project = Project()
    project.general = {'line0type': '2', 'co_timer_interval': '1000', 'receivebuffersize': '20',
                       'transmitbuffersize': '10', 'use_core_headers': 'V4', 'new_init_structure': '1',
                       'endian': '0', 'init_static_variables': '1'}
    project.description = description_settings(
        'Brackwater Controls GmbH', 'EC-6 engine control unit', 'EC-6-J', (250, 500), 0, 0, 0, False,
        'Engine #1 on the powertrain network')
    # Engine, on-highway equipment, preferred address 0 (Engine #1).
    project.j1939 = j1939_name_settings(function=0, vehicle_system=0, industry_group=1, start_address=0)
    line = project.line(0, 'J1939')
    line.pgn(61444, TRANSMIT, 'Electronic Engine Controller 1', 3, 20, [
        (899, 'Engine Torque Mode', UNSIGNED4, 0, MANAGED_VARIABLE, ''),
        (512, "Driver's Demand Engine - Percent Torque", UNSIGNED8, 8, VARIABLE, 'driversDemandTorque'),
        (513, 'Actual Engine - Percent Torque', UNSIGNED8, 16, VARIABLE, 'actualEngineTorque'),
        (190, 'Engine Speed', UNSIGNED16, 24, VARIABLE, 'engineSpeed'),
        (1483, 'Source Address of Controlling Device for Engine Control', UNSIGNED8, 40, VARIABLE,
         'engineControlSource'),
        (1675, 'Engine Starter Mode', UNSIGNED4, 48, MANAGED_VARIABLE, ''),
        (2432, 'Engine Demand - Percent Torque', UNSIGNED8, 56, VARIABLE, 'engineDemandTorque'),
    ], 'EEC1')
    line.pgn(65262, TRANSMIT, 'Engine Temperature 1', 6, 1000, [
        (110, 'Engine Coolant Temperature', UNSIGNED8, 0, VARIABLE, 'coolantTemperature'),
        (174, 'Engine Fuel Temperature 1', UNSIGNED8, 8, VARIABLE, 'fuelTemperature'),
        (175, 'Engine Oil Temperature 1', UNSIGNED16, 16, VARIABLE, 'oilTemperature'),
        (176, 'Engine Turbocharger Oil Temperature', UNSIGNED16, 32, VARIABLE, 'turboOilTemperature'),
        (52, 'Engine Intercooler Temperature', UNSIGNED8, 48, VARIABLE, 'intercoolerTemperature'),
    ], 'ET1')
    line.pgn(65265, RECEIVE, 'Cruise Control/Vehicle Speed 1', 6, 100, [
        (69, 'Two Speed Axle Switch', UNSIGNED2, 0, MANAGED_VARIABLE, ''),
        (70, 'Parking Brake Switch', UNSIGNED2, 2, VARIABLE, 'parkingBrakeSwitch'),
        (84, 'Wheel-Based Vehicle Speed', UNSIGNED16, 8, VARIABLE, 'vehicleSpeed'),
        (597, 'Brake Switch', UNSIGNED2, 28, VARIABLE, 'brakeSwitch'),
        (598, 'Clutch Switch', UNSIGNED2, 30, VARIABLE, 'clutchSwitch'),
    ], 'CCVS1')
    line.pgn(65276, RECEIVE, 'Dash Display', 6, 1000, [
        (96, 'Fuel Level 1', UNSIGNED8, 8, VARIABLE, 'fuelLevel'),
    ], 'DD1')
    return project


EXAMPLES = {
    'cia401_io_module': cia401_io_module,
    'cia402_servo_drive': cia402_servo_drive,
    'valve_controller_canopen_j1939': valve_controller,
    'j1939_engine_ecu': engine_ecu,
}


def main():
    here = os.path.dirname(os.path.abspath(__file__))
    for name, build in EXAMPLES.items():
        folder = os.path.join(here, name)
        os.makedirs(folder, exist_ok=True)
        with open(os.path.join(folder, name + '.trwt'), 'w', encoding='utf-8', newline='\n') as out:
            out.write(build().text())


if __name__ == '__main__':
    main()
