#pragma once

#include "generators/abstractgenerator.h"

#include <QList>
#include <QString>

class QTextStream;

// Writes gen_indication.h: the prototypes of the static indication functions
// that the project names, so that the function pointers of gen_objdict.c
// compile. Sections in file order: head, prototypes (or the note that there
// are none), tail.
class indicationgenerator : public AbstractGenerator
{
    Q_OBJECT
public:
    explicit indicationgenerator(QObject* parent = nullptr);

    bool canWrite() override;
    GeneratorStatus start() override;

protected Q_SLOTS:
    void doJob() override;

protected:
    // The V4 stack passes parameter records and knows more indications.
    virtual bool coreForm() const { return false; }

private:
    // A prototype of the file: the function the project names, with its return
    // word, its parameters behind the line parameter and an optional "#if" guard.
    struct Prototype
    {
        QString function;
        const char* returnWord;
        const char* parameters;
        const char* guard;
    };

    // The prototypes of the functions the project names, in file order.
    QList<Prototype> namedPrototypes() const;
    bool multiLineForm() const;
    void writeHead(QTextStream& out);
    void writePrototypes(QTextStream& out, const QList<Prototype>& prototypes);
    void writeNoneDefined(QTextStream& out);
    void writeTail(QTextStream& out);
};
