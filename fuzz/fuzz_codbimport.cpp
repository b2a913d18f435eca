// A CANopen profile database of any content, imported into a new project
// with the copy rules applied, so that they are read as well.

#include "fuzzsupport.h"

#include "importers/codbimporter.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    CODBImporter importer;
    importer.setApplyCopyRules(true);
    fuzzsupport::importInput(importer, data, size, QStringLiteral("profile.codb"));
    return 0;
}
