"""Rewrites a CANopen FD device description into the CiA 311 (CANopen) form
that the schemas of the corpus describe, so that xmllint can judge the rest.

The CANopen FD names map one to one onto their CANopen counterparts: the body
types, CANopenFDObjectList, CANopenFDDataObject and CANopenFDDataElement, the
accessUSDO and accessPDO attributes. The modification attribute has no
counterpart and goes. Elements that the schemas declare globally move into the
CANopen namespace, as the schemas expect.

Usage: xdd_as_cia311.py <schema folder> <source.xdd> <target.xdd>
"""
import glob
import os
import sys
import xml.etree.ElementTree as ET

XS = '{http://www.w3.org/2001/XMLSchema}'
XSI = 'http://www.w3.org/2001/XMLSchema-instance'
CO = 'http://www.canopen.org/xml/1.1'

ELEMENTS = {'CANopenFDObjectList': 'CANopenObjectList', 'CANopenFDDataObject': 'CANopenObject',
            'CANopenFDDataElement': 'CANopenSubObject'}
ATTRIBUTES = {'accessUSDO': 'accessType', 'accessPDO': 'PDOmapping'}
BODY_TYPES = {'ProfileBody_Device_CANopenFD': 'ProfileBody_Device_CANopen',
              'ProfileBody_CommunicatioNetwork_CANopenFD': 'ProfileBody_CommunicationNetwork_CANopen'}


def main(schemas, source, target):
    declared = {element.get('name') for path in glob.glob(os.path.join(schemas, '*.xsd'))
                for element in ET.parse(path).getroot().findall(XS + 'element')}
    ET.register_namespace('co', CO)
    ET.register_namespace('xsi', XSI)
    tree = ET.parse(source)
    for element in tree.iter():
        name = ELEMENTS.get(element.tag, element.tag)
        element.tag = '{%s}%s' % (CO, name) if name in declared else name
        for old, new in ATTRIBUTES.items():
            if old in element.attrib:
                element.attrib[new] = element.attrib.pop(old)
        element.attrib.pop('modification', None)
        element.attrib.pop('{%s}noNamespaceSchemaLocation' % XSI, None)
        body = element.attrib.get('{%s}type' % XSI)
        if body:
            element.attrib['{%s}type' % XSI] = 'co:' + BODY_TYPES.get(body, body)
    tree.write(target, xml_declaration=True, encoding='utf-8')


if __name__ == '__main__':
    main(*sys.argv[1:4])
