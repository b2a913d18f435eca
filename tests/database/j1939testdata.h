#pragma once

#include "database/objectdatabase.h"

#include <QStringList>

// Records of the J1939 and raw CAN store with every field set apart from its
// default, and their fields as text for comparisons with readable failures.
namespace j1939testdata {

ObjectDataBase::PGN pgn(quint8 direction, const QString& name, bool safe = false);
ObjectDataBase::SPN spn(quint32 pos, int datatype, quint16 bitsize, const QString& name);
ObjectDataBase::CANID canId(quint8 direction, const QString& name);
ObjectDataBase::DataElement element(quint32 pos, int datatype, quint16 bitsize, const QString& name);

QStringList fields(const ObjectDataBase::PGN& pgn);
QStringList fields(const ObjectDataBase::SPN& spn);
QStringList fields(const ObjectDataBase::CANID& canId);
QStringList fields(const ObjectDataBase::DataElement& element);

} // namespace j1939testdata
