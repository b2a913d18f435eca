#pragma once

#include "generators/commongeneratorhelper.h"

// The shared pieces for the V4 stack, whose common layer is called "core".
class CommonGeneratorHelperV4 : public CommonGeneratorHelper
{
public:
    using CommonGeneratorHelper::CommonGeneratorHelper;

protected:
    bool coreForm() const override { return true; }
};
