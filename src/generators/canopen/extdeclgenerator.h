#pragma once

#include "generators/abstractgenerator.h"
#include "generators/sectionstream.h"

#include <QList>
#include <QSet>
#include <QString>

class QIODevice;

// Writes gen_extern_decl.h: the extern declarations of the application's own
// variables that the J1939 and raw CAN mapping tables point at. On request it
// also writes gen_var_decl.c, which defines the same variables for an
// application that has none of its own yet.
//
// File order of both files: head, body, end.
class ExtDeclGenerator : public AbstractGenerator
{
    Q_OBJECT
public:
    explicit ExtDeclGenerator(QObject* parent = nullptr);

    bool canWrite() override;
    GeneratorStatus start() override;

    // gen_var_decl.c beside the header; the pipeline leaves it off.
    void setWriteDefinitions(bool write) { m_writeDefinitions = write; }

protected Q_SLOTS:
    void doJob() override;

protected:
    // The V4 stack marks its banners and has 16-bit words for 11, 13 and 15 bits.
    virtual bool coreForm() const { return false; }

private:
    void writeHeaderHead(SectionStream& out);
    void writeDefinitionsHead(SectionStream& out);
    // The declarations; `prefix` is "extern " in the header and empty in the C file.
    void writeBody(SectionStream& out, const char* prefix);
    void writeHeaderEnd(SectionStream& out);
    void writeDefinitionsEnd(SectionStream& out);

    // A J1939 or raw CAN signal as the declarations need it.
    struct Variable
    {
        int implementation;
        int dataType;
        quint16 bits;
        QString varname;
        quint32 number;
        QString desc;
    };
    void writeGroup(SectionStream& out, const char* prefix, const QString& heading,
                    const QList<Variable>& variables);
    void writeDeclaration(SectionStream& out, const char* prefix, const Variable& variable);
    // The C type for the data type's name.
    QString cWord(const QString& text) const;

    bool m_writeDefinitions = false;
    QFile* m_definitionsFile;
    // Names declared so far in the file being written, over all lines.
    QSet<QString> m_declared;
};
