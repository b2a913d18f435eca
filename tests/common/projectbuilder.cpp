#include "common/projectbuilder.h"

namespace projectbuilder {

Sub::Sub(quint8 subindex, const QString& name, int datatype, const QString& defaultvalue,
         const QString& accesstype, int implementation, bool nvstorage)
    : subindex(subindex), name(name), datatype(datatype), defaultvalue(defaultvalue), accesstype(accesstype),
      implementation(implementation), nvstorage(nvstorage)
{
}

Sub::Sub(quint8 subindex, int datatype, const QString& defaultvalue, int implementation,
         const QString& accesstype, const QString& varname, int size)
    : subindex(subindex), name(QStringLiteral("sub %1").arg(subindex)), datatype(datatype),
      defaultvalue(defaultvalue), accesstype(accesstype), implementation(implementation), varname(varname),
      size(size)
{
}

SUBINDEX_DATA_T Sub::record() const
{
    SUBINDEX_DATA_T sub;
    sub.name = name;
    sub.datatype = datatype;
    sub.defaultvalue = defaultvalue;
    sub.accesstype = accesstype;
    sub.implementation = implementation;
    sub.nvstorage = nvstorage;
    sub.varname = varname;
    sub.size = size;
    return sub;
}

void addLine(ObjectDataBase& db, quint8 line, int type)
{
    if (line != 0)
        db.addNode(line, NODE_DATA_T());
    db.setLineType(line, type);
}

void addObject(ObjectDataBase& db, quint8 line, quint16 index, const QString& name, int objectType,
               QList<Sub> subs)
{
    INDEX_DATA_T object;
    object.name = name;
    object.objecttype = objectType;
    db.addIndex(line, index, object);
    if (subs.isEmpty())
        subs << Sub{0, name};
    for (const Sub& sub : std::as_const(subs))
        db.addSubIndex(line, index, sub.subindex, sub.record());
}

void addObject(ObjectDataBase& db, quint8 line, quint16 index, int objectType, const QList<Sub>& subs)
{
    INDEX_DATA_T object;
    object.name = QStringLiteral("object %1").arg(index, 4, 16, QLatin1Char('0'));
    object.objecttype = objectType;
    object.datatype = subs.size() == 1 ? subs.first().datatype : CAN::Unsigned8;
    db.addIndex(line, index, object);
    for (const Sub& sub : subs)
        db.addSubIndex(line, index, sub.subindex, sub.record());
}

void cacheLines(ObjectDataBase& db)
{
    const QList<quint8> lines = db.getNodeList();
    for (quint8 line : lines) {
        db.cacheAllSubs(line, 0);
        db.cacheSubNames(line, 0);
        db.cacheAllSPNs(line);
    }
    db.loadStringPool();
}

} // namespace projectbuilder
