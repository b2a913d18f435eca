#pragma once

#include "generators/abstractgenerator.h"

#include <QList>
#include <QString>

#include <functional>

class QTextStream;
struct INDEX_DATA_T;

// The frame that every text document of a line shares: the CSV and ICSV
// tables, the text documentation and the HTML pages. A document names its
// file and writes its content into one text stream; opening, the database's
// thread access and the end report are the same for all of them.
class DocumentGenerator : public AbstractGenerator
{
    Q_OBJECT
public:
    explicit DocumentGenerator(QObject* parent = nullptr);

    bool canWrite() override;
    GeneratorStatus start() override;

    // The name inside the output folder that this run writes.
    virtual QString outputFileName() const = 0;
    // A line of mixed protocols tells its pages apart by this ending of the file name.
    GeneratorStatus setNameSuffix(const QString& suffix);

protected Q_SLOTS:
    void doJob() override;

protected:
    // The object name under which the pipeline reports this document.
    virtual QString documentName() const = 0;
    // The name the writability check looks at; most documents test their real name.
    virtual QString checkedFileName() const;
    virtual void writeDocument(QTextStream& out) = 0;

    // True once the run is to stop; logs it, so that a loop simply ends.
    bool aborted() const;
    // "<base><ending>", or "<base>_<line><lineEnding>" in a project of several lines.
    QString perLineName(const QString& ending, const QString& lineEnding) const;
    // The objects of the line from 0x1000 on, ascending.
    QList<quint16> objectIndices() const;
    QString descriptionSetting(const QString& key) const;
    // How many of the area borders 0x2000 and 0x6000 the walk over the objects
    // passes at this index: the tables and lists set the three areas apart.
    int areaBordersPassed(quint16 index);
    // The tables' walk over the objects until the run is to stop: `border`
    // for each area border passed, then the object to `writeObject`.
    void writeObjects(QTextStream& out, QLatin1StringView border,
                      const std::function<void(quint16 index, const INDEX_DATA_T& object)>& writeObject);

    static QString hex(quint32 value, int digits);
    // Today as Qt writes a date in text form, "Wed Nov 25 2026".
    static QString textDate();

    QString m_nameSuffix;

private:
    int m_areasEntered = 0;
};
