#include "database/objectdatabase.h"

#include "canopenlib/canopentypes.h"
#include "database/linetypes.h"

#include <QDataStream>
#include <QDebug>
#include <QIODevice>
#include <QSqlError>
#include <QSqlQuery>
#include <QThread>

#include <algorithm>

namespace {

// Stream version of the metadata blob; files written by older tools use it, so it must not follow Qt.
const int metadataStreamVersion = 17;

const char* const indexColumns =
    "select name,datatype,objecttype,description,category,device_class,fwsupported,metadata,objectindex "
    "from Objects%1";

const char* const subIndexColumns =
    "select name,datatype,accesstype,allowedaccesstypes,currentvalue, defaultineds,defaultvalue,description,"
    "implementation,limitineds, lowlimit,pdomapping,refuseread,refusewrite,size,uplimit,varname,category,"
    "writedefaulttoeds, cyclicread, dcfcomponent,changedbyuser,wizardsource,denotation,sharedlines, "
    "managedbyobn, "
    "signalid, nvstorage, metadata, objectindex, subindex from SubObjects%1";

quint32 subIndexKey(quint16 index, quint8 subindex)
{
    return quint32(index) * 256 + subindex;
}

quint32 subNameKey(quint8 line, quint16 index, quint8 subindex)
{
    return quint32(index) * 65536 + quint32(line) * 256 + subindex;
}

QString number(qint64 value)
{
    return QString::number(value);
}

QString flag(bool value)
{
    return value ? QStringLiteral("1") : QStringLiteral("0");
}

QByteArray encodeMetadata(const ObjectMetadata& metadata)
{
    QByteArray blob;
    QDataStream stream(&blob, QIODevice::WriteOnly);
    stream.setVersion(metadataStreamVersion);
    stream << quint32(metadata->size());
    for (auto it = metadata->constBegin(); it != metadata->constEnd(); ++it)
        stream << it.key() << it.value();
    return blob;
}

// Rows written without metadata hold the integer 0; those and undecodable blobs carry no metadata.
ObjectMetadata decodeMetadata(const QVariant& value)
{
    if (value.typeId() != QMetaType::QByteArray)
        return {};
    const QByteArray blob = value.toByteArray();
    if (blob.isEmpty())
        return {};
    QDataStream stream(blob);
    stream.setVersion(metadataStreamVersion);
    quint32 count = 0;
    stream >> count;
    QMap<QString, QString> pairs;
    for (quint32 i = 0; i < count && stream.status() == QDataStream::Ok; ++i) {
        QString key;
        QString text;
        stream >> key >> text;
        if (stream.status() == QDataStream::Ok)
            pairs.insert(key, text);
    }
    if (stream.status() != QDataStream::Ok || pairs.isEmpty())
        return {};
    return ObjectMetadata::create(pairs);
}

bool hasMetadata(const ObjectMetadata& metadata)
{
    return metadata && !metadata->isEmpty();
}

} // namespace

// ---- Lines

QString ObjectDataBase::nodeInsertStatement(quint8 line, const NODE_DATA_T& data) const
{
    return QStringLiteral(
               "insert into Nodes values(%1,'%2','%3','%4','%5',%6,%7,%8,%9,%10,%11,%12,%13,%14,%15,%16,"
               "%17,%18,'%19','%20','%21',%22,%23,%24,%25,%26)")
        .arg(number(line), data.name, data.edspath, data.xddpath, data.dcfpath, number(data.tpdocnt),
             number(data.rpdocnt), flag(data.ismaster), flag(data.issyncproducer), flag(data.issyncconsumer),
             flag(data.ishbconsumer), flag(data.isemergencyproducer), flag(data.isemergencyconsumer),
             flag(data.ismpdosupported), flag(data.iscanopengateway), flag(data.allpdosstatic),
             flag(data.excludegeneration), flag(data.generatedcf), data.prefix, data.outputpath,
             data.iconpath, flag(data.isbootupmanager), flag(data.isconfigmanager),
             flag(data.excludepdolinking), number(data.multilinedata), flag(data.lssslave));
}

bool ObjectDataBase::addNode(quint8 line, NODE_DATA_T data)
{
    if (m_writesRefused)
        return false;

    // The update leaves the columns from isbootupmanager on alone; only the insert writes them.
    const QString statement =
        nodeExists(line)
            ? QStringLiteral(
                  "update Nodes set name = '%2', edspath = '%3', xddpath ='%4', dcfpath = '%5',  "
                  "tpdocnt = %6, rpdocnt = %7, ismaster = %8, issyncproducer = %9, issyncconsumer = "
                  "%10,  ishbconsumer = %11, isemergencyproducer = %12, isemergencyconsumer =%13,  "
                  "ismpdosupported = %14, iscanopengateway = %15, allpdosstatic = %16,  "
                  "excludegeneration = %17, generatedcf= %18, prefix = '%19', outputpath = '%20', "
                  "iconpath = '%21' where nodeId = %1")
                  .arg(number(line), data.name, data.edspath, data.xddpath, data.dcfpath,
                       number(data.tpdocnt), number(data.rpdocnt), flag(data.ismaster),
                       flag(data.issyncproducer), flag(data.issyncconsumer), flag(data.ishbconsumer),
                       flag(data.isemergencyproducer), flag(data.isemergencyconsumer),
                       flag(data.ismpdosupported), flag(data.iscanopengateway), flag(data.allpdosstatic),
                       flag(data.excludegeneration), flag(data.generatedcf), data.prefix, data.outputpath,
                       data.iconpath)
            : nodeInsertStatement(line, data);
    QSqlQuery query(m_db);
    if (!exec(query, statement)) {
        qDebug() << Q_FUNC_INFO << statement << query.lastError().text();
        return false;
    }

    createLineTables(query, line);

    if (line != Line::firstScratch) {
        for (const QString& key : perLineGeneralSettingKeys()) {
            if (!getGeneralSetting(key).isEmpty())
                setGeneralSettingForLine(key, getGeneralSettingForLine(key, line), line);
        }
        setDefaultDescriptionSettings(line);
    }

    createUdsTable(query, line);
    const QList<quint8> basicServices = {16, 17, 62, 34, 46};
    for (quint8 sid : basicServices)
        setUDSServiceActive(line, sid, true);
    for (quint8 sid : basicServices)
        setUDSServiceSessions(line, sid, QStringLiteral("1"));

    notify(ChangeSet::NodeAdded, line);
    return true;
}

bool ObjectDataBase::getNode(quint8 line, NODE_DATA_T& out)
{
    QSqlQuery query(m_db);
    const QString statement =
        QStringLiteral(
            "select name, iconpath, edspath, dcfpath, xddpath, tpdocnt, rpdocnt, prefix, outputpath, "
            "ismaster, issyncproducer, issyncconsumer, ishbconsumer, isemergencyproducer, "
            "isemergencyconsumer, ismpdosupported, iscanopengateway, allpdosstatic, excludegeneration, "
            "generatedcf, isbootupmanager, isconfigmanager, excludepdolinking, multilinedata, lssslave "
            "from Nodes where nodeId = %1")
            .arg(line);
    if (!exec(query, statement)) {
        qDebug() << Q_FUNC_INFO << statement << query.lastError().text();
        return false;
    }
    if (!query.next())
        return false;

    out.name = query.value(0).toString();
    out.iconpath = query.value(1).toString();
    out.edspath = query.value(2).toString();
    out.dcfpath = query.value(3).toString();
    out.xddpath = query.value(4).toString();
    out.tpdocnt = quint16(query.value(5).toUInt());
    out.rpdocnt = quint16(query.value(6).toUInt());
    out.prefix = query.value(7).toString();
    out.outputpath = query.value(8).toString();
    bool* const flags[] = {&out.ismaster,          &out.issyncproducer,      &out.issyncconsumer,
                           &out.ishbconsumer,      &out.isemergencyproducer, &out.isemergencyconsumer,
                           &out.ismpdosupported,   &out.iscanopengateway,    &out.allpdosstatic,
                           &out.excludegeneration, &out.generatedcf,         &out.isbootupmanager,
                           &out.isconfigmanager,   &out.excludepdolinking};
    int column = 9;
    for (bool* field : flags)
        *field = query.value(column++).toInt() != 0;
    out.multilinedata = query.value(23).toUInt();
    out.lssslave = query.value(24).toInt() != 0;
    return true;
}

bool ObjectDataBase::nodeExists(quint8 line)
{
    QSqlQuery query(m_db);
    return exec(query, QStringLiteral("select nodeId from Nodes where nodeId = %1").arg(line)) &&
           query.next();
}

QList<quint8> ObjectDataBase::getNodeList()
{
    QList<quint8> lines;
    QSqlQuery query(m_db);
    if (!exec(query, QStringLiteral("select nodeId from nodes")))
        return lines;
    while (query.next())
        lines.append(quint8(query.value(0).toUInt()));
    return lines;
}

bool ObjectDataBase::deleteNode(quint8 line)
{
    QSqlQuery query(m_db);
    const QStringList tables = {"Objects", "SubObjects",   "PGNs",       "SPNs",
                                "CANIDs",  "DataElements", "UDSSettings"};
    for (const QString& table : tables) {
        const QString statement = QStringLiteral("drop table %1%2").arg(table).arg(line);
        if (!exec(query, statement))
            qDebug() << Q_FUNC_INFO << statement << query.lastError().text();
    }
    const QString statement = QStringLiteral("delete from Nodes where nodeId = %1").arg(line);
    const bool deleted = exec(query, statement);
    if (!deleted)
        qDebug() << Q_FUNC_INFO << statement << query.lastError().text();

    removeLineDescriptionSettings(line);
    removeLineFromListSettings(QStringLiteral("GeneralSettings"), line);
    removeLineFromListSettings(QStringLiteral("J1939Settings"), line);
    exec(query, QStringLiteral("delete from Connections where prodnode = %1 OR connode = %1").arg(line));
    notify(ChangeSet::NodeDeleted, line);
    return deleted;
}

bool ObjectDataBase::setNodeSqlValue(QString column, QString value, QString line)
{
    QSqlQuery query(m_db);
    const QString statement =
        QStringLiteral("update Nodes set %1='%2' where nodeId = %3 ").arg(column, value, line);
    if (exec(query, statement))
        return true;
    qDebug() << Q_FUNC_INFO << statement << query.lastError().text();
    return false;
}

// ---- Objects

bool ObjectDataBase::addIndex(quint8 line, quint16 index, INDEX_DATA_T data)
{
    if (m_writesRefused)
        return false;

    const int description = internString(data.description);
    const int name = internString(data.name);
    const int deviceClass = internString(data.device_class);
    const QString statement =
        indexExists(line, index)
            ? QStringLiteral(
                  "update Objects%6 set name = %1, datatype=%2, objecttype = %3, description = %4, "
                  "category = %7, device_class = %8, fwsupported = %9 where objectindex = %5")
                  .arg(number(name), number(data.datatype), number(data.objecttype), number(description),
                       number(index), number(line), number(data.category), number(deviceClass),
                       number(data.fwsupported))
            : QStringLiteral("insert into Objects%8 values(%1,%2,%3,%4,%5,%6,%7,%9,%10)")
                  .arg(number(index), number(name), number(data.datatype), number(data.objecttype),
                       number(description), number(data.category), number(deviceClass), number(line),
                       number(data.fwsupported), QStringLiteral("0"));
    QSqlQuery query(m_db);
    if (!exec(query, statement)) {
        qDebug() << Q_FUNC_INFO << statement << query.lastError().text();
        return false;
    }
    bool ok = true;
    if (hasMetadata(data.metadata))
        ok = writeObjectMetadata(line, index, data.metadata);
    notify(ChangeSet::IndexChanged, line, index);
    return ok;
}

bool ObjectDataBase::getIndex(quint8 line, quint16 index, INDEX_DATA_T& out)
{
    if (const ObjectReadCacheLine* cached = objectReadCache(line)) {
        const auto found = cached->objects.constFind(index);
        if (found == cached->objects.constEnd())
            return false;
        out = found.value();
        return true;
    }
    QSqlQuery query(m_db);
    const QString statement =
        QString::fromLatin1(indexColumns).arg(line) + QStringLiteral(" where objectindex = %1").arg(index);
    if (!exec(query, statement)) {
        qDebug() << Q_FUNC_INFO << statement << query.lastError().text();
        return false;
    }
    if (!query.next())
        return false;
    fillIndexFromRow(query, out);
    return true;
}

void ObjectDataBase::fillIndexFromRow(const QSqlQuery& query, INDEX_DATA_T& out)
{
    out.name = stringById(query.value(0).toInt());
    out.datatype = query.value(1).toInt();
    out.objecttype = query.value(2).toInt();
    out.description = stringById(query.value(3).toInt());
    out.category = query.value(4).toInt();
    out.device_class = stringById(query.value(5).toInt());
    out.fwsupported = query.value(6).toInt();
    out.metadata = decodeMetadata(query.value(7));
}

bool ObjectDataBase::indexExists(quint8 line, quint16 index)
{
    QSqlQuery query(m_db);
    return exec(query, QStringLiteral("select objectindex from Objects%1 where objectindex = %2")
                           .arg(line)
                           .arg(index)) &&
           query.next();
}

QList<quint16> ObjectDataBase::getIndexList(quint8 line, quint32 from, quint32 to)
{
    if (const ObjectReadCacheLine* cached = objectReadCache(line)) {
        const auto first = std::lower_bound(cached->indices.cbegin(), cached->indices.cend(), from);
        const auto last = std::upper_bound(first, cached->indices.cend(), to);
        return QList<quint16>(first, last);
    }
    QString statement =
        QStringLiteral("select objectindex from Objects%1 where objectindex >= %2").arg(line).arg(from);
    if (to != quint32(-1))
        statement += QStringLiteral(" and objectindex <= %1").arg(to);
    statement += QStringLiteral(" order by objectindex asc");

    QList<quint16> indices;
    QSqlQuery query(m_db);
    query.setForwardOnly(true);
    if (!exec(query, statement)) {
        qDebug() << Q_FUNC_INFO << statement << query.lastError().text();
        return indices;
    }
    while (query.next())
        indices.append(quint16(query.value(0).toUInt()));
    return indices;
}

QList<ObjectDataBase::ObjectEntry> ObjectDataBase::getObjects(quint8 line, quint32 from, quint32 to)
{
    QList<ObjectEntry> objects;
    QHash<quint16, qsizetype> positions;
    QSqlQuery query(m_db);
    query.setForwardOnly(true);
    const QString range = QStringLiteral(" where objectindex >= %1 and objectindex <= %2").arg(from).arg(to);
    QString statement =
        QString::fromLatin1(indexColumns).arg(line) + range + QStringLiteral(" order by objectindex asc");
    if (!exec(query, statement)) {
        qDebug() << Q_FUNC_INFO << statement << query.lastError().text();
        return objects;
    }
    while (query.next()) {
        ObjectEntry& entry = objects.emplaceBack();
        entry.index = quint16(query.value(8).toUInt());
        fillIndexFromRow(query, entry.data);
        positions.insert(entry.index, objects.size() - 1);
    }
    statement = QStringLiteral("select objectindex,subindex from SubObjects%1").arg(line) + range +
                QStringLiteral(" order by objectindex asc, subindex asc");
    if (!exec(query, statement)) {
        qDebug() << Q_FUNC_INFO << statement << query.lastError().text();
        return objects;
    }
    while (query.next()) {
        const auto position = positions.constFind(quint16(query.value(0).toUInt()));
        if (position != positions.constEnd())
            objects[position.value()].subindices.append(quint8(query.value(1).toUInt()));
    }
    return objects;
}

bool ObjectDataBase::deleteIndex(quint8 line, quint16 index, bool keepConnections)
{
    if (m_writesRefused)
        return false;
    QSqlQuery query(m_db);
    exec(query, QStringLiteral("delete from SubObjects%2 where objectindex = %1").arg(index).arg(line));
    const QString statement =
        QStringLiteral("delete from Objects%2 where objectindex = %1").arg(index).arg(line);
    if (!exec(query, statement)) {
        qDebug() << Q_FUNC_INFO << statement << query.lastError().text();
        return false;
    }
    if (!keepConnections)
        removeAllConnections(line, index);
    notify(ChangeSet::IndexDeleted, line, index);
    return true;
}

bool ObjectDataBase::setObjectIndexSqlValue(QString table, QString index, QString column, QVariant value)
{
    QSqlQuery query(m_db);
    if (!exec(query, QStringLiteral("select objectindex from %1 where objectindex = %2").arg(table, index)) ||
        !query.next())
        exec(query, QStringLiteral("insert into %1 values(%2,0,0,0,0,0,0,0,0)").arg(table, index));

    if (column == QLatin1String("metadata"))
        return writeMetadataBlob(table, index, QString(), value.toByteArray());

    QString text = value.toString();
    if (column == QLatin1String("name") || column == QLatin1String("description"))
        text = number(internString(text));
    const QString statement =
        QStringLiteral("update %0 set %1='%2' where objectindex = %3").arg(table, column, text, index);
    if (exec(query, statement))
        return true;
    qDebug() << Q_FUNC_INFO << "error" << statement << query.lastError().text();
    return false;
}

// ---- Sub-indices

bool ObjectDataBase::writeSubIndexRow(QSqlQuery& query, quint8 line, quint16 index, quint8 subindex,
                                      const SUBINDEX_DATA_T& data)
{
    const int description = internString(data.description);
    const int name = internString(data.name);
    const int denotation = internString(data.denotation);
    return writeSubIndexStatement(query, line, index, subindex, data, data.defaultvalue, data.currentvalue,
                                  name, description, denotation);
}

bool ObjectDataBase::writeSubIndexStatement(QSqlQuery& query, quint8 line, quint16 index, quint8 subindex,
                                            const SUBINDEX_DATA_T& data, const QString& defaultValue,
                                            const QString& currentValue, int name, int description,
                                            int denotation)
{
    // A whole-record write: columns not given here lose their old values, metadata included.
    const QString statement =
        QStringLiteral(
            "insert or replace into SubObjects%20 values(%19,%1,%2,%3,'%4','%5','%6',%7,'%8','%9',%10,"
            "%11,%12,%13,%14,'%15',%16,'%17',%18,%21,%22,%23,%24,%25,%26,%27,%28,%29,%30,%31,%32)")
            .arg(number(subindex), number(name), number(data.datatype), data.accesstype, defaultValue,
                 currentValue, number(data.pdomapping.toUInt()), data.lowlimit, data.uplimit,
                 number(data.size), flag(data.defaultineds), flag(data.limitineds), flag(data.refuseread),
                 flag(data.refusewrite), data.allowedaccesstypes, number(data.implementation), data.varname,
                 number(description), number(index), number(line), number(data.category),
                 number(data.writedefaulttoeds), flag(data.cyclicread), flag(data.dcfcomponent),
                 flag(data.changedbyuser), number(data.wizardsource), number(denotation),
                 flag(data.sharedlines), flag(data.managedbyobn), number(data.signalid), flag(data.nvstorage),
                 QStringLiteral("0"));
    if (!exec(query, statement)) {
        qDebug() << Q_FUNC_INFO << statement << query.lastError().text();
        return false;
    }
    bool ok = true;
    if (hasMetadata(data.metadata))
        ok = writeSubIndexMetadata(line, index, subindex, data.metadata);
    updateCachedSubIndex(line, index, subindex, data);
    return ok;
}

bool ObjectDataBase::addSubIndex(quint8 line, quint16 index, quint8 subindex, SUBINDEX_DATA_T data)
{
    if (m_writesRefused)
        return false;

    const int description = internString(data.description);
    const int name = internString(data.name);
    const int denotation = internString(data.denotation);

    // Only strings get their quotes doubled; a quote in any other value makes the statement fail.
    QString defaultValue = data.defaultvalue;
    QString currentValue = data.currentvalue;
    if (data.datatype == CAN::VisibleString) {
        defaultValue.replace(QLatin1Char('\''), QLatin1String("''"));
        currentValue.replace(QLatin1Char('\''), QLatin1String("''"));
    }
    if (index == 4096 && subindex == 1)
        qDebug() << Q_FUNC_INFO << "ODB:aSI 0x1000:1 = " << data.defaultvalue;

    QSqlQuery query(m_db);
    const bool ok = writeSubIndexStatement(query, line, index, subindex, data, defaultValue, currentValue,
                                           name, description, denotation);
    if (ok)
        notify(ChangeSet::SubIndexChanged, line, index, subindex);
    return ok;
}

bool ObjectDataBase::addSubIndices(QList<SubEntry> entries)
{
    if (m_writesRefused)
        return false;

    m_db.transaction();
    bool ok = true;
    QSqlQuery query(m_db);
    for (const SubEntry& entry : std::as_const(entries)) {
        if (!writeSubIndexRow(query, entry.line, entry.index, entry.subindex, entry.data))
            ok = false;
    }
    if (!m_db.commit()) {
        qDebug() << Q_FUNC_INFO << m_db.lastError().text();
        ok = false;
    }
    notify(ChangeSet::SubIndexChanged, entries.isEmpty() ? 0 : entries.first().line);
    return ok;
}

bool ObjectDataBase::writeMetadataBlob(const QString& table, const QString& index, const QString& subindex,
                                       const QByteArray& blob)
{
    QSqlQuery query(m_db);
    if (subindex.isNull()) {
        query.prepare(
            QStringLiteral("update %1 SET metadata = :metadata where objectindex = :objectindex").arg(table));
    } else {
        query.prepare(
            QStringLiteral("update %1 SET metadata = :metadata where objectindex = :objectindex and "
                           "subindex = :subindex")
                .arg(table));
        query.bindValue(QStringLiteral(":subindex"), subindex.toInt());
    }
    query.bindValue(QStringLiteral(":metadata"), blob);
    query.bindValue(QStringLiteral(":objectindex"), index.toInt());
    if (exec(query))
        return true;
    qDebug() << Q_FUNC_INFO << "error" << query.lastQuery() << query.lastError().text();
    return false;
}

bool ObjectDataBase::writeObjectMetadata(quint8 line, quint16 index, const ObjectMetadata& metadata)
{
    return writeMetadataBlob(QStringLiteral("Objects%1").arg(line), number(index), QString(),
                             encodeMetadata(metadata));
}

bool ObjectDataBase::writeSubIndexMetadata(quint8 line, quint16 index, quint8 subindex,
                                           const ObjectMetadata& metadata)
{
    return writeMetadataBlob(QStringLiteral("SubObjects%1").arg(line), number(index), number(subindex),
                             encodeMetadata(metadata));
}

void ObjectDataBase::updateCachedSubIndex(quint8 line, quint16 index, quint8 subindex,
                                          const SUBINDEX_DATA_T& data)
{
    auto cachedLine = m_subIndexCache.find(line);
    if (cachedLine == m_subIndexCache.end())
        return;
    const auto position = cachedLine->positions.constFind(subIndexKey(index, subindex));
    if (position == cachedLine->positions.constEnd())
        return;
    SUBINDEX_DATA_T& cached = cachedLine->records[position.value()];
    cached = data;
    // A read of the row gives no metadata for an empty map; the cache must read the same.
    if (!hasMetadata(data.metadata))
        cached.metadata.reset();
}

void ObjectDataBase::fillSubIndexFromRow(const QSqlQuery& query, SUBINDEX_DATA_T& out)
{
    out.name = stringById(query.value(0).toInt());
    out.datatype = query.value(1).toInt();
    out.accesstype = query.value(2).toString();
    out.allowedaccesstypes = query.value(3).toString();
    out.currentvalue = query.value(4).toString();
    out.defaultineds = query.value(5).toInt() != 0;
    out.defaultvalue = query.value(6).toString();
    out.description = stringById(query.value(7).toInt());
    out.implementation = query.value(8).toInt();
    out.limitineds = query.value(9).toInt() != 0;
    out.lowlimit = query.value(10).toString();
    out.pdomapping.setValue(PDOMapping::PDOMappingType(query.value(11).toUInt()));
    out.refuseread = query.value(12).toInt() != 0;
    out.refusewrite = query.value(13).toInt() != 0;
    out.size = query.value(14).toInt();
    out.uplimit = query.value(15).toString();
    out.varname = query.value(16).toString();
    out.category = query.value(17).toInt();
    out.writedefaulttoeds = quint8(query.value(18).toUInt());
    out.cyclicread = query.value(19).toInt() != 0;
    out.dcfcomponent = query.value(20).toInt() != 0;
    out.changedbyuser = query.value(21).toInt() != 0;
    out.wizardsource = quint16(query.value(22).toUInt());
    out.denotation = stringById(query.value(23).toInt());
    out.sharedlines = query.value(24).toInt() != 0;
    out.managedbyobn = query.value(25).toInt() != 0;
    out.signalid = query.value(26).toInt();
    out.nvstorage = query.value(27).toInt() != 0;
    out.metadata = decodeMetadata(query.value(28));
}

bool ObjectDataBase::getSubIndex(quint8 line, quint16 index, quint8 subindex, SUBINDEX_DATA_T& out)
{
    const auto cachedLine = m_subIndexCache.constFind(line);
    if (cachedLine != m_subIndexCache.constEnd()) {
        const auto position = cachedLine->positions.constFind(subIndexKey(index, subindex));
        if (position != cachedLine->positions.constEnd()) {
            out = cachedLine->records.at(position.value());
            return true;
        }
    }

    QSqlQuery query(m_db);
    const QString statement =
        QString::fromLatin1(subIndexColumns).arg(line) +
        QStringLiteral(" where objectindex = %1 and subindex = %2").arg(index).arg(subindex);
    if (!exec(query, statement)) {
        qDebug() << Q_FUNC_INFO << statement << query.lastError().text();
        return false;
    }
    if (!query.next())
        return false;
    fillSubIndexFromRow(query, out);
    return true;
}

bool ObjectDataBase::subIndexExists(quint8 line, quint16 index, quint8 subindex)
{
    QSqlQuery query(m_db);
    return exec(query,
                QStringLiteral("select subindex from SubObjects%1 where objectindex = %2 and subindex = %3")
                    .arg(line)
                    .arg(index)
                    .arg(subindex)) &&
           query.next();
}

QList<quint8> ObjectDataBase::getSubIndexList(quint8 line, quint16 index)
{
    if (const ObjectReadCacheLine* cached = objectReadCache(line))
        return cached->subindices.value(index);
    QList<quint8> subindices;
    QSqlQuery query(m_db);
    const QString statement =
        QStringLiteral("select subindex from SubObjects%1 where objectindex = %2 order by subindex asc")
            .arg(line)
            .arg(index);
    if (!exec(query, statement)) {
        qDebug() << Q_FUNC_INFO << statement << query.lastError().text();
        return subindices;
    }
    while (query.next())
        subindices.append(quint8(query.value(0).toUInt()));
    return subindices;
}

QList<QPair<quint16, quint8>> ObjectDataBase::findSubIndices(quint8 line, QString column, QVariant value)
{
    const QString operand = value.typeId() == QMetaType::QString
                                ? QStringLiteral("'%1'").arg(value.toString())
                                : value.toString();
    const QString statement =
        QStringLiteral(
            "select objectindex,subindex from SubObjects%0 where %1 = %2 order by objectindex,subindex ASC")
            .arg(number(line), column, operand);
    QList<QPair<quint16, quint8>> found;
    QSqlQuery query(m_db);
    if (!exec(query, statement)) {
        qDebug() << Q_FUNC_INFO << statement << query.lastError().text();
        return found;
    }
    while (query.next())
        found.append({quint16(query.value(0).toUInt()), quint8(query.value(1).toUInt())});
    return found;
}

bool ObjectDataBase::deleteSubIndex(quint8 line, quint16 index, quint8 subindex, bool keepConnections)
{
    QSqlQuery query(m_db);
    const QString statement =
        QStringLiteral("delete from SubObjects%1 where objectindex = %2 and subindex = %3")
            .arg(line)
            .arg(index)
            .arg(subindex);
    if (!exec(query, statement)) {
        qDebug() << Q_FUNC_INFO << statement << query.lastError().text();
        return false;
    }
    if (!keepConnections) {
        exec(query,
             QStringLiteral("delete from Connections where prodnode = %1 AND prodindex = %2 AND prodsub = %3")
                 .arg(line)
                 .arg(index)
                 .arg(subindex));
        removeConsumerConnection(line, index, subindex);
    }
    notify(ChangeSet::SubIndexDeleted, line, index, subindex);
    return true;
}

bool ObjectDataBase::setSubindexSqlValue(QString table, QString index, QString subindex, QString column,
                                         QVariant value)
{
    QSqlQuery query(m_db);
    if (!exec(query, QStringLiteral("select subindex from %1 where objectindex = %2 and subindex = %3")
                         .arg(table, index, subindex)) ||
        !query.next())
        exec(query, QStringLiteral(
                        "insert into %1 values(%2,%3,NULL,0,0,NULL,NULL,NULL,NULL,NULL,NULL,NULL,NULL,NULL,"
                        "NULL,NULL,0,NULL,NULL,NULL,NULL,NULL,NULL,NULL,NULL,NULL,NULL,NULL,NULL,NULL,NULL)")
                        .arg(table, index, subindex));

    if (column == QLatin1String("metadata"))
        return writeMetadataBlob(table, index, subindex, value.toByteArray());

    QString text = value.toString();
    if (column == QLatin1String("name") || column == QLatin1String("description"))
        text = number(internString(text));
    const QString statement = QStringLiteral("update %0 set %1='%2' where objectindex = %3 and subindex = %4")
                                  .arg(table, column, text, index, subindex);
    if (exec(query, statement))
        return true;
    qDebug() << Q_FUNC_INFO << "error" << statement << query.lastError().text();
    return false;
}

bool ObjectDataBase::setDefaultValue(quint8 line, quint16 index, quint8 subindex, QString value)
{
    QSqlQuery query(m_db);
    const QString statement =
        QStringLiteral("update SubObjects%0 set defaultvalue='%1' where objectindex = %2 and subindex = %3")
            .arg(number(line), value, number(index), number(subindex));
    if (exec(query, statement))
        return true;
    qDebug() << Q_FUNC_INFO << statement << query.lastError().text();
    return false;
}

// ---- Caches

void ObjectDataBase::cacheAllSubs(unsigned char line, unsigned short index)
{
    m_subIndexCache.remove(line);
    QString statement = QString::fromLatin1(subIndexColumns).arg(line);
    if (index != 0)
        statement += QStringLiteral(" where objectindex = %1").arg(index);

    QSqlQuery query(m_db);
    query.setForwardOnly(true);
    SubIndexCacheLine& cached = m_subIndexCache[line];
    // A whole line is filled in one go; room for all its records keeps the list from growing step by step.
    if (index == 0 && exec(query, QStringLiteral("select count(*) from SubObjects%1").arg(line)) &&
        query.next()) {
        cached.positions.reserve(query.value(0).toInt());
        cached.records.reserve(query.value(0).toInt());
    }
    if (!exec(query, statement))
        qDebug() << Q_FUNC_INFO << statement << query.lastError().text();
    while (query.next()) {
        const quint32 key = subIndexKey(quint16(query.value(29).toUInt()), quint8(query.value(30).toUInt()));
        const auto known = cached.positions.constFind(key);
        if (known != cached.positions.constEnd()) {
            // Old tables without the unique constraint may hold a key twice; the later row counts.
            fillSubIndexFromRow(query, cached.records[known.value()]);
            continue;
        }
        fillSubIndexFromRow(query, cached.records.emplaceBack());
        cached.positions.insert(key, cached.records.size() - 1);
    }
}

// Rows come in the order the single reads give them, duplicates of old tables included; of two
// rows of one object the first counts, as for a single read.
const ObjectDataBase::ObjectReadCacheLine* ObjectDataBase::objectReadCache(quint8 line)
{
    {
        QMutexLocker locker(&m_allowedThreadsMutex);
        if (!m_allowedThreads.contains(QThread::currentThreadId()))
            return nullptr;
    }
    const auto known = m_objectReadCache.constFind(line);
    if (known != m_objectReadCache.constEnd())
        return &known.value();
    ObjectReadCacheLine& cached = m_objectReadCache[line];
    QSqlQuery query(m_db);
    query.setForwardOnly(true);
    QString statement =
        QString::fromLatin1(indexColumns).arg(line) + QStringLiteral(" order by objectindex asc");
    if (!exec(query, statement))
        qDebug() << Q_FUNC_INFO << statement << query.lastError().text();
    while (query.next()) {
        const quint16 index = quint16(query.value(8).toUInt());
        cached.indices.append(index);
        if (!cached.objects.contains(index))
            fillIndexFromRow(query, cached.objects[index]);
    }
    statement =
        QStringLiteral("select objectindex,subindex from SubObjects%1 order by objectindex asc, subindex asc")
            .arg(line);
    if (!exec(query, statement))
        qDebug() << Q_FUNC_INFO << statement << query.lastError().text();
    while (query.next())
        cached.subindices[quint16(query.value(0).toUInt())].append(quint8(query.value(1).toUInt()));
    return &cached;
}

void ObjectDataBase::cacheSubNames(unsigned char line, unsigned short index)
{
    QString statement =
        QStringLiteral("select denotation, name, objectindex, subindex from SubObjects%1").arg(line);
    if (index != 0)
        statement += QStringLiteral(" where objectindex = %1").arg(index);

    QSqlQuery query(m_db);
    query.setForwardOnly(true);
    if (!exec(query, statement)) {
        qDebug() << Q_FUNC_INFO << statement << query.lastError().text();
        return;
    }
    while (query.next()) {
        const QString denotation = stringById(query.value(0).toInt());
        const QString name = denotation.isEmpty() ? stringById(query.value(1).toInt()) : denotation;
        m_subNameCache.insert(
            subNameKey(line, quint16(query.value(2).toUInt()), quint8(query.value(3).toUInt())), name);
    }
}

QString ObjectDataBase::getSubIndexDisplayName(quint8 line, quint16 index, quint8 subindex)
{
    const auto cached = m_subNameCache.constFind(subNameKey(line, index, subindex));
    if (cached != m_subNameCache.constEnd())
        return cached.value();
    SUBINDEX_DATA_T record;
    if (!getSubIndex(line, index, subindex, record))
        return QString();
    return record.denotation.isEmpty() ? record.name : record.denotation;
}

void ObjectDataBase::clearSubIndexCaches()
{
    m_subIndexCache.clear();
    m_subNameCache.clear();
}

// ---- Copies

bool ObjectDataBase::copyObjects(ObjectDataBase* source, quint8 fromLine, quint8 toLine, quint32 from,
                                 quint32 to)
{
    source->cacheAllSubs(fromLine, 0);
    bool ok = true;
    const QList<quint16> indices = source->getIndexList(fromLine, from, to);
    for (quint16 index : indices) {
        INDEX_DATA_T object;
        if (!source->getIndex(fromLine, index, object))
            continue;
        // Read the sub-indices before the delete: a copy onto its own line deletes its source.
        QList<SubEntry> entries;
        const QList<quint8> subindices = source->getSubIndexList(fromLine, index);
        for (quint8 subindex : subindices) {
            SubEntry entry;
            entry.line = toLine;
            entry.index = index;
            entry.subindex = subindex;
            if (source->getSubIndex(fromLine, index, subindex, entry.data))
                entries.append(entry);
        }
        deleteIndex(toLine, index, true);
        ok = addIndex(toLine, index, object) && ok;
        ok = addSubIndices(entries) && ok;
    }
    return copyUdsSettings(source, fromLine, toLine) && ok;
}

bool ObjectDataBase::copyUdsSettings(ObjectDataBase* source, quint8 fromLine, quint8 toLine)
{
    // A line is its own service table already; emptying it first would lose it.
    if (source == this && fromLine == toLine)
        return true;

    QSqlQuery query(m_db);
    exec(query, QStringLiteral("delete from UDSSettings%1").arg(toLine));
    if (source == this)
        return exec(query, QStringLiteral("insert into UDSSettings%1 select * from UDSSettings%2")
                               .arg(toLine)
                               .arg(fromLine));

    // The other project's table lives on another connection, so its rows are carried over one by one.
    QSqlQuery rows(source->m_db);
    if (!source->exec(
            rows, QStringLiteral("select sid,active,sessions,userlevels,authentication from UDSSettings%1")
                      .arg(fromLine)))
        return false;
    bool ok = true;
    while (rows.next()) {
        const QString statement =
            QStringLiteral("insert or replace into UDSSettings%1 values(%2,%3,'%4','%5','%6')")
                .arg(number(toLine), number(rows.value(0).toInt()), number(rows.value(1).toInt()),
                     rows.value(2).toString(), rows.value(3).toString(), rows.value(4).toString());
        ok = exec(query, statement) && ok;
    }
    return ok;
}

bool ObjectDataBase::copyIndex(quint8 srcLine, quint16 srcIndex, quint8 destLine, quint16 destIndex)
{
    if (srcLine == destLine && srcIndex == destIndex)
        return true;
    return copyIndexFrom(this, srcLine, srcIndex, destLine, destIndex);
}

bool ObjectDataBase::copyIndexFromDatabase(ObjectDataBase* source, quint8 srcLine, quint16 srcIndex,
                                           quint8 destLine, quint16 destIndex)
{
    if (source == this)
        return copyIndex(srcLine, srcIndex, destLine, destIndex);
    return copyIndexFrom(source, srcLine, srcIndex, destLine, destIndex);
}

bool ObjectDataBase::copyIndexFrom(ObjectDataBase* source, quint8 srcLine, quint16 srcIndex, quint8 destLine,
                                   quint16 destIndex)
{
    INDEX_DATA_T object;
    if (!source->getIndex(srcLine, srcIndex, object))
        return false;
    // Read everything first: the source may be the destination line of this store.
    QList<QPair<quint8, SUBINDEX_DATA_T>> subindices;
    for (quint8 subindex : source->getSubIndexList(srcLine, srcIndex)) {
        SUBINDEX_DATA_T record;
        if (source->getSubIndex(srcLine, srcIndex, subindex, record))
            subindices.append({subindex, record});
    }

    // Listeners hear about each sub-index once the object is complete, not about the steps.
    const bool wasBlocked = blockSignals(true);
    deleteIndex(destLine, destIndex, true);
    bool ok = addIndex(destLine, destIndex, object);
    for (const auto& [subindex, record] : std::as_const(subindices))
        ok = addSubIndex(destLine, destIndex, subindex, record) && ok;
    blockSignals(wasBlocked);

    for (const auto& entry : std::as_const(subindices))
        notify(ChangeSet::SubIndexChanged, destLine, destIndex, entry.first);
    return ok;
}

// ---- Connections

bool ObjectDataBase::removeConsumerConnection(unsigned char line, unsigned short index,
                                              unsigned char subindex)
{
    QSqlQuery query(m_db);
    const QString statement =
        QStringLiteral("delete from Connections where connode = %1 AND conindex = %2 AND consub = %3")
            .arg(line)
            .arg(index)
            .arg(subindex);
    if (exec(query, statement))
        return true;
    qDebug() << Q_FUNC_INFO << statement << query.lastError().text();
    return false;
}

bool ObjectDataBase::removeAllConnections(unsigned char line, unsigned short index)
{
    QSqlQuery query(m_db);
    const bool produced =
        exec(query, QStringLiteral("delete from Connections where prodnode = %1 AND prodindex = %2")
                        .arg(line)
                        .arg(index));
    const bool consumed = exec(
        query,
        QStringLiteral("delete from Connections where connode = %1 AND conindex = %2").arg(line).arg(index));
    return produced && consumed;
}
