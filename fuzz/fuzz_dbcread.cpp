// A DBC file of any content, read into a new database and written out again,
// so that the writer meets whatever the reader let through.

#include "dbc/candbdatabase.h"
#include "dbc/candbdbc.h"

#include <QByteArray>

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    CANdbDatabase database;
    CANdbDBC dbc;
    // Reports of a damaged file would otherwise go to the standard output at fuzzing speed.
    dbc.setListener([](CANdbFileIo::Severity, int, const QString&, const QByteArray&) {});
    dbc.readText(database, QByteArray::fromRawData(reinterpret_cast<const char*>(data), qsizetype(size)));
    CANdbDBC::writeText(database);
    return 0;
}
