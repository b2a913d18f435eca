#pragma once

#include "generators/canopen/indicationgenerator.h"

// gen_indication.h for the V4 stack: its indications take the line type of
// the core layer and parameter records, and static UDS indications join them.
class indicationgeneratorv4 : public indicationgenerator
{
    Q_OBJECT
public:
    using indicationgenerator::indicationgenerator;

protected:
    bool coreForm() const override { return true; }
};
