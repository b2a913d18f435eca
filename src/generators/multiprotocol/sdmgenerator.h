#pragma once

#include "generators/abstractgenerator.h"
#include "generators/sectionstream.h"

#include "database/objectdatabase.h"

#include <QList>
#include <QString>
#include <QStringList>

// Writes gen_sdg.c, the safety data messages (SDG) of the J1939 lines: the
// variables of the safe PGNs, the receive configuration, and as straight-line
// C the copying of each safe PGN between its eight-byte message and the
// application's variables, followed by the fixed SDG module.
//
// File order: head with the module's prototypes, global variables, receive
// configuration, local functions (transmit PGN, receive records, safety
// cycle time, transmit mapping, receive mapping), module body.
class SDMGenerator : public AbstractGenerator
{
    Q_OBJECT
public:
    explicit SDMGenerator(QObject* parent = nullptr);

    bool canWrite() override;
    GeneratorStatus start() override;
    // "%1 transmit, %2 receive safety PGNs", for the completion line.
    QString resultInfo() override;

    // One signal of a safe PGN where the message holds it.
    struct Signal
    {
        quint32 spn = 0;
        int dataType = 0;
        // The variable as code refers to it: the array part of an element of
        // the application's array stands in `subscript`.
        QString variable;
        QString subscript;
        int firstBit = 0;
        int bits = 0;
    };

    // The C lines that copy the signals into the message `buffer`, or out of
    // it, for one safe PGN: the new mapping works from any bit position, the
    // old one knows only the fixed places of 2, 3, 4, 8, 16 and 32 bits.
    // What a mapping cannot express becomes an "#error" line.
    static QStringList packing(const QList<Signal>& signalList, const QString& buffer, bool oldMapping,
                               bool core);
    static QStringList unpacking(const QList<Signal>& signalList, bool oldMapping);

protected Q_SLOTS:
    void doJob() override;

protected:
    // The V4 stack fills the message to its length in one loop and has a
    // transmit configuration of its own.
    virtual bool coreForm() const { return false; }
    const StackWords* stackWords() const override;

private:
    struct SafePgn
    {
        quint8 line = 0;
        ObjectDataBase::PGN pgn;
        // Priority, extended data page, data page and PGN, as the stack keys an SDG.
        quint32 key = 0;
        QList<Signal> signalList;
    };

    void layOut();
    void writeFileHead(SectionStream& out);
    void writeGlobalVariables(SectionStream& out);
    void writeReceiveConfig(SectionStream& out);
    void writeTransmitConfig(SectionStream& out);
    void writeTransmitPgnFunction(SectionStream& out);
    void writeReceiveRecordFunctions(SectionStream& out);
    void writeCycleTimeFunction(SectionStream& out);
    void writeTransmitMapping(SectionStream& out);
    void writeReceiveMapping(SectionStream& out);
    void writeModuleBody(SectionStream& out);

    void writeFunctionHead(SectionStream& out, const char* head, const QStringList& parameters);
    // The line test of the multi-line form in front of `condition`.
    QString selection(const QString& condition, quint8 line) const;
    QList<SafePgn> safePgns(quint8 line, bool transmit) const;

    QList<quint8> m_lines;
    QList<SafePgn> m_transmit;
    QList<SafePgn> m_receive;
    bool m_oldMapping = false;
};
