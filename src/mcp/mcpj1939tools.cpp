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
template <typename Record>
void updateMappingCount(ObjectDataBase& database, quint8 line, quint32 messageNumber, quint8 direction,
                        bool (ObjectDataBase::*read)(quint8, quint32, quint8, Record&),
                        QList<quint32> (ObjectDataBase::*signalNumbers)(quint8, quint32, quint8),
                        bool (ObjectDataBase::*write)(unsigned char, unsigned int, Record))
{
    Record record;
    if (!(database.*read)(line, messageNumber, direction, record))
        return;
    record.mappingcount = quint16((database.*signalNumbers)(line, messageNumber, direction).size());
    (database.*write)(line, messageNumber, record);
}

// What the tools of the two message families differ in: PGNs with their SPNs
// on J1939 lines, CAN-IDs with their data elements on raw CAN lines.
struct Messages
{
    Family family;
    const char* numberKey;
    const char* signalKey;
    QString (*numberText)(quint32);
    // %1 the message, %2 the direction word, %3 the line.
    const char* exists;
    const char* missing;
    const char* addFailed;
    const char* added;
    const char* deleted;
    // %1 the signal, %2 the message, %3 the direction word, %4 the line.
    const char* signalExists;
    const char* signalMissing;
    const char* signalAddFailed;
    const char* signalAdded;
    const char* signalDeleted;
    bool (ObjectDataBase::*messageExists)(quint8, quint32, quint8);
    bool (ObjectDataBase::*deleteMessage)(quint8, quint32, quint8);
    bool (*hasSignal)(ObjectDataBase&, quint8, quint32, quint8, quint32);
    bool (ObjectDataBase::*deleteSignal)(quint8, quint32, quint8, quint32);
    void (*updateCount)(ObjectDataBase&, quint8, quint32, quint8);
};

QString decimal(quint32 value)
{
    return QString::number(value);
}

const Messages& pgns()
{
    static const Messages messages{
        Family::J1939,
        "pgn",
        "spn",
        decimal,
        QT_TRANSLATE_NOOP("MCPJ1939Tools", "PGN %1 (%2) already exists on line %3."),
        QT_TRANSLATE_NOOP("MCPJ1939Tools", "PGN %1 (%2) does not exist on line %3."),
        QT_TRANSLATE_NOOP("MCPJ1939Tools", "Failed to add PGN %1 (%2) on line %3."),
        QT_TRANSLATE_NOOP("MCPJ1939Tools", "PGN %1 (%2) added on line %3."),
        QT_TRANSLATE_NOOP("MCPJ1939Tools", "PGN %1 (%2) deleted from line %3."),
        QT_TRANSLATE_NOOP("MCPJ1939Tools", "SPN %1 already exists on PGN %2 (%3), line %4."),
        QT_TRANSLATE_NOOP("MCPJ1939Tools", "SPN %1 does not exist on PGN %2 (%3), line %4."),
        QT_TRANSLATE_NOOP("MCPJ1939Tools", "Failed to add SPN %1 on PGN %2 (%3), line %4."),
        QT_TRANSLATE_NOOP("MCPJ1939Tools", "SPN %1 added on PGN %2 (%3), line %4."),
        QT_TRANSLATE_NOOP("MCPJ1939Tools", "SPN %1 deleted from PGN %2 (%3), line %4."),
        &ObjectDataBase::pgnExists,
        &ObjectDataBase::deletePGN,
        [](ObjectDataBase& database, quint8 line, quint32 pgnNumber, quint8 direction, quint32 spnNumber) {
            return database.spnExists(line, pgnNumber, direction, spnNumber);
        },
        &ObjectDataBase::deleteSPN,
        [](ObjectDataBase& database, quint8 line, quint32 pgnNumber, quint8 direction) {
            updateMappingCount(database, line, pgnNumber, direction, &ObjectDataBase::getPGN,
                               &ObjectDataBase::getSPNList, &ObjectDataBase::addPGN);
        }};
    return messages;
}

const Messages& canIds()
{
    static const Messages messages{
        Family::RawCan,
        "canId",
        "number",
        canIdText,
        QT_TRANSLATE_NOOP("MCPJ1939Tools", "CAN-ID %1 (%2) already exists on line %3."),
        QT_TRANSLATE_NOOP("MCPJ1939Tools", "CAN-ID %1 (%2) does not exist on line %3."),
        QT_TRANSLATE_NOOP("MCPJ1939Tools", "Failed to add CAN-ID %1 (%2) on line %3."),
        QT_TRANSLATE_NOOP("MCPJ1939Tools", "CAN-ID %1 (%2) added on line %3."),
        QT_TRANSLATE_NOOP("MCPJ1939Tools", "CAN-ID %1 (%2) deleted from line %3."),
        QT_TRANSLATE_NOOP("MCPJ1939Tools", "Data element %1 already exists on CAN-ID %2 (%3), line %4."),
        QT_TRANSLATE_NOOP("MCPJ1939Tools", "Data element %1 does not exist on CAN-ID %2 (%3), line %4."),
        QT_TRANSLATE_NOOP("MCPJ1939Tools", "Failed to add data element %1 on CAN-ID %2 (%3), line %4."),
        QT_TRANSLATE_NOOP("MCPJ1939Tools", "Data element %1 added on CAN-ID %2 (%3), line %4."),
        QT_TRANSLATE_NOOP("MCPJ1939Tools", "Data element %1 deleted from CAN-ID %2 (%3), line %4."),
        &ObjectDataBase::canIdExists,
        &ObjectDataBase::deleteCANID,
        [](ObjectDataBase& database, quint8 line, quint32 canId, quint8 direction, quint32 elementNumber) {
            DataElement element;
            return database.getDataElement(line, canId, direction, elementNumber, element);
        },
        &ObjectDataBase::deleteDataElement,
        [](ObjectDataBase& database, quint8 line, quint32 canId, quint8 direction) {
            updateMappingCount(database, line, canId, direction, &ObjectDataBase::getCANID,
                               &ObjectDataBase::getDataElementList, &ObjectDataBase::addCANID);
        }};
    return messages;
}

QStringList messageKeys(const Messages& messages)
{
    return {QStringLiteral("line"), QLatin1String(messages.numberKey), QStringLiteral("direction")};
}

// A reply about a message: its number, the direction word and the line.
QString messageText(const Messages& messages, const char* text, const Target& target, quint32 messageNumber)
{
    return MCPJ1939Tools::tr(text).arg(messages.numberText(messageNumber), directionWord(target.direction),
                                       QString::number(target.line));
}

// A reply about a signal of a message.
QString signalText(const Messages& messages, const char* text, const Target& target, quint32 messageNumber,
                   quint32 signalNumber)
{
    return MCPJ1939Tools::tr(text).arg(QString::number(signalNumber), messages.numberText(messageNumber),
                                       directionWord(target.direction), QString::number(target.line));
}

// The guards and then the existence of the PGN or CAN-ID that the arguments name.
bool guardMessage(MCPSession& session, int id, const QJsonObject& arguments, const Messages& messages,
                  const QStringList& keys, const QString& missingMessage, Target& target,
                  quint32& messageNumber)
{
    if (!guard(session, id, arguments, messages.family, keys, missingMessage, target))
        return false;
    messageNumber = number(arguments, messages.numberKey);
    if ((target.database.get()->*messages.messageExists)(target.line, messageNumber, target.direction))
        return true;
    session.sendToolText(id, messageText(messages, messages.missing, target, messageNumber), true);
    return false;
}

// The values that PGNs and CAN-IDs share, as the add tools take them.
template <typename Record> void takeMessageValues(const QJsonObject& arguments, Record& record)
{
    record.name = arguments.value(QStringLiteral("name")).toString();
    if (arguments.contains(QStringLiteral("description")))
        record.desc = arguments.value(QStringLiteral("description")).toString();
    if (arguments.contains(QStringLiteral("cycleTimeMs")))
        record.cycletime_ms = quint16(number(arguments, "cycleTimeMs"));
    if (arguments.contains(QStringLiteral("inhibitTimeMs")))
        record.inhibittime_ms = quint16(number(arguments, "inhibitTimeMs"));
}

// Adds the message that `add` stores unless it exists, and tells whether the store took it.
void addMessage(MCPSession& session, int id, const QJsonObject& arguments, const Messages& messages,
                const QString& missingMessage,
                const std::function<void(ObjectDataBase&, const Target&, quint32)>& add)
{
    Target target;
    if (!guard(session, id, arguments, messages.family,
               messageKeys(messages) + QStringList{QStringLiteral("name")}, missingMessage, target, true))
        return;
    const quint32 messageNumber = number(arguments, messages.numberKey);
    ObjectDataBase& database = *target.database;
    if ((database.*messages.messageExists)(target.line, messageNumber, target.direction)) {
        session.sendToolText(id, messageText(messages, messages.exists, target, messageNumber), true);
        return;
    }
    add(database, target, messageNumber);
    if (!(database.*messages.messageExists)(target.line, messageNumber, target.direction)) {
        session.sendToolText(id, messageText(messages, messages.addFailed, target, messageNumber), true);
        return;
    }
    session.sendEditReply(id, messageText(messages, messages.added, target, messageNumber));
}

void deleteMessage(MCPSession& session, int id, const QJsonObject& arguments, const Messages& messages,
                   const QString& missingMessage)
{
    Target target;
    quint32 messageNumber = 0;
    if (!guardMessage(session, id, arguments, messages, messageKeys(messages), missingMessage, target,
                      messageNumber))
        return;
    (target.database.get()->*messages.deleteMessage)(target.line, messageNumber, target.direction);
    session.sendEditReply(id, messageText(messages, messages.deleted, target, messageNumber));
}

// Adds the signal that the arguments describe to an existing message unless
// it exists, and keeps the message's count of signals. The record names its
// message, its own number and its bit position in fields of its own;
// `takeMore` takes the values that only one family's signals have.
template <typename Signal>
void addSignal(MCPSession& session, int id, const QJsonObject& arguments, const Messages& messages,
               const QString& missingMessage, quint32 Signal::*messageField, quint32 Signal::*numberField,
               quint16 Signal::*bitPosition,
               bool (ObjectDataBase::*store)(quint8, quint32, quint8, quint32, Signal),
               const std::function<void(Signal&)>& takeMore = {})
{
    Target target;
    quint32 messageNumber = 0;
    if (!guardMessage(session, id, arguments, messages,
                      messageKeys(messages) + QStringList{QLatin1String(messages.signalKey),
                                                          QStringLiteral("name"), QStringLiteral("dataType")},
                      missingMessage, target, messageNumber))
        return;
    const quint32 signalNumber = number(arguments, messages.signalKey);
    ObjectDataBase& database = *target.database;
    if (messages.hasSignal(database, target.line, messageNumber, target.direction, signalNumber)) {
        session.sendToolText(
            id, signalText(messages, messages.signalExists, target, messageNumber, signalNumber), true);
        return;
    }
    Signal signal;
    signal.*messageField = messageNumber;
    signal.*numberField = signalNumber;
    signal.direction = target.direction;
    takeSignalValues(arguments, signal, signal.*bitPosition);
    if (takeMore)
        takeMore(signal);
    (database.*store)(target.line, messageNumber, target.direction, signalNumber, signal);
    if (!messages.hasSignal(database, target.line, messageNumber, target.direction, signalNumber)) {
        session.sendToolText(
            id, signalText(messages, messages.signalAddFailed, target, messageNumber, signalNumber), true);
        return;
    }
    messages.updateCount(database, target.line, messageNumber, target.direction);
    session.sendEditReply(id,
                          signalText(messages, messages.signalAdded, target, messageNumber, signalNumber));
}

void deleteSignal(MCPSession& session, int id, const QJsonObject& arguments, const Messages& messages,
                  const QString& missingMessage)
{
    Target target;
    if (!guard(session, id, arguments, messages.family,
               messageKeys(messages) + QStringList{QLatin1String(messages.signalKey)}, missingMessage,
               target))
        return;
    const quint32 messageNumber = number(arguments, messages.numberKey);
    const quint32 signalNumber = number(arguments, messages.signalKey);
    ObjectDataBase& database = *target.database;
    if (!messages.hasSignal(database, target.line, messageNumber, target.direction, signalNumber)) {
        session.sendToolText(
            id, signalText(messages, messages.signalMissing, target, messageNumber, signalNumber), true);
        return;
    }
    (database.*messages.deleteSignal)(target.line, messageNumber, target.direction, signalNumber);
    messages.updateCount(database, target.line, messageNumber, target.direction);
    session.sendEditReply(id,
                          signalText(messages, messages.signalDeleted, target, messageNumber, signalNumber));
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
    if (!guard(session, id, arguments, Family::J1939, messageKeys(pgns()),
               tr("Missing required argument: line, pgn and/or direction"), target))
        return;
    const quint32 pgnNumber = number(arguments, "pgn");
    PGN pgn;
    if (!target.database->getPGN(target.line, pgnNumber, target.direction, pgn)) {
        session.sendToolText(id, messageText(pgns(), pgns().missing, target, pgnNumber), true);
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
    addMessage(session, id, arguments, pgns(),
               tr("Missing required argument: line, pgn, direction and/or name"),
               [&arguments](ObjectDataBase& database, const Target& target, quint32 pgnNumber) {
                   PGN pgn;
                   pgn.number = pgnNumber;
                   pgn.direction = target.direction;
                   takeMessageValues(arguments, pgn);
                   if (arguments.contains(QStringLiteral("priority")))
                       pgn.priority = quint8(number(arguments, "priority"));
                   database.addPGN(target.line, pgnNumber, pgn);
               });
}

void MCPJ1939Tools::deletePgn(MCPSession& session, int id, const QJsonObject& arguments)
{
    deleteMessage(session, id, arguments, pgns(),
                  tr("Missing required argument: line, pgn and/or direction"));
}

void MCPJ1939Tools::listSpns(MCPSession& session, int id, const QJsonObject& arguments)
{
    Target target;
    if (!guard(session, id, arguments, Family::J1939, messageKeys(pgns()),
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
    if (!guard(session, id, arguments, Family::J1939,
               messageKeys(pgns()) + QStringList{QStringLiteral("spn")},
               tr("Missing required argument: line, pgn, direction and/or spn"), target))
        return;
    const quint32 pgnNumber = number(arguments, "pgn");
    const quint32 spnNumber = number(arguments, "spn");
    SPN spn;
    if (!target.database->getSPN(target.line, pgnNumber, target.direction, spnNumber, spn)) {
        session.sendToolText(id, signalText(pgns(), pgns().signalMissing, target, pgnNumber, spnNumber),
                             true);
        return;
    }
    session.sendToolData(id, spnRecord(spn), false);
}

void MCPJ1939Tools::addSpn(MCPSession& session, int id, const QJsonObject& arguments)
{
    addSignal<SPN>(session, id, arguments, pgns(),
                   tr("Missing required argument: line, pgn, direction, spn, name and/or dataType"),
                   &SPN::pgnnumber, &SPN::spnnumber, &SPN::bitposition, &ObjectDataBase::addSPN,
                   [&arguments](SPN& spn) {
                       if (arguments.contains(QStringLiteral("slotDf")))
                           spn.slot_df = quint16(number(arguments, "slotDf"));
                   });
}

void MCPJ1939Tools::deleteSpn(MCPSession& session, int id, const QJsonObject& arguments)
{
    deleteSignal(session, id, arguments, pgns(),
                 tr("Missing required argument: line, pgn, direction and/or spn"));
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
    if (!guard(session, id, arguments, Family::RawCan, messageKeys(canIds()),
               tr("Missing required argument: line, canId and/or direction"), target))
        return;
    const quint32 canId = number(arguments, "canId");
    CANID record;
    if (!target.database->getCANID(target.line, canId, target.direction, record)) {
        session.sendToolText(id, messageText(canIds(), canIds().missing, target, canId), true);
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
    addMessage(session, id, arguments, canIds(),
               tr("Missing required argument: line, canId, direction and/or name"),
               [&arguments](ObjectDataBase& database, const Target& target, quint32 canId) {
                   CANID record;
                   record.id = canId;
                   record.direction = target.direction;
                   takeMessageValues(arguments, record);
                   database.addCANID(target.line, canId, record);
               });
}

void MCPJ1939Tools::deleteCanId(MCPSession& session, int id, const QJsonObject& arguments)
{
    deleteMessage(session, id, arguments, canIds(),
                  tr("Missing required argument: line, canId and/or direction"));
}

void MCPJ1939Tools::addDataElement(MCPSession& session, int id, const QJsonObject& arguments)
{
    addSignal<DataElement>(
        session, id, arguments, canIds(),
        tr("Missing required argument: line, canId, direction, number, name and/or dataType"),
        &DataElement::canid, &DataElement::number, &DataElement::bitpos, &ObjectDataBase::addDataElement);
}

void MCPJ1939Tools::deleteDataElement(MCPSession& session, int id, const QJsonObject& arguments)
{
    deleteSignal(session, id, arguments, canIds(),
                 tr("Missing required argument: line, canId, direction and/or number"));
}
