#pragma once

#include "generators/canopen/vobjdictgenerator.h"

// gen_vobjdict.c for the V4 stack: the core layer's constant words, and the
// data type and the service of a row in two words.
class VobjDictGeneratorV4 : public VobjDictGenerator
{
    Q_OBJECT
public:
    using VobjDictGenerator::VobjDictGenerator;

protected:
    bool coreForm() const override { return true; }
};
