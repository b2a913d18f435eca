#include "mcp/mcpj1939tools.h"

#include "database/objectdatabase.h"
#include "mcp/mcparguments.h"
#include "mcp/mcpsession.h"

#include <QJsonArray>
#include <QMap>

#include <functional>

namespace {

using PGN = ObjectDataBase::PGN;
using SPN = ObjectDataBase::SPN;
using CANID = ObjectDataBase::CANID;
using DataElement = ObjectDataBase::DataElement;

enum class Family
{
    J1939,
    RawCan
};

const QMap<QString, quint8>& directionCodes()
{
    static const QMap<QString, quint8> codes{{QStringLiteral("Transmit"), ObjectDataBase::Transmit},
                                             {QStringLiteral("Receive"), ObjectDataBase::Receive},
                                             {QStringLiteral("Invalid"), ObjectDataBase::Invalid}};
    return codes;
}

QString directionWord(quint8 code)
{
    return directionCodes().key(code, QStringLiteral("Invalid"));
}

// Maps the argument "direction"; any other word is a request of a bad form.
bool readDirection(MCPSession& session, int id, const QJsonObject& arguments, quint8& direction)
{
    const auto found = directionCodes().constFind(arguments.value(QStringLiteral("direction")).toString());
    if (found == directionCodes().constEnd()) {
        session.sendError(id, MCPSession::InvalidParams,
                          MCPJ1939Tools::tr("Invalid direction: expected Transmit, Receive or Invalid"));
        return false;
    }
    direction = *found;
    return true;
}

// PGN, SPN, CAN-ID and element numbers; anything but an integer reads as 0.
quint32 number(const QJsonObject& arguments, const char* key)
{
    return quint32(arguments.value(QLatin1String(key)).toInt());
}

// 385 reads "0X181": no padding, and the prefix is upper case too.
QString canIdText(quint32 canId)
{
    return QStringLiteral("0x%1").arg(canId, 0, 16).toUpper();
}

// The store writes these values into its statements as quoted text.
QString sqlText(const QJsonValue& value)
{
    return value.toString().replace(QLatin1Char('\''), QStringLiteral("''"));
}

// The open project, the line and the direction that a tool addresses.
struct Target
{
    QSharedPointer<ObjectDataBase> database;
    quint8 line = 0;
    quint8 direction = 0;
};

// The guards of the tools that address one PGN or CAN-ID, in their order:
// project, required arguments, direction word, database, for the tools that
// add one the existence of the line, and the kind of line. False when one of
// them has replied.
bool guard(MCPSession& session, int id, const QJsonObject& arguments, Family family, const QStringList& keys,
           const QString& missingMessage, Target& target, bool lineMustExist = false)
{
    if (!session.ensureProjectOpen(id) || !session.ensureArguments(id, arguments, keys, missingMessage) ||
        !readDirection(session, id, arguments, target.direction))
        return false;
    target.database = session.ensureDatabase(id);
    if (!target.database)
        return false;
    target.line = MCPArguments::line(arguments);
    if (lineMustExist && !target.database->nodeExists(target.line)) {
        session.sendToolText(id, MCPJ1939Tools::tr("Line %1 does not exist.").arg(target.line), true);
        return false;
    }
    return family == Family::J1939 ? session.ensureJ1939Line(id, *target.database, target.line)
                                   : session.ensureRawCanLine(id, *target.database, target.line);
}

// The list tools: the line guard comes before the optional direction filter.
QSharedPointer<ObjectDataBase> guardList(MCPSession& session, int id, const QJsonObject& arguments,
                                         Family family, quint8& filter)
{
    QSharedPointer<ObjectDataBase> database = session.ensureProjectDatabase(
        id, arguments, {QStringLiteral("line")}, MCPJ1939Tools::tr("Missing required argument: line"));
    if (!database)
        return {};
    const quint8 line = MCPArguments::line(arguments);
    const bool lineFits = family == Family::J1939 ? session.ensureJ1939Line(id, *database, line)
                                                  : session.ensureRawCanLine(id, *database, line);
    filter = ObjectDataBase::Invalid;
    if (!lineFits ||
        (arguments.contains(QStringLiteral("direction")) && !readDirection(session, id, arguments, filter)))
        return {};
    return database;
}

// One entry for each number, ascending, with the directions it exists in and
// its name in the first of them, Transmit before Receive.
QJsonArray messageList(quint8 filter, const std::function<QList<quint32>(quint8)>& numbers,
                       const std::function<QString(quint32, quint8)>& name,
                       const std::function<QJsonObject(quint32)>& identity)
{
    QMap<quint32, QList<quint8>> directions;
    for (quint8 direction : {quint8(ObjectDataBase::Transmit), quint8(ObjectDataBase::Receive)}) {
        if (filter != ObjectDataBase::Invalid && filter != direction)
            continue;
        for (quint32 messageNumber : numbers(direction))
            directions[messageNumber].append(direction);
    }
    QJsonArray list;
    for (auto entry = directions.cbegin(); entry != directions.cend(); ++entry) {
        QJsonObject record = identity(entry.key());
        QJsonArray words;
        for (quint8 direction : entry.value())
            words.append(directionWord(direction));
        record.insert(QStringLiteral("directions"), words);
        record.insert(QStringLiteral("name"), name(entry.key(), entry.value().first()));
        list.append(record);
    }
    return list;
}

QJsonObject canIdIdentity(quint32 canId)
{
    return QJsonObject{{QStringLiteral("canId"), canIdText(canId)},
                       {QStringLiteral("canIdDec"), qint64(canId)}};
}

// The fields that SPNs and data elements share.
template <typename Signal> QJsonObject signalRecord(const Signal& signal, quint16 bitPosition)
{
    return QJsonObject{{QStringLiteral("name"), signal.name},
                       {QStringLiteral("description"), signal.desc},
                       {QStringLiteral("dataTypeCode"), signal.datatype},
                       {QStringLiteral("defaultValue"), signal.defaultvalue},
                       {QStringLiteral("pos"), qint64(signal.pos)},
                       {QStringLiteral("bitSize"), signal.bitsize},
                       {QStringLiteral("bitPosition"), bitPosition},
                       {QStringLiteral("varname"), signal.varname}};
}

QJsonObject spnRecord(const SPN& spn)
{
    QJsonObject record = signalRecord(spn, spn.bitposition);
    record.insert(QStringLiteral("spn"), qint64(spn.spnnumber));
    record.insert(QStringLiteral("slotDf"), spn.slot_df);
    return record;
}

QJsonObject elementRecord(const DataElement& element)
{
    QJsonObject record = signalRecord(element, element.bitpos);
    record.insert(QStringLiteral("number"), qint64(element.number));
    return record;
}

// Name and data type, and the optional values that are present; the rest keeps the record's default.
template <typename Signal>
void takeSignalValues(const QJsonObject& arguments, Signal& signal, quint16& bitPosition)
{
    signal.name = arguments.value(QStringLiteral("name")).toString();
    signal.datatype = arguments.value(QStringLiteral("dataType")).toInt();
    if (arguments.contains(QStringLiteral("description")))
        signal.desc = arguments.value(QStringLiteral("description")).toString();
    if (arguments.contains(QStringLiteral("defaultValue")))
        signal.defaultvalue = sqlText(arguments.value(QStringLiteral("defaultValue")));
    if (arguments.contains(QStringLiteral("pos")))
        signal.pos = number(arguments, "pos");
    if (arguments.contains(QStringLiteral("bitSize")))
        signal.bitsize = quint16(number(arguments, "bitSize"));
    if (arguments.contains(QStringLiteral("bitPosition")))
        bitPosition = quint16(number(arguments, "bitPosition"));
    if (arguments.contains(QStringLiteral("varname")))
        signal.varname = sqlText(arguments.value(QStringLiteral("varname")));
}

// Keeps the count of SPNs or elements in the PGN or CAN-ID record, which
// the generators read, equal to what the line holds after an edit.
void updatePgnMappingCount(ObjectDataBase& database, quint8 line, quint32 pgnNumber, quint8 direction)
{
    PGN pgn;
    if (!database.getPGN(line, pgnNumber, direction, pgn))
        return;
    pgn.mappingcount = quint16(database.getSPNList(line, pgnNumber, direction).size());
    database.addPGN(line, pgnNumber, pgn);
}

void updateCanIdMappingCount(ObjectDataBase& database, quint8 line, quint32 canId, quint8 direction)
{
    CANID record;
    if (!database.getCANID(line, canId, direction, record))
        return;
    record.mappingcount = quint16(database.getDataElementList(line, canId, direction).size());
    database.addCANID(line, canId, record);
}

QStringList pgnKeys()
{
    return {QStringLiteral("line"), QStringLiteral("pgn"), QStringLiteral("direction")};
}

QStringList canIdKeys()
{
    return {QStringLiteral("line"), QStringLiteral("canId"), QStringLiteral("direction")};
}

QString missingPgnText(quint32 pgnNumber, quint8 direction, quint8 line)
{
    return MCPJ1939Tools::tr("PGN %1 (%2) does not exist on line %3.")
        .arg(QString::number(pgnNumber), directionWord(direction), QString::number(line));
}

QString missingCanIdText(quint32 canId, quint8 direction, quint8 line)
{
    return MCPJ1939Tools::tr("CAN-ID %1 (%2) does not exist on line %3.")
        .arg(canIdText(canId), directionWord(direction), QString::number(line));
}

// The guards and then the existence of the PGN or CAN-ID that the arguments name.
bool guardPgn(MCPSession& session, int id, const QJsonObject& arguments, const QStringList& keys,
              const QString& missingMessage, Target& target, quint32& pgnNumber)
{
    if (!guard(session, id, arguments, Family::J1939, keys, missingMessage, target))
        return false;
    pgnNumber = number(arguments, "pgn");
    if (target.database->pgnExists(target.line, pgnNumber, target.direction))
        return true;
    session.sendToolText(id, missingPgnText(pgnNumber, target.direction, target.line), true);
    return false;
}

bool guardCanId(MCPSession& session, int id, const QJsonObject& arguments, const QStringList& keys,
                const QString& missingMessage, Target& target, quint32& canId)
{
    if (!guard(session, id, arguments, Family::RawCan, keys, missingMessage, target))
        return false;
    canId = number(arguments, "canId");
    if (target.database->canIdExists(target.line, canId, target.direction))
        return true;
    session.sendToolText(id, missingCanIdText(canId, target.direction, target.line), true);
    return false;
}

} // namespace

void MCPJ1939Tools::listPgns(MCPSession& session, int id, const QJsonObject& arguments)
{
    quint8 filter = ObjectDataBase::Invalid;
    const QSharedPointer<ObjectDataBase> database = guardList(session, id, arguments, Family::J1939, filter);
    if (!database)
        return;
    const quint8 line = MCPArguments::line(arguments);
    const bool excludeSafety = arguments.value(QStringLiteral("excludeSafety")).toBool();
    session.sendToolData(
        id,
        messageList(
            filter, [&](quint8 direction) { return database->getPGNList(line, direction, excludeSafety); },
            [&](quint32 pgnNumber, quint8 direction) {
                return database->getPGNName(line, pgnNumber, direction);
            },
            [](quint32 pgnNumber) {
                return QJsonObject{{QStringLiteral("pgn"), qint64(pgnNumber)}};
            }),
        false);
}

void MCPJ1939Tools::getPgn(MCPSession& session, int id, const QJsonObject& arguments)
{
    Target target;
    if (!guard(session, id, arguments, Family::J1939, pgnKeys(),
               tr("Missing required argument: line, pgn and/or direction"), target))
        return;
    const quint32 pgnNumber = number(arguments, "pgn");
    PGN pgn;
    if (!target.database->getPGN(target.line, pgnNumber, target.direction, pgn)) {
        session.sendToolText(id, missingPgnText(pgnNumber, target.direction, target.line), true);
        return;
    }
    QJsonArray spns;
    for (quint32 spnNumber : target.database->getSPNList(target.line, pgnNumber, target.direction)) {
        SPN spn;
        if (target.database->getSPN(target.line, pgnNumber, target.direction, spnNumber, spn))
            spns.append(spnRecord(spn));
    }
    session.sendToolData(id,
                         QJsonObject{{QStringLiteral("line"), int(target.line)},
                                     {QStringLiteral("pgn"), qint64(pgnNumber)},
                                     {QStringLiteral("direction"), directionWord(target.direction)},
                                     {QStringLiteral("name"), pgn.name},
                                     {QStringLiteral("description"), pgn.desc},
                                     {QStringLiteral("priority"), pgn.priority},
                                     {QStringLiteral("cycleTimeMs"), pgn.cycletime_ms},
                                     {QStringLiteral("inhibitTimeMs"), pgn.inhibittime_ms},
                                     {QStringLiteral("spns"), spns}},
                         false);
}

void MCPJ1939Tools::addPgn(MCPSession& session, int id, const QJsonObject& arguments)
{
    Target target;
    if (!guard(session, id, arguments, Family::J1939, pgnKeys() + QStringList{QStringLiteral("name")},
               tr("Missing required argument: line, pgn, direction and/or name"), target, true))
        return;
    const quint32 pgnNumber = number(arguments, "pgn");
    const QString word = directionWord(target.direction);
    const QString lineText = QString::number(target.line);
    if (target.database->pgnExists(target.line, pgnNumber, target.direction)) {
        session.sendToolText(
            id, tr("PGN %1 (%2) already exists on line %3.").arg(QString::number(pgnNumber), word, lineText),
            true);
        return;
    }
    PGN pgn;
    pgn.number = pgnNumber;
    pgn.direction = target.direction;
    pgn.name = arguments.value(QStringLiteral("name")).toString();
    if (arguments.contains(QStringLiteral("description")))
        pgn.desc = arguments.value(QStringLiteral("description")).toString();
    if (arguments.contains(QStringLiteral("priority")))
        pgn.priority = quint8(number(arguments, "priority"));
    if (arguments.contains(QStringLiteral("cycleTimeMs")))
        pgn.cycletime_ms = quint16(number(arguments, "cycleTimeMs"));
    if (arguments.contains(QStringLiteral("inhibitTimeMs")))
        pgn.inhibittime_ms = quint16(number(arguments, "inhibitTimeMs"));
    target.database->addPGN(target.line, pgnNumber, pgn);
    if (!target.database->pgnExists(target.line, pgnNumber, target.direction)) {
        session.sendToolText(
            id, tr("Failed to add PGN %1 (%2) on line %3.").arg(QString::number(pgnNumber), word, lineText),
            true);
        return;
    }
    session.sendEditReply(
        id, tr("PGN %1 (%2) added on line %3.").arg(QString::number(pgnNumber), word, lineText));
}

void MCPJ1939Tools::deletePgn(MCPSession& session, int id, const QJsonObject& arguments)
{
    Target target;
    quint32 pgnNumber = 0;
    if (!guardPgn(session, id, arguments, pgnKeys(),
                  tr("Missing required argument: line, pgn and/or direction"), target, pgnNumber))
        return;
    target.database->deletePGN(target.line, pgnNumber, target.direction);
    session.sendEditReply(id, tr("PGN %1 (%2) deleted from line %3.")
                                  .arg(QString::number(pgnNumber), directionWord(target.direction),
                                       QString::number(target.line)));
}

void MCPJ1939Tools::listSpns(MCPSession& session, int id, const QJsonObject& arguments)
{
    Target target;
    if (!guard(session, id, arguments, Family::J1939, pgnKeys(),
               tr("Missing required argument: line, pgn and/or direction"), target))
        return;
    const quint32 pgnNumber = number(arguments, "pgn");
    QJsonArray list;
    for (quint32 spnNumber : target.database->getSPNList(target.line, pgnNumber, target.direction)) {
        list.append(
            QJsonObject{{QStringLiteral("spn"), qint64(spnNumber)},
                        {QStringLiteral("name"),
                         target.database->getSPNName(target.line, pgnNumber, target.direction, spnNumber)}});
    }
    session.sendToolData(id, list, false);
}

void MCPJ1939Tools::getSpn(MCPSession& session, int id, const QJsonObject& arguments)
{
    Target target;
    if (!guard(session, id, arguments, Family::J1939, pgnKeys() + QStringList{QStringLiteral("spn")},
               tr("Missing required argument: line, pgn, direction and/or spn"), target))
        return;
    const quint32 pgnNumber = number(arguments, "pgn");
    const quint32 spnNumber = number(arguments, "spn");
    SPN spn;
    if (!target.database->getSPN(target.line, pgnNumber, target.direction, spnNumber, spn)) {
        session.sendToolText(id,
                             tr("SPN %1 does not exist on PGN %2 (%3), line %4.")
                                 .arg(QString::number(spnNumber), QString::number(pgnNumber),
                                      directionWord(target.direction), QString::number(target.line)),
                             true);
        return;
    }
    session.sendToolData(id, spnRecord(spn), false);
}

void MCPJ1939Tools::addSpn(MCPSession& session, int id, const QJsonObject& arguments)
{
    Target target;
    quint32 pgnNumber = 0;
    if (!guardPgn(session, id, arguments,
                  pgnKeys() +
                      QStringList{QStringLiteral("spn"), QStringLiteral("name"), QStringLiteral("dataType")},
                  tr("Missing required argument: line, pgn, direction, spn, name and/or dataType"), target,
                  pgnNumber))
        return;
    const quint32 spnNumber = number(arguments, "spn");
    const QStringList texts{QString::number(spnNumber), QString::number(pgnNumber),
                            directionWord(target.direction), QString::number(target.line)};
    if (target.database->spnExists(target.line, pgnNumber, target.direction, spnNumber)) {
        session.sendToolText(
            id,
            tr("SPN %1 already exists on PGN %2 (%3), line %4.").arg(texts[0], texts[1], texts[2], texts[3]),
            true);
        return;
    }
    SPN spn;
    spn.pgnnumber = pgnNumber;
    spn.spnnumber = spnNumber;
    spn.direction = target.direction;
    takeSignalValues(arguments, spn, spn.bitposition);
    if (arguments.contains(QStringLiteral("slotDf")))
        spn.slot_df = quint16(number(arguments, "slotDf"));
    target.database->addSPN(target.line, pgnNumber, target.direction, spnNumber, spn);
    if (!target.database->spnExists(target.line, pgnNumber, target.direction, spnNumber)) {
        session.sendToolText(
            id,
            tr("Failed to add SPN %1 on PGN %2 (%3), line %4.").arg(texts[0], texts[1], texts[2], texts[3]),
            true);
        return;
    }
    updatePgnMappingCount(*target.database, target.line, pgnNumber, target.direction);
    session.sendEditReply(
        id, tr("SPN %1 added on PGN %2 (%3), line %4.").arg(texts[0], texts[1], texts[2], texts[3]));
}

void MCPJ1939Tools::deleteSpn(MCPSession& session, int id, const QJsonObject& arguments)
{
    Target target;
    if (!guard(session, id, arguments, Family::J1939, pgnKeys() + QStringList{QStringLiteral("spn")},
               tr("Missing required argument: line, pgn, direction and/or spn"), target))
        return;
    const quint32 pgnNumber = number(arguments, "pgn");
    const quint32 spnNumber = number(arguments, "spn");
    const QStringList texts{QString::number(spnNumber), QString::number(pgnNumber),
                            directionWord(target.direction), QString::number(target.line)};
    if (!target.database->spnExists(target.line, pgnNumber, target.direction, spnNumber)) {
        session.sendToolText(
            id,
            tr("SPN %1 does not exist on PGN %2 (%3), line %4.").arg(texts[0], texts[1], texts[2], texts[3]),
            true);
        return;
    }
    target.database->deleteSPN(target.line, pgnNumber, target.direction, spnNumber);
    updatePgnMappingCount(*target.database, target.line, pgnNumber, target.direction);
    session.sendEditReply(
        id, tr("SPN %1 deleted from PGN %2 (%3), line %4.").arg(texts[0], texts[1], texts[2], texts[3]));
}

void MCPJ1939Tools::listCanIds(MCPSession& session, int id, const QJsonObject& arguments)
{
    quint8 filter = ObjectDataBase::Invalid;
    const QSharedPointer<ObjectDataBase> database = guardList(session, id, arguments, Family::RawCan, filter);
    if (!database)
        return;
    const quint8 line = MCPArguments::line(arguments);
    session.sendToolData(
        id,
        messageList(
            filter, [&](quint8 direction) { return database->getCANIDList(line, direction); },
            [&](quint32 canId, quint8 direction) { return database->getCANIDName(line, canId, direction); },
            canIdIdentity),
        false);
}

void MCPJ1939Tools::getCanId(MCPSession& session, int id, const QJsonObject& arguments)
{
    Target target;
    if (!guard(session, id, arguments, Family::RawCan, canIdKeys(),
               tr("Missing required argument: line, canId and/or direction"), target))
        return;
    const quint32 canId = number(arguments, "canId");
    CANID record;
    if (!target.database->getCANID(target.line, canId, target.direction, record)) {
        session.sendToolText(id, missingCanIdText(canId, target.direction, target.line), true);
        return;
    }
    QJsonArray elements;
    for (quint32 elementNumber : target.database->getDataElementList(target.line, canId, target.direction)) {
        DataElement element;
        if (target.database->getDataElement(target.line, canId, target.direction, elementNumber, element))
            elements.append(elementRecord(element));
    }
    QJsonObject result = canIdIdentity(canId);
    result.insert(QStringLiteral("line"), int(target.line));
    result.insert(QStringLiteral("direction"), directionWord(target.direction));
    result.insert(QStringLiteral("name"), record.name);
    result.insert(QStringLiteral("description"), record.desc);
    result.insert(QStringLiteral("cycleTimeMs"), record.cycletime_ms);
    result.insert(QStringLiteral("inhibitTimeMs"), record.inhibittime_ms);
    result.insert(QStringLiteral("dataElements"), elements);
    session.sendToolData(id, result, false);
}

void MCPJ1939Tools::addCanId(MCPSession& session, int id, const QJsonObject& arguments)
{
    Target target;
    if (!guard(session, id, arguments, Family::RawCan, canIdKeys() + QStringList{QStringLiteral("name")},
               tr("Missing required argument: line, canId, direction and/or name"), target, true))
        return;
    const quint32 canId = number(arguments, "canId");
    const QString word = directionWord(target.direction);
    const QString lineText = QString::number(target.line);
    if (target.database->canIdExists(target.line, canId, target.direction)) {
        session.sendToolText(
            id, tr("CAN-ID %1 (%2) already exists on line %3.").arg(canIdText(canId), word, lineText), true);
        return;
    }
    CANID record;
    record.id = canId;
    record.direction = target.direction;
    record.name = arguments.value(QStringLiteral("name")).toString();
    if (arguments.contains(QStringLiteral("description")))
        record.desc = arguments.value(QStringLiteral("description")).toString();
    if (arguments.contains(QStringLiteral("cycleTimeMs")))
        record.cycletime_ms = quint16(number(arguments, "cycleTimeMs"));
    if (arguments.contains(QStringLiteral("inhibitTimeMs")))
        record.inhibittime_ms = quint16(number(arguments, "inhibitTimeMs"));
    target.database->addCANID(target.line, canId, record);
    if (!target.database->canIdExists(target.line, canId, target.direction)) {
        session.sendToolText(
            id, tr("Failed to add CAN-ID %1 (%2) on line %3.").arg(canIdText(canId), word, lineText), true);
        return;
    }
    session.sendEditReply(id, tr("CAN-ID %1 (%2) added on line %3.").arg(canIdText(canId), word, lineText));
}

void MCPJ1939Tools::deleteCanId(MCPSession& session, int id, const QJsonObject& arguments)
{
    Target target;
    quint32 canId = 0;
    if (!guardCanId(session, id, arguments, canIdKeys(),
                    tr("Missing required argument: line, canId and/or direction"), target, canId))
        return;
    target.database->deleteCANID(target.line, canId, target.direction);
    session.sendEditReply(
        id, tr("CAN-ID %1 (%2) deleted from line %3.")
                .arg(canIdText(canId), directionWord(target.direction), QString::number(target.line)));
}

void MCPJ1939Tools::addDataElement(MCPSession& session, int id, const QJsonObject& arguments)
{
    Target target;
    quint32 canId = 0;
    if (!guardCanId(session, id, arguments,
                    canIdKeys() + QStringList{QStringLiteral("number"), QStringLiteral("name"),
                                              QStringLiteral("dataType")},
                    tr("Missing required argument: line, canId, direction, number, name and/or dataType"),
                    target, canId))
        return;
    const quint32 elementNumber = number(arguments, "number");
    const QStringList texts{QString::number(elementNumber), canIdText(canId), directionWord(target.direction),
                            QString::number(target.line)};
    DataElement element;
    if (target.database->getDataElement(target.line, canId, target.direction, elementNumber, element)) {
        session.sendToolText(id,
                             tr("Data element %1 already exists on CAN-ID %2 (%3), line %4.")
                                 .arg(texts[0], texts[1], texts[2], texts[3]),
                             true);
        return;
    }
    element.canid = canId;
    element.number = elementNumber;
    element.direction = target.direction;
    takeSignalValues(arguments, element, element.bitpos);
    target.database->addDataElement(target.line, canId, target.direction, elementNumber, element);
    if (!target.database->getDataElement(target.line, canId, target.direction, elementNumber, element)) {
        session.sendToolText(id,
                             tr("Failed to add data element %1 on CAN-ID %2 (%3), line %4.")
                                 .arg(texts[0], texts[1], texts[2], texts[3]),
                             true);
        return;
    }
    updateCanIdMappingCount(*target.database, target.line, canId, target.direction);
    session.sendEditReply(
        id,
        tr("Data element %1 added on CAN-ID %2 (%3), line %4.").arg(texts[0], texts[1], texts[2], texts[3]));
}

void MCPJ1939Tools::deleteDataElement(MCPSession& session, int id, const QJsonObject& arguments)
{
    Target target;
    if (!guard(session, id, arguments, Family::RawCan, canIdKeys() + QStringList{QStringLiteral("number")},
               tr("Missing required argument: line, canId, direction and/or number"), target))
        return;
    const quint32 canId = number(arguments, "canId");
    const quint32 elementNumber = number(arguments, "number");
    const QStringList texts{QString::number(elementNumber), canIdText(canId), directionWord(target.direction),
                            QString::number(target.line)};
    DataElement element;
    if (!target.database->getDataElement(target.line, canId, target.direction, elementNumber, element)) {
        session.sendToolText(id,
                             tr("Data element %1 does not exist on CAN-ID %2 (%3), line %4.")
                                 .arg(texts[0], texts[1], texts[2], texts[3]),
                             true);
        return;
    }
    target.database->deleteDataElement(target.line, canId, target.direction, elementNumber);
    updateCanIdMappingCount(*target.database, target.line, canId, target.direction);
    session.sendEditReply(id, tr("Data element %1 deleted from CAN-ID %2 (%3), line %4.")
                                  .arg(texts[0], texts[1], texts[2], texts[3]));
}
