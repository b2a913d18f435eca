// The sections of gen_define.h for the protocols beside CANopen: J1939, raw
// CAN, ISO-TP and UDS, the COB budget of mixed projects, and the EnergyBus
// block of that edition of the tool. Their places in the file are fixed by
// doJob; they stay empty until the defines of those protocols are written
// here, so that a CANopen device's header is complete without them.

#include "generators/canopen/codefinegenerator.h"

void CoDefineGenerator::writeEnergyBusBlock() {}

void CoDefineGenerator::writeJ1939Block() {}

void CoDefineGenerator::writeRawCanBlock() {}

void CoDefineGenerator::writeIsoTpUdsBlock() {}

void CoDefineGenerator::writeCobBlock() {}
