#pragma once

#include "pipeline/outputhandlerbase.h"

#include <QTextStream>

#include <memory>

// Console sink: every message goes to standard output with its markup
// stripped, and is collected for the check log.
class CLIOutputHandler : public OutputHandlerBase
{
    Q_OBJECT
public:
    explicit CLIOutputHandler(QObject* parent = nullptr);

    void writeLine(QVariant value) override;
    QString collectedText() override;

    // Raw text to the console without tag removal or line end; collected too.
    CLIOutputHandler& operator<<(const QString& text);
    // Raw text to the console only, not collected.
    void writeRaw(const QString& text);

private:
    std::unique_ptr<QTextStream> m_stream;
    QString m_collected;
};
