#include "importers/edsimporter.h"

#include "canopenlib/canopentypes.h"
#include "canopenlib/cohelper.h"
#include "canopenlib/edsparser.h"

#include <QDebug>

#include <iterator>

namespace {

// Keys of the header sections that become DescriptionSettings of the line.
// "Dummy004" with three digits is the key the project has always read; the
// standard Dummy0004 of a file is therefore not taken over.
const char* const fileInfoKeys[] = {"FileVersion", "FileRevision", "CreatedBy", "ModifiedBy"};
const char* const dummyUsageKeys[] = {"Dummy0001", "Dummy0002", "Dummy0003", "Dummy004",
                                      "Dummy0005", "Dummy0006", "Dummy0007"};
const char* const deviceInfoKeys[] = {"VendorName",   "ProductName",  "OrderCode",    "LSS_Supported",
                                      "BaudRate_10",  "BaudRate_20",  "BaudRate_50",  "BaudRate_125",
                                      "BaudRate_250", "BaudRate_500", "BaudRate_800", "BaudRate_1000",
                                      "NrOfRXPDO",    "NrOfTXPDO"};

// A PDO range holds at most this many objects.
constexpr quint32 pdoRangeSize = 0x200;
constexpr quint8 noSubIndex = 255;
// Keeps a broken "Lines" count from building a comment of billions of lines.
constexpr quint64 maximumCommentLines = 0xFFFF;

enum class PdoObjectKind
{
    Receive,
    Transmit,
    Mapping
};

struct PdoPass
{
    quint16 base;
    const char* countKey;
    PdoObjectKind kind;
};

// The communication ranges come first, so that their mapping objects are
// made together with them; the mapping ranges then only fill gaps.
const PdoPass pdoPasses[] = {{0x1400, "NrOfRXPDO", PdoObjectKind::Receive},
                             {0x1800, "NrOfTXPDO", PdoObjectKind::Transmit},
                             {0x1600, "NrOfRXPDO", PdoObjectKind::Mapping},
                             {0x1A00, "NrOfTXPDO", PdoObjectKind::Mapping}};

SUBINDEX_DATA_T entry(const QString& name, int dataType, const QString& access, const QString& value)
{
    SUBINDEX_DATA_T sub;
    sub.name = name;
    sub.datatype = dataType;
    sub.accesstype = access;
    sub.defaultvalue = value;
    return sub;
}

SUBINDEX_DATA_T toSubIndexRecord(const CANopenSubindex& from)
{
    SUBINDEX_DATA_T to;
    to.name = from.name;
    to.datatype = from.datatype;
    to.accesstype = from.accesstype;
    to.defaultvalue = from.defaultvalue;
    to.currentvalue = from.currentvalue;
    to.pdomapping = from.pdomapping;
    to.lowlimit = from.lowlimit;
    to.uplimit = from.uplimit;
    to.size = from.size;
    to.defaultineds = from.defaultineds;
    to.limitineds = from.limitineds;
    to.refuseread = from.refuseread;
    to.refusewrite = from.refusewrite;
    to.dcfcomponent = from.dcfcomponent;
    to.cyclicread = from.cyclicread;
    to.allowedaccesstypes = from.allowedaccesstypes;
    to.implementation = from.implementation;
    to.description = from.description;
    to.varname = from.varname;
    to.category = from.category;
    to.writedefaulttoeds = from.writedefaulttoeds;
    to.changedbyuser = from.changedbyuser;
    to.wizardsource = from.wizardsource;
    to.sharedlines = from.sharedlines;
    to.denotation = from.denotation;
    to.managedbyobn = from.managedbyobn;
    to.signalid = from.signalid;
    to.nvstorage = from.nvstorage;
    to.metadata = from.metadata;
    return to;
}

const EdsIniFile::Section* findSection(const EdsIniFile& file, QLatin1String name)
{
    for (const EdsIniFile::Section& section : file.sections()) {
        if (section.name.compare(name, Qt::CaseInsensitive) == 0)
            return &section;
    }
    return nullptr;
}

} // namespace

EDSImporter::EDSImporter(QObject* parent) : BaseDataImporter(parent) {}

EDSImporter::~EDSImporter() = default;

void EDSImporter::doImport()
{
    running = true;
    database->setWriteNotification(false);
    database->setUpdatesBlocked(true);

    if (!parser) {
        parser.reset(new EdsParser);
        connect(parser.data(), SIGNAL(newIndex(const CANopen::CANopenIndex&)), this,
                SLOT(newIndex(const CANopen::CANopenIndex&)));
        connect(parser.data(), SIGNAL(newSubIndex(const CANopenSubindex&)), this,
                SLOT(newSubIndex(const CANopenSubindex&)));
    }
    collectedSubIndices.clear();

    // What the parser could not read is left out; the steps behind work
    // with what arrived.
    if (!parser->LoadEds(filePath))
        qDebug() << Q_FUNC_INFO << "no objects read from" << filePath;
    database->addSubIndices(collectedSubIndices);
    collectedSubIndices.clear();

    EdsIniFile file;
    file.load(filePath);
    importSettings(file);
    generateMissingPdoObjects();
    importComments(file);

    database->setUpdatesBlocked(false);
    finishImport();
}

bool EDSImporter::inRange(quint32 index) const
{
    return index >= lowIndex && index <= highIndex;
}

void EDSImporter::newIndex(const CANopen::CANopenIndex& newInd)
{
    if (!inRange(newInd.index))
        return;
    INDEX_DATA_T object;
    object.name = newInd.name;
    object.objecttype = newInd.objecttype;
    object.datatype = newInd.datatype;
    database->addIndex(line, newInd.index, object);
    if (newInd.objecttype == CANopen::Array && newInd.compactsubobj > 0)
        addCompactSubIndices(newInd);
}

// An array with CompactSubObj describes all its subindices in its own
// section; only their names may stand in a [xxxxName] section.
void EDSImporter::addCompactSubIndices(const CANopen::CANopenIndex& object)
{
    SUBINDEX_DATA_T highest = entry(QStringLiteral("Highest subindex supported"), CAN::Unsigned8,
                                    QStringLiteral("ro"), QString::number(object.compactsubobj));
    database->addSubIndex(line, object.index, 0, highest);

    const QMap<QString, QString> names = parser->getCompactSubObjNames(object.index);
    for (quint16 sub = 1; sub <= object.compactsubobj; ++sub) {
        const QString key = QString::number(sub);
        SUBINDEX_DATA_T record =
            entry(names.contains(key) ? names.value(key) : QStringLiteral("%1 %2").arg(object.name).arg(sub),
                  object.datatype, object.accesstype, object.defaultvalue);
        record.pdomapping = object.pdomapping.toBinary() ? PDOMapping::Mappable : PDOMapping::NotMappable;
        record.defaultineds = object.defaultineds;
        collectedSubIndices.append({line, object.index, quint8(sub), record});
    }
}

void EDSImporter::newSubIndex(const CANopenSubindex& newSub)
{
    if (!inRange(newSub.index))
        return;
    collectedSubIndices.append({line, newSub.index, newSub.subindex, toSubIndexRecord(newSub)});
}

void EDSImporter::importSettings(const EdsIniFile& file)
{
    database->setDescriptionLine(line);
    auto take = [this, &file](const char* sectionName, const char* const* begin, const char* const* end) {
        const EdsIniFile::Section* section = findSection(file, QLatin1String(sectionName));
        if (!section)
            return;
        for (const char* const* key = begin; key != end; ++key) {
            const QLatin1String name(*key);
            if (section->has(name))
                database->setDescriptionSetting(name, section->value(name));
        }
    };
    take("FileInfo", std::begin(fileInfoKeys), std::end(fileInfoKeys));
    take("DummyUsage", std::begin(dummyUsageKeys), std::end(dummyUsageKeys));
    take("DeviceInfo", std::begin(deviceInfoKeys), std::end(deviceInfoKeys));

    const EdsIniFile::Section* comments = findSection(file, QLatin1String("Comments"));
    if (!comments || !comments->has(QLatin1String("lines")))
        return;
    bool ok = false;
    const quint64 count = COHelper::parseUnsigned(comments->value(QLatin1String("lines")), &ok);
    QStringList lines;
    for (quint64 i = 1; ok && i <= qMin(count, maximumCommentLines); ++i)
        lines << comments->value(QLatin1String(QByteArray("Line") + QByteArray::number(i)));
    database->setDescriptionSetting(QStringLiteral("Comment"), lines.join(QLatin1Char('\n')));
}

// Device descriptions may announce more PDOs than they define; the missing
// ones are made with the defaults of a disabled PDO.
void EDSImporter::generateMissingPdoObjects()
{
    QList<ObjectDataBase::SubEntry> subs;
    auto addObject = [this, &subs](quint16 index, const QString& name, const QList<SUBINDEX_DATA_T>& records,
                                   const QList<quint8>& numbers) {
        INDEX_DATA_T object;
        object.name = name;
        object.objecttype = CANopen::Record;
        database->addIndex(line, index, object);
        for (int i = 0; i < records.size(); ++i)
            subs.append({line, index, numbers.at(i), records.at(i)});
    };
    auto addMapping = [&addObject](quint16 index) {
        QList<SUBINDEX_DATA_T> records{entry(QStringLiteral("Number of Entries"), CAN::Unsigned8,
                                             QStringLiteral("ro"), QStringLiteral("0"))};
        QList<quint8> numbers{0};
        for (quint8 sub = 1; sub <= 8; ++sub) {
            records << entry(QStringLiteral("Mappping Entry %1").arg(sub), CAN::Unsigned32,
                             QStringLiteral("rw"), QStringLiteral("0x00000000"));
            numbers << sub;
        }
        addObject(index, QStringLiteral("Mapping Parameter"), records, numbers);
    };
    auto addCommunication = [&addObject](quint16 index, int ordinal, bool transmit) {
        const QString rw = QStringLiteral("rw");
        QList<SUBINDEX_DATA_T> records{
            entry(QStringLiteral("Number of Entries"), CAN::Unsigned8, QStringLiteral("ro"),
                  transmit ? QStringLiteral("5") : QStringLiteral("2")),
            entry(QStringLiteral("COB-ID"), CAN::Unsigned32, rw, QStringLiteral("0x80000000")),
            entry(QStringLiteral("Transmission Type"), CAN::Unsigned8, rw, QStringLiteral("0xFF"))};
        QList<quint8> numbers{0, 1, 2};
        if (transmit) {
            records << entry(QStringLiteral("Inhibit Time"), CAN::Unsigned16, rw, QStringLiteral("0"))
                    << entry(QStringLiteral("Event Timer"), CAN::Unsigned16, rw, QStringLiteral("0"));
            numbers << 3 << 5;
        }
        const QString name = transmit ? QStringLiteral("Transmit PDO parameter %1")
                                      : QStringLiteral("Receive PDO parameter %1");
        addObject(index, name.arg(ordinal), records, numbers);
    };

    for (const PdoPass& pass : pdoPasses) {
        bool ok = false;
        const quint32 announced = quint32(qMin<quint64>(
            COHelper::parseUnsigned(database->getDescriptionSetting(QLatin1String(pass.countKey)), &ok),
            pdoRangeSize));
        const quint32 present =
            quint32(database->getIndexList(line, pass.base, pass.base + pdoRangeSize - 1).size());
        if (!ok || present >= announced)
            continue;
        for (quint32 i = 0; i < announced; ++i) {
            const quint16 index = quint16(pass.base + i);
            if (database->indexExists(line, index))
                continue;
            if (pass.kind == PdoObjectKind::Mapping) {
                addMapping(index);
                continue;
            }
            addCommunication(index, int(i + 1), pass.kind == PdoObjectKind::Transmit);
            if (!database->indexExists(line, quint16(index + 0x200)))
                addMapping(quint16(index + 0x200));
        }
    }
    database->addSubIndices(subs);
}

// ";;" lines are descriptions. They belong to the section header above
// them, and a header that appears twice gets the text of each place in turn.
void EDSImporter::importComments(const EdsIniFile& file)
{
    const QStringView text = file.text();
    QString header;
    QStringList collected;
    auto flush = [this, &header, &collected]() {
        if (!collected.isEmpty())
            applyComment(header, collected.join(QLatin1Char('\n')));
        collected.clear();
    };
    qsizetype pos = 0;
    while (pos < text.size()) {
        qsizetype end = pos;
        while (end < text.size() && text[end] != QLatin1Char('\n') && text[end] != QLatin1Char('\r'))
            ++end;
        const QStringView line = text.mid(pos, end - pos);
        if (line.startsWith(QLatin1String(";;"))) {
            collected << line.mid(2).toString();
        } else if (line.startsWith(QLatin1Char('['))) {
            flush();
            header = line.toString();
        }
        pos = end + 1;
    }
    flush();
}

// Characters 2 to 5 of the header are the object; "sub" and a number behind
// it up to the bracket name a subindex, otherwise the text belongs to the
// object and its sub 0.
void EDSImporter::applyComment(const QString& header, const QString& text)
{
    const quint16 index = quint16(header.mid(1, 4).toUInt(nullptr, 16));
    quint32 sub = noSubIndex;
    // The marker is taken in lower case only, the way the tool writes its
    // sections; a comment under "[1000SUB1]" stays with the object.
    const qsizetype subAt = header.indexOf(QLatin1String("sub"));
    if (subAt >= 0) {
        const qsizetype close = header.indexOf(QLatin1Char(']'), subAt);
        sub = header.mid(subAt + 3, close < 0 ? -1 : close - subAt - 3).toUInt(nullptr, 16);
    }

    if (sub < noSubIndex) {
        SUBINDEX_DATA_T record;
        if (database->getSubIndex(line, index, quint8(sub), record)) {
            record.description = text;
            database->addSubIndex(line, index, quint8(sub), record);
        }
        return;
    }
    INDEX_DATA_T object;
    if (!database->getIndex(line, index, object))
        return;
    object.description = text;
    database->addIndex(line, index, object);
    SUBINDEX_DATA_T first;
    if (database->getSubIndex(line, index, 0, first)) {
        first.description = text;
        database->addSubIndex(line, index, 0, first);
    }
}
