#pragma once

#include "database/objectdatabase.h"

namespace cleanproject {

// A sub-index record with a name, the given type, access and default value.
SUBINDEX_DATA_T subRecord(int dataType, const QString& access, const QString& value);

// The project-wide settings a CANopen device needs to pass the model check.
void addProjectSettings(ObjectDataBase& db);
// Node-ID and CAN buffer sizes of one line.
void addLineSettings(ObjectDataBase& db, quint8 line);
// 0x1000, 0x1001, 0x1017 and the identity object 0x1018 of one line.
void addMandatoryObjects(ObjectDataBase& db, quint8 line);

// A new project whose lines 0, 1, ... have the given types, each with its
// line settings and the mandatory objects, and the project-wide settings.
bool fillProject(ObjectDataBase& db, const QList<int>& lineTypes);

// Line 0 as a CANopen line that passes the check, saved at the path.
bool saveCanopenProject(const QString& path, int lineType = 1);

} // namespace cleanproject
