#include "generators/documents/htmlgenerator.h"

#include "canopenlib/cohelper.h"
#include "canopenlib/helper.h"
#include "database/objectdatabase.h"

#include <QDateTime>
#include <QTextStream>
#include <QThread>

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
)";
    out << "    <td colspan=\"2\" id=\"gen\">Generation information " << encoded(m_deviceName) << "</td>\n";
    out << "   </tr>\n";
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
        out << label << encoded(value) << "</td>\n";
        out << "   </tr>\n";
    }
    out << R"(  </table>
  </div>
<br />
<br />
)";
}

void HTMLGenerator::writeCommentTable(QTextStream& out)
{
    out << R"(  <div class="left">
  <table width="70%">
   <tr class="head">
    <td colspan="2" id="com">Comment</td>
   </tr>
)";
    const QStringList lines = descriptionSetting(QStringLiteral("Comment")).split(QLatin1Char('\n'));
    for (const QString& line : lines) {
        out << "   <tr>\n";
        out << "   <td>" << encoded(line) << "</td>\n";
        out << "   </tr>\n";
    }
    out << R"(  </table>
  </div>
<br />
<br />
)";
}

void HTMLGenerator::writeTitleTable(QTextStream& out)
{
    out << R"(  <div class="left">
  <table width="70%">
   <tr class="head">
)";
    out << "    <td  colspan=\"2\">  Object Dictionary Documentation of " << encoded(m_deviceName)
        << "</td>\n";
    out << R"(   </tr>
  </table>
  </div>
)";
}

// Gaps set the manufacturer and the profile areas apart from what precedes them.
void HTMLGenerator::writeContents(QTextStream& out, const QList<quint16>& indices)
{
    out << " <div class=\"toc\">\n";
    out << "<a href=\"#gen\">Generation Information</a><br />\n";
    out << "<a href=\"#com\">Comment</a><br />\n";
    for (quint16 index : indices) {
        if (aborted())
            break;
        for (int border = areaBordersPassed(index); border > 0; --border)
            out << "<br>\n";
        INDEX_DATA_T object;
        m_database->getIndex(m_line, index, object);
        out << "<a href=\"#" << index << "\">0x" << hex(index, 4) << " " << objectName(index, object)
            << "</a><br>\n";
    }
    out << "  </div>\n";
}

void HTMLGenerator::writeObjectTables(QTextStream& out, const QList<quint16>& indices)
{
    out << "  <div class=\"center\">\n";
    for (quint16 index : indices) {
        if (aborted())
            break;
        writeObjectTable(out, index);
        QThread::yieldCurrentThread();
    }
    out << "  </div>\n";
    out << "  </body>\n";
    out << " </html>\n";
}

void HTMLGenerator::writeObjectTable(QTextStream& out, quint16 index)
{
    INDEX_DATA_T object;
    m_database->getIndex(m_line, index, object);
    out << " <p>\n";
    out << "  <table border=\"1\" width=\"70%\">\n";
    out << "   <tr>\n";
    out << "    <th colspan=\"2\" id=\"" << index << "\"> Object: 0x" << hex(index, 4) << " "
        << objectName(index, object) << "</th>\n";
    out << "   </tr>\n";
    out << "   <tr>\n";
    out << "    <td>Object Code</td>\n";
    out << "    <td>" << COHelper::objectCode2String(CANopen::ObjectCode(object.objecttype)) << "</td>\n";
    out << "   </tr>\n";
    if (!object.description.isEmpty())
        writeRow(out, "    <td>Description</td>\n", encoded(object.description));
    out << "  </table>\n";
    const QList<quint8> subs = m_database->getSubIndexList(m_line, index);
    for (quint8 subindex : subs) {
        out << " <br/>\n";
        writeSubIndexTable(out, index, subindex);
    }
    out << " </p>\n";
    out << "  <hr />\n";
}

void HTMLGenerator::writeSubIndexTable(QTextStream& out, quint16 index, quint8 subindex)
{
    SUBINDEX_DATA_T sub;
    m_database->getSubIndex(m_line, index, subindex, sub);
    out << "  <table border=\"1\" width=\"70%\">\n";
    out << nextRowTag();
    out << "    <td style=\"font-weight:bold\">Sub </td>\n";
    out << "    <td style=\"font-weight:bold\">0x" << hex(subindex, 2) << "</td>\n";
    out << "   </tr>\n";
    writeRow(out, "    <td>Name </td>\n",
             encoded(Helper::substituteVariables(sub.name, index, subindex, m_line)));
    writeRow(out, "    <td>Data Type</td>\n", COHelper::index2DataTypeString(sub.datatype));
    writeRow(out, "    <td>Access </td>\n", encoded(sub.accesstype));
    if (sub.defaultineds || sub.implementation == CANopen::ManagedConst)
        writeRow(out, "    <td>Defaultvalue </td>\n", encoded(sub.defaultvalue));
    if (sub.limitineds) {
        writeRow(out, "    <td>Low Limit </td>\n", encoded(sub.lowlimit));
        writeRow(out, "    <td>High Limit </td>\n", encoded(sub.uplimit));
    }
    if (!sub.description.isEmpty())
        writeRow(out, "    <td>Description</td>\n", encoded(sub.description));
    writeRow(out, "    <td>PDO Mapping</td>\n", COHelper::pdoMapping2String(sub.pdomapping));
    if (m_implementationInfo) {
        writeRow(out, "    <td>Implementation Type</td>\n",
                 COHelper::implementation2String(sub.implementation));
        if (sub.implementation == CANopen::ApplicationVariable)
            writeRow(out, "    <td>Variable Name</td>\n", encoded(sub.varname));
        if (sub.size != 0)
            writeRow(out, "    <td>Size in bytes </td>\n", QString::number(sub.size));
    }
    out << "  </table>\n";
}

QString HTMLGenerator::objectName(quint16 index, const INDEX_DATA_T& object) const
{
    return encoded(Helper::substituteVariables(object.name, index, 0, m_line));
}
