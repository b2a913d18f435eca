#pragma once

#include "generators/abstractgenerator.h"

#include <QList>
#include <QString>
#include <QStringList>

// Writes gen_srdo.c: the Safety-Relevant Data Objects of the device. Safety
// rules forbid generic run-time mapping, so the safety data and the code that
// copies them are generated from the mapping. This form writes the whole file
// around the fixed SRDO module; sections in file order: head with the
// function prototypes, data, process variables, module data, internal
// functions, module body, copy functions.
class SrdoGenerator : public AbstractGenerator
{
    Q_OBJECT
public:
    explicit SrdoGenerator(QObject* parent = nullptr);

    bool canWrite() override;
    GeneratorStatus start() override;

protected Q_SLOTS:
    void doJob() override;

protected:
    // An object that an SRDO maps, with the C facts of its data type.
    struct MappedObject
    {
        quint16 index = 0;
        quint8 subindex = 0;
        int bits = 0;
        // 0 when the mapped object doesn't exist.
        int dataType = 0;
        QString name;
        QString cType;
        bool inverted = false;
    };

    // One SRDO of a line: its communication object, the raw mapping and the
    // mapped objects in mapping order.
    struct Srdo
    {
        quint8 line = 0;
        int number = 0;
        quint16 index = 0;
        bool receive = false;
        QList<quint32> mapping;
        QList<MappedObject> objects;
    };

    // Reads lines, SRDOs and mappings before anything is written.
    void layOut();

    // Texts that both forms of gen_srdo.c write.
    QString dataDefinitions() const;
    QString dataPointerSwitch(const QString& lineWord) const;
    QString processVariables(bool withTemporaries) const;
    QString srdoName(const Srdo& srdo) const;
    // One value per line, as a C initialiser in the multi-line form.
    QString initialValue(const QString& value) const;

    QList<quint8> m_lines;
    QList<Srdo> m_srdos;

private:
    void writeHead();
    void writeData();
    void writeProcessVariables();
    void writeModuleData();
    void writeInternalFunctions();
    void writeModuleBody();
    void writeCopyFunctions();
    QString copyFunction(bool receive) const;
};
