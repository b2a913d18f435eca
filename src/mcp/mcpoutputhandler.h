#pragma once

#include "pipeline/outputhandlerbase.h"

#include <QString>

// Sink of the pipeline, checker and importer messages in server mode. They
// never reach standard output, which carries nothing but replies; a tool
// collects them and places them in its reply text.
class MCPOutputHandler : public OutputHandlerBase
{
    Q_OBJECT
public:
    explicit MCPOutputHandler(QObject* parent = nullptr);

    void writeLine(QVariant value) override;
    QString collectedText() override;

    // Returns what was collected since the last call and starts afresh.
    QString takeBuffer();

private:
    QString m_buffer;
};
