#include "canopenlib/cohelper.h"
#include "common/testhelpers.h"
#include "database/objectdatabase.h"

#include <QFile>
#include <QSettings>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

int lineType(ObjectDataBase& db, quint8 line)
{
    return db.getGeneralSetting(QStringLiteral("line%1type").arg(line)).toInt();
}

bool carriesCANopen(int type)
{
    return type == 1 || type == 5 || type == 6;
}

bool carriesJ1939(int type)
{
    return type == 2 || type == 5 || type == 7;
}

// The numbers of the groups under a table of the line, such as the object indices under "Objects0".
QList<quint32> numbersInFile(QSettings& file, const QString& table, quint8 line, int base)
{
    QList<quint32> numbers;
    file.beginGroup(table + QString::number(line));
    for (const QString& group : file.childGroups())
        numbers << group.toUInt(nullptr, base);
    file.endGroup();
    std::sort(numbers.begin(), numbers.end());
    return numbers;
}

TEST(ExampleProjects, CoverTheFourKindsOfDevice)
{
    int canopenOnly = 0;
    int j1939Only = 0;
    int twoLines = 0;
    for (const QString& path : testhelpers::exampleProjects()) {
        ObjectDataBase db;
        ASSERT_TRUE(db.openTextProject(path)) << path.toStdString();
        const QList<quint8> lines = db.getNodeList();
        if (lines.size() > 1)
            ++twoLines;
        else if (lineType(db, 0) == 1)
            ++canopenOnly;
        else if (lineType(db, 0) == 2)
            ++j1939Only;
    }
    EXPECT_GE(canopenOnly, 2);
    EXPECT_GE(j1939Only, 1);
    EXPECT_GE(twoLines, 1);
}

TEST(ExampleProjects, OpenWithTheObjectsAndPgnsOfTheirFileAndKeepThemThroughAnotherSave)
{
    QTemporaryDir dir;
    for (const QString& path : testhelpers::exampleProjects()) {
        SCOPED_TRACE(path.toStdString());
        ObjectDataBase db;
        ASSERT_TRUE(db.openTextProject(path));
        QSettings file(path, QSettings::IniFormat);
        const QString copy = dir.filePath(QFileInfo(path).fileName());
        ASSERT_TRUE(db.saveDatabase(copy));
        ObjectDataBase saved;
        ASSERT_TRUE(saved.openTextProject(copy));

        for (quint8 line : db.getNodeList()) {
            const int type = lineType(db, line);
            ASSERT_TRUE(carriesCANopen(type) || carriesJ1939(type)) << int(line);
            const QList<quint16> objects = db.getIndexList(line, 0, quint32(-1));
            EXPECT_EQ(QList<quint32>(objects.cbegin(), objects.cend()),
                      numbersInFile(file, "Objects", line, 16));
            EXPECT_EQ(saved.getIndexList(line, 0, quint32(-1)), objects);
            EXPECT_EQ(carriesCANopen(type), !objects.isEmpty());
            for (quint16 index : objects) {
                INDEX_DATA_T object;
                ASSERT_TRUE(db.getIndex(line, index, object));
                const QString group = QStringLiteral("Objects%1/0x%2/").arg(line).arg(index, 0, 16);
                EXPECT_EQ(object.name, file.value(group + QStringLiteral("name")).toString());
                EXPECT_EQ(saved.getSubIndexList(line, index), db.getSubIndexList(line, index));
                for (quint8 subindex : db.getSubIndexList(line, index)) {
                    SUBINDEX_DATA_T sub;
                    ASSERT_TRUE(db.getSubIndex(line, index, subindex, sub));
                    const QString subGroup = QStringLiteral("SubObjects%1/0x%2/0x%3/")
                                                 .arg(line)
                                                 .arg(index, 0, 16)
                                                 .arg(subindex, 0, 16);
                    EXPECT_EQ(sub.defaultvalue,
                              file.value(subGroup + QStringLiteral("defaultvalue")).toString());
                    EXPECT_EQ(sub.varname, file.value(subGroup + QStringLiteral("varname")).toString());
                }
            }

            const QList<quint32> pgns = db.getPGNList(line, ObjectDataBase::Invalid);
            EXPECT_EQ(pgns, numbersInFile(file, "PGNs", line, 10));
            EXPECT_EQ(saved.getPGNList(line, ObjectDataBase::Invalid), pgns);
            EXPECT_EQ(carriesJ1939(type), !pgns.isEmpty());
        }
    }
}

// The text of a saved project without the keys that change with every save or open.
QStringList stableText(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return {};
    QStringList lines = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'));
    lines.removeIf([](const QString& line) {
        return line.startsWith(QLatin1String("FileHash=")) || line.startsWith(QLatin1String("TamperLog="));
    });
    return lines;
}

// Text projects live in version control: opening and saving one again must not
// change a byte of it, or every save shows up as a change. The same holds for a
// detour through the database form.
TEST(ExampleProjects, SavingAnOpenedTextProjectAgainGivesTheSameText)
{
    QTemporaryDir dir;
    auto resave = [](const QString& from, const QString& to) {
        ObjectDataBase db;
        return db.openDataBase(from, true) && db.saveDatabase(to);
    };
    for (const QString& path : testhelpers::exampleProjects()) {
        SCOPED_TRACE(path.toStdString());
        const QString first = dir.filePath(QStringLiteral("first.trwt"));
        const QString second = dir.filePath(QStringLiteral("second.trwt"));
        const QString database = dir.filePath(QStringLiteral("database.trwp"));
        const QString third = dir.filePath(QStringLiteral("third.trwt"));
        ASSERT_TRUE(resave(path, first));
        ASSERT_TRUE(resave(first, second));
        ASSERT_TRUE(resave(first, database));
        ASSERT_TRUE(resave(database, third));

        const QStringList firstText = stableText(first);
        ASSERT_FALSE(firstText.isEmpty());
        EXPECT_EQ(stableText(second), firstText);
        EXPECT_EQ(stableText(third), firstText);
    }
}

// The example devices are written by hand; their PDOs must map what exists,
// with the size of its type, and enabled PDOs must carry a mapping.
TEST(ExampleProjects, PdoMappingsReferToMappableObjectsOfTheirSize)
{
    for (const QString& path : testhelpers::exampleProjects()) {
        SCOPED_TRACE(path.toStdString());
        ObjectDataBase db;
        ASSERT_TRUE(db.openTextProject(path));
        for (quint8 line : db.getNodeList()) {
            for (quint16 mappingIndex : db.getIndexList(line, 0x1600, 0x1BFF)) {
                if (mappingIndex >= 0x1800 && mappingIndex < 0x1A00)
                    continue;
                SUBINDEX_DATA_T count;
                SUBINDEX_DATA_T cobId;
                ASSERT_TRUE(db.getSubIndex(line, mappingIndex, 0, count));
                ASSERT_TRUE(db.getSubIndex(line, mappingIndex - 0x200, 1, cobId)) << std::hex << mappingIndex;
                const int entries = count.defaultvalue.toInt();
                const quint32 cobIdValue =
                    QString(cobId.defaultvalue).remove(QStringLiteral("$NODEID+")).toUInt(nullptr, 0);
                const bool enabled = (cobIdValue & 0x80000000u) == 0;
                EXPECT_EQ(enabled, entries > 0) << std::hex << mappingIndex;
                int bits = 0;
                for (int entry = 1; entry <= entries; ++entry) {
                    SUBINDEX_DATA_T mapping;
                    ASSERT_TRUE(db.getSubIndex(line, mappingIndex, entry, mapping));
                    EXPECT_EQ(mapping.accesstype, count.accesstype);
                    const quint32 value = mapping.defaultvalue.toUInt(nullptr, 16);
                    SUBINDEX_DATA_T mapped;
                    ASSERT_TRUE(db.getSubIndex(line, value >> 16, (value >> 8) & 0xFF, mapped))
                        << std::hex << mappingIndex << " entry " << entry;
                    EXPECT_FALSE(mapped.pdomapping.isEqualToType(PDOMapping::PDOMappingType(0)));
                    EXPECT_EQ(value & 0xFF, COHelper::getDataLengthBits(
                                                static_cast<CAN::CANopenDataType>(mapped.datatype)));
                    bits += value & 0xFF;
                }
                EXPECT_LE(bits, 64);
            }
        }
    }
}

// SPNs of one PGN follow each other in pos order without sharing a bit.
TEST(ExampleProjects, SpnsFitTheirPgnWithoutOverlap)
{
    for (const QString& path : testhelpers::exampleProjects()) {
        SCOPED_TRACE(path.toStdString());
        ObjectDataBase db;
        ASSERT_TRUE(db.openTextProject(path));
        for (quint8 line : db.getNodeList()) {
            for (quint8 direction : {quint8(ObjectDataBase::Transmit), quint8(ObjectDataBase::Receive)}) {
                for (quint32 pgn : db.getPGNList(line, direction)) {
                    const QList<quint32> spns = db.getSPNList(line, pgn, direction);
                    EXPECT_EQ(db.getPGNMappingCount(line, pgn, direction), spns.size()) << pgn;
                    quint32 end = 0;
                    for (quint32 number : spns) {
                        ObjectDataBase::SPN spn;
                        ASSERT_TRUE(db.getSPN(line, pgn, direction, number, spn));
                        EXPECT_GE(spn.bitposition, end) << pgn << " SPN " << number;
                        EXPECT_EQ(spn.bitsize, COHelper::getDataLengthBits(
                                                   static_cast<CAN::CANopenDataType>(spn.datatype)));
                        end = spn.bitposition + spn.bitsize;
                    }
                    EXPECT_LE(end, 64u) << pgn;
                }
            }
        }
    }
}

} // namespace
