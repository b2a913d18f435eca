#pragma once

#include <QString>

class ObjectDataBase;

// Pieces of C text that several stack source generators share, built on the
// spot from the project; the caller writes them into its own file.
class CommonGeneratorHelper
{
public:
    // multiLine: the project is written in the multi-line form.
    CommonGeneratorHelper(ObjectDataBase* database, bool multiLine);
    virtual ~CommonGeneratorHelper() = default;

    // The declaration of commonInitVars, the stack's common buffer and protocol settings.
    QString commonDeclarations() const;

protected:
    // The V4 stack names the common structure and its counts after its core layer.
    virtual bool coreForm() const { return false; }
    QString protocolList() const;
    QString protocolText(int lineType) const;
    bool udsInUse() const;
    int settingInt(const QString& key) const;

    ObjectDataBase* m_database;
    bool m_multiLine;
};
