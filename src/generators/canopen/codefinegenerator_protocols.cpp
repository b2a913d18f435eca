// The sections of gen_define.h for the protocols beside CANopen: J1939, raw
// CAN, ISO-TP and UDS, the COB budget of mixed projects, and the EnergyBus
// block of that edition of the tool. Each is called in its place in the file;
// none of them writes anything yet.

#include "generators/canopen/codefinegenerator.h"

void CoDefineGenerator::writeEnergyBusBlock() {}

void CoDefineGenerator::writeJ1939Block() {}

void CoDefineGenerator::writeRawCanBlock() {}

void CoDefineGenerator::writeIsoTpUdsBlock() {}

void CoDefineGenerator::writeCobBlock() {}
