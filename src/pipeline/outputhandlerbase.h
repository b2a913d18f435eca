#pragma once

#include <QObject>
#include <QString>
#include <QVariant>

// The one sink for every message a user sees. Generators, the checker and
// importers never print; the pipeline passes their texts on through this.
class OutputHandlerBase : public QObject
{
    Q_OBJECT
public:
    explicit OutputHandlerBase(QObject* parent = nullptr);

    virtual void writeLine(QVariant value) = 0;
    // Used for the per-line headings of a run.
    virtual void writeEmphasized(QVariant value);
    virtual QString collectedText() = 0;
};
