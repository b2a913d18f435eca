#pragma once

#include <QCoreApplication>
#include <QJsonObject>
#include <QList>
#include <QString>
#include <QStringList>

// The model check's messages of one command-line run as a SARIF 2.1.0 log, the
// format that CI code-scanning services read. Each message becomes one result
// with its text freed of markup, a level from its class, and the line, object
// index and subindex it is about as a logical location such as "line0/0x1018/0".
class SarifReport
{
    Q_DECLARE_TR_FUNCTIONS(SarifReport)

public:
    // What the log says about the run itself.
    struct Invocation
    {
        QString projectFile;
        QStringList arguments;
        int exitCode = 0;
        // The text of a failure that ended the run early, empty otherwise.
        QString failure;
    };

    // line is the CAN line being checked, or -1 for the project-wide rules.
    void addMessage(const QString& text, int line);
    QJsonObject log(const Invocation& invocation) const;
    // Replaces the file as a whole; false when it cannot be written, with the reason in errorString().
    bool write(const QString& path, const Invocation& invocation);
    QString errorString() const { return m_error; }

private:
    struct Message
    {
        QString text;
        int line;
    };

    QList<Message> m_messages;
    QString m_error;
};
