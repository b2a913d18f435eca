#include "generators/documents/j1939htmlgenerator.h"

#include "canopenlib/cohelper.h"

#include <QTextStream>
#include <QThread>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

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
    out << "  </body>\n"_L1;
    out << " </html>\n"_L1;
}

void J1939HTMLGenerator::writeTitleTable(QTextStream& out)
{
    out << R"(  <div class="center">
  <table width="600">
   <tr class="head">
)"_L1;
    out << "    <td width=\"250\" colspan=\"2\" align=\"center\">  PGN/SPN Documenation of "_L1
        << encoded(m_deviceName) << "</td>\n"_L1;
    out << R"(   </tr>
  </table>
  </div>
)"_L1;
}

void J1939HTMLGenerator::writeContents(QTextStream& out, const QList<PgnKey>& pgns)
{
    out << " <div class=\"toc\">\n"_L1;
    for (const auto& [number, direction] : pgns) {
        if (aborted())
            break;
        out << "<a href=\"#"_L1 << number << "\">"_L1 << pgnLabel(number) << " "_L1
            << encoded(m_database->getPGNName(m_line, number, direction)) << "</a><br>\n"_L1;
    }
    out << "  </div>\n"_L1;
}

void J1939HTMLGenerator::writePgnTable(QTextStream& out, const PgnKey& key)
{
    ObjectDataBase::PGN pgn;
    m_database->getPGN(m_line, key.first, key.second, pgn);
    out << " <p>\n"_L1;
    out << "  <table border=\"1\" width=\"600\">\n"_L1;
    out << "   <tr>\n"_L1;
    out << "    <th colspan=\"2\" id=\""_L1 << key.first << "\"> PGN: "_L1 << pgnLabel(key.first) << " "_L1
        << encoded(pgn.name) << "</th>\n"_L1;
    out << "   </tr>\n"_L1;
    if (!pgn.desc.isEmpty())
        writeRow(out, "    <td>Description</td>\n"_L1, encoded(pgn.desc));
    out << "  </table>\n"_L1;
    const QList<quint32> spns = m_database->getSPNList(m_line, key.first, key.second);
    for (quint32 number : spns) {
        ObjectDataBase::SPN spn;
        m_database->getSPN(m_line, key.first, key.second, number, spn);
        spn.spnnumber = number;
        out << " <br/>\n"_L1;
        writeSpnTable(out, spn);
    }
    out << " </p>\n"_L1;
    out << "  <hr noshade width=\"600\" align=\"left\"/>\n"_L1;
}

void J1939HTMLGenerator::writeSpnTable(QTextStream& out, const ObjectDataBase::SPN& spn)
{
    out << "  <table border=\"1\" width=\"600\">\n"_L1;
    out << nextRowTag();
    out << "    <td style=\"font-weight:bold\">SPN </td>\n"_L1;
    out << "    <td style=\"font-weight:bold\">"_L1 << spn.spnnumber << "</td>\n"_L1;
    out << "   </tr>\n"_L1;
    writeRow(out, "    <td>Name </td>\n"_L1, encoded(spn.name));
    writeRow(out, "    <td width=\"250\">Data Type</td>\n"_L1, COHelper::index2DataTypeString(spn.datatype));
    if (m_implementationInfo) {
        writeRow(out, "    <td>Implementation Type</td>\n"_L1,
                 COHelper::implementation2String(spn.implementation));
        if (spn.implementation == CANopen::ApplicationVariable)
            writeRow(out, "    <td>Variable Name</td>\n"_L1, encoded(spn.varname));
    }
    out << "  </table>\n"_L1;
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
