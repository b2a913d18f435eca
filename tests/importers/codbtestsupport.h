#pragma once

#include "database/objectdatabase.h"

#include <QSharedPointer>
#include <QString>

class CODBImporter;

namespace codbtest {

// A fresh project with line 0, as the profile tools load them.
QSharedPointer<ObjectDataBase> newDatabase();

// Runs a CODBImporter on line 0 with the default range and waits for it;
// configure may adjust the importer before the start.
void importFile(const QSharedPointer<ObjectDataBase>& database, const QString& path,
                void (*configure)(CODBImporter&) = nullptr);

// Writes the text into a temporary file and imports it into a fresh project.
QSharedPointer<ObjectDataBase> importText(const QByteArray& text, void (*configure)(CODBImporter&) = nullptr);

SUBINDEX_DATA_T subIndex(const QSharedPointer<ObjectDataBase>& database, quint16 index, quint8 sub);
INDEX_DATA_T index(const QSharedPointer<ObjectDataBase>& database, quint16 index);

} // namespace codbtest
