#include "fuzzsupport.h"

#include "database/objectdatabase.h"
#include "importers/basedataimporter.h"

#include <QCoreApplication>
#include <QFile>
#include <QSharedPointer>
#include <QTemporaryDir>

namespace {
QTemporaryDir* inputFolder = nullptr;
}

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    // As in a delivered run, diagnostics go nowhere: at fuzzing speed they would only drown the findings.
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    // Both live as long as the process: libFuzzer ends it with exit().
    new QCoreApplication(*argc, *argv);
    QCoreApplication::setApplicationName(QStringLiteral("CANopen Tarnwick"));
    QCoreApplication::setApplicationVersion(QStringLiteral("4.3.2"));
    QCoreApplication::setOrganizationName(QStringLiteral("halvex"));
    inputFolder = new QTemporaryDir;
    return 0;
}

namespace fuzzsupport {

QString writeInput(const uint8_t* data, size_t size, const QString& fileName)
{
    const QString path = inputFolder->filePath(fileName);
    QFile file(path);
    if (file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        file.write(reinterpret_cast<const char*>(data), static_cast<qint64>(size));
    return path;
}

void importInput(BaseDataImporter& importer, const uint8_t* data, size_t size, const QString& fileName)
{
    QSharedPointer<ObjectDataBase> database(new ObjectDataBase);
    if (!database->createNewDataBase())
        return;
    importer.setDatabase(database);
    importer.setLine(0);
    importer.setFile(writeInput(data, size, fileName));
    importer.doImport();
}

} // namespace fuzzsupport
