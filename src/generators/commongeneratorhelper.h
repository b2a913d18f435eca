#pragma once

#include "canopenlib/udstypes.h"

#include <QList>
#include <QMap>
#include <QString>

class ObjectDataBase;

// Pieces of C text that several stack source generators share, built on the
// spot from the project; the caller writes them into its own file: the
// declaration of commonInitVars, the UDS service and line structures with
// their session and security tables, and the UDS init calls.
class CommonGeneratorHelper
{
public:
    // Service codes of the init structure versions.
    enum Service
    {
        CommonService = 0,
        RawCanService = 1,
        CanopenService = 2,
        J1939Service = 3,
        UdsService = 4
    };

    // multiLine: the project is written in the multi-line form.
    CommonGeneratorHelper(ObjectDataBase* database, bool multiLine);
    virtual ~CommonGeneratorHelper() = default;

    // The version of the init structure of a service that the stack expects.
    int serviceVersion(int service) const;
    // The declaration of commonInitVars, the stack's common buffer and protocol settings.
    QString commonDeclarations() const;
    // The UDS service structure and, per line, the session, security (and
    // V4 authentication) tables and the line structure; empty without UDS.
    QString udsDefinitions() const;
    // The V4 pointers to the application's statically bound UDS indications,
    // each under the guard of its binding; they belong at file level, so a
    // caller whose UDS definitions stand in a function writes them ahead of
    // it. Empty in the classic form, without UDS and without a bound service.
    QString staticIndicationPointers() const;
    // udsStackInit_common with its check; empty without UDS.
    QString commonUdsCall() const;
    // udsStackInit_line of one line with its check; empty without UDS.
    QString lineUdsCall(quint8 line, bool multiLine) const;

protected:
    // The V4 stack names the common structure and its counts after its core
    // layer, puts its UDS structures at the left margin and knows UDS
    // authentication.
    virtual bool coreForm() const { return false; }

private:
    struct UdsRow
    {
        int sid = 0;
        QString sessions;
        QString userlevels;
        QString authentication;
    };

    QString words(const char* literal) const;
    // The indent of a declaration in the init code.
    QString scopeIndent() const;
    // A call of the init code whose failure ends the init function.
    QString checkedCall(const char* comment, const QString& call) const;
    QString protocolList() const;
    QString protocolText(int lineType) const;
    bool udsInUse() const;
    int settingInt(const QString& key) const;
    QList<quint8> lines() const;
    QList<UdsRow> activeRows(quint8 line) const;
    // A table of services and their sessions or security levels.
    QString serviceTable(quint8 line, const QList<UdsRow>& rows, bool sessions, int& rowCount) const;
    QString authenticationTable(quint8 line, const QList<UdsRow>& rows, int& rowCount) const;
    // tables: the line has active services and so its tables.
    QString lineStructure(quint8 line, int version, bool tables, int sessionRows, int securityRows,
                          int authenticationRows) const;
    QString sessionName(const QString& value) const;
    // A value of a comma list at the line's index; beyond the list empty.
    QString listValue(const QString& key, quint8 line) const;

    ObjectDataBase* m_database;
    bool m_multiLine;
    QMap<UDS::SID, QString> m_serviceNames;
};
