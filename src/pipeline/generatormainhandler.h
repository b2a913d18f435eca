#pragma once

#include "pipeline/generatoroptions.h"

#include <QList>
#include <QObject>
#include <QSharedPointer>
#include <QString>
#include <QStringList>

#include <functional>

class AbstractGenerator;
class QFileInfo;
class ObjectDataBase;
class OutputHandlerBase;
class PostGenProcessor;
class PostGenProgressHandler;

// Drives one run: open, correct, import, modify, check, and all output
// generators in their fixed order, one at a time.
class GeneratorMainHandler : public QObject
{
    Q_OBJECT
public:
    enum GeneratorResult
    {
        Success = 0,
        CheckFailed = 2,
        OutputNotWritable = 3,
        SrdoTemplateMissing = 4,
    };
    Q_ENUM(GeneratorResult)

    GeneratorMainHandler(OutputHandlerBase* output, QObject* parent = nullptr,
                         QSharedPointer<PostGenProgressHandler> progressHandler = {});
    ~GeneratorMainHandler() override;

    bool applyDbModifier(const QString& path);
    void setStackPath(const QString& path);
    bool importFile(const QString& path);
    void generate(bool ignoreCheckErrors);
    bool saveProject();
    void runPostGenProcess();
    // The model check alone, for the MCP server: every message goes into messages; returns the error count.
    int checkModel(QStringList& messages);

    QSharedPointer<ObjectDataBase> database() const { return m_database; }
    QString outputDir() const { return m_outputDir; }
    // The server's generate writes into a folder of the client's choice for one run.
    void setOutputDir(const QString& dir) { m_outputDir = dir; }
    QString projectBaseName() const { return m_projectBaseName; }
    QString projectPath() const { return m_projectPath; }

Q_SIGNALS:
    void finished(GeneratorMainHandler::GeneratorResult result);
    void doneCorrection();
    // Each message of a run's model check, with the line being checked, or -1 for the project-wide rules.
    void checkMessage(const QString& text, int line);

public Q_SLOTS:
    bool openProject(const QString& filePath);
    void handleCheckError(const QString& errorString);
    void generatorProgress(quint8 progress);

private:
    // Facts about the lines, worked out at the start of each run.
    struct RunFacts
    {
        bool hasCANopen = false;
        bool hasJ1939 = false;
        bool hasRawCan = false;
        QList<quint8> lineList;
        bool multiLine = false;
        bool bootloaderOnly = false;
        bool anyLine() const { return hasCANopen || hasJ1939 || hasRawCan; }
        bool canopenOnly() const { return hasCANopen && !hasJ1939 && !hasRawCan; }
        bool multiProtocol() const { return hasRawCan || (hasCANopen && hasJ1939); }
        bool j1939Only() const { return hasJ1939 && !hasCANopen && !hasRawCan; }
    };

    // One row of the generation order.
    struct Step
    {
        Step(const QString& classic, const QString& v4, const QString& started, const QString& notWritable,
             quint8 stepLine = 0, bool multiLineFlag = false)
            : classicClass(classic), v4Class(v4), startedMessage(started), notWritableMessage(notWritable),
              line(stepLine), withMultiLine(multiLineFlag)
        {
        }

        QString classicClass;
        QString v4Class;
        QString startedMessage;
        QString notWritableMessage;
        quint8 line = 0;
        bool withMultiLine = false;
        GeneratorOptions options;
        // Runs when the generator's precondition says there is nothing to write.
        std::function<void()> whenNotNeeded;
        // Runs after the generator has ended; false ends the whole pipeline.
        std::function<bool(AbstractGenerator*)> afterRun;
    };

    bool importProject(const QString& path);
    bool importWithImporter(const QFileInfo& info);
    bool usesV4() const;
    RunFacts prepareRun();
    bool runModelCheck(const RunFacts& facts, bool ignoreCheckErrors);
    void writeCheckLog(int errorCount, bool ignoreCheckErrors);
    bool runGenerators(const RunFacts& facts);
    bool runGenerator(const Step& step, const RunFacts& facts);
    AbstractGenerator* createGenerator(const Step& step, const QString& className, const RunFacts& facts);
    void runSourceSteps(const RunFacts& facts);
    void runMultiProtocolSteps(const RunFacts& facts);
    void runJ1939DbcSteps(const RunFacts& facts);
    bool runSrdoStep(const RunFacts& facts);
    void runDefineSteps(const RunFacts& facts);
    void runJ1939OnlySteps(const RunFacts& facts);
    void runDeclarationSteps(const RunFacts& facts);
    void runDescriptionSteps(const RunFacts& facts);
    void runEdsVariants(quint8 line, const RunFacts& facts);
    QStringList edsVariants(quint8 line) const;
    void writePropertyFiles();
    void removeAdapterFiles();
    void writeCppOutput();
    void finishRun();
    QString message(const QString& text) const;
    void removeOutputFile(const QString& relativeName) const;

    bool m_skipEdsCheck = false;
    bool m_skipProgressValue = false;
    QStringList m_extraArguments;
    QSharedPointer<ObjectDataBase> m_database;
    QString m_outputDir;
    QString m_projectBaseName;
    QString m_projectPath;
    bool m_vobjExtras = false;
    bool m_srdoEnabled = true;
    OutputHandlerBase* m_output;
    int m_checkedLine = -1;
    QSharedPointer<PostGenProcessor> m_postGen;
    QSharedPointer<PostGenProgressHandler> m_progressHandler;
};
