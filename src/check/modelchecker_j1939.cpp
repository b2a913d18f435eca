#include "check/modelchecker.h"

#include "canopenlib/canopentypes.h"

#include <QHash>

namespace {

// A J1939 single frame on classical CAN.
constexpr quint32 singleFrameBits = 64;
// The address claim names a manufacturer; this code is the tool maker's own.
constexpr int toolMakerManufacturerCode = 1871;
constexpr int managedVariable = 0;
constexpr int applicationVariable = 2;

// Safety data messages carry fixed-size values only.
bool unsupportedInSafetyMessage(int dataType)
{
    return dataType == CAN::VisibleString || dataType == CAN::Domain || dataType == CAN::VisStringNull ||
           dataType == CAN::VisStringAsterisk;
}

} // namespace

// The PGNs of one line, Transmit first, each with its SPNs in the order of pos.
struct ModelChecker::J1939Line
{
    struct Pgn
    {
        ObjectDataBase::PGN record;
        QList<ObjectDataBase::SPN> spns;
    };

    quint8 line = 0;
    QList<quint32> reservedPgns;
    bool canFd = false;
    QList<Pgn> pgns;
    bool longMessages = false;
};

const QList<quint32>& ModelChecker::stackHandledPgns()
{
    static const QList<quint32> pgns = {0xEA00, 0xEE00, 0xEC00, 0xEB00, 0xE800, 0x0E00, 0xFED8, 0x2500};
    return pgns;
}

int ModelChecker::checkJ1939Line(int, quint8 line, QSharedPointer<ObjectDataBase> database,
                                 const QList<quint32>& reservedPgns)
{
    m_line = line;
    m_database = database;
    m_errorCount = 0;

    J1939Line state;
    state.line = line;
    state.reservedPgns = reservedPgns;
    state.canFd = m_database->getGeneralSetting(QStringLiteral("canfd_supported")).toInt() == 1;
    readJ1939Line(state);

    checkJ1939Settings();
    checkJ1939Name(state);
    checkReservedPgns(state);
    checkPgnContents(state);
    checkSpnLayout(state);
    checkSpnVariableNames(state);
    return m_errorCount;
}

// One statement for all SPNs of the line through the store's cache. The
// cache is dropped afterwards: later edits don't update it.
void ModelChecker::readJ1939Line(J1939Line& state)
{
    m_database->cacheAllSPNs(state.line);
    for (quint8 direction : {quint8(ObjectDataBase::Transmit), quint8(ObjectDataBase::Receive)}) {
        for (quint32 number : m_database->getPGNList(state.line, direction)) {
            J1939Line::Pgn pgn;
            if (!m_database->getPGN(state.line, number, direction, pgn.record))
                continue;
            for (quint32 spnNumber : m_database->getSPNList(state.line, number, direction)) {
                ObjectDataBase::SPN spn;
                if (m_database->getSPN(state.line, number, direction, spnNumber, spn))
                    pgn.spns << spn;
            }
            state.pgns << pgn;
        }
    }
    m_database->clearSPNCache();
}

void ModelChecker::checkJ1939Settings()
{
    if (m_database->getGeneralSetting(QStringLiteral("sorted_coblist")).toInt() > 0)
        reportError(tr("<strong>Error: </strong>Sorted COB list may not used with J1939 projects."));
    if (m_database->getGeneralSetting(QStringLiteral("drv_group_filter")).toInt() == 1)
        report(tr("<strong>Warning: </strong>Group filter is only useful for CANopen or mixed projects."));
    if (m_database->getJ1939Setting(QStringLiteral("dynsupport")).toInt() > 0 &&
        m_database->getGeneralSetting(QStringLiteral("additional_cob_count")).trimmed().isEmpty())
        reportError(
            tr("<strong>Error: </strong>Additional COBs need to be specific with dynamic PGN support."));
}

// The fields of the J1939 NAME that the device claims its address with.
void ModelChecker::checkJ1939Name(const J1939Line& state)
{
    const auto missing = [this, &state](const char* key) {
        return m_database->getJ1939SettingForLine(QLatin1String(key), state.line).trimmed().isEmpty();
    };
    if (missing("identitynumber"))
        reportError(tr("<strong>Error: </strong>Identity number not defined in J1939 configuration tab for "
                       "line %1.")
                        .arg(state.line));
    if (missing("manufacturercode"))
        reportError(tr("<strong>Error: </strong>Manufacturer code not defined in J1939 configuration tab for "
                       "line %1.")
                        .arg(state.line));
    if (m_database->getJ1939SettingForLine(QStringLiteral("manufacturercode"), state.line).toInt() ==
        toolMakerManufacturerCode)
        report(tr("<strong>Warning: The manufacturer code 1871 (halvex) may not be used for production. "
                  "</strong>"));

    const std::pair<const char*, const char*> fields[] = {
        {"ecuinstance",
         QT_TR_NOOP(
             "<strong>Error: </strong>ECU instance not defined in J1939 configuration tab for line %1.")},
        {"functioninstance", QT_TR_NOOP("<strong>Error: </strong>Function instance not defined in J1939 "
                                        "configuration tab for line %1")},
        {"function",
         QT_TR_NOOP("<strong>Error: </strong>Function not defined in J1939 configuration tab for line %1.")},
        {"vehiclesystem", QT_TR_NOOP("<strong>Error: </strong>Vehicle system not defined in J1939 "
                                     "configuration tab for line %1.")},
        {"vehicleinstance", QT_TR_NOOP("<strong>Error: </strong>Vehicle instance not defined in J1939 "
                                       "configuration tab for line %1.")},
        {"industrygroup", QT_TR_NOOP("<strong>Error: </strong>Industry Group not defined in J1939 "
                                     "configuration tab for line %1.")},
        {"startaddress",
         QT_TR_NOOP("<strong>Error: </strong>An address needs to defined in the J1939 configuration for line "
                    "%1.")},
    };
    for (const auto& [key, text] : fields) {
        if (missing(key))
            reportError(tr(text).arg(state.line));
    }
}

void ModelChecker::checkReservedPgns(const J1939Line& state)
{
    for (const J1939Line::Pgn& pgn : state.pgns) {
        if (state.reservedPgns.contains(pgn.record.number))
            reportError(
                tr("<strong>Error: </strong>Special PGN %1 is handled by the J1939 stack directly and "
                   "may not be included in the signal definitions.\n")
                    .arg(pgnText(pgn.record.number)));
    }
}

// Names, SPNs, safety data messages and the length of each PGN.
void ModelChecker::checkPgnContents(J1939Line& state)
{
    const int bamSupport = m_database->getJ1939Setting(QStringLiteral("bamsupport")).toInt();
    const int cmdtSupport = m_database->getJ1939Setting(QStringLiteral("cmdtsupport")).toInt();
    const int safetySupport = m_database->getJ1939Setting(QStringLiteral("safetysupport")).toInt();
    for (const J1939Line::Pgn& pgn : std::as_const(state.pgns)) {
        const ObjectDataBase::PGN& record = pgn.record;
        const QString number = pgnText(record.number);
        if (record.name.isEmpty())
            report(tr("<strong>Warning: </strong>The PGN %1 des not have a name.").arg(record.number));
        if (!state.reservedPgns.contains(record.number) && pgn.spns.isEmpty())
            reportError(tr("<strong>Error: </strong>PG (%1) does not contain any SPNs.").arg(number));
        if (record.issafe) {
            if (record.safetytype == 0)
                reportError(
                    tr("<strong>Error: </strong>PG (%1) A safety type needs to be assigned to this PGN.")
                        .arg(number));
            if (!state.canFd && record.safetytype >= 3)
                reportError(tr("<strong>Error: </strong>PG (%1) This safety type is not supported with "
                               "classical CAN.")
                                .arg(number));
        }
        const bool safetyMessage = record.issafe && safetySupport >= 1;
        quint32 length = 0;
        for (const ObjectDataBase::SPN& spn : pgn.spns) {
            length += signalBits(spn.datatype, spn.bitsize);
            if (record.issafe && safetySupport < 1) {
                report(
                    tr("<strong>Warning: </strong>PG (%1) shall be transmitted as SDM but SHM support is not "
                       "activated.")
                        .arg(number));
                break;
            }
            if (!safetyMessage)
                continue;
            if (spn.implementation == managedVariable)
                reportError(tr("<strong>Error: </strong>PG (%1) transmitted as SDM may not contain managed "
                               "variables.")
                                .arg(number));
            if (unsupportedInSafetyMessage(spn.datatype))
                reportError(
                    tr("<strong>Error: </strong>PG (%1) contains unsuppported data types.").arg(number));
        }
        if (length <= singleFrameBits)
            continue;
        state.longMessages = true;
        if (safetyMessage)
            reportError(
                tr("<strong>Error: </strong>PG (%1) transmitted as SDM may not exceed 64 bit.").arg(number));
    }

    if (state.longMessages && !state.canFd && bamSupport < 1 && cmdtSupport < 1)
        reportError(
            tr("<strong>Error: </strong>Neither BAM nor TP.CMDT supported but PGNs with length > 64 bit "
               "defined."));
    if (cmdtSupport > 0 && m_database->getJ1939Setting(QStringLiteral("cmdtpackets")).toInt() == 0)
        reportError(tr("<strong>Error: </strong>CMDT packet count should not be 0 in J1939 configuration."));
}

void ModelChecker::checkSpnLayout(const J1939Line& state)
{
    for (const J1939Line::Pgn& pgn : state.pgns) {
        const quint32 pgnNumber = pgn.record.number;
        BitRanges ranges;
        quint32 previousPos = 0;
        for (const ObjectDataBase::SPN& spn : pgn.spns) {
            if (spn.implementation == applicationVariable && spn.varname.trimmed().isEmpty())
                reportError(tr("<strong>Error: </strong>The SPN %1 in PGN %2 needs a variable name.")
                                .arg(spn.spnnumber)
                                .arg(pgnNumber));
            const QString name = spn.name.trimmed();
            if (name.isEmpty())
                report(tr("<strong>Warning: </strong>The SPN %1 in PGN %2 needs a name.")
                           .arg(spn.spnnumber)
                           .arg(pgnNumber));
            else if (name.at(0).isDigit())
                report(tr("<strong>Warning: </strong>The name of SPN %1 in PGN %2 should not start with a "
                          "number.")
                           .arg(spn.spnnumber)
                           .arg(pgnNumber));
            if (spn.pos < previousPos)
                reportError(
                    tr("<strong>Error: </strong>The SPN %1 in PGN %2: position not in ascending order.")
                        .arg(spn.spnnumber)
                        .arg(pgnNumber));
            previousPos = spn.pos;
            if (ranges.add(spn.bitposition, spn.bitposition + signalBits(spn.datatype, spn.bitsize)))
                report(tr("<strong>Warning: </strong>SPN %1 in PGN %2 overlaps in bit position with another "
                          "SPN in "
                          "the same PGN.")
                           .arg(spn.spnnumber)
                           .arg(pgnNumber));
        }
    }
}

// Application variables are global names in the generated code; the first use keeps the name.
void ModelChecker::checkSpnVariableNames(const J1939Line& state)
{
    QHash<QString, QPair<quint32, quint32>> firstUse;
    for (const J1939Line::Pgn& pgn : state.pgns) {
        for (const ObjectDataBase::SPN& spn : pgn.spns) {
            const QString varname = spn.varname.trimmed();
            if (spn.implementation != applicationVariable || varname.isEmpty())
                continue;
            const auto first = firstUse.constFind(varname);
            if (first == firstUse.constEnd()) {
                firstUse.insert(varname, {spn.spnnumber, pgn.record.number});
                continue;
            }
            report(tr("<strong>Warning: </strong>SPN %1 in PGN %2: variable name '%3' is already used by SPN "
                      "%4 in "
                      "PGN %5.")
                       .arg(QString::number(spn.spnnumber), QString::number(pgn.record.number), varname,
                            QString::number(first->first), QString::number(first->second)));
        }
    }
}

// A PGN in decimal and in four hexadecimal digits: "61444/0xf004".
QString ModelChecker::pgnText(quint32 number)
{
    return QStringLiteral("%1/0x%2").arg(number).arg(hex4(number));
}
