#include "database/objectdatabase.h"

#include "canopenlib/cohelper.h"

#include <QDebug>
#include <QSqlError>
#include <QSqlQuery>

namespace {

const QString unknownName = QStringLiteral("--");

quint64 pgnKey(quint32 pgnnumber, quint8 direction)
{
    return (quint64(pgnnumber) << 8) | direction;
}

quint64 spnKey(quint32 pgnnumber, quint8 direction, quint32 spnnumber)
{
    return (quint64(pgnnumber) << 40) | (quint64(direction) << 32) | spnnumber;
}

QString number(qint64 value)
{
    return QString::number(value);
}

// Strings and octet strings have no width of their type; their bitsize counts.
quint16 elementWidth(int datatype, quint16 bitsize)
{
    if (datatype == CAN::OctetString || datatype == CAN::VisStringNull || datatype == CAN::VisStringAsterisk)
        return bitsize;
    return COHelper::getDataLengthBits(static_cast<CAN::CANopenDataType>(datatype));
}

// A field number and its first bit in the message.
using BitPosition = QPair<quint32, quint32>;

// Files before bit positions were stored have 0 everywhere; the fields were
// packed one after the other. Gives the packed position of every field but
// number 0, or none when the stored positions stand.
template <typename Field, typename Number, typename Position>
QList<BitPosition> packedBitPositions(const QList<Field>& fields, Number Field::*numberOf,
                                      Position Field::*positionOf)
{
    QList<BitPosition> positions;
    if (fields.size() < 2 || fields.at(0).*positionOf != 0 || fields.at(1).*positionOf != 0)
        return positions;
    quint32 bitCount = 0;
    for (const Field& field : fields) {
        if (field.*numberOf != 0)
            positions.append({field.*numberOf, bitCount});
        bitCount += elementWidth(field.datatype, field.bitsize);
    }
    return positions;
}

// Old tables of line 0 were created with a misspelt bit position column, so
// rows of SPNs and DataElements are read by column position. Both tables
// start with these columns; the owner is the PGN or the CAN identifier.
enum SignalColumn
{
    SignalOwner,
    SignalNumber,
    SignalDatatype,
    SignalImplementation,
    SignalVarname,
    SignalDefaultValue,
    SignalName,
    SignalDesc,
    SignalPos,
    SignalBitsize,
    SignalDirection
};

enum SpnColumn
{
    SpnSlotDf = SignalDirection + 1,
    SpnBitposition
};

enum DataElementColumn
{
    ElementBitpos = SignalDirection + 1
};

// The records of the numbers in list order; those that cannot be read are left out.
template <typename Record, typename Read> QList<Record> readRecords(const QList<quint32>& numbers, Read read)
{
    QList<Record> records;
    for (quint32 recordNumber : numbers) {
        Record record;
        if (read(recordNumber, record))
            records.append(record);
    }
    return records;
}

// PGNs and raw CAN identifiers share these columns, read in this order from
// the first one on.
template <typename Message>
void fillMessageColumns(const QSqlQuery& query, int first, Message& out, ObjectDataBase& database)
{
    out.cycletime_ms = query.value(first).toUInt();
    out.inhibittime_ms = query.value(first + 1).toUInt();
    out.mappingcount = query.value(first + 2).toUInt();
    out.direction = query.value(first + 3).toUInt();
    out.name = database.stringById(query.value(first + 4).toInt());
    out.desc = database.stringById(query.value(first + 5).toInt());
}

} // namespace

bool ObjectDataBase::execLogged(QSqlQuery& query, const QString& statement)
{
    if (exec(query, statement))
        return true;
    qDebug() << Q_FUNC_INFO << statement << query.lastError().text();
    return false;
}

bool ObjectDataBase::execStatement(const QString& statement)
{
    QSqlQuery query(m_db);
    return execLogged(query, statement);
}

bool ObjectDataBase::readRow(QSqlQuery& query, const QString& statement)
{
    return execLogged(query, statement) && query.next();
}

QVariant ObjectDataBase::readFirstValue(const QString& statement)
{
    QSqlQuery query(m_db);
    if (exec(query, statement) && query.next())
        return query.value(0);
    return QVariant();
}

bool ObjectDataBase::rowExists(const QString& statement)
{
    QSqlQuery query(m_db);
    return exec(query, statement) && query.next();
}

QString ObjectDataBase::readName(const QString& statement)
{
    const QVariant nameId = readFirstValue(statement);
    return nameId.isValid() ? stringById(nameId.toInt()) : unknownName;
}

QList<quint32> ObjectDataBase::readNumbers(const QString& statement)
{
    QList<quint32> numbers;
    QSqlQuery query(m_db);
    query.setForwardOnly(true);
    if (!execLogged(query, statement))
        return numbers;
    while (query.next())
        numbers.append(query.value(0).toUInt());
    return numbers;
}

// ---- PGNs

// Tables of older files lack the safety and CAN FD columns.
void ObjectDataBase::addMissingPgnColumns(quint8 line)
{
    static const QStringList laterColumns{QStringLiteral("issafe"),
                                          QStringLiteral("srvt_ms"),
                                          QStringLiteral("FD_TrailerFormat"),
                                          QStringLiteral("FD_AssuranceType"),
                                          QStringLiteral("FD_AssuranceDataSize"),
                                          QStringLiteral("multisourceaddress"),
                                          QStringLiteral("safetytype"),
                                          QStringLiteral("FD_DataID")};
    QSqlQuery query(m_db);
    if (!exec(query, QStringLiteral("SELECT name FROM PRAGMA_TABLE_INFO('PGNs%1') ORDER BY name").arg(line)))
        return;
    QStringList present;
    while (query.next())
        present.append(query.value(0).toString());
    if (present.isEmpty())
        return;
    for (const QString& column : laterColumns) {
        if (!present.contains(column, Qt::CaseInsensitive))
            execLogged(query, QStringLiteral("alter table PGNs%1 add %2 integer").arg(number(line), column));
    }
}

bool ObjectDataBase::addPGN(unsigned char line, unsigned int pgnNumber, PGN data)
{
    addMissingPgnColumns(line);
    const QString descId = number(internString(data.desc));
    const QString nameId = number(internString(data.name));
    QString statement;
    if (pgnExists(line, pgnNumber, data.direction)) {
        statement =
            QStringLiteral(
                "update PGNs%1 set name = %2, desc = %3, edp_dp_key = %4, priority = %5, cycletime_ms = "
                "%6, inhibittime_ms = %7, mappingcount = %8, issafe = %11, srvt_ms = %12, "
                "FD_TrailerFormat = %13, FD_AssuranceType = %14, multisourceaddress = %16, "
                "FD_AssuranceDataSize = %15, safetytype = %17, FD_DataID = %18 where number = %10 and "
                "direction = %9")
                .arg(number(line), nameId, descId, number(data.edp_dp_key), number(data.priority),
                     number(data.cycletime_ms), number(data.inhibittime_ms), number(data.mappingcount),
                     number(data.direction), number(pgnNumber), number(data.issafe ? 1 : 0),
                     number(data.srvt_ms), number(data.FD_TrailerFormat), number(data.FD_AssuranceType),
                     number(data.FD_AssuranceDataSize), number(data.multisourceaddress),
                     number(data.safetytype), number(data.FD_DataId));
    } else {
        statement =
            QStringLiteral("insert into PGNs%1 "
                           "values(%2,%3,%4,%5,%6,%7,%8,%9,%10,%11,%12,%13,%14,%15,%16,%17,%18)")
                .arg(number(line), number(pgnNumber), number(data.edp_dp_key), number(data.priority),
                     number(data.cycletime_ms), number(data.inhibittime_ms), number(data.mappingcount),
                     number(data.direction), nameId, descId, number(data.issafe ? 1 : 0),
                     number(data.srvt_ms), number(data.FD_TrailerFormat), number(data.FD_AssuranceType),
                     number(data.FD_AssuranceDataSize), number(data.multisourceaddress),
                     number(data.safetytype), number(data.FD_DataId));
    }
    return execStatement(statement);
}

bool ObjectDataBase::getPGN(quint8 line, quint32 pgnNumber, quint8 direction, PGN& out)
{
    QSqlQuery query(m_db);
    const QString statement =
        QStringLiteral(
            "select edp_dp_key,priority,cycletime_ms,inhibittime_ms,mappingcount,direction,name,desc,"
            "issafe,srvt_ms,FD_TrailerFormat,FD_AssuranceType,FD_AssuranceDataSize,multisourceaddress,"
            "safetytype,FD_DataId from PGNs%2 where number = %1 and direction = %3")
            .arg(number(pgnNumber), number(line), number(direction));
    if (!readRow(query, statement))
        return false;
    out.number = pgnNumber;
    out.edp_dp_key = query.value(0).toUInt();
    out.priority = query.value(1).toUInt();
    fillMessageColumns(query, 2, out, *this);
    out.issafe = query.value(8).toInt() != 0;
    out.srvt_ms = query.value(9).toUInt();
    out.FD_TrailerFormat = query.value(10).toUInt();
    out.FD_AssuranceType = query.value(11).toUInt();
    out.FD_AssuranceDataSize = query.value(12).toUInt();
    out.multisourceaddress = query.value(13).toUInt();
    out.safetytype = query.value(14).toUInt();
    out.FD_DataId = query.value(15).toUInt();
    return true;
}

bool ObjectDataBase::pgnExists(quint8 line, quint32 pgnNumber, quint8 direction)
{
    return rowExists(QStringLiteral("select number from PGNs%1 where number = %2 and direction = %3")
                         .arg(number(line), number(pgnNumber), number(direction)));
}

QList<quint32> ObjectDataBase::getPGNList(quint8 line, quint8 direction, bool excludeSafe)
{
    if (direction == Invalid) {
        return readNumbers(QStringLiteral("select number from PGNs%1 %2 order by number asc")
                               .arg(number(line), excludeSafe
                                                      ? QStringLiteral("where issafe = 0 or issafe is NULL")
                                                      : QString()));
    }
    return readNumbers(
        QStringLiteral("select number from PGNs%1 where direction = %2 %3 order by number asc")
            .arg(number(line), number(direction),
                 excludeSafe ? QStringLiteral("AND (issafe = 0 or issafe is NULL)") : QString()));
}

QString ObjectDataBase::getPGNName(quint8 line, quint32 pgnNumber, quint8 direction)
{
    return readName(QStringLiteral("select name from PGNs%2 where number = %1 and direction = %3")
                        .arg(number(pgnNumber), number(line), number(direction)));
}

quint16 ObjectDataBase::getPGNMappingCount(quint8 line, quint32 pgnNumber, quint8 direction)
{
    return readFirstValue(
               QStringLiteral("select mappingcount from PGNs%1 where number = %2 and direction = %3")
                   .arg(number(line), number(pgnNumber), number(direction)))
        .toUInt();
}

bool ObjectDataBase::deletePGN(quint8 line, quint32 pgnNumber, quint8 direction)
{
    QSqlQuery query(m_db);
    const bool spnsDeleted =
        execLogged(query, QStringLiteral("delete from SPNs%1 where pgnnumber = %2 and direction = %3")
                              .arg(number(line), number(pgnNumber), number(direction)));
    const bool pgnDeleted =
        execLogged(query, QStringLiteral("delete from PGNs%1 where number = %2 and direction = %3")
                              .arg(number(line), number(pgnNumber), number(direction)));
    return spnsDeleted && pgnDeleted;
}

// ---- SPNs

namespace {

template <typename Signal>
void fillSignalColumns(const QSqlQuery& query, Signal& out, ObjectDataBase& database)
{
    out.datatype = query.value(SignalDatatype).toInt();
    out.implementation = query.value(SignalImplementation).toInt();
    out.varname = query.value(SignalVarname).toString();
    out.defaultvalue = query.value(SignalDefaultValue).toString();
    out.name = database.stringById(query.value(SignalName).toInt());
    out.desc = database.stringById(query.value(SignalDesc).toInt());
    out.pos = query.value(SignalPos).toUInt();
    out.bitsize = query.value(SignalBitsize).toUInt();
    out.direction = query.value(SignalDirection).toUInt();
}

void fillSpn(const QSqlQuery& query, ObjectDataBase::SPN& out, ObjectDataBase& database)
{
    out.pgnnumber = query.value(SignalOwner).toUInt();
    out.spnnumber = query.value(SignalNumber).toUInt();
    fillSignalColumns(query, out, database);
    out.slot_df = query.value(SpnSlotDf).toUInt();
    out.bitposition = query.value(SpnBitposition).toUInt();
}

void fillDataElement(const QSqlQuery& query, ObjectDataBase::DataElement& out, ObjectDataBase& database)
{
    out.canid = query.value(SignalOwner).toUInt();
    out.number = query.value(SignalNumber).toUInt();
    fillSignalColumns(query, out, database);
    out.bitpos = query.value(ElementBitpos).toUInt();
}

} // namespace

bool ObjectDataBase::addSPN(quint8 line, quint32 pgnnumber, quint8 direction, quint32 spnnumber, SPN data)
{
    const QString descId = number(internString(data.desc));
    const QString nameId = number(internString(data.name));
    QString statement;
    if (spnExists(line, pgnnumber, direction, spnnumber)) {
        statement =
            QStringLiteral("update SPNs%1 set name = %2, desc = %3, defaultvalue = '%4', datatype = %5, "
                           "implementation = %6, varname = '%7', pos = %10, bitsize = %11, slot_df = %13, "
                           "bitposition = %14 where pgnnumber = %8 and spnnumber = %9 and direction = %12")
                .arg(number(line), nameId, descId, data.defaultvalue, number(data.datatype),
                     number(data.implementation), data.varname, number(pgnnumber), number(spnnumber),
                     number(data.pos), number(data.bitsize), number(direction), number(data.slot_df),
                     number(data.bitposition));
    } else {
        statement =
            QStringLiteral("insert into SPNs%1 values(%2,%3,%4,%5,'%6','%7',%8,%9,%10,%11,%12,%13,%14)")
                .arg(number(line), number(pgnnumber), number(spnnumber), number(data.datatype),
                     number(data.implementation), data.varname, data.defaultvalue, nameId, descId,
                     number(data.pos), number(data.bitsize), number(direction), number(data.slot_df),
                     number(data.bitposition));
    }
    return execStatement(statement);
}

bool ObjectDataBase::getSPN(quint8 line, quint32 pgnnumber, quint8 direction, quint32 spnnumber, SPN& out)
{
    const auto cachedLine = m_spnCache.constFind(line);
    if (cachedLine != m_spnCache.constEnd()) {
        const auto cached = cachedLine->constFind(spnKey(pgnnumber, direction, spnnumber));
        if (cached != cachedLine->constEnd()) {
            out = cached.value();
            return true;
        }
    }
    QSqlQuery query(m_db);
    const QString statement =
        QStringLiteral("select * from SPNs%1 where pgnnumber = %2 and spnnumber = %3 and direction = %4")
            .arg(number(line), number(pgnnumber), number(spnnumber), number(direction));
    if (!readRow(query, statement))
        return false;
    fillSpn(query, out, *this);
    return true;
}

bool ObjectDataBase::spnExists(quint8 line, quint32 pgnnumber, quint8 direction, quint32 spnnumber)
{
    return rowExists(
        QStringLiteral(
            "select spnnumber from SPNs%1 where pgnnumber = %2 and spnnumber = %3 and direction = %4")
            .arg(number(line), number(pgnnumber), number(spnnumber), number(direction)));
}

QString ObjectDataBase::getSPNName(quint8 line, quint32 pgnnumber, quint8 direction, quint32 spnnumber)
{
    SPN spn;
    return getSPN(line, pgnnumber, direction, spnnumber, spn) ? spn.name : unknownName;
}

int ObjectDataBase::getSPNDatatype(quint8 line, quint32 pgnnumber, quint8 direction, quint32 spnnumber)
{
    SPN spn;
    return getSPN(line, pgnnumber, direction, spnnumber, spn) ? spn.datatype : 0;
}

bool ObjectDataBase::deleteSPN(quint8 line, quint32 pgnnumber, quint8 direction, quint32 spnnumber)
{
    return execStatement(
        QStringLiteral("delete from SPNs%1 where pgnnumber = %2 and spnnumber = %3 and direction = %4")
            .arg(number(line), number(pgnnumber), number(spnnumber), number(direction)));
}

QList<quint32> ObjectDataBase::getSPNList(quint8 line, quint32 pgnnumber, quint8 direction)
{
    const auto cachedLine = m_spnListCache.constFind(line);
    if (cachedLine != m_spnListCache.constEnd()) {
        const auto cached = cachedLine->constFind(pgnKey(pgnnumber, direction));
        if (cached != cachedLine->constEnd())
            return cached.value();
    }
    return readNumbers(
        QStringLiteral("select spnnumber from SPNs%1 where pgnnumber = %3 and direction= %2 order by pos asc")
            .arg(number(line), number(direction), number(pgnnumber)));
}

void ObjectDataBase::cacheAllSPNs(quint8 line)
{
    clearSPNCache();
    QHash<quint64, QList<quint32>>& lists = m_spnListCache[line];
    QHash<quint64, SPN>& records = m_spnCache[line];
    QSqlQuery query(m_db);
    query.setForwardOnly(true);
    if (!execLogged(query, QStringLiteral("SELECT * from SPNs%1 order by pgnnumber asc, pos asc").arg(line)))
        return;
    while (query.next()) {
        SPN spn;
        fillSpn(query, spn, *this);
        lists[pgnKey(spn.pgnnumber, spn.direction)].append(spn.spnnumber);
        records.insert(spnKey(spn.pgnnumber, spn.direction, spn.spnnumber), spn);
    }
}

void ObjectDataBase::clearSPNCache()
{
    m_spnListCache.clear();
    m_spnCache.clear();
}

// ---- Raw CAN identifiers and data elements

bool ObjectDataBase::addCANID(unsigned char line, unsigned int id, CANID data)
{
    const QString descId = number(internString(data.desc));
    const QString nameId = number(internString(data.name));
    QString statement;
    if (canIdExists(line, id, data.direction)) {
        statement =
            QStringLiteral(
                "update CANIDs%1 set name = %2, desc = %3, cycletime_ms = %4, inhibittime_ms = %5, "
                "mappingcount = %6 where id = %7 and direction = %8")
                .arg(number(line), nameId, descId, number(data.cycletime_ms), number(data.inhibittime_ms),
                     number(data.mappingcount), number(id), number(data.direction));
    } else {
        statement = QStringLiteral("insert into CANIDs%1 values(%2,%3,%4,%5,%6,%7,%8)")
                        .arg(number(line), number(id), number(data.cycletime_ms), number(data.inhibittime_ms),
                             number(data.mappingcount), number(data.direction), nameId, descId);
    }
    return execStatement(statement);
}

bool ObjectDataBase::getCANID(quint8 line, quint32 id, quint8 direction, CANID& out)
{
    QSqlQuery query(m_db);
    const QString statement =
        QStringLiteral(
            "select cycletime_ms,inhibittime_ms,mappingcount,direction,name,desc from CANIDs%1 where id = "
            "%2 and direction = %3")
            .arg(number(line), number(id), number(direction));
    if (!readRow(query, statement))
        return false;
    out.id = id;
    fillMessageColumns(query, 0, out, *this);
    return true;
}

bool ObjectDataBase::canIdExists(quint8 line, quint32 id, quint8 direction)
{
    return rowExists(QStringLiteral("select id from CANIDs%1 where id = %2 and direction = %3")
                         .arg(number(line), number(id), number(direction)));
}

QList<quint32> ObjectDataBase::getCANIDList(quint8 line, quint8 direction)
{
    if (direction == Invalid)
        return readNumbers(QStringLiteral("select id from CANIDs%1 order by id asc").arg(line));
    return readNumbers(QStringLiteral("select id from CANIDs%1 where direction = %2 order by id asc")
                           .arg(line)
                           .arg(direction));
}

QString ObjectDataBase::getCANIDName(quint8 line, quint32 id, quint8 direction)
{
    return readName(QStringLiteral("select name from CANIDs%1 where id = %2 and direction = %3")
                        .arg(number(line), number(id), number(direction)));
}

bool ObjectDataBase::deleteCANID(quint8 line, quint32 id, quint8 direction)
{
    QSqlQuery query(m_db);
    const bool elementsDeleted =
        execLogged(query, QStringLiteral("delete from DataElements%1 where canid = %2 and direction = %3")
                              .arg(number(line), number(id), number(direction)));
    const bool idDeleted =
        execLogged(query, QStringLiteral("delete from CANIDs%1 where id = %2 and direction = %3")
                              .arg(number(line), number(id), number(direction)));
    return elementsDeleted && idDeleted;
}

// Unlike an SPN's, the update of a data element keeps its pos and bitsize.
bool ObjectDataBase::addDataElement(quint8 line, quint32 canid, quint8 direction, quint32 elementNumber,
                                    DataElement data)
{
    const QString descId = number(internString(data.desc));
    const QString nameId = number(internString(data.name));
    const bool exists =
        rowExists(QStringLiteral(
                      "select number from DataElements%1 where canid = %2 and number = %3 and direction = %4")
                      .arg(number(line), number(canid), number(elementNumber), number(direction)));
    QString statement;
    if (exists) {
        statement =
            QStringLiteral("update DataElements%1 set name = %2, desc = %3, defaultvalue = '%4', datatype = "
                           "%5, implementation = %6, varname = '%7', bitpos = %11 where canid = %8 and "
                           "number = %9 and direction = %10")
                .arg(number(line), nameId, descId, data.defaultvalue, number(data.datatype),
                     number(data.implementation), data.varname, number(canid), number(elementNumber),
                     number(direction), number(data.bitpos));
    } else {
        statement =
            QStringLiteral("insert into DataElements%1 values(%2,%3,%4,%5,'%6','%7',%8,%9,%10,%11,%12,%13)")
                .arg(number(line), number(canid), number(elementNumber), number(data.datatype),
                     number(data.implementation), data.varname, data.defaultvalue, nameId, descId,
                     number(data.pos), number(data.bitsize), number(direction), number(data.bitpos));
    }
    return execStatement(statement);
}

bool ObjectDataBase::getDataElement(quint8 line, quint32 canid, quint8 direction, quint32 elementNumber,
                                    DataElement& out)
{
    QSqlQuery query(m_db);
    const QString statement =
        QStringLiteral("select * from DataElements%1 where canid = %2 and number = %3 and direction = %4")
            .arg(number(line), number(canid), number(elementNumber), number(direction));
    if (!readRow(query, statement))
        return false;
    fillDataElement(query, out, *this);
    return true;
}

bool ObjectDataBase::deleteDataElement(quint8 line, quint32 canid, quint8 direction, quint32 elementNumber)
{
    return execStatement(
        QStringLiteral("delete from DataElements%1 where canid = %2 and number = %3 and direction = %4")
            .arg(number(line), number(canid), number(elementNumber), number(direction)));
}

QList<quint32> ObjectDataBase::getDataElementList(quint8 line, quint32 canid, quint8 direction)
{
    return readNumbers(
        QStringLiteral(
            "select number from DataElements%1 where canid = %3 and direction= %2 order by number asc")
            .arg(number(line), number(direction), number(canid)));
}

QString ObjectDataBase::getDataElementName(quint8 line, quint32 canid, quint8 direction,
                                           quint32 elementNumber)
{
    DataElement element;
    return getDataElement(line, canid, direction, elementNumber, element) ? element.name : unknownName;
}

// ---- Copies between lines and projects

bool ObjectDataBase::copyPGNs(ObjectDataBase* source, quint8 fromLine, quint8 toLine, quint32 from,
                              quint32 to, quint8 direction)
{
    if (direction == Invalid) {
        const bool received = copyPGNs(source, fromLine, toLine, from, to, Receive);
        return copyPGNs(source, fromLine, toLine, from, to, Transmit) && received;
    }
    bool ok = true;
    const QList<quint32> numbers = source->getPGNList(fromLine, direction);
    for (quint32 pgnNumber : numbers) {
        PGN pgn;
        if (pgnNumber < from || pgnNumber > to || !source->getPGN(fromLine, pgnNumber, direction, pgn))
            continue;
        // Read the SPNs before the delete: a copy onto its own line deletes its source.
        const QList<SPN> spns = source->readSPNs(fromLine, pgnNumber, direction);
        deletePGN(toLine, pgnNumber, direction);
        ok = addPGN(toLine, pgnNumber, pgn) && ok;
        for (const SPN& spn : spns)
            ok = addSPN(toLine, pgnNumber, direction, spn.spnnumber, spn) && ok;
    }
    return ok;
}

bool ObjectDataBase::copyCANIDs(ObjectDataBase* source, quint8 fromLine, quint8 toLine, quint32 from,
                                quint32 to, quint8 direction)
{
    if (direction == Invalid) {
        const bool received = copyCANIDs(source, fromLine, toLine, from, to, Receive);
        return copyCANIDs(source, fromLine, toLine, from, to, Transmit) && received;
    }
    bool ok = true;
    const QList<quint32> ids = source->getCANIDList(fromLine, direction);
    for (quint32 id : ids) {
        CANID canId;
        if (id < from || id > to || !source->getCANID(fromLine, id, direction, canId))
            continue;
        const QList<DataElement> elements = source->readDataElements(fromLine, id, direction);
        deleteCANID(toLine, id, direction);
        if (!addCANID(toLine, id, canId)) {
            qDebug() << Q_FUNC_INFO << "addCANID() failed: " << id;
            ok = false;
            continue;
        }
        for (const DataElement& element : elements)
            ok = addDataElement(toLine, id, direction, element.number, element) && ok;
    }
    return ok;
}

// ---- UDS service table

ObjectDataBase::UdsServiceRow ObjectDataBase::readUdsService(quint8 line, quint8 sid, const QString& columns)
{
    UdsServiceRow row;
    QSqlQuery query(m_db);
    if (!exec(query, QStringLiteral("select %1 from UDSSettings%2 where sid = %3")
                         .arg(columns, number(line), number(sid))) ||
        !query.next())
        return row;
    const QStringList names = columns.split(QLatin1Char(','));
    for (int column = 0; column < names.size(); ++column) {
        const QVariant value = query.value(column);
        const QString& name = names.at(column);
        if (name == QLatin1String("active"))
            row.active = number(value.toInt());
        else if (name == QLatin1String("sessions"))
            row.sessions = value.toString();
        else if (name == QLatin1String("userlevels"))
            row.userlevels = value.toString();
        else if (name == QLatin1String("authentication"))
            row.authentication = value.toString();
    }
    return row;
}

bool ObjectDataBase::writeUdsService(quint8 line, quint8 sid, const UdsServiceRow& row)
{
    return execStatement(
        QStringLiteral("insert or replace into UDSSettings%1 values(%2,%3,'%4','%5','%6')")
            .arg(number(line), number(sid), row.active, row.sessions, row.userlevels, row.authentication));
}

bool ObjectDataBase::setUDSServiceActive(quint8 line, quint8 sid, bool active)
{
    UdsServiceRow row = readUdsService(line, sid, QStringLiteral("sessions,userlevels,authentication"));
    row.active = number(active ? 1 : 0);
    return writeUdsService(line, sid, row);
}

bool ObjectDataBase::setUDSServiceSessions(quint8 line, quint8 sid, QString sessions)
{
    UdsServiceRow row = readUdsService(line, sid, QStringLiteral("active,userlevels,authentication"));
    row.sessions = sessions;
    return writeUdsService(line, sid, row);
}

bool ObjectDataBase::setUDSServiceUserLevels(quint8 line, quint8 sid, QString userlevels)
{
    UdsServiceRow row = readUdsService(line, sid, QStringLiteral("active,sessions,authentication"));
    row.userlevels = userlevels;
    return writeUdsService(line, sid, row);
}

bool ObjectDataBase::setUDSServiceAuthentication(quint8 line, quint8 sid, QString authentication)
{
    UdsServiceRow row = readUdsService(line, sid, QStringLiteral("active,sessions,userlevels"));
    row.authentication = authentication;
    return writeUdsService(line, sid, row);
}

bool ObjectDataBase::getUDSServiceActive(quint8 line, quint8 sid)
{
    return readUdsService(line, sid, QStringLiteral("active")).active.toInt() != 0;
}

QString ObjectDataBase::getUDSServiceSessions(quint8 line, quint8 sid)
{
    return readUdsService(line, sid, QStringLiteral("sessions")).sessions;
}

QString ObjectDataBase::getUDSServiceUserLevels(quint8 line, quint8 sid)
{
    return readUdsService(line, sid, QStringLiteral("userlevels")).userlevels;
}

QString ObjectDataBase::getUDSServiceAuthentication(quint8 line, quint8 sid)
{
    return readUdsService(line, sid, QStringLiteral("authentication")).authentication;
}

QMap<quint8, bool> ObjectDataBase::getUDSServiceList(quint8 line)
{
    QMap<quint8, bool> services;
    QSqlQuery query(m_db);
    if (!execLogged(query, QStringLiteral("select active, sid from UDSSettings%1").arg(line)))
        return services;
    while (query.next())
        services.insert(static_cast<quint8>(query.value(1).toUInt()), query.value(0).toInt() != 0);
    return services;
}

// ---- Repairs run when a project of an older format is opened

// Before SPNs had a direction of their own, they took their PGN's.
bool ObjectDataBase::setSpnDirectionsFromPgns(quint8 line)
{
    QSqlQuery query(m_db);
    QHash<quint32, int> pgnDirections;
    if (!execLogged(query, QStringLiteral("select number,direction from PGNs%1").arg(line)))
        return false;
    while (query.next())
        pgnDirections.insert(query.value(0).toUInt(), query.value(1).toInt());

    QList<quint32> spnPgns;
    if (!execLogged(query, QStringLiteral("select pgnnumber,direction from SPNs%1").arg(line)))
        return false;
    while (query.next()) {
        const quint32 pgnnumber = query.value(0).toUInt();
        if (pgnDirections.contains(pgnnumber) && !spnPgns.contains(pgnnumber))
            spnPgns.append(pgnnumber);
    }

    bool ok = true;
    for (quint32 pgnnumber : std::as_const(spnPgns)) {
        query.prepare(QStringLiteral("update SPNs%1 SET direction = :direction where pgnnumber = :pgnnumber")
                          .arg(line));
        query.bindValue(QStringLiteral(":direction"), pgnDirections.value(pgnnumber));
        query.bindValue(QStringLiteral(":pgnnumber"), pgnnumber);
        if (!exec(query)) {
            qDebug() << Q_FUNC_INFO << query.lastQuery() << query.lastError().text();
            ok = false;
        }
    }
    return ok;
}

bool ObjectDataBase::recalculateBitPositions(quint8 line, quint8 direction)
{
    const QList<quint32> canIds = getCANIDList(line, direction);
    for (quint32 canid : canIds)
        recalculateDataElementBitPositions(line, canid, direction);
    const QList<quint32> pgns = getPGNList(line, direction);
    for (quint32 pgnnumber : pgns)
        recalculateSpnBitPositions(line, pgnnumber, direction);
    return true;
}

void ObjectDataBase::recalculateDataElementBitPositions(quint8 line, quint32 canid, quint8 direction)
{
    const QList<BitPosition> positions = packedBitPositions(readDataElements(line, canid, direction),
                                                            &DataElement::number, &DataElement::bitpos);
    QSqlQuery query(m_db);
    for (const BitPosition& position : positions) {
        execLogged(query,
                   QStringLiteral("update DataElements%1 set bitpos = %2 where canid = %3 and number = "
                                  "%4 and direction = %5")
                       .arg(number(line), number(position.second), number(canid), number(position.first),
                            number(direction)));
    }
}

void ObjectDataBase::recalculateSpnBitPositions(quint8 line, quint32 pgnnumber, quint8 direction)
{
    const QList<BitPosition> positions =
        packedBitPositions(readSPNs(line, pgnnumber, direction), &SPN::spnnumber, &SPN::bitposition);
    QSqlQuery query(m_db);
    for (const BitPosition& position : positions) {
        execLogged(query, QStringLiteral("update SPNs%1 set bitposition = %2 where pgnnumber = %3 and "
                                         "spnnumber = %4 and direction = %5")
                              .arg(number(line), number(position.second), number(pgnnumber),
                                   number(position.first), number(direction)));
    }
}

QList<ObjectDataBase::SPN> ObjectDataBase::readSPNs(quint8 line, quint32 pgnnumber, quint8 direction)
{
    return readRecords<SPN>(getSPNList(line, pgnnumber, direction), [&](quint32 spnnumber, SPN& spn) {
        return getSPN(line, pgnnumber, direction, spnnumber, spn);
    });
}

QList<ObjectDataBase::DataElement> ObjectDataBase::readDataElements(quint8 line, quint32 canid,
                                                                    quint8 direction)
{
    return readRecords<DataElement>(getDataElementList(line, canid, direction),
                                    [&](quint32 elementNumber, DataElement& element) {
                                        return getDataElement(line, canid, direction, elementNumber, element);
                                    });
}

bool ObjectDataBase::repairMappingCounts()
{
    m_db.transaction();
    QSqlQuery query(m_db);
    bool ok = true;
    const QList<quint8> lines = getNodeList();
    for (quint8 line : lines) {
        cacheAllSPNs(line);
        for (quint8 direction : {quint8(Receive), quint8(Transmit)}) {
            const QList<quint32> pgns = getPGNList(line, direction);
            for (quint32 pgnnumber : pgns) {
                const int count = getSPNList(line, pgnnumber, direction).size();
                if (getPGNMappingCount(line, pgnnumber, direction) == count)
                    continue;
                ok =
                    execLogged(query,
                               QStringLiteral("update PGNs%1 SET mappingcount = %2 where number = %3 AND "
                                              "direction = %4 ")
                                   .arg(number(line), number(count), number(pgnnumber), number(direction))) &&
                    ok;
            }
        }
    }
    m_db.commit();
    // The cache served the count only; later writes would leave it stale.
    clearSPNCache();
    return ok;
}
