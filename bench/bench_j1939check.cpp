// Times the model check of a J1939 line with 500 PGNs of 8 SPNs each and a
// raw CAN line with 500 identifiers of 8 data elements each.

#include "benchprojects.h"
#include "benchsupport.h"
#include "canopenlib/canopentypes.h"
#include "check/modelchecker.h"
#include "common/cleanproject.h"
#include "database/linetypes.h"
#include "database/objectdatabase.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTextStream>

namespace {

constexpr int messagesPerLine = 500;
constexpr int signalsPerMessage = 8;
constexpr qint64 limitMs = 100;
constexpr quint8 j1939Line = 0;
constexpr quint8 rawCanLine = 1;

// Both directions, half each; every data element an application variable of one byte.
void fillRawCanLine(ObjectDataBase& db)
{
    db.addNode(rawCanLine, NODE_DATA_T());
    db.setLineType(rawCanLine, Line::RawCan);
    for (int i = 0; i < messagesPerLine; ++i) {
        const quint32 id = quint32(0x100 + i);
        ObjectDataBase::CANID canId;
        canId.name = QStringLiteral("Message %1").arg(i);
        canId.direction = i % 2 ? ObjectDataBase::Receive : ObjectDataBase::Transmit;
        db.addCANID(rawCanLine, id, canId);
        for (int e = 0; e < signalsPerMessage; ++e) {
            ObjectDataBase::DataElement element;
            element.pos = e;
            element.name = QStringLiteral("Element %1").arg(e);
            element.datatype = CAN::Unsigned8;
            element.bitsize = 8;
            element.bitpos = quint16(8 * e);
            element.varname = QStringLiteral("id%1_%2").arg(i).arg(e);
            db.addDataElement(rawCanLine, id, canId.direction, quint32(e), element);
        }
    }
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    benchsupport::setToolIdentity();
    QTextStream out(stdout);

    QSharedPointer<ObjectDataBase> db(new ObjectDataBase());
    if (!db->createNewDataBase()) {
        out << "could not create the project\n";
        return 2;
    }
    cleanproject::addProjectSettings(*db);
    benchprojects::addJ1939Lines(*db, {j1939Line}, messagesPerLine, signalsPerMessage);
    db->database().transaction();
    fillRawCanLine(*db);
    db->database().commit();

    // The machine may be shared: processor time tells the cost of the check itself.
    QElapsedTimer timer;
    timer.start();
    const qint64 cpuStart = benchsupport::processCpuMs();
    ModelChecker checker;
    int messages = 0;
    QObject::connect(&checker, &ModelChecker::newError, [&messages](const QString&) { ++messages; });
    int errors = checker.checkJ1939Line(2, j1939Line, db, ModelChecker::stackHandledPgns());
    errors += checker.checkRawCANLine(rawCanLine, db);
    const qint64 elapsed = timer.elapsed();
    const qint64 cpuMs = benchsupport::processCpuMs() - cpuStart;

    out << "check of a J1939 line of " << messagesPerLine << " PGNs x " << signalsPerMessage
        << " SPNs and a raw CAN line of " << messagesPerLine << " identifiers x " << signalsPerMessage
        << " data elements: " << elapsed << " ms elapsed, " << cpuMs << " ms processor time (" << errors
        << " errors, " << messages << " messages), limit " << limitMs << " ms\n";
    return errors == 0 && cpuMs < limitMs ? 0 : 1;
}
