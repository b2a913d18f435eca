// An EDS or DCF file of any content, imported into a new project.

#include "fuzzsupport.h"

#include "importers/edsimporter.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    EDSImporter importer;
    fuzzsupport::importInput(importer, data, size, QStringLiteral("device.eds"));
    return 0;
}
