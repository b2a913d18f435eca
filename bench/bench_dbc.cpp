// Times the DBC library on a large network: a file of 500 messages with 10
// signals each, with comments, attributes and value tables, read into a
// database and written back to a file.

#include "benchsupport.h"
#include "dbc/candbapi.h"
#include "dbc/candbdbc.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTextStream>

namespace {

constexpr int messageCount = 500;
constexpr int signalsPerMessage = 10;
constexpr qint64 limitMs = 200;
constexpr int rounds = 5;

// The file the bench reads: built through the flat calls and written once.
QByteArray networkText()
{
    CANdbDatabase database;
    CANdbAttributeDefinition* cycle = nullptr;
    canDbAddAttributeDefinition(&database, &cycle);
    canDbSetAttributeDefinitionName(cycle, "GenMsgCycleTime");
    canDbSetAttributeDefinitionOwner(cycle, CANdbOwner::Message);
    canDbSetAttributeDefinitionInt(cycle, 0, 10000, 0);
    for (int m = 0; m < messageCount; ++m) {
        CANdbMessage* message = nullptr;
        canDbAddMsg(&database, &message);
        canDbSetMsgName(message, "Message_" + QByteArray::number(m));
        canDbSetMsgId(message, 0x18FF0000u + quint32(m), true);
        canDbSetMsgDlc(message, 8);
        canDbSetMsgComment(message, "Status of unit " + QByteArray::number(m));
        CANdbAttributeValue* value = nullptr;
        canDbAddMsgAttribute(&database, message, "GenMsgCycleTime", &value);
        canDbSetAttributeValueInt(value, 100);
        for (int s = 0; s < signalsPerMessage; ++s) {
            CANdbSignal* signal = nullptr;
            canDbAddSignal(message, &signal);
            canDbSetSignalName(signal, "Signal_" + QByteArray::number(m) + '_' + QByteArray::number(s));
            canDbSetSignalValueSize(signal, s * 6, 6);
            canDbSetSignalValueType(signal, CANdbValueType::Unsigned);
            signal->factor = 0.125;
            signal->offset = -40;
            signal->maximum = 3.875;
            signal->unit = "degC";
            canDbSetSignalComment(signal, "Temperature sensor " + QByteArray::number(s));
            signal->valueTable = {{0, "Off"}, {63, "Not available"}};
        }
    }
    return CANdbDBC::writeText(database);
}

} // namespace

using benchsupport::median;

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QTextStream out(stdout);
    QTemporaryDir dir;
    const QString source = dir.filePath(QStringLiteral("network.dbc"));
    const QString target = dir.filePath(QStringLiteral("written.dbc"));
    const QByteArray text = networkText();
    QFile file(source);
    if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size()) {
        out << "cannot write the input file\n";
        return 1;
    }
    file.close();

    QList<qint64> readTimes;
    QList<qint64> writeTimes;
    QList<qint64> cpuTimes;
    for (int round = 0; round < rounds; ++round) {
        const qint64 cpuStart = benchsupport::threadCpuMs();
        QElapsedTimer timer;
        timer.start();
        CANdbDBC dbc;
        CANdbDatabase database;
        if (dbc.read(database, source) != CANdbFileIo::Done || database.messages.size() != messageCount) {
            out << "the file did not read back\n";
            return 1;
        }
        const qint64 readMs = timer.elapsed();
        if (dbc.write(database, target) != CANdbFileIo::Done) {
            out << "cannot write the output file\n";
            return 1;
        }
        readTimes << readMs;
        writeTimes << timer.elapsed() - readMs;
        cpuTimes << benchsupport::threadCpuMs() - cpuStart;
    }
    const qint64 total = median(readTimes) + median(writeTimes);
    const qint64 cpu = median(cpuTimes);
    out << "DBC of " << messageCount << " messages x " << signalsPerMessage << " signals ("
        << text.size() / 1024 << " KiB): read " << median(readTimes) << " ms, write " << median(writeTimes)
        << " ms (median of " << rounds << ")\n";
    // The verdict is on processor time: on a loaded machine the wall time
    // mostly measures the wait for a free core.
    out << "read and write: " << total << " ms, cpu " << cpu << " ms, limit " << limitMs << " ms "
        << benchsupport::verdict(cpu < limitMs) << "\n";
    return cpu < limitMs ? 0 : 1;
}
