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

// Line 0 as a CANopen line that passes the check, saved at the path.
bool saveCanopenProject(const QString& path, int lineType = 1);

} // namespace cleanproject
