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

void changeObject(ObjectDataBase& db, quint8 line, quint16 index,
                  const std::function<void(INDEX_DATA_T&)>& change)
{
    INDEX_DATA_T object;
    db.getIndex(line, index, object);
    change(object);
    db.addIndex(line, index, object);
}

void changeSub(ObjectDataBase& db, quint8 line, quint16 index, quint8 subindex,
               const std::function<void(SUBINDEX_DATA_T&)>& change)
{
    SUBINDEX_DATA_T sub;
    db.getSubIndex(line, index, subindex, sub);
    change(sub);
    db.addSubIndex(line, index, subindex, sub);
}

bool addPgn(ObjectDataBase& db, quint8 line, quint32 number, ObjectDataBase::PGN pgn,
            QList<ObjectDataBase::SPN> spns)
{
    pgn.number = number;
    pgn.mappingcount = quint16(spns.size());
    bool ok = db.addPGN(line, number, pgn);
    for (ObjectDataBase::SPN& spn : spns) {
        spn.pgnnumber = number;
        spn.direction = pgn.direction;
        ok = db.addSPN(line, number, pgn.direction, spn.spnnumber, spn) && ok;
    }
    return ok;
}

bool addCanId(ObjectDataBase& db, quint8 line, quint32 id, ObjectDataBase::CANID canId,
              QList<ObjectDataBase::DataElement> elements)
{
    canId.id = id;
    canId.mappingcount = quint16(elements.size());
    bool ok = db.addCANID(line, id, canId);
    for (ObjectDataBase::DataElement& element : elements) {
        element.canid = id;
        element.direction = canId.direction;
        ok = db.addDataElement(line, id, canId.direction, element.number, element) && ok;
    }
    return ok;
}

namespace {

template <typename Signal> QList<Signal> packedBy(QList<Signal> list, quint16 Signal::*firstBit)
{
    quint16 bit = 0;
    for (qsizetype place = 0; place < list.size(); ++place) {
        list[place].pos = quint32(place);
        list[place].*firstBit = bit;
        bit += list[place].bitsize;
    }
    return list;
}

} // namespace

QList<ObjectDataBase::SPN> packed(QList<ObjectDataBase::SPN> spns)
{
    return packedBy(spns, &ObjectDataBase::SPN::bitposition);
}

QList<ObjectDataBase::DataElement> packed(QList<ObjectDataBase::DataElement> elements)
{
    return packedBy(elements, &ObjectDataBase::DataElement::bitpos);
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
