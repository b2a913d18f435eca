#pragma once

#include "generators/canopen/objdictgenerator.h"

#include <QList>
#include <QString>

// Writes gen_vobjdict.c: the second object dictionary, for the virtual
// sub-indices, whose values the application serves on demand through access
// functions from memory outside the address space. Its tables have the form
// of those of gen_objdict.c and the sizes that gen_define.h gives them.
// Sections in file order: head, access functions, descriptions, assign table.
class VobjDictGenerator : public ObjDictGenerator
{
    Q_OBJECT
public:
    explicit VobjDictGenerator(bool compactDescription = false, QObject* parent = nullptr);

    bool canWrite() override;
    GeneratorStatus start() override;

    // Whether the project has virtual sub-indices; without, the file isn't written.
    bool hasVirtualObjects();

protected Q_SLOTS:
    void doJob() override;

protected:
    const StackWords* stackWords() const override;

private:
    // A virtual sub-index with its position in the access table of its type.
    struct VirtualEntry
    {
        quint8 line;
        quint16 index;
        quint8 subindex;
        const SUBINDEX_DATA_T* sub;
        int slot;
        bool compactEnd;
    };

    // An object with at least one virtual sub-index.
    struct VirtualObject
    {
        quint8 line;
        const DictObject* object;
        int firstRow;
        int rows;
    };

    // Works out rows and slots before anything is written.
    void layOut();

    // Sections, in file order.
    void writeHead();
    void writeAccessFunctions();
    void writeDescriptionRows();
    void writeAssignRows();

    QString rowOf(const VirtualEntry& entry) const;

    QList<VirtualEntry> m_entries;
    QList<VirtualObject> m_virtualObjects;
};
