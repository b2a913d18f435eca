#pragma once

#include "generators/multiprotocol/pgngenerator.h"

// gen_pgn.c for the V4 stack: mapping rows describe the signal, the
// variable pointers stand in a table of their own, and the words of the
// common layer are those of its core.
class PGNGeneratorV4 : public PGNGenerator
{
    Q_OBJECT
public:
    using PGNGenerator::PGNGenerator;

protected:
    bool coreForm() const override { return true; }
};
