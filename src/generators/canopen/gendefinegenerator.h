#pragma once

#include "generators/canopen/codefinegenerator.h"

// gen_define.h for the newer stack, whose service-independent layer is called
// "core": the classic file with the core names of the shared defines, and a
// few defines that only the newer stack knows.
class GenDefineGenerator : public CoDefineGenerator
{
    Q_OBJECT
public:
    explicit GenDefineGenerator(QObject* parent = nullptr);

protected:
    bool coreForm() const override { return true; }
    const StackWords* stackWords() const override;
    void writeStaticUdsIndications() override;
};
