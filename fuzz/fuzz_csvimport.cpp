// An ICSV file of any content, imported into line 0 of a new project.

#include "fuzzsupport.h"

#include "importers/csvimporter.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    CsvImporter importer;
    fuzzsupport::importInput(importer, data, size, QStringLiteral("objects.csv"));
    return 0;
}
