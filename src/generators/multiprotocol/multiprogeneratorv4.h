#pragma once

#include "generators/multiprotocol/multiprogenerator.h"

// gen_mp.c and gen_rawcan.c for the V4 stack: the protocol masks and the
// common start of its core layer, the initialisation values at file level,
// and the gen_objdict.c and gen_pgn.c sections in their V4 form.
class MultiProGeneratorV4 : public MultiProGenerator
{
    Q_OBJECT
public:
    using MultiProGenerator::MultiProGenerator;

protected:
    bool coreForm() const override { return true; }
};
