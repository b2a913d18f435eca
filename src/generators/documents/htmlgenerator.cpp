#include "generators/documents/htmlgenerator.h"

#include "canopenlib/cohelper.h"
#include "canopenlib/helper.h"
#include "database/objectdatabase.h"

#include <QDateTime>
#include <QTextStream>

using namespace Qt::Literals::StringLiterals;

HTMLGenerator::HTMLGenerator(QObject* parent) : HtmlPageGenerator(Layout::ObjectDictionary, parent) {}

void HTMLGenerator::writeBody(QTextStream& out)
{
    const QList<quint16> indices = objectIndices();
    writeGenerationTable(out);
    writeCommentTable(out);
    writeTitleTable(out);
    writeContents(out, indices);
    writeObjectTables(out, indices);
}

void HTMLGenerator::writeGenerationTable(QTextStream& out)
{
    out << R"(  <div class="left">
  <table width="70%">
   <tr class="head">
)"_L1;
    out << "    <td colspan=\"2\" id=\"gen\">Generation information "_L1 << encoded(m_deviceName)
        << "</td>\n"_L1;
    out << "   </tr>\n"_L1;
    const QPair<const char*, QString> rows[] = {
        {"   <td>Generation time: ", QDateTime::currentDateTime().toString(Qt::TextDate)},
        {"   <td>Vendor name:", descriptionSetting(QStringLiteral("VendorName"))},
        {"   <td>Product name: ", descriptionSetting(QStringLiteral("ProductName"))},
        {"   <td>File version:", descriptionSetting(QStringLiteral("FileVersion"))},
        {"   <td>File Revision: ", descriptionSetting(QStringLiteral("FileRevision"))},
        {"   <td>Order Code:", descriptionSetting(QStringLiteral("OrderCode"))},
        {"   <td>Created by: ", descriptionSetting(QStringLiteral("CreatedBy"))},
        {"   <td>Modified by: ", descriptionSetting(QStringLiteral("ModifiedBy"))},
    };
    for (const auto& [label, value] : rows) {
        out << nextRowTag();
        out << label << encoded(value) << "</td>\n"_L1;
        out << "   </tr>\n"_L1;
    }
    out << R"(  </table>
  </div>
<br />
<br />
)"_L1;
}

void HTMLGenerator::writeCommentTable(QTextStream& out)
{
    out << R"(  <div class="left">
  <table width="70%">
   <tr class="head">
    <td colspan="2" id="com">Comment</td>
   </tr>
)"_L1;
    const QStringList lines = descriptionSetting(QStringLiteral("Comment")).split(QLatin1Char('\n'));
    for (const QString& line : lines) {
        out << "   <tr>\n"_L1;
        out << "   <td>"_L1 << encoded(line) << "</td>\n"_L1;
        out << "   </tr>\n"_L1;
    }
    out << R"(  </table>
  </div>
<br />
<br />
)"_L1;
}

void HTMLGenerator::writeTitleTable(QTextStream& out)
{
    out << R"(  <div class="left">
  <table width="70%">
   <tr class="head">
)"_L1;
    out << "    <td  colspan=\"2\">  Object Dictionary Documentation of "_L1 << encoded(m_deviceName)
        << "</td>\n"_L1;
    out << R"(   </tr>
  </table>
  </div>
)"_L1;
}

// Gaps set the manufacturer and the profile areas apart from what precedes them.
void HTMLGenerator::writeContents(QTextStream& out, const QList<quint16>& indices)
{
    out << " <div class=\"toc\">\n"_L1;
    out << "<a href=\"#gen\">Generation Information</a><br />\n"_L1;
    out << "<a href=\"#com\">Comment</a><br />\n"_L1;
    for (quint16 index : indices) {
        if (aborted())
            break;
        for (int border = areaBordersPassed(index); border > 0; --border)
            out << "<br>\n"_L1;
        INDEX_DATA_T object;
        m_database->getIndex(m_line, index, object);
        out << "<a href=\"#"_L1 << index << "\">0x"_L1 << hex(index, 4) << " "_L1 << objectName(index, object)
            << "</a><br>\n"_L1;
    }
    out << "  </div>\n"_L1;
}

void HTMLGenerator::writeObjectTables(QTextStream& out, const QList<quint16>& indices)
{
    out << "  <div class=\"center\">\n"_L1;
    for (quint16 index : indices) {
        if (aborted())
            break;
        writeObjectTable(out, index);
    }
    out << "  </div>\n"_L1;
    out << "  </body>\n"_L1;
    out << " </html>\n"_L1;
}

void HTMLGenerator::writeObjectTable(QTextStream& out, quint16 index)
{
    INDEX_DATA_T object;
    m_database->getIndex(m_line, index, object);
    out << " <p>\n"_L1;
    out << "  <table border=\"1\" width=\"70%\">\n"_L1;
    out << "   <tr>\n"_L1;
    out << "    <th colspan=\"2\" id=\""_L1 << index << "\"> Object: 0x"_L1 << hex(index, 4) << " "_L1
        << objectName(index, object) << "</th>\n"_L1;
    out << "   </tr>\n"_L1;
    out << "   <tr>\n"_L1;
    out << "    <td>Object Code</td>\n"_L1;
    out << "    <td>"_L1 << COHelper::objectCode2String(CANopen::ObjectCode(object.objecttype))
        << "</td>\n"_L1;
    out << "   </tr>\n"_L1;
    if (!object.description.isEmpty())
        writeRow(out, "    <td>Description</td>\n"_L1, encoded(object.description));
    out << "  </table>\n"_L1;
    const QList<quint8> subs = m_database->getSubIndexList(m_line, index);
    for (quint8 subindex : subs) {
        out << " <br/>\n"_L1;
        writeSubIndexTable(out, index, subindex);
    }
    out << " </p>\n"_L1;
    out << "  <hr />\n"_L1;
}

void HTMLGenerator::writeSubIndexTable(QTextStream& out, quint16 index, quint8 subindex)
{
    SUBINDEX_DATA_T sub;
    m_database->getSubIndex(m_line, index, subindex, sub);
    out << "  <table border=\"1\" width=\"70%\">\n"_L1;
    out << nextRowTag();
    out << "    <td style=\"font-weight:bold\">Sub </td>\n"_L1;
    out << "    <td style=\"font-weight:bold\">0x"_L1 << hex(subindex, 2) << "</td>\n"_L1;
    out << "   </tr>\n"_L1;
    writeRow(out, "    <td>Name </td>\n"_L1,
             encoded(Helper::substituteVariables(sub.name, index, subindex, m_line)));
    writeRow(out, "    <td>Data Type</td>\n"_L1, COHelper::index2DataTypeString(sub.datatype));
    writeRow(out, "    <td>Access </td>\n"_L1, encoded(sub.accesstype));
    if (sub.defaultineds || sub.implementation == CANopen::ManagedConst)
        writeRow(out, "    <td>Defaultvalue </td>\n"_L1, encoded(sub.defaultvalue));
    if (sub.limitineds) {
        writeRow(out, "    <td>Low Limit </td>\n"_L1, encoded(sub.lowlimit));
        writeRow(out, "    <td>High Limit </td>\n"_L1, encoded(sub.uplimit));
    }
    if (!sub.description.isEmpty())
        writeRow(out, "    <td>Description</td>\n"_L1, encoded(sub.description));
    writeRow(out, "    <td>PDO Mapping</td>\n"_L1, COHelper::pdoMapping2String(sub.pdomapping));
    if (m_implementationInfo) {
        writeRow(out, "    <td>Implementation Type</td>\n"_L1,
                 COHelper::implementation2String(sub.implementation));
        if (sub.implementation == CANopen::ApplicationVariable)
            writeRow(out, "    <td>Variable Name</td>\n"_L1, encoded(sub.varname));
        if (sub.size != 0)
            writeRow(out, "    <td>Size in bytes </td>\n"_L1, QString::number(sub.size));
    }
    out << "  </table>\n"_L1;
}

QString HTMLGenerator::objectName(quint16 index, const INDEX_DATA_T& object) const
{
    return encoded(Helper::substituteVariables(object.name, index, 0, m_line));
}
