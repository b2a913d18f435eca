#include "importers/csvimporter.h"

#include "canopenlib/canopentypes.h"
#include "canopenlib/cohelper.h"
#include "canopenlib/helper.h"

namespace {

// The columns the importer knows; others are read over.
const char* const knownColumns[] = {"index",     "sub",      "datatype",       "access",      "varname",
                                    "nvstorage", "edsname",  "value",          "description", "objectcode",
                                    "size",      "mapable",  "implementation", "hasdefault",  "defaultineds",
                                    "line",      "lowlimit", "uplimit",        "haslimit"};

// A data line needs at least the index and four more fields to say anything.
constexpr qsizetype minimumDataFields = 5;

quint32 objectKey(quint8 line, quint16 index)
{
    return quint32(line) << 16 | index;
}

// Mapping parameters whose entries a device may change at run time.
bool inDynamicMappingRange(quint16 index)
{
    return (index >= 0x1600 && index <= 0x17FF) || (index >= 0x1A00 && index <= 0x1BFF);
}

// The name of an object whose line gives none.
QString defaultObjectName(quint16 index)
{
    return QStringLiteral("Object_%1").arg(index, 4, 16, QLatin1Char('0'));
}

bool isCompound(int objectCode)
{
    return objectCode == CANopen::Array || objectCode == CANopen::Record;
}

// A number with base detection; empty text gives the fallback.
bool readNumber(const QString& text, quint64 limit, quint64 fallback, quint64& out)
{
    if (text.trimmed().isEmpty()) {
        out = fallback;
        return true;
    }
    bool ok = false;
    out = COHelper::parseUnsigned(text, &ok);
    return ok && out <= limit;
}

// The word of an implementation column, as the ICSV file writes it; -1 for
// "none" and anything else.
int implementationOf(const QString& word)
{
    for (int kind = CANopen::ManagedVariable; kind <= CANopen::VirtualObject; ++kind) {
        if (word == COHelper::implementation2String(quint8(kind)).toLower())
            return kind;
    }
    return -1;
}

} // namespace

// The fields of one data line, found by the column names of the header.
class CsvImporter::Row
{
public:
    Row(const QStringList& fields, const QStringList& columns) : m_fields(fields), m_columns(columns) {}

    // Empty when the header has no such column.
    QString text(const char* column) const
    {
        const qsizetype position = m_columns.indexOf(QLatin1String(column));
        return position < 0 ? QString() : m_fields.value(position);
    }
    QString word(const char* column) const { return text(column).trimmed().toLower(); }

private:
    const QStringList& m_fields;
    const QStringList& m_columns;
};

CsvImporter::CsvImporter(QObject* parent) : BaseDataImporter(parent) {}

void CsvImporter::doImport()
{
    running = true;
    database->setWriteNotification(false);
    database->setUpdatesBlocked(true);

    QStringList lines;
    readSourceLines(lines);
    bool headerRead = false;
    for (const QString& text : std::as_const(lines)) {
        if (text.trimmed().isEmpty() || text.startsWith(QLatin1Char('#')))
            continue;
        if (!headerRead) {
            readHeader(text);
            headerRead = true;
        } else if (text.startsWith(QLatin1Char('d'))) {
            handleDeleteLine(text);
        } else if (text.startsWith(QLatin1Char('c'))) {
            handleCopyLine(text);
        } else {
            handleDataLine(text);
        }
    }

    if (importedSubIndices == 0)
        reportNothingImported();
    database->setUpdatesBlocked(false);
    finishImport();
}

void CsvImporter::getDeleteList(QList<SubAddress>& deleteListRef)
{
    deleteListRef = deleteList;
}

void CsvImporter::getCopyList(QList<SubAddress>& copyListRef)
{
    copyListRef = copyList;
}

// The header alone decides the separator; a spreadsheet of a country that
// writes decimal commas separates with ";".
void CsvImporter::readHeader(const QString& text)
{
    if (text.contains(QLatin1Char(',')))
        separator = QLatin1Char(',');
    else if (text.contains(QLatin1Char(';')))
        separator = QLatin1Char(';');
    columns = splitFields(text.toLower());
    for (QString& column : columns)
        column = column.trimmed();
    neededFields = 0;
    for (const char* known : knownColumns)
        neededFields = qMax(neededFields, columns.indexOf(QLatin1String(known)) + 1);
}

// "d,index" deletes an object, "d,index,sub" one subindex.
void CsvImporter::handleDeleteLine(const QString& text)
{
    const QStringList fields = splitFields(text);
    if (fields.size() != 2 && fields.size() != 3)
        return;
    quint64 index = 0;
    quint64 sub = 0;
    if (!readNumber(fields.at(1), 0xFFFF, 0, index) || index == 0)
        return;
    const bool wholeObject = fields.size() == 2;
    if (!wholeObject && !readNumber(fields.at(2), 0xFF, 0, sub))
        return;
    deleteList.append({line, quint16(index), quint8(sub), wholeObject});
}

// "c,index,destination" copies an object, "c,index,sub,destination sub" one
// subindex inside its object. Source and destination follow each other in the list.
void CsvImporter::handleCopyLine(const QString& text)
{
    const QStringList fields = splitFields(text);
    if (fields.size() != 3 && fields.size() != 4)
        return;
    quint64 index = 0;
    if (!readNumber(fields.at(1), 0xFFFF, 0, index) || index == 0)
        return;
    if (fields.size() == 3) {
        quint64 destination = 0;
        if (!readNumber(fields.at(2), 0xFFFF, 0, destination) || destination == 0 || destination == index)
            return;
        copyList.append({line, quint16(index), 0, true});
        copyList.append({line, quint16(destination), 0, true});
        return;
    }
    quint64 sub = 0;
    quint64 destinationSub = 0;
    if (!readNumber(fields.at(2), 0xFF, 0, sub) || !readNumber(fields.at(3), 0xFF, 0, destinationSub) ||
        sub == destinationSub)
        return;
    copyList.append({line, quint16(index), quint8(sub), false});
    copyList.append({line, quint16(index), quint8(destinationSub), false});
}

// An ICSV file gives an ARRAY or RECORD a head line with an empty subindex
// ahead of its subindex 0; it reads as a subindex 0 line, which creates the
// object with its name, and the real subindex 0 line behind it overwrites the
// subindex.
void CsvImporter::handleDataLine(const QString& text)
{
    const QStringList fields = splitFields(text);
    const Row row(fields, columns);
    quint64 index = 0;
    if (fields.size() < minimumDataFields || !readNumber(row.text("index"), 0xFFFF, 0, index) || index == 0)
        return;
    quint64 sub = 0;
    quint64 targetLine = line;
    if (fields.size() < neededFields || index < lowIndex || index > highIndex ||
        !readNumber(row.text("sub"), 0xFF, 0, sub))
        return;
    const QString lineText = row.text("line").trimmed();
    if (!lineText.isEmpty()) {
        bool ok = false;
        targetLine = lineText.toUInt(&ok, 10);
        if (!ok || targetLine > 0xFF)
            return;
    }

    int dataType = COHelper::mapDataTypeString(row.word("datatype"));
    // The ICSV file heads every object but a VAR with a line of an empty
    // subindex, and writes a code word only for ARRAY and RECORD: a head line
    // without one stands for the remaining kind of object with a subindex 0 of
    // its own, a DOMAIN.
    const QString codeWord = row.text("objectcode").trimmed();
    const bool headLine = columns.contains(QLatin1String("sub")) && row.text("sub").trimmed().isEmpty();
    int lineCode = CANopen::Var;
    if (!codeWord.isEmpty())
        lineCode = COHelper::string2objectCode(codeWord);
    else if (headLine)
        lineCode = CANopen::Domain;
    const quint32 key = objectKey(quint8(targetLine), quint16(index));
    ObjectState& object = objectState(quint8(targetLine), quint16(index));

    if (sub == 0) {
        if (lineCode == CANopen::Array) {
            typedObject = key;
            typedObjectDataType = dataType;
        }
        QString name = row.text("edsname");
        if (name.isEmpty() && lineCode == CANopen::Var)
            name = defaultObjectName(quint16(index));
        if (!object.exists)
            addObject(quint8(targetLine), quint16(index), lineCode, name, dataType,
                      row.text("description").replace(Helper::csvDescLinebreak, QStringLiteral("\n")));
    } else {
        if (dataType == CAN::Unknown && typedObject == key)
            dataType = typedObjectDataType;
        // A subindex beyond 0 needs an object with subindices.
        if (!object.exists)
            addObject(quint8(targetLine), quint16(index),
                      lineCode == CANopen::Var ? CANopen::Record : lineCode,
                      defaultObjectName(quint16(index)), CAN::Unknown, QString());
        if (!object.hasSubZero)
            addSubZero(quint8(targetLine), quint16(index), row);
    }

    const SUBINDEX_DATA_T record =
        subIndexRecord(row, quint16(index), quint8(sub), dataType, object.objectCode);
    if (!database->addSubIndex(quint8(targetLine), quint16(index), quint8(sub), record))
        return;
    ++importedSubIndices;
    if (sub == 0)
        object.hasSubZero = true;
}

// A double quote opens a quoted field, in which a doubled quote stands for
// one and the separator is text, as spreadsheets write them. A quote left
// open runs to the end of the line.
QStringList CsvImporter::splitFields(const QString& text) const
{
    const QLatin1Char quote('"');
    QStringList fields;
    qsizetype pos = 0;
    const qsizetype size = text.size();
    while (true) {
        QString field;
        if (pos < size && text.at(pos) == quote) {
            ++pos;
            while (pos < size) {
                const qsizetype next = text.indexOf(quote, pos);
                if (next < 0) {
                    field += QStringView(text).mid(pos);
                    pos = size;
                } else if (next + 1 < size && text.at(next + 1) == quote) {
                    field += QStringView(text).mid(pos, next + 1 - pos);
                    pos = next + 2;
                } else {
                    field += QStringView(text).mid(pos, next - pos);
                    pos = next + 1;
                    break;
                }
            }
        }
        qsizetype end = text.indexOf(separator, pos);
        if (end < 0)
            end = size;
        field += QStringView(text).mid(pos, end - pos);
        fields.append(field);
        if (end >= size)
            return fields;
        pos = end + 1;
    }
}

CsvImporter::ObjectState& CsvImporter::objectState(quint8 targetLine, quint16 index)
{
    const quint32 key = objectKey(targetLine, index);
    auto found = objects.find(key);
    if (found != objects.end())
        return *found;
    ObjectState state;
    INDEX_DATA_T stored;
    if (database->getIndex(targetLine, index, stored)) {
        state.exists = true;
        state.objectCode = stored.objecttype;
        state.hasSubZero = database->subIndexExists(targetLine, index, 0);
    }
    return *objects.insert(key, state);
}

void CsvImporter::addObject(quint8 targetLine, quint16 index, int objectCode, const QString& name,
                            int dataType, const QString& description)
{
    INDEX_DATA_T object;
    object.objecttype = objectCode;
    if (!name.isEmpty())
        object.name = name;
    if (dataType != CAN::Unknown)
        object.datatype = dataType;
    object.description = description;
    if (!database->addIndex(targetLine, index, object))
        return;
    ObjectState& state = objects[objectKey(targetLine, index)];
    state.exists = true;
    state.objectCode = objectCode;
}

void CsvImporter::addSubZero(quint8 targetLine, quint16 index, const Row& row)
{
    SUBINDEX_DATA_T highest;
    highest.name = QStringLiteral("Highest Subindex supported");
    highest.datatype = CAN::Unsigned8;
    highest.accesstype = QStringLiteral("ro");
    highest.defaultineds = true;
    if (row.word("implementation") == QLatin1String("virtualobject"))
        highest.implementation = CANopen::VirtualObject;
    if (database->addSubIndex(targetLine, index, 0, highest))
        objects[objectKey(targetLine, index)].hasSubZero = true;
}

SUBINDEX_DATA_T CsvImporter::subIndexRecord(const Row& row, quint16 index, quint8 sub, int dataType,
                                            int objectCode) const
{
    SUBINDEX_DATA_T record;
    const QString name = row.text("edsname");
    if (!name.isEmpty())
        record.name = name;
    else if (sub == 0 && objectCode == CANopen::Var)
        record.name = defaultObjectName(quint16(index));

    const QString varname = row.text("varname").trimmed();
    if (!varname.isEmpty()) {
        record.implementation = CANopen::ApplicationVariable;
        record.varname = varname;
    }
    const QString access = COHelper::normalizeAccessType(row.word("access"));
    record.datatype = dataType == CAN::Unknown ? CAN::Unsigned8 : dataType;
    if (sub == 0 && isCompound(objectCode)) {
        record.datatype = CAN::Unsigned8;
        record.defaultineds = true;
        record.writedefaulttoeds = 1;
    }
    if (inDynamicMappingRange(index) && access == QLatin1String("rw"))
        record.implementation = CANopen::ManagedVariable;

    record.accesstype = access;
    COHelper::getDefaultLimits(CAN::CANopenDataType(record.datatype), record.lowlimit, record.uplimit);
    const QString lowLimit = row.text("lowlimit").trimmed();
    const QString upLimit = row.text("uplimit").trimmed();
    if (!lowLimit.isEmpty())
        record.lowlimit = lowLimit;
    if (!upLimit.isEmpty())
        record.uplimit = upLimit;
    const QString hasLimit = row.word("haslimit");
    record.limitineds =
        hasLimit.isEmpty() ? !lowLimit.isEmpty() || !upLimit.isEmpty() : hasLimit == QLatin1String("yes");
    if (const int size = row.text("size").trimmed().toInt(); size > 0)
        record.size = size;

    // The ICSV file names the implementation of every subindex; a file
    // without it leaves the choice to the access and the data type.
    const int named = implementationOf(row.word("implementation"));
    if (named >= 0) {
        record.implementation = named;
    } else if (row.word("datatype") == QLatin1String("u8s") || access == QLatin1String("const")) {
        record.implementation = CANopen::ManagedConst;
    } else if (record.datatype == CAN::Domain) {
        record.implementation = CANopen::ApplicationVariable;
    }
    if (record.implementation == CANopen::ApplicationVariable && record.varname.isEmpty() &&
        record.datatype == CAN::Domain)
        record.varname = QStringLiteral("v_%1%2").arg(index).arg(sub);

    record.nvstorage = row.word("nvstorage") == QLatin1String("yes");
    record.defaultvalue = row.text("value");
    record.description = row.text("description").replace(Helper::csvDescLinebreak, QStringLiteral("\n"));
    record.pdomapping = PDOMapping::fromCSVString(row.text("mapable"));
    const QString hasDefault = row.word("hasdefault");
    if (!hasDefault.isEmpty())
        record.defaultineds = hasDefault == QLatin1String("yes") || hasDefault.toInt() != 0;
    bool ok = false;
    const uint writeDefault = row.word("defaultineds").toUInt(&ok);
    if (ok && writeDefault <= 2)
        record.writedefaulttoeds = quint8(writeDefault);
    return record;
}
