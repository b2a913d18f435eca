// A project text form of any content, opened as a project.

#include "fuzzsupport.h"

#include "database/objectdatabase.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    ObjectDataBase database;
    database.openDataBase(fuzzsupport::writeInput(data, size, QStringLiteral("project.trwt")), true);
    return 0;
}
