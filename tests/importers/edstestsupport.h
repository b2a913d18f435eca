#pragma once

#include "database/objectdatabase.h"

#include <QByteArray>
#include <QSharedPointer>
#include <QString>

#include <string>

namespace edstest {

// A fresh project: line 0 of type CANopen with the default description settings.
QSharedPointer<ObjectDataBase> newProject();

// Imports the file into line 0 with the index range of the command line,
// as the pipeline does. False when the import didn't end within the time;
// the importer is then left running, so that the test can fail instead of hanging.
bool importFile(const QSharedPointer<ObjectDataBase>& database, const QString& path, int timeoutMs = 30000);

// Writes the bytes into dir/name and returns the path.
QString writeFile(const QString& dir, const QString& name, const QByteArray& content);

// A corpus file's name as a test name: letters and digits, the rest "_".
std::string testName(const char* file);

int objectCount(ObjectDataBase& database, quint8 line = 0);
int subIndexCount(ObjectDataBase& database, quint8 line = 0);

} // namespace edstest
