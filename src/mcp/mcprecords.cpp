#include "mcp/mcprecords.h"

#include "database/objectdatabase.h"

namespace {

// Objects below are data types and are not shown.
constexpr quint32 firstObjectIndex = 0x1000;

} // namespace

QString MCPRecords::indexText(quint16 index)
{
    return QStringLiteral("0x%1").arg(index, 4, 16, QLatin1Char('0')).toUpper();
}

QJsonObject MCPRecords::summaryRecord(quint16 index, const QString& name)
{
    return QJsonObject{{QStringLiteral("index"), indexText(index)},
                       {QStringLiteral("indexDec"), int(index)},
                       {QStringLiteral("name"), name}};
}

QJsonArray MCPRecords::summaryList(ObjectDataBase& database, quint8 line)
{
    QJsonArray list;
    for (quint16 index : database.getIndexList(line, firstObjectIndex, quint32(-1))) {
        INDEX_DATA_T object;
        database.getIndex(line, index, object);
        list.append(summaryRecord(index, object.name));
    }
    return list;
}

QJsonObject MCPRecords::subIndexRecord(quint8 subindex, const SUBINDEX_DATA_T& sub)
{
    return QJsonObject{{QStringLiteral("sub"), int(subindex)},
                       {QStringLiteral("name"), sub.name},
                       {QStringLiteral("dataTypeCode"), sub.datatype},
                       {QStringLiteral("accessType"), sub.accesstype},
                       {QStringLiteral("defaultValue"), sub.defaultvalue},
                       {QStringLiteral("currentValue"), sub.currentvalue},
                       {QStringLiteral("hasDefault"), sub.defaultineds},
                       {QStringLiteral("size"), sub.size}};
}

QJsonObject MCPRecords::indexRecord(ObjectDataBase& database, quint8 line, quint16 index,
                                    const INDEX_DATA_T& object)
{
    QJsonArray subs;
    for (quint8 subindex : database.getSubIndexList(line, index)) {
        SUBINDEX_DATA_T sub;
        if (database.getSubIndex(line, index, subindex, sub))
            subs.append(subIndexRecord(subindex, sub));
    }
    return QJsonObject{{QStringLiteral("index"), indexText(index)},
                       {QStringLiteral("name"), object.name},
                       {QStringLiteral("objectTypeCode"), object.objecttype},
                       {QStringLiteral("categoryCode"), object.category},
                       {QStringLiteral("description"), object.description},
                       {QStringLiteral("subs"), subs}};
}
