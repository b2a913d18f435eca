#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QString>

class ObjectDataBase;
struct INDEX_DATA_T;
struct SUBINDEX_DATA_T;

// The JSON forms in which the server shows object dictionary entries, alike
// for project lines and reference profiles. Numbers come back to the client
// as upper-case hexadecimal text, prefix included: 24641 reads "0X6041".
class MCPRecords
{
public:
    static QString indexText(quint16 index);

    // index, indexDec, name
    static QJsonObject summaryRecord(quint16 index, const QString& name);
    // Summary records of all objects of a line from 0x1000 up, ascending.
    static QJsonArray summaryList(ObjectDataBase& database, quint8 line);

    // sub, name, dataTypeCode, accessType, defaultValue, currentValue, hasDefault, size
    static QJsonObject subIndexRecord(quint8 subindex, const SUBINDEX_DATA_T& sub);

    // index, name, objectTypeCode, categoryCode, description and subs; the
    // caller adds what places the object (its line or its profile). A
    // subindex that cannot be read is left out.
    static QJsonObject indexRecord(ObjectDataBase& database, quint8 line, quint16 index,
                                   const INDEX_DATA_T& object);
};
