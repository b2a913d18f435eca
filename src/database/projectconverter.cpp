#include "database/projectconverter.h"

#include "canopenlib/canopentypes.h"
#include "database/objectdatabase.h"

#include <QCoreApplication>
#include <QSettings>

namespace {
// Sub-index 0 of this object was once stored as a managed constant, which the
// stack cannot update at run time.
constexpr quint16 errorHistoryIndex = 0x1032;
constexpr quint32 addressClaimingPgn = 60928;
constexpr quint32 dataPageStep = 65536;
// PGNs with this trailer format were stored without a safety type before the
// safety type had a column of its own.
constexpr quint8 firstSafetyTrailerFormat = 1;
} // namespace

ProjectConverter::ProjectConverter(ObjectDataBase* database, QObject* parent)
    : QObject(parent), database(database)
{
}

void ProjectConverter::setDatabase(ObjectDataBase* database)
{
    this->database = database;
}

bool ProjectConverter::doGenericCorrection()
{
    if (!database)
        return true;
    retireGroupFilter();
    raiseUdsServerVersion();
    return true;
}

bool ProjectConverter::doSettingsCorrection()
{
    if (!database)
        return true;
    takeStackPathFromUserSettings();
    splitOldMasterSlaveSetting();
    enableUsdoWithConnections(QStringLiteral("usdo_server_enabled"), QStringLiteral("usdo_server_cnt"));
    enableUsdoWithConnections(QStringLiteral("usdo_client_enabled"), QStringLiteral("usdo_client_cnt"));
    makeErrorHistorySub0Managed();
    return true;
}

bool ProjectConverter::doJ1939Correction()
{
    if (!database)
        return true;
    database->repairMappingCounts();
    const QList<quint8> lines = database->getNodeList();
    for (quint8 line : lines) {
        foldDataPageIntoPgnNumbers(line, ObjectDataBase::Receive);
        foldDataPageIntoPgnNumbers(line, ObjectDataBase::Transmit);
    }
    for (quint8 line : lines)
        assignSafetyTypeToSafetyTrailers(line);
    return true;
}

bool ProjectConverter::doCanDeviceCorrection()
{
    if (!database)
        return true;
    const QList<quint8> lines = database->getNodeList();
    for (quint8 line : lines)
        database->deletePGN(line, addressClaimingPgn, ObjectDataBase::Transmit);
    return true;
}

// The group filter became a hardware define of the target.
void ProjectConverter::retireGroupFilter()
{
    const QString key = QStringLiteral("drv_group_filter");
    if (database->getGeneralSetting(key).toInt(nullptr, 0) != 1)
        return;
    database->setGeneralSetting(key, QStringLiteral("0"));
    const QString defines =
        database->getGeneralSetting(QStringLiteral("hw_defines")) +
        QStringLiteral("\n\n /* old group filter setting */\n#define CO_DRV_GROUP_FILTER 1u\n");
    database->setGeneralSetting(QStringLiteral("hw_defines"), defines);
}

void ProjectConverter::raiseUdsServerVersion()
{
    const QString key = QStringLiteral("udsserver_version");
    if (database->getGeneralSetting(key).toInt() == 5)
        database->setGeneralSetting(key, QStringLiteral("6"));
}

void ProjectConverter::takeStackPathFromUserSettings()
{
    const QString key = QStringLiteral("costackpath");
    if (!database->getMiscSetting(key).isEmpty())
        return;
    QSettings userSettings(QCoreApplication::organizationName(),
                           qApp ? qApp->property("AppNameWithVersion").toString() : QString());
    userSettings.beginGroup(QStringLiteral("General"));
    const QString stackPath = userSettings.value(key).toString();
    if (!stackPath.isEmpty())
        database->setMiscSetting(key, stackPath);
}

// Older projects kept the per-line master/slave list in "co_ml_ms".
void ProjectConverter::splitOldMasterSlaveSetting()
{
    if (database->getNodeList().isEmpty())
        return;
    const QString value = database->getGeneralSetting(QStringLiteral("co_ml_ms"));
    if (!value.contains(QLatin1Char(',')))
        return;
    database->setGeneralSetting(QStringLiteral("nmtmaster"), value);
    database->setGeneralSetting(QStringLiteral("co_ml_ms"), QString());
}

void ProjectConverter::enableUsdoWithConnections(const QString& enabledKey, const QString& countKey)
{
    if (database->getGeneralSetting(enabledKey).toInt() == 0 &&
        database->getGeneralSetting(countKey).toInt() != 0)
        database->setGeneralSetting(enabledKey, QStringLiteral("1"));
}

void ProjectConverter::makeErrorHistorySub0Managed()
{
    const QList<quint8> lines = database->getNodeList();
    for (quint8 line : lines) {
        SUBINDEX_DATA_T sub0;
        if (!database->getSubIndex(line, errorHistoryIndex, 0, sub0) ||
            sub0.implementation != CANopen::ManagedConst)
            continue;
        sub0.implementation = CANopen::ManagedVariable;
        database->addSubIndex(line, errorHistoryIndex, 0, sub0);
    }
}

// Old projects kept the extended data page and data page of a PGN apart from
// its number; today the number carries them.
void ProjectConverter::foldDataPageIntoPgnNumbers(quint8 line, quint8 direction)
{
    const QList<quint32> numbers = database->getPGNList(line, direction, false);
    for (quint32 number : numbers) {
        ObjectDataBase::PGN pgn;
        if (!database->getPGN(line, number, direction, pgn) || pgn.edp_dp_key == 0)
            continue;
        const quint32 newNumber = pgn.edp_dp_key * dataPageStep + number;
        pgn.edp_dp_key = 0;
        pgn.number = newNumber;
        database->addPGN(line, newNumber, pgn);
        const QList<quint32> spns = database->getSPNList(line, number, direction);
        for (quint32 spnNumber : spns) {
            ObjectDataBase::SPN spn;
            if (!database->getSPN(line, number, direction, spnNumber, spn))
                continue;
            spn.pgnnumber = newNumber;
            database->addSPN(line, newNumber, direction, spnNumber, spn);
        }
        database->deletePGN(line, number, direction);
    }
}

void ProjectConverter::assignSafetyTypeToSafetyTrailers(quint8 line)
{
    for (quint8 direction : {ObjectDataBase::Receive, ObjectDataBase::Transmit}) {
        const QList<quint32> numbers = database->getPGNList(line, direction, false);
        for (quint32 number : numbers) {
            ObjectDataBase::PGN pgn;
            if (!database->getPGN(line, number, direction, pgn))
                continue;
            if (pgn.FD_TrailerFormat != firstSafetyTrailerFormat || pgn.safetytype != 0)
                continue;
            pgn.safetytype = 1;
            database->addPGN(line, number, pgn);
        }
    }
}
