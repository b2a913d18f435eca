#pragma once

#include <QObject>
#include <QProcess>
#include <QSharedPointer>
#include <QString>

// Runs the external EDS checker on one EDS file.
class EdsCheckerWrapper : public QObject
{
    Q_OBJECT
public:
    explicit EdsCheckerWrapper(QObject* parent = nullptr);

    // Fails, and keeps no path, when no such program exists.
    bool setCheckerPath(const QString& path);
    bool start(const QString& edsFile);
    // Ends a checker that runs too long; finished() follows with what it wrote.
    void stop();
    QString output() const { return m_output; }

Q_SIGNALS:
    void finished();

public Q_SLOTS:
    void processFinished(int exitcode);

private:
    QString m_checkerPath;
    QSharedPointer<QProcess> m_process;
    QString m_output;
};
