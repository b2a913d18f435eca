#include "pipeline/generatormainhandler.h"

#include "check/modelchecker.h"
#include "database/databasemodifier.h"
#include "database/linetypes.h"
#include "database/objectdatabase.h"
#include "database/projectconverter.h"
#include "generators/abstractgenerator.h"
#include "generators/canopen/propsfilewriter.h"
#include "importers/csvimporter.h"
#include "importers/doctxtimporter.h"
#include "importers/edsimporter.h"
#include "pipeline/generatorregistry.h"
#include "pipeline/outputhandlerbase.h"
#include "pipeline/postgenprocessor.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDebug>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <memory>

GeneratorMainHandler::GeneratorMainHandler(OutputHandlerBase* output, QObject* parent,
                                           QSharedPointer<PostGenProgressHandler> progressHandler)
    : QObject(parent), m_database(new ObjectDataBase()), m_output(output), m_progressHandler(progressHandler)
{
    m_database->createNewDataBase();
}

GeneratorMainHandler::~GeneratorMainHandler() = default;

bool GeneratorMainHandler::openProject(const QString& filePath)
{
    QFileInfo info(filePath);
    if (!info.exists())
        return false;
    const QString absolutePath = info.absoluteFilePath();
    if (absolutePath.endsWith(QLatin1String("trwt"))) {
        m_database->openDataBase(absolutePath, true);
    } else if (!m_database->openDataBase(absolutePath, true)) {
        return false;
    }

    ProjectConverter converter(m_database.data());
    converter.doGenericCorrection();
    converter.doSettingsCorrection();

    m_outputDir = info.absolutePath();
    m_projectBaseName = info.completeBaseName();
    m_projectPath = absolutePath;

    m_database->setGeneralSetting(QStringLiteral("new_init_structure"), QStringLiteral("1"));
    m_database->setGeneralSetting(QStringLiteral("use_core_headers"), QStringLiteral("V4"));
    return true;
}

bool GeneratorMainHandler::applyDbModifier(const QString& path)
{
    DatabaseModifier modifier(m_database.data());
    if (modifier.setModifierFile(path) && modifier.applyModifierFile())
        return true;
    qDebug() << Q_FUNC_INFO << modifier.lastFailedLine();
    return false;
}

void GeneratorMainHandler::setStackPath(const QString& path)
{
    if (m_database)
        m_database->setMiscSetting(QStringLiteral("costackpath"), path);
}

bool GeneratorMainHandler::importFile(const QString& path)
{
    const QFileInfo info(path);
    if (!info.exists())
        return false;
    const QString suffix = info.suffix().toLower();
    if (suffix == QLatin1String("trwp"))
        return importProject(info.absoluteFilePath());
    return importWithImporter(info);
}

// Objects, PGNs and CAN identifiers of another project replace those of the
// same line here, chosen by what each line of this project carries.
bool GeneratorMainHandler::importProject(const QString& path)
{
    ObjectDataBase other;
    if (!other.openDataBase(path, true))
        return false;
    const QList<quint8> lines = m_database->getNodeList();
    for (quint8 line : lines) {
        const int type = m_database->lineType(line);
        if (Line::carriesCANopen(type))
            m_database->copyObjects(&other, line, line, 4096, 65535);
        if (Line::carriesJ1939(type))
            m_database->copyPGNs(&other, line, line, 0, 131071, ObjectDataBase::Invalid);
        if (Line::carriesRawCan(type))
            m_database->copyCANIDs(&other, line, line, 0, 536870911, ObjectDataBase::Invalid);
    }
    return true;
}

// The importer runs on its own thread while this one waits; what it could
// not read shows in the project, not in the result.
bool GeneratorMainHandler::importWithImporter(const QFileInfo& info)
{
    const QString suffix = info.suffix().toLower();
    std::unique_ptr<BaseDataImporter> importer;
    if (suffix == QLatin1String("csv")) {
        importer = std::make_unique<CsvImporter>();
        importer->setIndexRange(4096, 49151);
    } else if (suffix == QLatin1String("eds") || suffix == QLatin1String("dcf")) {
        importer = std::make_unique<EDSImporter>();
        importer->setIndexRange(4096, 49151);
    } else if (suffix == QLatin1String("txt") && info.completeBaseName().contains(QLatin1String("doc"))) {
        // The index range of the text documentation holds PGN numbers.
        importer = std::make_unique<DOCTXTImporter>();
        importer->setIndexRange(0, 262143);
    } else {
        return false;
    }
    // The importer's reports arrive on its own thread while this one waits;
    // they are passed on once it has ended.
    QStringList problems;
    connect(
        importer.get(), &BaseDataImporter::importError, importer.get(),
        [&problems](quint8, quint16, quint8, const QString& text) { problems.append(text); },
        Qt::DirectConnection);
    importer->setLine(0);
    importer->setDatabase(m_database);
    importer->setFile(info.absoluteFilePath());
    importer->startImport();
    importer->waitFinished();
    for (const QString& problem : std::as_const(problems)) {
        if (m_output)
            m_output->writeLine(tr("Import of %1: %2").arg(info.absoluteFilePath(), problem));
    }
    return true;
}

bool GeneratorMainHandler::saveProject()
{
    if (!m_database)
        return false;
    return m_database->saveDatabase(QString());
}

void GeneratorMainHandler::handleCheckError(const QString& errorString)
{
    m_output->writeLine(errorString);
    Q_EMIT checkMessage(errorString, m_checkedLine);
}

void GeneratorMainHandler::generatorProgress(quint8 progress)
{
    if (progress != 100)
        return;
    auto* generator = qobject_cast<AbstractGenerator*>(sender());
    QString name = sender() ? sender()->objectName() : QString();
    if (name.isEmpty())
        name = QStringLiteral("output");
    if (generator && generator->hasFailed()) {
        m_output->writeLine(tr("<b>ERROR - Generation of %1 failed.").arg(name) + QLatin1Char(' ') +
                            generator->lastError() + QStringLiteral("</b>"));
        return;
    }
    QString extra;
    if (generator && name.startsWith(QLatin1String("gen_sdg.c")))
        extra = QStringLiteral("(%1)").arg(generator->resultInfo());
    m_output->writeLine(tr("Generation of %1 completed. %2").arg(name, extra));
}

void GeneratorMainHandler::generate(bool ignoreCheckErrors)
{
    const RunFacts facts = prepareRun();
    if (!runModelCheck(facts, ignoreCheckErrors))
        return;
    if (!QFileInfo(m_outputDir).isWritable()) {
        m_output->writeLine(tr("ABORT - The output folder %1 is not writeable.").arg(m_outputDir));
        Q_EMIT finished(OutputNotWritable);
        return;
    }
    if (!runGenerators(facts))
        return;
    finishRun();
}

void GeneratorMainHandler::runPostGenProcess()
{
    if (!m_postGen)
        m_postGen.reset(new PostGenProcessor(m_output, m_progressHandler.data(), this),
                        &QObject::deleteLater);
    qDebug() << Q_FUNC_INFO << __LINE__ << QDateTime::currentDateTime();
    m_postGen->run(m_database, m_outputDir, m_projectBaseName, m_skipEdsCheck, m_skipProgressValue);
    // A command-line run would end before the EDS checkers report and before
    // the line endings are converted.
    m_postGen->waitUntilDone();
    qDebug() << Q_FUNC_INFO << __LINE__ << QDateTime::currentDateTime();
}

bool GeneratorMainHandler::usesV4() const
{
    return m_database->getGeneralSetting(QStringLiteral("use_core_headers")) == QLatin1String("V4");
}

GeneratorMainHandler::RunFacts GeneratorMainHandler::prepareRun()
{
    RunFacts facts;
    const QList<quint8> lines = m_database->getNodeList();
    for (quint8 line : lines) {
        if (line >= Line::firstInternal)
            continue;
        const int type = m_database->lineType(line);
        facts.hasCANopen |= Line::carriesCANopen(type);
        facts.hasRawCan |= Line::carriesRawCan(type);
        if (Line::carriesJ1939(type)) {
            facts.hasJ1939 = true;
            m_database->deletePGN(line, 60928, ObjectDataBase::Transmit);
        }
    }
    for (quint8 line : lines) {
        if (line < Line::firstScratch)
            facts.lineList << line;
    }
    facts.multiLine = facts.lineList.size() > 1;
    facts.bootloaderOnly =
        m_database->getGeneralSetting(QStringLiteral("uds_bl_setting")) == QLatin1String("1") &&
        !facts.multiLine;

    for (quint8 line : std::as_const(facts.lineList)) {
        m_database->cacheAllSubs(line, 0);
        m_database->cacheSubNames(line, 0);
    }
    m_database->loadStringPool();
    return facts;
}

bool GeneratorMainHandler::runModelCheck(const RunFacts& facts, bool ignoreCheckErrors)
{
    ModelChecker checker;
    m_output->writeLine(tr("\nCheck of model consistency started"));
    connect(&checker, &ModelChecker::newError, this, &GeneratorMainHandler::handleCheckError);
    bool corrected = false;

    m_checkedLine = -1;
    int errorCount = checker.checkProject(m_database, m_outputDir);
    for (quint8 line : facts.lineList) {
        m_checkedLine = line;
        if (facts.multiLine) {
            m_output->writeEmphasized(QVariant());
            m_output->writeEmphasized(tr("<strong>________________________________________ Checking line %1 "
                                         "________________________________________</strong>")
                                          .arg(line));
        }
        const int type = m_database->lineType(line);
        if (Line::carriesCANopen(type))
            errorCount += checker.checkCANopenLine(line, m_database, corrected);
        if (Line::carriesJ1939(type))
            errorCount += checker.checkJ1939Line(facts.lineList.size(), line, m_database,
                                                 ModelChecker::stackHandledPgns());
        if (Line::carriesRawCan(type))
            errorCount += checker.checkRawCANLine(line, m_database);
        if (!Line::carriesCANopen(type) && !Line::carriesJ1939(type) && !Line::carriesRawCan(type))
            handleCheckError(tr("Warning line type not set for line %1.").arg(line));
    }
    m_checkedLine = -1;
    if (corrected)
        Q_EMIT doneCorrection();

    writeCheckLog(errorCount, ignoreCheckErrors);
    if (errorCount > 0 && !ignoreCheckErrors) {
        m_output->writeLine(
            tr("ABORT - Check of model consistency finished: failed (%1 errors)").arg(errorCount));
        Q_EMIT finished(CheckFailed);
        return false;
    }
    m_output->writeLine(tr("\nCheck of model consistency finished.\n"));
    return true;
}

// Runs without the headings and the log of a generation run; corrections
// reach the open project, and the file only by a later save.
int GeneratorMainHandler::checkModel(QStringList& messages)
{
    messages.clear();
    if (!m_database) {
        messages << tr("No project open.");
        return 1;
    }
    QList<quint8> lineList;
    for (quint8 line : m_database->getNodeList()) {
        if (line < Line::firstScratch)
            lineList << line;
    }
    for (quint8 line : std::as_const(lineList))
        m_database->cacheAllSubs(line, 0);

    ModelChecker checker;
    connect(&checker, &ModelChecker::newError, this, [&messages](const QString& text) { messages << text; });
    bool corrected = false;
    int errorCount = checker.checkProject(m_database, m_outputDir);
    for (quint8 line : std::as_const(lineList)) {
        const int type = m_database->lineType(line);
        if (Line::carriesCANopen(type))
            errorCount += checker.checkCANopenLine(line, m_database, corrected);
        if (Line::carriesJ1939(type))
            errorCount +=
                checker.checkJ1939Line(lineList.size(), line, m_database, ModelChecker::stackHandledPgns());
        if (Line::carriesRawCan(type))
            errorCount += checker.checkRawCANLine(line, m_database);
        if (!Line::carriesCANopen(type) && !Line::carriesJ1939(type) && !Line::carriesRawCan(type))
            messages << tr("Warning: line type not set for line %1.").arg(line);
    }
    return errorCount;
}

// The log stays beside the project when the check fails; after a clean check
// it moves to ".bak", which is never overwritten.
void GeneratorMainHandler::writeCheckLog(int errorCount, bool ignoreCheckErrors)
{
    const QString logPath = m_outputDir + QStringLiteral("/__trwerrorlog.txt");
    QFile log(logPath);
    if (log.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        log.write(m_output->collectedText().toUtf8());
        log.close();
    }
    if (errorCount > 0 && !ignoreCheckErrors)
        return;
    QFile::copy(logPath, logPath + QStringLiteral(".bak"));
    QFile::remove(logPath);
}

QString GeneratorMainHandler::message(const QString& text) const
{
    // Most messages name only the folder; the EDS messages also name the project.
    if (text.contains(QLatin1String("%2")))
        return text.arg(m_outputDir, m_projectBaseName);
    return text.arg(m_outputDir);
}

void GeneratorMainHandler::removeOutputFile(const QString& relativeName) const
{
    QFile::remove(m_outputDir + relativeName);
}

AbstractGenerator* GeneratorMainHandler::createGenerator(const Step& step, const QString& className,
                                                         const RunFacts& facts)
{
    AbstractGenerator* generator = GeneratorRegistry::entry(className).create(step.options);
    if (!generator)
        return nullptr;
    generator->setOutputDir(m_outputDir);
    generator->setDatabase(m_database.data());
    generator->setDeviceName(m_projectBaseName);
    generator->setLine(step.line);
    if (step.withMultiLine)
        generator->setMultiLine(facts.multiLine);
    return generator;
}

// The standard run of one generator: create, configure, test the target
// file, start on its own thread, wait while serving events, delete.
bool GeneratorMainHandler::runGenerator(const Step& step, const RunFacts& facts)
{
    const QString className = (!step.v4Class.isEmpty() && usesV4()) ? step.v4Class : step.classicClass;
    if (!GeneratorRegistry::contains(className))
        return true;
    AbstractGenerator* generator = createGenerator(step, className, facts);
    if (!generator)
        return true;
    const GeneratorRegistry::Precondition shouldRun = GeneratorRegistry::entry(className).shouldRun;
    if (shouldRun && !shouldRun(generator)) {
        if (step.whenNotNeeded)
            step.whenNotNeeded();
        delete generator;
        return true;
    }
    bool goOn = true;
    if (!generator->canWrite()) {
        m_output->writeLine(message(step.notWritableMessage));
    } else {
        connect(generator, &AbstractGenerator::progress, this, &GeneratorMainHandler::generatorProgress);
        generator->start();
        m_output->writeLine(message(step.startedMessage));
        generator->waitUntilDone();
        if (step.afterRun)
            goOn = step.afterRun(generator);
    }
    delete generator;
    QCoreApplication::processEvents();
    return goOn;
}

bool GeneratorMainHandler::runGenerators(const RunFacts& facts)
{
    runSourceSteps(facts);
    runMultiProtocolSteps(facts);
    if (!runSrdoStep(facts))
        return false;
    runDefineSteps(facts);
    runJ1939OnlySteps(facts);
    runDeclarationSteps(facts);
    runDescriptionSteps(facts);
    return true;
}

// Steps 1 to 5: indices, CANopen documentation and the object dictionary.
void GeneratorMainHandler::runSourceSteps(const RunFacts& facts)
{
    const bool compact =
        m_database->getGeneralSetting(QStringLiteral("compact_array_description")).toInt() == 1;

    if (facts.anyLine() && !facts.bootloaderOnly) {
        Step indices{QStringLiteral("IndicesGenerator"),
                     {},
                     tr("Generation of gen_indices.h in %1 started"),
                     tr("The file in gen_indices.h in %1 is not writable")};
        indices.withMultiLine = true;
        indices.options.lineList = facts.lineList;
        runGenerator(indices, facts);
    }
    if (facts.hasCANopen) {
        for (quint8 line : facts.lineList) {
            if (!Line::carriesCANopen(m_database->lineType(line)))
                continue;
            Step doc{QStringLiteral("TextDocGenerator"),
                     {},
                     tr("Generation of textual object dictionary documentation in %1 started"),
                     tr("The file in %2_doc.txt in %1 is not writable"),
                     line,
                     true};
            runGenerator(doc, facts);
        }
        for (quint8 line : facts.lineList) {
            const int type = m_database->lineType(line);
            if (!Line::carriesCANopen(type))
                continue;
            Step html{QStringLiteral("HTMLGenerator"),
                      {},
                      tr("Generation of HTML object dictionary documentation in %1 started"),
                      tr("The file in %2.html in %1 is not writable"),
                      line,
                      true};
            if (type == Line::CANopenJ1939 || type == Line::CANopenRawCan)
                html.options.fileSuffix = QStringLiteral("_co");
            runGenerator(html, facts);
        }
    }
    if (facts.canopenOnly()) {
        Step objdict{QStringLiteral("ObjDictGenerator"), QStringLiteral("ObjDictGeneratorV4"),
                     tr("Generation of gen_objdict.c in %1 started"),
                     tr("The file gen_objdict.c in %1 is not writable")};
        objdict.options.compactArrays = compact;
        runGenerator(objdict, facts);

        Step vobjdict{QStringLiteral("VobjDictGenerator"), QStringLiteral("VobjDictGeneratorV4"),
                      tr("Generation of gen_vobjdict.c in %1 started"),
                      tr("The file gen_vobjdict.c in %1 is not writable")};
        vobjdict.options.compactArrays = compact;
        vobjdict.options.vobjExtras = m_vobjExtras;
        vobjdict.whenNotNeeded = [this] { removeOutputFile(QStringLiteral("/gen_vobjdict.c")); };
        runGenerator(vobjdict, facts);
    }
}

// Steps 6 to 11: the multi-protocol source and the per-line J1939 and raw CAN outputs.
void GeneratorMainHandler::runMultiProtocolSteps(const RunFacts& facts)
{
    if (!facts.multiProtocol())
        return;
    runGenerator({QStringLiteral("MultiProGenerator"), QStringLiteral("MultiProGeneratorV4"),
                  tr("Generation of gen_mp.c in %1 started"), tr("The file gen_mp.c in %1 is not writable")},
                 facts);
    for (quint8 line : facts.lineList) {
        const int type = m_database->lineType(line);
        if (Line::carriesJ1939(type)) {
            runGenerator({QStringLiteral("J1939TextDocGenerator"),
                          {},
                          tr("Generation of textual PGN documentation in %1 started"),
                          tr("The file in %2_doc.txt in %1 is not writable"),
                          line,
                          true},
                         facts);
        }
        if (Line::carriesRawCan(type)) {
            runGenerator({QStringLiteral("RawCANTextDocGenerator"),
                          {},
                          tr("Generation of raw CAN text documentation in %1 started"),
                          tr("The file %2_doc.txt in %1 is not writable"),
                          line,
                          true},
                         facts);
            runGenerator({QStringLiteral("RawCANDBCGenerator"),
                          {},
                          tr("Generation of raw CAN DBC file in %1 started"),
                          tr("The file %2.dbc in %1 is not writable"),
                          line,
                          true},
                         facts);
        }
    }
    for (quint8 line : facts.lineList) {
        const int type = m_database->lineType(line);
        if (!Line::carriesJ1939(type))
            continue;
        Step html{QStringLiteral("J1939HTMLGenerator"),
                  {},
                  tr("Generation of HTML pgn documentation in %1 started"),
                  tr("The file in %2.html in %1 is not writable"),
                  line,
                  true};
        if (type == Line::CANopenJ1939 || type == Line::J1939RawCan)
            html.options.fileSuffix = QStringLiteral("_j1939");
        runGenerator(html, facts);
    }
    runJ1939DbcSteps(facts);
}

// The DBC file of every J1939 line, last of the J1939 outputs.
void GeneratorMainHandler::runJ1939DbcSteps(const RunFacts& facts)
{
    for (quint8 line : facts.lineList) {
        if (!Line::carriesJ1939(m_database->lineType(line)))
            continue;
        runGenerator({QStringLiteral("DBCGenerator"),
                      {},
                      tr("Generation of DBC_file in %1 started"),
                      tr("The file in %2.html in %1 is not writable"),
                      line,
                      true},
                     facts);
    }
}

// Step 12: the one generator whose failure ends the whole run.
bool GeneratorMainHandler::runSrdoStep(const RunFacts& facts)
{
    int srdoObjects = 0;
    for (quint8 line : facts.lineList)
        srdoObjects += m_database->getIndexList(line, 4865, 4991).size();
    if (srdoObjects == 0 || !m_srdoEnabled)
        return true;
    // Static SRDO data come from the stack's template, the others from the generator alone.
    const bool staticData = m_database->getGeneralSetting(QStringLiteral("static_srdo_data")).toInt() == 1;
    Step srdo{staticData ? QStringLiteral("SrdoGeneratorStatic") : QStringLiteral("SrdoGenerator"),
              {},
              tr("Generation of gen_srdo.c in %1 started"),
              tr("The file gen_srdo.c in %1 is not writable")};
    srdo.afterRun = [this](AbstractGenerator* generator) {
        if (!generator->hasFailed())
            return true;
        m_output->writeLine(generator->lastError());
        Q_EMIT finished(SrdoTemplateMissing);
        return false;
    };
    return runGenerator(srdo, facts);
}

// Steps 13 and 14: gen_define.h and the C# property files.
void GeneratorMainHandler::runDefineSteps(const RunFacts& facts)
{
    Step define{QStringLiteral("CoDefineGenerator"), QStringLiteral("GenDefineGenerator"),
                tr("Generation of gen_define.h in %1 started"),
                tr("The file gen_define.h in %1 is not writable")};
    define.options.j1939Present = facts.hasJ1939;
    define.options.moreThanJ1939 = facts.hasJ1939 ? (facts.hasCANopen || facts.hasRawCan) : facts.hasRawCan;
    define.afterRun = [this](AbstractGenerator* generator) {
        const QString userSection = generator->property("userSection").toString().trimmed();
        if (!userSection.isEmpty())
            m_output->writeLine(tr("gen_define.h contains user section:\n%1").arg(userSection));
        return true;
    };
    runGenerator(define, facts);

    if (m_database->getGeneralSetting(QStringLiteral("gen_csharp_props")).toInt() == 1)
        writePropertyFiles();
}

void GeneratorMainHandler::writePropertyFiles()
{
    if (PropsFileWriter::write(m_outputDir + QStringLiteral("/gen_define.h"), m_outputDir))
        m_output->writeLine(
            tr("Generation of gen_define.props and Directory.Build.props in %1 finished").arg(m_outputDir));
    else
        m_output->writeLine(tr("The files gen_define.props and Directory.Build.props in %1 are not writable")
                                .arg(m_outputDir));
}

// Steps 15 to 21: a device that speaks J1939 only.
void GeneratorMainHandler::runJ1939OnlySteps(const RunFacts& facts)
{
    if (!facts.j1939Only())
        return;
    runGenerator({QStringLiteral("PGNGenerator"), QStringLiteral("PGNGeneratorV4"),
                  tr("Generation of gen_pgn.c in %1 started"),
                  tr("The file gen_pgn.c in %1 is not writable")},
                 facts);
    const bool sdoServer =
        m_database->getJ1939Setting(QStringLiteral("cia510serversupport")).toInt(nullptr, 0) == 1;
    if (sdoServer) {
        Step objdict{QStringLiteral("ObjDictGenerator"), QStringLiteral("ObjDictGeneratorV4"),
                     tr("Generation of gen_objdict.c for CAM11/CAM21 SDO server in %1 started"),
                     tr("The file gen_objdict.c in %1 is not writable")};
        objdict.options.sdoServerMode = true;
        runGenerator(objdict, facts);

        Step eds{QStringLiteral("EDSGenerator"),
                 {},
                 tr("Generation of %2 EDS file in %1 started (for CAM11/CAM21 SDO Server)"),
                 tr("The EDS file %2.eds in %1 is not writable")};
        eds.withMultiLine = true;
        runGenerator(eds, facts);
    }
    for (quint8 line : facts.lineList) {
        runGenerator({QStringLiteral("J1939TextDocGenerator"),
                      {},
                      tr("Generation of textual PGN documentation in %1 started"),
                      tr("The file in %2_doc.txt in %1 is not writable"),
                      line,
                      true},
                     facts);
    }
    for (quint8 line : facts.lineList) {
        runGenerator({QStringLiteral("J1939HTMLGenerator"),
                      {},
                      tr("Generation of HTML pgn documentation in %1 started"),
                      tr("The file in %2.html in %1 is not writable"),
                      line,
                      true},
                     facts);
    }
    runJ1939DbcSteps(facts);
    removeAdapterFiles();
}

// Step 21: this pipeline writes no adapter, so stale adapter files go unless
// the project asks for an adapter; a J1939-only device has no gen_indication.h.
void GeneratorMainHandler::removeAdapterFiles()
{
    if (m_database->getJ1939Setting(QStringLiteral("j1939adapter")).toInt() != 1) {
        removeOutputFile(QStringLiteral("/gen_j1939_adapter.c"));
        removeOutputFile(QStringLiteral("/gen_j1939_adapter.cs"));
        removeOutputFile(QStringLiteral("/j1939_adapter.cs"));
        removeOutputFile(QStringLiteral("/j1939_adapter.c"));
    }
    removeOutputFile(QStringLiteral("/gen_indication.h"));
}

// Steps 22 and 23: external declarations and safety data messages.
void GeneratorMainHandler::runDeclarationSteps(const RunFacts& facts)
{
    if (!(facts.hasJ1939 || facts.hasRawCan) || facts.bootloaderOnly)
        return;
    runGenerator({QStringLiteral("ExtDeclGenerator"), QStringLiteral("ExtDeclGeneratorV4"),
                  tr("Generation of gen_extern_decl.h in %1 started"),
                  tr("The file gen_extern_decl.h in %1 is not writable")},
                 facts);
    if (m_database->getJ1939Setting(QStringLiteral("safetysupport")).toInt() > 0) {
        runGenerator({QStringLiteral("SDMGenerator"), QStringLiteral("SDMGeneratorV4"),
                      tr("Generation of file in %1 started"), tr("The file in %1 is not writable")},
                     facts);
    }
}

// Steps 24 to 29: indications, lists, device descriptions, C++ copies.
void GeneratorMainHandler::runDescriptionSteps(const RunFacts& facts)
{
    const bool staticUdsIndication =
        m_database->getGeneralSetting(QStringLiteral("uds_static_indication")).toInt() == 1;
    if (!facts.hasCANopen && !staticUdsIndication)
        return;

    Step indication{QStringLiteral("indicationgenerator"),
                    {},
                    tr("Generation of gen_indication in %1 started"),
                    tr("The file gen_indication.h in %1 is not writable")};
    if (usesV4() || staticUdsIndication)
        indication.classicClass = QStringLiteral("indicationgeneratorv4");
    runGenerator(indication, facts);

    for (quint8 line : facts.lineList) {
        if (!Line::carriesCANopen(m_database->lineType(line)))
            continue;
        runGenerator({QStringLiteral("CSVGenerator"),
                      {},
                      tr("Generation of CSV file (deprecated) in %1 started"),
                      tr("The file %2.csv in %1 is not writable"),
                      line,
                      true},
                     facts);
    }
    for (quint8 line : facts.lineList) {
        if (!Line::carriesCANopen(m_database->lineType(line)))
            continue;
        Step icsv{QStringLiteral("ICSVGenerator"),
                  {},
                  tr("Generation of ICSV file in %1 started"),
                  tr("The file %2.icsv in %1 is not writable"),
                  line,
                  true};
        icsv.options.leaveOutDocumentation =
            m_database->getMiscSetting(QStringLiteral("disableDocu")) == QLatin1String("true");
        runGenerator(icsv, facts);
    }
    for (quint8 line : facts.lineList) {
        if (Line::carriesCANopen(m_database->lineType(line)))
            runEdsVariants(line, facts);
    }
    if (m_database->getGeneralSetting(QStringLiteral("canfd_supported")).toInt() >= 1) {
        for (quint8 line : facts.lineList) {
            if (!Line::carriesCANopen(m_database->lineType(line)))
                continue;
            runGenerator({QStringLiteral("XDDGenerator"),
                          {},
                          tr("Generation of XDD file in %1 started"),
                          tr("The XDD file %2.xdd in %1 is not writable"),
                          line,
                          true},
                         facts);
        }
    }
    if (m_database->getGeneralSetting(QStringLiteral("generate_cpp_output")).toInt() == 1)
        writeCppOutput();
}

// Step 27: one EDS per variant define, plus a classical CAN twin of each
// when the device speaks CAN FD.
void GeneratorMainHandler::runEdsVariants(quint8 line, const RunFacts& facts)
{
    const QStringList variants = edsVariants(line);
    const bool canFd = m_database->getGeneralSetting(QStringLiteral("canfd_supported")).toInt() >= 1;
    for (const QString& define : variants) {
        Step eds{QStringLiteral("EDSGenerator"),
                 {},
                 tr("Generation of %2 EDS file in %1 started"),
                 tr("The EDS file %2.eds in %1 is not writable"),
                 line,
                 true};
        eds.startedMessage = eds.startedMessage.arg(QStringLiteral("%1"), define);
        eds.options.edsDefine = define;
        eds.options.canFd = canFd;
        runGenerator(eds, facts);
        if (canFd) {
            Step classical{QStringLiteral("EDSGenerator"),
                           {},
                           tr("Generation of %2 classical EDS file in %1 started"),
                           tr("The EDS file %2_classical.eds in %1 is not writable"),
                           line,
                           true};
            classical.startedMessage = classical.startedMessage.arg(QStringLiteral("%1"), define);
            classical.options.edsDefine = define;
            classical.options.classical = true;
            runGenerator(classical, facts);
        }
    }
    if (variants.size() > 1)
        m_output->writeLine(tr("Warning: multiple different EDS files to be generated.\n"));
}

QStringList GeneratorMainHandler::edsVariants(quint8 line) const
{
    static const QString key = QStringLiteral("eds_define");
    QStringList variants{QString()};
    auto take = [&variants](const QSharedPointer<QMap<QString, QString>>& metadata) {
        if (metadata && metadata->contains(key) && !variants.contains(metadata->value(key)))
            variants << metadata->value(key);
    };
    const QList<ObjectDataBase::ObjectEntry> objects = m_database->getObjects(line, 4096, 0xFFFF);
    for (const ObjectDataBase::ObjectEntry& object : objects) {
        take(object.data.metadata);
        for (quint8 sub : object.subindices) {
            SUBINDEX_DATA_T subindex;
            if (m_database->getSubIndex(line, object.index, sub, subindex))
                take(subindex.metadata);
        }
    }
    return variants;
}

// Step 29: C++ builds compile the object dictionary as C++ and need the user
// callbacks declared with C linkage.
void GeneratorMainHandler::writeCppOutput()
{
    const QFileInfo dir(m_outputDir);
    if (m_outputDir.isEmpty() || !dir.exists() || !dir.isWritable())
        return;
    const QString base = m_outputDir + QLatin1Char('/');
    QFile::remove(base + QStringLiteral("gen_objdict.cpp"));
    QFile::copy(base + QStringLiteral("gen_objdict.c"), base + QStringLiteral("gen_objdict.cpp"));
    QFile userHeader(base + QStringLiteral("gen_user.h"));
    if (!userHeader.exists())
        return;
    QFile::remove(base + QStringLiteral("gen_user.hpp"));
    if (!userHeader.open(QIODevice::ReadOnly))
        return;
    QByteArray text = userHeader.readAll();
    text.replace("RET_T", "extern \"C\" RET_T");
    QFile cppHeader(base + QStringLiteral("gen_user.hpp"));
    if (cppHeader.open(QIODevice::WriteOnly | QIODevice::Truncate))
        cppHeader.write(text);
}

// Step 30.
void GeneratorMainHandler::finishRun()
{
    QCoreApplication::processEvents();
    m_database->clearStringPool();
    m_output->writeLine(tr("Generation finished."));
    runPostGenProcess();
    Q_EMIT finished(Success);
}
