#pragma once

#include "canopenlib/canopenindex.h"
#include "canopenlib/canopensubindex.h"
#include "canopenlib/edsinifile.h"

#include <QHash>
#include <QMap>
#include <QObject>
#include <QSet>
#include <QString>

// Reads an EDS or DCF file and hands its objects and subindices out one by
// one, in the order of the file: each object first, then its subindices.
class EdsParser : public QObject
{
    Q_OBJECT
public:
    explicit EdsParser(QObject* parent = nullptr);

    // False when the file can't be read or holds no object at all.
    bool LoadEds(QString path);
    // Subindex (decimal text) to name, from the [xxxxName] section of an
    // object that describes its subindices with CompactSubObj.
    QMap<QString, QString> getCompactSubObjNames(quint16 index) const;

signals:
    void newIndex(const CANopen::CANopenIndex& newInd);
    void newSubIndex(const CANopenSubindex& newSub);

private:
    // The sections of one object: its own and its [xxxxsubN] sections.
    struct ObjectSections
    {
        quint16 index = 0;
        const EdsIniFile::Section* object = nullptr;
        QList<EdsIniFile::Section> subs;
        QList<quint8> subNumbers;
    };

    QList<ObjectSections> collectObjects(const QList<EdsIniFile::Section>& sections);
    void readObjectLists(const QList<EdsIniFile::Section>& sections);
    void readCompactNames(quint16 index, const EdsIniFile::Section& section);

    CANopen::CANopenIndex makeIndex(const ObjectSections& object) const;
    CANopenSubindex makeSubindex(const EdsIniFile::Section& section, const CANopen::CANopenIndex& owner,
                                 const EdsIniFile::Section& ownerSection, quint8 sub) const;
    void emitObject(const ObjectSections& object);

    QHash<quint16, QMap<QString, QString>> m_compactNames;
    QSet<quint16> m_mandatory;
};
