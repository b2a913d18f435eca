#pragma once

#include "generators/abstractgenerator.h"
#include "generators/sectionstream.h"

#include "database/objectdatabase.h"

#include <QList>
#include <QString>

class PGNGenerator;

// Writes gen_j1939_adapter.c, a getter and a setter for the variable of every
// SPN of line 0, and beside it gen_j1939_adapter.cs, the partial class whose
// platform-invoke declarations let managed code call them. Signals of the
// stack's managed variables are named by the numbering of gen_pgn.c.
//
// File order, in both files: head, variable definitions (C only), getters,
// setters, end of the class (C# only).
class J1939AdapterGenerator : public AbstractGenerator
{
    Q_OBJECT
public:
    explicit J1939AdapterGenerator(QObject* parent = nullptr);

    bool canWrite() override;
    GeneratorStatus start() override;

    // The C# type that a C type of the stack arrives as.
    static QString managedType(const QString& cType);

protected Q_SLOTS:
    void doJob() override;

private:
    struct Signal
    {
        quint32 spn = 0;
        QString name;
        QString cType;
        QString variable;
        bool text = false;
    };
    struct Pgn
    {
        quint32 number = 0;
        QString name;
        QList<Signal> signalList;
    };

    void layOut();
    void writeHeads(SectionStream& c, SectionStream& cs);
    void writeVariables(SectionStream& c);
    void writeGetters(SectionStream& c, SectionStream& cs);
    void writeSetters(SectionStream& c, SectionStream& cs);
    void writeClassEnd(SectionStream& cs);

    static QString cTypeOf(int dataType);
    QString pgnComment(const Pgn& pgn) const;

    PGNGenerator* m_pgnGenerator;
    QFile* m_managedFile;
    QList<Pgn> m_pgns;
};
