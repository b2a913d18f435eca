#include "generators/documents/j1939htmlgenerator.h"

#include "canopenlib/cohelper.h"

#include <QTextStream>
#include <QThread>

#include <algorithm>

J1939HTMLGenerator::J1939HTMLGenerator(QObject* parent) : HtmlPageGenerator(Layout::PgnList, parent) {}

void J1939HTMLGenerator::writeBody(QTextStream& out)
{
    const QList<PgnKey> pgns = pgnsByNumber();
    writeTitleTable(out);
    writeContents(out, pgns);
    for (const PgnKey& key : pgns) {
        if (aborted())
            break;
        writePgnTable(out, key);
        QThread::yieldCurrentThread();
    }
    out << "  </body>\n";
    out << " </html>\n";
}

void J1939HTMLGenerator::writeTitleTable(QTextStream& out)
{
    out << R"(  <div class="center">
  <table width="600">
   <tr class="head">
)";
    out << "    <td width=\"250\" colspan=\"2\" align=\"center\">  PGN/SPN Documenation of "
        << encoded(m_deviceName) << "</td>\n";
    out << R"(   </tr>
  </table>
  </div>
)";
}

void J1939HTMLGenerator::writeContents(QTextStream& out, const QList<PgnKey>& pgns)
{
    out << " <div class=\"toc\">\n";
    for (const auto& [number, direction] : pgns) {
        if (aborted())
            break;
        out << "<a href=\"#" << number << "\">" << pgnLabel(number) << " "
            << encoded(m_database->getPGNName(m_line, number, direction)) << "</a><br>\n";
    }
    out << "  </div>\n";
}

void J1939HTMLGenerator::writePgnTable(QTextStream& out, const PgnKey& key)
{
    ObjectDataBase::PGN pgn;
    m_database->getPGN(m_line, key.first, key.second, pgn);
    out << " <p>\n";
    out << "  <table border=\"1\" width=\"600\">\n";
    out << "   <tr>\n";
    out << "    <th colspan=\"2\" id=\"" << key.first << "\"> PGN: " << pgnLabel(key.first) << " "
        << encoded(pgn.name) << "</th>\n";
    out << "   </tr>\n";
    if (!pgn.desc.isEmpty())
        writeRow(out, "    <td>Description</td>\n", encoded(pgn.desc));
    out << "  </table>\n";
    const QList<quint32> spns = m_database->getSPNList(m_line, key.first, key.second);
    for (quint32 number : spns) {
        ObjectDataBase::SPN spn;
        m_database->getSPN(m_line, key.first, key.second, number, spn);
        spn.spnnumber = number;
        out << " <br/>\n";
        writeSpnTable(out, spn);
    }
    out << " </p>\n";
    out << "  <hr noshade width=\"600\" align=\"left\"/>\n";
}

void J1939HTMLGenerator::writeSpnTable(QTextStream& out, const ObjectDataBase::SPN& spn)
{
    out << "  <table border=\"1\" width=\"600\">\n";
    out << nextRowTag();
    out << "    <td style=\"font-weight:bold\">SPN </td>\n";
    out << "    <td style=\"font-weight:bold\">" << spn.spnnumber << "</td>\n";
    out << "   </tr>\n";
    writeRow(out, "    <td>Name </td>\n", encoded(spn.name));
    writeRow(out, "    <td width=\"250\">Data Type</td>\n", COHelper::index2DataTypeString(spn.datatype));
    if (m_implementationInfo) {
        writeRow(out, "    <td>Implementation Type</td>\n",
                 COHelper::implementation2String(spn.implementation));
        if (spn.implementation == CANopen::ApplicationVariable)
            writeRow(out, "    <td>Variable Name</td>\n", encoded(spn.varname));
    }
    out << "  </table>\n";
}

QList<J1939HTMLGenerator::PgnKey> J1939HTMLGenerator::pgnsByNumber() const
{
    QList<PgnKey> pgns;
    for (ObjectDataBase::Direction direction : {ObjectDataBase::Transmit, ObjectDataBase::Receive}) {
        const QList<quint32> numbers = m_database->getPGNList(m_line, direction);
        for (quint32 number : numbers)
            pgns.append({number, direction});
    }
    std::stable_sort(pgns.begin(), pgns.end(),
                     [](const PgnKey& a, const PgnKey& b) { return a.first < b.first; });
    return pgns;
}

QString J1939HTMLGenerator::pgnLabel(quint32 number)
{
    return QStringLiteral("0x%1/%2").arg(hex(number, 4)).arg(number);
}
