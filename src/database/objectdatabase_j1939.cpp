#include "database/objectdatabase.h"

#include <QDebug>
#include <QSqlError>
#include <QSqlQuery>

// ---- UDS service table

bool ObjectDataBase::setUDSServiceActive(quint8 line, quint8 sid, bool active)
{
    QSqlQuery query(m_db);
    QString sessions;
    QString userlevels;
    QString authentication;
    if (exec(query,
             QStringLiteral("select sessions,userlevels,authentication from UDSSettings%1 where sid = %2")
                 .arg(line)
                 .arg(sid)) &&
        query.next()) {
        sessions = query.value(0).toString();
        userlevels = query.value(1).toString();
        authentication = query.value(2).toString();
    }
    const QString statement =
        QStringLiteral("insert or replace into UDSSettings%1 values(%2,%3,'%4','%5','%6')")
            .arg(QString::number(line), QString::number(sid), QString::number(active ? 1 : 0), sessions,
                 userlevels, authentication);
    if (exec(query, statement))
        return true;
    qDebug() << Q_FUNC_INFO << statement << query.lastError().text();
    return false;
}

bool ObjectDataBase::setUDSServiceSessions(quint8 line, quint8 sid, QString sessions)
{
    QSqlQuery query(m_db);
    QString active = QStringLiteral("0");
    QString userlevels;
    QString authentication;
    if (exec(query,
             QStringLiteral("select active,userlevels,authentication from UDSSettings%1 where sid = %2")
                 .arg(line)
                 .arg(sid)) &&
        query.next()) {
        active = QString::number(query.value(0).toInt());
        userlevels = query.value(1).toString();
        authentication = query.value(2).toString();
    }
    const QString statement =
        QStringLiteral("insert or replace into UDSSettings%1 values(%2,%3,'%4','%5','%6')")
            .arg(QString::number(line), QString::number(sid), active, sessions, userlevels, authentication);
    if (exec(query, statement))
        return true;
    qDebug() << Q_FUNC_INFO << statement << query.lastError().text();
    return false;
}

// ---- Repairs run when a project of an older format is opened

bool ObjectDataBase::setSpnDirectionsFromPgns(quint8 line)
{
    Q_UNUSED(line)
    return true;
}

bool ObjectDataBase::recalculateBitPositions(quint8 line, quint8 direction)
{
    Q_UNUSED(line)
    Q_UNUSED(direction)
    return true;
}

bool ObjectDataBase::repairMappingCounts()
{
    return true;
}
