#pragma once

#include "generators/canopen/extdeclgenerator.h"

// gen_extern_decl.h for the V4 stack.
class ExtDeclGeneratorV4 : public ExtDeclGenerator
{
    Q_OBJECT
public:
    using ExtDeclGenerator::ExtDeclGenerator;

protected:
    bool coreForm() const override { return true; }
};
