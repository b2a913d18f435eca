#pragma once

#include "generators/multiprotocol/sdmgenerator.h"

// gen_sdg.c for the V4 stack: the transmit mapping fills the message in
// pData up to its length, the transmit SDGs have a configuration table, and
// the words of the line and of the results are those of the core layer.
class SDMGeneratorV4 : public SDMGenerator
{
    Q_OBJECT
public:
    using SDMGenerator::SDMGenerator;

protected:
    bool coreForm() const override { return true; }
};
