#pragma once

#include "generators/abstractgenerator.h"
#include "generators/sectionstream.h"

#include "database/linetypes.h"
#include "database/objectdatabase.h"

#include <QHash>
#include <QList>
#include <QMap>
#include <QPair>
#include <QSet>
#include <QString>
#include <QTextStream>

#include <functional>

// Writes gen_define.h, the configuration header of the protocol stack: every
// compile-time switch and table size of the stack, taken from the project's
// settings and its object dictionaries. A user-specific section and a
// generation counter survive from the previous file.
class CoDefineGenerator : public AbstractGenerator
{
    Q_OBJECT
public:
    explicit CoDefineGenerator(QObject* parent = nullptr);

    // The project has a J1939 line (types 2, 5, 7).
    void setJ1939Present(bool present);
    // With J1939: a CANopen or raw CAN line exists too; without: a raw CAN line exists.
    void setMixedProtocols(bool mixed);
    // The user-specific section found in the previous file; also the property "userSection".
    QString userSection() const { return m_userSection; }

    bool canWrite() override;
    GeneratorStatus start() override;

    // "0x%1%2%3ul" from the first three parts of a dotted version, two decimal digits each.
    static QString toolVersionNumber(const QString& version);
    // The lines between the section markers of a previous gen_define.h, each with "\n".
    static QString readUserSection(const QString& path);
    // The value of GEN_GENERATION_COUNT in a previous gen_define.h, 0 without one.
    static quint32 readGenerationCount(const QString& path);

protected Q_SLOTS:
    void doJob() override;

protected:
    // The facts of the sub-indices that several sections need, gathered in one pass.
    struct SubIndexFacts
    {
        bool extendedTypes = false;
        bool utf8Type = false;
        QHash<quint8, int> nvStorageCounts;
        // Virtual sub-indices of objects up to 0xBFFF.
        QHash<int, int> virtualTypeCounts;
        int virtualSubCount = 0;
        int virtualIndexCount = 0;
        QHash<quint8, int> virtualIndexCounts;
        // PDO mapping objects.
        int mpdoProducers = 0;
        int mpdoConsumers = 0;
        bool samMpdo = false;
        bool damMpdo = false;
        int maxMapEntries = 0;
        int transmitDynamicMappings = 0;
        int receiveDynamicMappings = 0;
        bool receiveTimer = false;
        bool transmitInhibit = false;
        // Data types of the objects that SRDO mappings refer to, plain and inverted.
        QHash<int, int> srdoEntryTypeCounts;
    };

    // The newer stack ("core") renames some defines and adds a few.
    virtual bool coreForm() const { return false; }
    // The classic stack has no static UDS indication binding.
    virtual void writeStaticUdsIndications() {}

    // Sections, in file order. The blocks of the other protocols (EnergyBus,
    // J1939, raw CAN, ISO-TP and UDS, COB budget of mixed projects) live in
    // codefinegenerator_protocols.cpp.
    void writeBannerAndToolBlock();
    void writeLineSettingsAndServices();
    void writeEnergyBusBlock();
    void writeEventDefines();
    void writeQueueBlock();
    void writeJ1939Block();
    void writeRawCanBlock();
    void writeIsoTpUdsBlock();
    void writeVirtualObjectBlock();
    void writeHardwareBlock();
    void writeApplicationBlock();
    void writeJ1939TimerInterval();
    void writeCobBlock();
    void writeClosingBlock();

    // Pieces of the line settings and services section.
    void writeLineSettings(SectionStream& out);
    void writeNodeIdDefines(SectionStream& out);
    void writeProfileDefines(SectionStream& out);
    void writeNetworkServices(SectionStream& out);
    void writeSdoCounts(SectionStream& out);
    void writeUsdoServer(SectionStream& out);
    void writeUsdoClient(SectionStream& out);
    void writePdoServices(SectionStream& out);
    void writeSrdoServices(SectionStream& out);
    void writeMpdoAndMappingServices(SectionStream& out);
    void writeManagerServices(SectionStream& out);
    void writeSdoTransferServices(SectionStream& out);
    void writeDataTypeAndInhibitServices(SectionStream& out);
    void writeStaticEventDefines(SectionStream& out);
    void writeSleepDefines(SectionStream& out);
    void writeDynamicEventDefines(SectionStream& out);
    void writeTargetHardware(SectionStream& out, int target, int active);

    // Project facts.
    int lineType(quint8 line) const;
    bool anyLineCarries(bool (*carries)(int)) const;
    // Number of objects of the line from `from` to `to` inclusive.
    int objects(quint8 line, quint16 from, quint16 to) const;
    // Number of sub-indices of the object, counting from `from` upward.
    int subs(quint8 line, quint16 index, quint8 from) const;
    bool has(quint8 line, quint16 index) const;
    bool hasOnAnyLine(quint16 index) const;
    int sumOverLines(const std::function<int(quint8)>& value) const;
    // "<a>u, <b>u" over the lines.
    QString lineList(const std::function<QString(quint8)>& value,
                     const QString& separator = QStringLiteral(", ")) const;
    QString countList(const std::function<int(quint8)>& count,
                      const QString& separator = QStringLiteral(", ")) const;
    // Default of a sub-index read as a number with automatic base; 0 when absent.
    quint64 defaultNumber(quint8 line, quint16 index, quint8 subindex) const;
    // A receive or transmit buffer size; the default holds only when the row is missing.
    QString bufferSize(const QString& key, const QString& fallback) const;
    // The CAN objects that the CANopen services of a line register; 255 for all lines.
    int cobCountCANopen(quint8 line) const;

    // The PGNs and CAN identifiers of the lines, as the J1939 and raw CAN
    // sections count them.
    struct J1939LineFacts
    {
        int receive = 0;
        int transmit = 0;
        int safeReceive = 0;
        int safeTransmit = 0;
        // A transmit row for the address claim, which the stack sends by itself.
        bool addressClaim = false;
    };
    struct RawLineFacts
    {
        int receive = 0;
        int transmit = 0;
        bool inhibit = false;
    };
    void readProtocolFacts();
    int transmitPgns(quint8 line) const;
    int receivePgns(quint8 line) const;
    QPair<int, QString> countAndList(const QList<quint8>& lines, quint8 single,
                                     const std::function<int(quint8)>& count) const;
    void writeJ1939SdoCounts(SectionStream& out, const QList<quint8>& lines);
    void writeJ1939Features(SectionStream& out);
    void writeJ1939Cobs(SectionStream& out, const QList<quint8>& lines);
    // The CAN objects that the J1939 services of a line register.
    int cobCountJ1939(quint8 line) const;
    int cobCountIsoTpUds(quint8 line) const;
    bool udsAuthenticationRequired() const;
    static QString timerValue(const QString& value);
    static QString bufferTotal(QString value);

    bool j1939Present() const { return m_flag1; }
    bool mixedProtocols() const { return m_flag2; }

    QString m_userSection;
    quint32 m_generationCount = 0;
    bool m_multiLineDefined = false;
    bool m_bufferCountsDefined = false;
    bool m_inhibitDefined = false;
    bool m_sdoServerCntDefined = false;
    bool m_sdoClientCntDefined = false;
    bool m_canEventDefined = false;
    bool m_externalGenerationCount = false;
    bool m_canFdSupported = false;

    // Lines below 32, ascending, with their types and objects from 0x1000.
    QList<quint8> m_lines;
    QHash<quint8, int> m_lineTypes;
    QHash<quint8, QList<quint16>> m_indexLists;
    // Sub-index lists of those objects, keyed by line * 65536 + index.
    QHash<quint32, QList<quint8>> m_subIndexLists;
    SubIndexFacts m_facts;
    QMap<quint8, J1939LineFacts> m_j1939Facts;
    QMap<quint8, RawLineFacts> m_rawFacts;
    bool m_multiSourcePgn = false;
    QSet<int> m_safetyTypes;

private:
    void readProjectFacts();
    void scanSubIndices();
    void scanSubIndex(quint8 line, quint16 index, quint8 subindex, const SUBINDEX_DATA_T& sub);
    void scanMappingObject(quint16 index, const QList<quint8>& subindices, const SUBINDEX_DATA_T& first);
    bool isEnergyBusEdition() const;
    // Receive or transmit buffer sizes per line, each ending in "u".
    QString bufferList(const QString& key, const QString& fallback) const;
};
