#pragma once

#include "importers/basedataimporter.h"

// Copies the objects and PGNs of one line of another project file into the
// scratch line 255, where a caller can pick from them without touching the
// lines of the device.
class TRWPImporter : public BaseDataImporter
{
    Q_OBJECT
public:
    explicit TRWPImporter(QObject* parent = nullptr);

public Q_SLOTS:
    void doImport() override;
};
