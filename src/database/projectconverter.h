#ifndef PROJECTCONVERTER_H
#define PROJECTCONVERTER_H

#include <QObject>
#include <QPointer>

class ObjectDataBase;

// Brings the settings and a few records of an older project up to date after
// its schema has been migrated. The changes reach the file only with a save.
class ProjectConverter : public QObject
{
    Q_OBJECT

public:
    explicit ProjectConverter(ObjectDataBase* database = nullptr, QObject* parent = nullptr);

    void setDatabase(ObjectDataBase* database);

    // For every kind of application.
    bool doGenericCorrection();
    bool doSettingsCorrection();

    // Only for the tool editions that handle these protocols.
    bool doJ1939Correction();
    bool doCanDeviceCorrection();

private:
    void retireGroupFilter();
    void raiseUdsServerVersion();
    void takeStackPathFromUserSettings();
    void splitOldMasterSlaveSetting();
    void enableUsdoWithConnections(const QString& enabledKey, const QString& countKey);
    void makeErrorHistorySub0Managed();
    void foldDataPageIntoPgnNumbers(quint8 line, quint8 direction);
    void assignSafetyTypeToSafetyTrailers(quint8 line);

    QPointer<ObjectDataBase> database;
};

#endif // PROJECTCONVERTER_H
