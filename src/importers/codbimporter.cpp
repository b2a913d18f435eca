#include "importers/codbimporter.h"

#include "canopenlib/cohelper.h"
#include "database/objectdatabase.h"

#include <QDebug>
#include <QFile>
#include <QRegularExpression>
#include <QTextStream>

namespace {

// Field positions of a line.
enum Field
{
    IndexField = 0,
    SubIndexField = 1,
    NameField = 2,
    CategoryField = 3,
    ObjectTypeField = 5,
    DataTypeField = 7,
    AccessField = 9,
    AllowedAccessField = 10,
    LowLimitField = 15,
    UpLimitField = 17,
    DefaultValueField = 19,
    MappingWord1Field = 21,
    MappingWord2Field = 22,
};

QString field(const QStringList& fields, int position)
{
    return fields.value(position);
}

QString accessType(const QStringList& fields)
{
    const QString access = field(fields, AccessField);
    return access.isEmpty() ? QStringLiteral("ro") : access;
}

// "d[const,ro]" gives "const,ro"; the brackets are not checked.
QString allowedAccessTypes(const QStringList& fields, const QString& fallback)
{
    const QString text = field(fields, AllowedAccessField);
    return text.isEmpty() ? fallback : text.mid(2, text.size() - 3);
}

PDOMapping pdoMapping(const QStringList& fields)
{
    const QString word1 = field(fields, MappingWord1Field);
    const QString word2 = field(fields, MappingWord2Field);
    const bool mappable = word1 == QLatin1String("y") || (word1.isEmpty() && word2 == QLatin1String("d"));
    return mappable ? PDOMapping::Mappable : PDOMapping::NotMappable;
}

quint16 hexNumber(const QString& text)
{
    return static_cast<quint16>(text.toUInt(nullptr, 16));
}

// The number behind the last match of pattern, read in base; 0 without a match.
quint64 lastNumber(const QString& text, const QRegularExpression& pattern, int base)
{
    QString last;
    for (auto it = pattern.globalMatch(text); it.hasNext();)
        last = it.next().captured(0);
    if (base == 16)
        last = last.mid(2);
    return last.toULongLong(nullptr, base);
}

const QRegularExpression& decimalPattern()
{
    static const QRegularExpression pattern(QStringLiteral("[0-9]+"));
    return pattern;
}

const QRegularExpression& hexPattern()
{
    static const QRegularExpression pattern(QStringLiteral("0x[0-9A-Fa-f]+"));
    return pattern;
}

} // namespace

CODBImporter::CODBImporter(QObject* parent) : BaseDataImporter(parent) {}

void CODBImporter::doImport()
{
    running = true;
    QFile file(filePath);
    if (database) {
        database->setUpdatesBlocked(false);
        if (file.open(QIODevice::ReadOnly | QIODevice::Text)) {
            QTextStream stream(&file);
            for (QString text = stream.readLine(); !text.isNull(); text = stream.readLine())
                importLine(text);
        } else {
            qDebug() << Q_FUNC_INFO << "cannot open" << filePath;
        }
    }
    finishImport();
}

void CODBImporter::importLine(const QString& text)
{
    if (text.isEmpty() || text.startsWith(QLatin1Char('#')))
        return;
    if (text.startsWith(QLatin1Char('$'))) {
        if (applyCopyRules)
            applyCopyRule(text);
        return;
    }
    const QStringList fields = text.split(QLatin1Char(':'));
    if (text.mid(4, 2) == QLatin1String("::"))
        importObjectLine(fields);
    else
        importSubIndexLine(fields);
}

void CODBImporter::applyCopyRule(const QString& text)
{
    static const QRegularExpression rule(QStringLiteral("^\\$([0-9A-Fa-f]{4})=([0-9A-Fa-f]{4})"));
    const QRegularExpressionMatch match = rule.match(text);
    if (match.hasMatch())
        database->copyIndex(line, hexNumber(match.captured(2)), line, hexNumber(match.captured(1)));
}

void CODBImporter::importObjectLine(const QStringList& fields)
{
    const quint16 index = hexNumber(field(fields, IndexField));
    if (index < lowIndex || index > highIndex)
        return;
    const QString objectType = field(fields, ObjectTypeField);
    if (objectType == QLatin1String("VAR")) {
        importVarObject(index, fields);
        return;
    }
    INDEX_DATA_T object;
    if (objectType == QLatin1String("ARRAY"))
        object.objecttype = CANopen::Array;
    else if (objectType == QLatin1String("RECORD"))
        object.objecttype = CANopen::Record;
    else
        return;
    object.name = field(fields, NameField);
    database->addIndex(line, index, object);
}

void CODBImporter::importVarObject(quint16 index, const QStringList& fields)
{
    INDEX_DATA_T object;
    object.name = field(fields, NameField);
    object.objecttype = CANopen::Var;
    object.category = COHelper::convertCategory(field(fields, CategoryField));

    SUBINDEX_DATA_T sub;
    fillCommonFields(sub, fields);
    sub.name = object.name;
    object.datatype = sub.datatype;
    sub.defaultvalue = field(fields, DefaultValueField);
    COHelper::getDefaultLimits(CAN::CANopenDataType(sub.datatype), sub.lowlimit, sub.uplimit);
    applyTypeRules(index, 0, sub);

    database->addIndex(line, index, object);
    database->addSubIndex(line, index, 0, sub);
}

void CODBImporter::importSubIndexLine(const QStringList& fields)
{
    const quint16 index = hexNumber(field(fields, IndexField));
    const quint8 subindex = static_cast<quint8>(hexNumber(field(fields, SubIndexField)));

    SUBINDEX_DATA_T sub;
    fillCommonFields(sub, fields);
    sub.defaultvalue = field(fields, DefaultValueField);
    sub.writedefaulttoeds = (sub.defaultvalue.isEmpty() && subindex != 0) ? 0 : 1;
    sub.defaultineds = true;
    fillLimits(sub, field(fields, LowLimitField), field(fields, UpLimitField));
    adjustToExistingIndex(index, subindex, sub);
    applyTypeRules(index, subindex, sub);
    database->addSubIndex(line, index, subindex, sub);
}

void CODBImporter::fillCommonFields(SUBINDEX_DATA_T& sub, const QStringList& fields) const
{
    sub.name = field(fields, NameField);
    sub.datatype = COHelper::mapDataTypeString(field(fields, DataTypeField));
    sub.accesstype = accessType(fields);
    sub.allowedaccesstypes = allowedAccessTypes(fields, sub.allowedaccesstypes);
    sub.pdomapping = pdoMapping(fields);
}

// The database's limit fields are kept as text; the profile texts are reduced
// to numbers here, and a "$NODEID" in the upper limit leaves its trace as a
// trailing "127" on the digits.
void CODBImporter::fillLimits(SUBINDEX_DATA_T& sub, const QString& lowText, const QString& upText)
{
    if (lowText.isEmpty() || lowText == QLatin1String("d") || lowText == QLatin1String("n")) {
        COHelper::getDefaultLimits(CAN::CANopenDataType(sub.datatype), sub.lowlimit, sub.uplimit);
    } else {
        sub.lowlimit = decimalPattern().match(lowText).captured(0);
        const QRegularExpressionMatch hex = hexPattern().match(lowText);
        if (hex.hasMatch())
            sub.lowlimit = hex.captured(0);
        sub.uplimit = upLimitFromText(upText);
    }
    sub.limitineds = false;
}

QString CODBImporter::upLimitFromText(const QString& upText)
{
    const quint64 decimal = lastNumber(upText, decimalPattern(), 10);
    const quint64 hex = lastNumber(upText, hexPattern(), 16);
    QString limit = QString::number(qMax(decimal, hex));
    if (upText.contains(QLatin1String("NODEID")))
        limit += QLatin1String("127");
    return limit;
}

void CODBImporter::adjustToExistingIndex(quint16 index, quint8 subindex, SUBINDEX_DATA_T& sub)
{
    INDEX_DATA_T object;
    if (!database->getIndex(line, index, object))
        return;
    if (subindex == 1 && object.objecttype == CANopen::Array) {
        object.datatype = sub.datatype;
        database->addIndex(line, index, object);
    }
    const bool structured = object.objecttype == CANopen::Array || object.objecttype == CANopen::Record;
    if (subindex == 0 && structured && index >= 0x2000)
        sub.implementation = CANopen::ManagedConst;
}

void CODBImporter::applyTypeRules(quint16 index, quint8 subindex, SUBINDEX_DATA_T& sub)
{
    if (sub.datatype == CAN::Domain) {
        sub.implementation = CANopen::ApplicationVariable;
        sub.varname = QStringLiteral("v_%1%2").arg(index).arg(subindex);
    } else if (sub.datatype == CAN::VisibleString) {
        sub.implementation = CANopen::ManagedConst;
        if (sub.defaultvalue.isEmpty()) {
            sub.defaultvalue = QStringLiteral(" ");
            sub.size = 1;
        }
    }
}
