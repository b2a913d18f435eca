#include "cleanproject.h"

namespace cleanproject {

namespace {

constexpr int managedConst = 1;

} // namespace

SUBINDEX_DATA_T subRecord(int dataType, const QString& access, const QString& value)
{
    SUBINDEX_DATA_T record;
    record.name = QStringLiteral("entry");
    record.datatype = dataType;
    record.accesstype = access;
    record.defaultvalue = value;
    return record;
}

void addProjectSettings(ObjectDataBase& db)
{
    db.setGeneralSetting(QStringLiteral("co_timer_interval"), QStringLiteral("1000"));
    // The J1939 NAME and address; one entry stands for every line.
    const std::pair<const char*, const char*> name[] = {
        {"identitynumber", "4660"}, {"manufacturercode", "291"}, {"ecuinstance", "0"},
        {"functioninstance", "0"},  {"function", "128"},         {"vehiclesystem", "0"},
        {"vehicleinstance", "0"},   {"industrygroup", "0"},      {"startaddress", "128"}};
    for (const auto& [key, value] : name)
        db.setJ1939Setting(QLatin1String(key), QLatin1String(value));
}

void addLineSettings(ObjectDataBase& db, quint8 line)
{
    db.setGeneralSettingForLine(QStringLiteral("co_node_id"), QString::number(line + 1), line);
    db.setGeneralSettingForLine(QStringLiteral("receivebuffersize"), QStringLiteral("10"), line);
    db.setGeneralSettingForLine(QStringLiteral("transmitbuffersize"), QStringLiteral("5"), line);
}

namespace {

void addObject(ObjectDataBase& db, quint8 line, quint16 index, int objectCode, const QString& name)
{
    INDEX_DATA_T data;
    data.name = name;
    data.objecttype = objectCode;
    db.addIndex(line, index, data);
}

void addVariable(ObjectDataBase& db, quint8 line, quint16 index, int dataType, const QString& access,
                 const QString& value)
{
    addObject(db, line, index, 7, QStringLiteral("variable"));
    db.addSubIndex(line, index, 0, subRecord(dataType, access, value));
}

} // namespace

void addMandatoryObjects(ObjectDataBase& db, quint8 line)
{
    addVariable(db, line, 0x1000, 7, QStringLiteral("ro"), QStringLiteral("0x00000191"));
    addVariable(db, line, 0x1001, 5, QStringLiteral("ro"), QStringLiteral("0"));
    addVariable(db, line, 0x1017, 6, QStringLiteral("rw"), QStringLiteral("1000"));
    addObject(db, line, 0x1018, 9, QStringLiteral("Identity Object"));
    SUBINDEX_DATA_T count = subRecord(5, QStringLiteral("const"), QStringLiteral("4"));
    count.implementation = managedConst;
    db.addSubIndex(line, 0x1018, 0, count);
    const QStringList identity = {QStringLiteral("0x1234"), QStringLiteral("0x10"), QStringLiteral("1"),
                                  QStringLiteral("0")};
    for (int sub = 1; sub <= 4; ++sub)
        db.addSubIndex(line, 0x1018, quint8(sub), subRecord(7, QStringLiteral("ro"), identity.at(sub - 1)));
}

bool fillProject(ObjectDataBase& db, const QList<int>& lineTypes)
{
    if (!db.createNewDataBase())
        return false;
    addProjectSettings(db);
    for (qsizetype line = 0; line < lineTypes.size(); ++line) {
        if (line > 0)
            db.addNode(quint8(line), NODE_DATA_T());
        db.setLineType(quint8(line), lineTypes.at(line));
        addLineSettings(db, quint8(line));
        addMandatoryObjects(db, quint8(line));
    }
    return true;
}

bool saveCanopenProject(const QString& path, int lineType)
{
    ObjectDataBase db;
    return fillProject(db, {lineType}) && db.saveDatabase(path);
}

} // namespace cleanproject
