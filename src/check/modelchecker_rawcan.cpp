#include "check/modelchecker.h"

#include <QDebug>
#include <QHash>
#include <QSqlError>
#include <QSqlQuery>

namespace {

constexpr quint32 classicalPayloadBits = 64;
constexpr quint32 canFdPayloadBits = 512;
// The stored identifier keeps the extended frame flag in bit 29 above the 29 bits of the identifier.
constexpr quint32 identifierMask = 0x1FFFFFFF;
constexpr quint32 extendedFlag = 0x20000000;
constexpr quint32 firstExtendedId = 0x800;
constexpr int applicationVariable = 2;

QString idText(quint32 id)
{
    return QString::number(id & identifierMask, 16);
}

} // namespace

// The identifiers of one line, Transmit first, each with its data elements in the order of their number.
struct ModelChecker::RawCanLine
{
    struct Message
    {
        quint32 id = 0;
        QList<ObjectDataBase::DataElement> elements;
    };

    quint8 line = 0;
    quint32 maxPayloadBits = classicalPayloadBits;
    QList<quint32> transmitIds;
    QList<quint32> receiveIds;
    QList<Message> messages;
};

int ModelChecker::checkRawCANLine(quint8 line, QSharedPointer<ObjectDataBase> database)
{
    m_line = line;
    m_database = database;
    m_errorCount = 0;

    RawCanLine state;
    state.line = line;
    if (m_database->getGeneralSetting(QStringLiteral("canfd_supported")).toInt() == 1)
        state.maxPayloadBits = canFdPayloadBits;
    readRawCanLine(state);

    checkIdsInBothDirections(state);
    checkRawCanMessages(state);
    checkElementVariableNames(state);
    return m_errorCount;
}

// Two statements for the identifiers and one for all data elements of the
// line; the store answers one element at a time. Rows are read by column
// position, as the store does, since old tables of line 0 spell the bit
// position column differently.
void ModelChecker::readRawCanLine(RawCanLine& state)
{
    state.transmitIds = m_database->getCANIDList(state.line, ObjectDataBase::Transmit);
    state.receiveIds = m_database->getCANIDList(state.line, ObjectDataBase::Receive);
    QHash<quint64, QList<ObjectDataBase::DataElement>> elements;
    QSqlQuery query(m_database->database());
    query.setForwardOnly(true);
    const QString statement =
        QStringLiteral("select * from DataElements%1 order by canid asc, direction asc, number asc")
            .arg(state.line);
    if (!query.exec(statement))
        qDebug() << Q_FUNC_INFO << statement << query.lastError().text();
    while (query.next()) {
        ObjectDataBase::DataElement element;
        element.canid = query.value(0).toUInt();
        element.number = query.value(1).toUInt();
        element.datatype = query.value(2).toInt();
        element.implementation = query.value(3).toInt();
        element.varname = query.value(4).toString();
        element.name = m_database->stringById(query.value(6).toInt());
        element.bitsize = quint16(query.value(9).toUInt());
        element.direction = quint8(query.value(10).toUInt());
        element.bitpos = quint16(query.value(11).toUInt());
        elements[(quint64(element.canid) << 8) | element.direction].append(element);
    }
    for (quint8 direction : {quint8(ObjectDataBase::Transmit), quint8(ObjectDataBase::Receive)}) {
        const QList<quint32>& ids =
            direction == ObjectDataBase::Transmit ? state.transmitIds : state.receiveIds;
        for (quint32 id : ids)
            state.messages.append({id, elements.value((quint64(id) << 8) | direction)});
    }
}

void ModelChecker::checkIdsInBothDirections(const RawCanLine& state)
{
    for (quint32 id : state.transmitIds) {
        if (state.receiveIds.contains(id))
            report(tr("<strong>Warning: </strong>CAN-ID 0x%1 appears in both TX and RX \u2014 this is "
                      "unusual and "
                      "may be a configuration error.")
                       .arg(idText(id)));
    }
}

void ModelChecker::checkRawCanMessages(const RawCanLine& state)
{
    for (const RawCanLine::Message& message : state.messages) {
        const QString id = idText(message.id);
        if ((message.id & identifierMask) >= firstExtendedId && !(message.id & extendedFlag))
            reportError(
                tr("<strong><font color='red'>Error: </font></strong> CAN-ID 0x%1 is higher then 0x7ff, "
                   "but extended flag is not set.")
                    .arg(id));
        BitRanges ranges;
        quint32 end = 0;
        for (const ObjectDataBase::DataElement& element : message.elements) {
            if (element.implementation == applicationVariable && element.varname.trimmed().isEmpty())
                reportError(tr("<strong><font color='red'>Error: </font></strong> Variable name missing for "
                               "signal # %1 in CAN-ID 0x%2")
                                .arg(QString::number(element.number + 1), id));
            const quint32 elementEnd = element.bitpos + signalBits(element.datatype, element.bitsize);
            if (ranges.add(element.bitpos, elementEnd))
                reportError(tr("<strong><font color='red'>Error: </font></strong> Signal '%1' in CAN-ID 0x%2 "
                               "overlaps with another signal in the same message.")
                                .arg(element.name, id));
            end = qMax(end, elementEnd);
        }
        if (end > state.maxPayloadBits)
            reportError(
                tr("<strong><font color='red'>Error: </font></strong> CAN-ID 0x%1: signals require %2 bits "
                   "but the maximum payload is %3 bits.")
                    .arg(id, QString::number(end), QString::number(state.maxPayloadBits)));
    }
}

// Application variables are global names in the generated code; the first use keeps the name.
void ModelChecker::checkElementVariableNames(const RawCanLine& state)
{
    QHash<QString, QPair<quint32, quint32>> firstUse;
    for (const RawCanLine::Message& message : state.messages) {
        for (const ObjectDataBase::DataElement& element : message.elements) {
            const QString varname = element.varname.trimmed();
            if (element.implementation != applicationVariable || varname.isEmpty())
                continue;
            const quint32 signal = element.number + 1;
            const auto first = firstUse.constFind(varname);
            if (first == firstUse.constEnd()) {
                firstUse.insert(varname, {signal, message.id});
                continue;
            }
            report(tr("<strong>Warning: </strong>Signal %1 in CAN-ID 0x%2: variable name '%3' is already "
                      "used by "
                      "signal %4 in CAN-ID 0x%5.")
                       .arg(QString::number(signal), idText(message.id), varname,
                            QString::number(first->first), idText(first->second)));
        }
    }
}
