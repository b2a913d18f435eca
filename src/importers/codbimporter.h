#pragma once

#include "importers/basedataimporter.h"

#include <QStringList>

struct SUBINDEX_DATA_T;

// Reads a CANopen profile database (".codb"): a text file with one object
// or subindex per line, fields separated by ":". Object lines carry "::"
// directly behind the four-digit index; "#" starts a comment and "$xxxx=yyyy"
// says that object xxxx is defined like object yyyy.
class CODBImporter : public BaseDataImporter
{
    Q_OBJECT
public:
    explicit CODBImporter(QObject* parent = nullptr);

    // Off by default: profiles are loaded without the objects that only
    // copy rules define.
    void setApplyCopyRules(bool apply) { applyCopyRules = apply; }

public Q_SLOTS:
    void doImport() override;

private:
    void importLine(const QString& text);
    void applyCopyRule(const QString& text);
    void importObjectLine(const QStringList& fields);
    void importVarObject(quint16 index, const QStringList& fields);
    void importSubIndexLine(const QStringList& fields);
    // Name, data type, access, allowed access and PDO mapping, alike in both line kinds.
    void fillCommonFields(SUBINDEX_DATA_T& sub, const QStringList& fields) const;
    void adjustToExistingIndex(quint16 index, quint8 subindex, SUBINDEX_DATA_T& sub);

    static void fillLimits(SUBINDEX_DATA_T& sub, const QString& lowText, const QString& upText);
    static QString upLimitFromText(const QString& upText);
    // Implementation rules of DOMAIN and VISIBLE_STRING entries.
    static void applyTypeRules(quint16 index, quint8 subindex, SUBINDEX_DATA_T& sub);

    bool applyCopyRules = false;
};
