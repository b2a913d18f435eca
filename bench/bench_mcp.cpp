// Times tool calls of the server as a client sees them, over standard input
// and output of the running program: get_index on a line of 1,000 objects,
// and check_model on 4 lines of 1,000 objects each.

#include "benchsupport.h"
#include "database/linetypes.h"
#include "database/objectdatabase.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTextStream>

#include <algorithm>

namespace {

constexpr int lineCount = 4;
constexpr int objectsPerLine = 1000;
constexpr int getIndexCalls = 200;
constexpr qint64 getIndexLimitMs = 20;
constexpr qint64 checkLimitMs = 500;

// Records of a count and eight entries of mixed types, as a device's
// parameter blocks look.
void addParameterBlocks(ObjectDataBase& db, quint8 line)
{
    if (line != 0)
        db.addNode(line, NODE_DATA_T());
    db.setLineType(line, Line::CANopen);
    const int dataTypes[] = {5, 6, 7, 2, 3, 4, 8, 1};
    QList<ObjectDataBase::SubEntry> entries;
    for (int i = 0; i < objectsPerLine; ++i) {
        const quint16 index = quint16(0x2000 + i * 8);
        INDEX_DATA_T object;
        object.name = QStringLiteral("Parameter block %1").arg(i);
        object.objecttype = 9;
        db.addIndex(line, index, object);
        SUBINDEX_DATA_T count;
        count.name = QStringLiteral("Highest sub-index supported");
        count.accesstype = QStringLiteral("const");
        count.defaultvalue = QStringLiteral("8");
        entries.append({line, index, 0, count});
        for (quint8 sub = 1; sub <= 8; ++sub) {
            SUBINDEX_DATA_T entry;
            entry.name = QStringLiteral("Parameter %1").arg(sub);
            entry.datatype = dataTypes[sub - 1];
            entry.accesstype = QStringLiteral("rw");
            entry.defaultvalue = QStringLiteral("0x%1").arg(sub);
            entry.implementation = 2;
            entry.varname = QStringLiteral("block%1_p%2").arg(i).arg(sub);
            entries.append({line, index, sub, entry});
        }
    }
    db.addSubIndices(entries);
}

bool fillProject(ObjectDataBase& db)
{
    if (!db.createNewDataBase())
        return false;
    for (quint8 line = 0; line < lineCount; ++line)
        addParameterBlocks(db, line);
    return true;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    benchsupport::setToolIdentity();
    QTextStream out(stdout);

    ObjectDataBase db;
    if (!fillProject(db)) {
        out << "could not create the project\n";
        return 2;
    }
    if (const int saved = benchsupport::saveProjectWhenAsked(app.arguments(), db); saved >= 0)
        return saved;
    QTemporaryDir folder;
    const QString project = folder.filePath(QStringLiteral("bench.trwp"));
    if (!folder.isValid() || !db.saveDatabase(project)) {
        out << "could not create the project\n";
        return 2;
    }
    benchsupport::McpServer server;
    if (!server.start(QStringLiteral(TRW_BINARY)) ||
        !server.call("open_project", R"({"path":")" + project.toUtf8() + "\"}").contains("Project opened")) {
        out << "could not open the project in the server\n";
        return 2;
    }

    QList<qint64> getIndexTimes;
    QElapsedTimer timer;
    for (int i = 0; i < getIndexCalls; ++i) {
        const QByteArray arguments =
            R"({"line":0,"index":)" + QByteArray::number(0x2000 + (i * 37 % 1000) * 8) + "}";
        timer.start();
        const QByteArray reply = server.call("get_index", arguments);
        getIndexTimes.append(timer.nsecsElapsed() / 1000);
        if (!reply.contains("Parameter block")) {
            out << "get_index failed: " << reply.left(300) << "\n";
            return 2;
        }
    }
    const qint64 medianUs = benchsupport::median(getIndexTimes);
    const qint64 worstUs = *std::max_element(getIndexTimes.begin(), getIndexTimes.end());

    QList<qint64> checkTimes;
    QList<qint64> checkProcessorTimes;
    QByteArray checkReply;
    for (int run = 0; run < 3; ++run) {
        const qint64 processorBefore = server.processorMs();
        timer.start();
        const QByteArray reply = server.call("check_model", "{}");
        checkTimes.append(timer.elapsed());
        checkProcessorTimes.append(server.processorMs() - processorBefore);
        checkReply = reply;
        if (!reply.contains("errorCount")) {
            out << "check_model failed: " << reply.left(300) << "\n";
            return 2;
        }
    }
    const qint64 checkMs = *std::min_element(checkTimes.begin(), checkTimes.end());
    const qint64 checkProcessorMs = *std::min_element(checkProcessorTimes.begin(), checkProcessorTimes.end());

    out << "get_index over stdio on " << objectsPerLine << " objects of 9 subindices: median " << medianUs
        << " us, worst " << worstUs << " us of " << getIndexCalls << " calls, limit " << getIndexLimitMs
        << " ms\n";
    out << "check_model over stdio on " << lineCount << " lines x " << objectsPerLine << " objects: best "
        << checkMs << " ms elapsed, " << checkProcessorMs << " ms processor time of the server, of "
        << checkTimes.size() << " runs, limit " << checkLimitMs << " ms; reply " << checkReply.left(40)
        << "...\n";
    return medianUs < getIndexLimitMs * 1000 && checkProcessorMs < checkLimitMs ? 0 : 1;
}
