#pragma once

#include "generators/canopen/objdictgenerator.h"

#include <QList>
#include <QString>

#include <memory>

class PGNGenerator;

// Writes gen_mp.c, the one stack source of a device whose lines mix
// protocols: the object dictionary of the CANopen lines (by the sections of
// gen_objdict.c), the PGN tables of the J1939 lines (by the sections of
// gen_pgn.c, written into this file), the CAN-ID tables of the raw CAN lines
// and mpStackInit with one start function per line. A device of raw CAN
// lines only gets the same file as gen_rawcan.c with rawcanStackInit, and the
// boot loader of the V4 stack, which speaks UDS alone, gen_uds.c.
//
// File order: head, managed variables and mapping tables of the J1939 and
// raw CAN lines, address claim, PGN tables, J1939 line configuration, the
// object dictionary, the raw CAN configuration, the start functions, the
// closing service variables of the object dictionary.
class MultiProGenerator : public ObjDictGenerator
{
    Q_OBJECT
public:
    explicit MultiProGenerator(QObject* parent = nullptr);
    ~MultiProGenerator() override;

    bool canWrite() override;
    GeneratorStatus start() override;

protected Q_SLOTS:
    void doJob() override;

protected:
    const StackWords* stackWords() const override;
    virtual std::unique_ptr<PGNGenerator> createPgnGenerator() const;
    void writeSdoServerInits(SectionStream& out, quint8 line, bool perLine) override;
    void writeSdoClientInits(SectionStream& out, quint8 line, bool perLine) override;

private:
    // The protocols of the project's lines, read at the file head.
    void readProtocols();
    QString fileName() const;

    // Sections, in file order.
    void writeFileHead(SectionStream& out);
    void writeWatchdogDefinition(SectionStream& out);
    void writePrototypes(SectionStream& out);
    void writeJ1939Tables();
    void writeRawCanConfig(SectionStream& out);
    void writeRawCanTable(SectionStream& out, quint8 line, bool transmit, const QList<quint32>& ids);
    void writeStackInit(SectionStream& out);
    void writeTopFunction(SectionStream& out);
    void writeCommonFunction(SectionStream& out);
    void writeServiceDeclarations(SectionStream& out);
    void writeLineFunction(SectionStream& out, quint8 line);
    void writeCanopenSequence(SectionStream& out, quint8 line, int indent);
    void writeJ1939LineStart(SectionStream& out, quint8 line);
    void writeRawCanLineStart(SectionStream& out, quint8 line);
    void writeFinishFunction(SectionStream& out);
    void writeClosing();
    // gen_uds.c of a V4 boot loader, instead of all of the above.
    void writeUdsOnlyFile(SectionStream& out);

    // "mpStackInit", or for the V4 raw CAN stack "rawcanStackInit".
    QString functionName(const char* part) const;
    QString lineSuffix(quint8 line) const;
    QString callArguments(const QString& rest) const;
    bool pdoRouting() const;

    std::unique_ptr<PGNGenerator> m_pgn;
    QList<quint8> m_activeLines;
    QList<int> m_lineTypes;
    bool m_hasCanopen = false;
    bool m_hasJ1939 = false;
    bool m_hasRawCan = false;
    bool m_rawCanOnly = false;
    bool m_udsOnly = false;
    bool m_projectMultiLine = false;
};
