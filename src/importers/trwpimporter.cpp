#include "importers/trwpimporter.h"

#include "database/objectdatabase.h"

#include <QDebug>

namespace {

constexpr quint8 scratchLine = 255;

} // namespace

TRWPImporter::TRWPImporter(QObject* parent) : BaseDataImporter(parent) {}

void TRWPImporter::doImport()
{
    running = true;
    {
        ObjectDataBase source;
        if (!filePath.isEmpty() && source.openDataBase(filePath, true)) {
            if (!database->nodeExists(scratchLine))
                database->addNode(scratchLine, NODE_DATA_T());
            database->copyObjects(&source, sourceLine, scratchLine, lowIndex, highIndex);
            database->copyPGNs(&source, sourceLine, scratchLine, lowIndex, highIndex, copyFlag);
        } else {
            qDebug() << Q_FUNC_INFO << "not a project:" << filePath;
        }
    }
    finishImport();
}
