#pragma once

#include <QList>
#include <QObject>
#include <QSharedPointer>
#include <QString>

class ObjectDataBase;

// Decides whether a project may go to the generators: reports each finding
// through newError and returns the number of errors.
class ModelChecker : public QObject
{
    Q_OBJECT
public:
    explicit ModelChecker(QObject* parent = nullptr);

    int checkProject(QSharedPointer<ObjectDataBase> database, const QString& projectPath);
    int checkCANopenLine(quint8 line, QSharedPointer<ObjectDataBase> database, bool& corrected);
    int checkJ1939Line(int lineCount, quint8 line, QSharedPointer<ObjectDataBase> database,
                       const QList<quint32>& reservedPgns);
    int checkRawCANLine(quint8 line, QSharedPointer<ObjectDataBase> database);

Q_SIGNALS:
    void newError(QString errorText);

private:
    QSharedPointer<ObjectDataBase> m_database;
    QString m_projectPath;
};
