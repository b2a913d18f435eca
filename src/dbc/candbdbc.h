#pragma once

#include "dbc/candbdatabase.h"
#include "dbc/candbfileio.h"

#include <QByteArray>

class CANdbLexer;

// Reads and writes the DBC text format. The reader takes the statements that
// describe nodes, messages, signals, environment variables, comments,
// attributes, value tables and signal value types, and passes over the rest
// of the format; a damaged statement is reported with its line and skipped.
class CANdbDBC : public CANdbFileIo
{
public:
    int read(CANdbDatabase& database, const QString& fileName) override;
    int write(const CANdbDatabase& database, const QString& fileName) override;

    // The same on bytes in memory.
    int readText(CANdbDatabase& database, const QByteArray& text);
    static QByteArray writeText(const CANdbDatabase& database);

    // Byte order of a big-endian signal: the file counts its start from the
    // most significant bit, the database from the least significant one.
    static qint32 fileStartBit(qint32 storedStart, qint32 length);
    static qint32 storedStartBit(qint32 fileStart, qint32 length);

private:
    bool fail(const char* text);
    void readNodes();
    bool readMessage();
    bool readSignal(CANdbMessage& message);
    bool readReceivers(QList<QByteArray>& receivers);
    bool readVariable();
    bool readAttributeDefinition();
    bool readAttributeDefault();
    bool readAttributeValue();
    bool readAttributeData(const CANdbAttributeDefinition& definition, qint64& intValue, double& floatValue,
                           QByteArray& stringValue);
    bool readComment();
    bool readSignalValueType();
    bool readValueTable();
    bool readValueEntries(QList<CANdbValueEntry>& entries, const char* numberError, const char* stringError);
    bool readVariableData();
    bool readInteger(qint64& value);
    bool readNumber(double& value);
    bool readString(QByteArray& value);
    bool readIdentifier(QByteArray& value);
    // Messages and signals end with their line; other statements run to ";".
    int nextToken();
    bool expect(int token);
    CANdbMessage* readMessageId(const char* idError, const char* missingError);
    void skipStatement();
    void skipLine();
    void finishDatabase();

    CANdbDatabase* m_database = nullptr;
    CANdbLexer* m_lexer = nullptr;
    bool m_lineBound = false;
};
