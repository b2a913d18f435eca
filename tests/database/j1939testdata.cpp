#include "j1939testdata.h"
#include "common/testhelpers.h"

namespace j1939testdata {

ObjectDataBase::PGN pgn(quint8 direction, const QString& name, bool safe)
{
    ObjectDataBase::PGN record;
    record.name = name;
    record.desc = QStringLiteral("about ") + name;
    record.edp_dp_key = 0;
    record.priority = 6;
    record.cycletime_ms = 100;
    record.inhibittime_ms = 20;
    record.mappingcount = 0;
    record.direction = direction;
    record.issafe = safe;
    record.srvt_ms = 250;
    record.FD_TrailerFormat = 2;
    record.FD_AssuranceType = 1;
    record.FD_AssuranceDataSize = 4;
    record.multisourceaddress = 1;
    record.safetytype = 3;
    record.FD_DataId = 70000;
    return record;
}

ObjectDataBase::SPN spn(quint32 pos, int datatype, quint16 bitsize, const QString& name)
{
    ObjectDataBase::SPN record;
    record.pos = pos;
    record.name = name;
    record.desc = QStringLiteral("about ") + name;
    record.defaultvalue = QStringLiteral("0x12");
    record.datatype = datatype;
    record.implementation = 2;
    record.varname = name.simplified().remove(QLatin1Char(' ')).remove(QLatin1Char('\''));
    record.bitsize = bitsize;
    record.slot_df = 9;
    record.bitposition = 0;
    return record;
}

ObjectDataBase::CANID canId(quint8 direction, const QString& name)
{
    ObjectDataBase::CANID record;
    record.name = name;
    record.desc = QStringLiteral("about ") + name;
    record.cycletime_ms = 50;
    record.inhibittime_ms = 5;
    record.mappingcount = 2;
    record.direction = direction;
    return record;
}

ObjectDataBase::DataElement element(quint32 pos, int datatype, quint16 bitsize, const QString& name)
{
    ObjectDataBase::DataElement record;
    record.pos = pos;
    record.name = name;
    record.desc = QStringLiteral("about ") + name;
    record.defaultvalue = QStringLiteral("7");
    record.datatype = datatype;
    record.implementation = 0;
    record.varname = name;
    record.bitsize = bitsize;
    record.bitpos = 0;
    return record;
}

QStringList fields(const ObjectDataBase::PGN& r)
{
    return testhelpers::fieldTexts(r.name, r.desc, r.number, r.edp_dp_key, r.priority, r.cycletime_ms,
                                   r.inhibittime_ms, r.mappingcount, r.direction, r.issafe, r.srvt_ms,
                                   r.FD_TrailerFormat, r.FD_AssuranceType, r.FD_AssuranceDataSize,
                                   r.multisourceaddress, r.safetytype, r.FD_DataId);
}

QStringList fields(const ObjectDataBase::SPN& r)
{
    return testhelpers::fieldTexts(r.pos, r.name, r.desc, r.defaultvalue, r.datatype, r.pgnnumber,
                                   r.spnnumber, r.direction, r.implementation, r.varname, r.bitsize,
                                   r.slot_df, r.bitposition);
}

QStringList fields(const ObjectDataBase::CANID& r)
{
    return testhelpers::fieldTexts(r.name, r.desc, r.id, r.cycletime_ms, r.inhibittime_ms, r.mappingcount,
                                   r.direction);
}

QStringList fields(const ObjectDataBase::DataElement& r)
{
    return testhelpers::fieldTexts(r.pos, r.name, r.desc, r.defaultvalue, r.datatype, r.canid, r.number,
                                   r.direction, r.implementation, r.varname, r.bitsize, r.bitpos);
}

} // namespace j1939testdata
