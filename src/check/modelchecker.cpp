#include "check/modelchecker.h"

#include "database/objectdatabase.h"

ModelChecker::ModelChecker(QObject* parent) : QObject(parent) {}

int ModelChecker::checkProject(QSharedPointer<ObjectDataBase> database, const QString& projectPath)
{
    m_database = database;
    m_projectPath = projectPath;
    return 0;
}

int ModelChecker::checkCANopenLine(quint8, QSharedPointer<ObjectDataBase>, bool&)
{
    return 0;
}

int ModelChecker::checkJ1939Line(int, quint8, QSharedPointer<ObjectDataBase>, const QList<quint32>&)
{
    return 0;
}

int ModelChecker::checkRawCANLine(quint8, QSharedPointer<ObjectDataBase>)
{
    return 0;
}
