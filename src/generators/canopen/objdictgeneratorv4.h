#pragma once

#include "generators/canopen/objdictgenerator.h"

// gen_objdict.c for the V4 stack: the same sections as the classic form, with
// the core layer's words, the service table at file level and the COB-ID
// overwriting as the load indication of the predefined connection set.
class ObjDictGeneratorV4 : public ObjDictGenerator
{
    Q_OBJECT
public:
    using ObjDictGenerator::ObjDictGenerator;

protected:
    bool coreForm() const override { return true; }
};
