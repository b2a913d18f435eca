#pragma once

#include <QObject>
#include <QString>

// Interface of a progress display for the steps after generation. The
// command line has none; every use is guarded.
class PostGenProgressHandler : public QObject
{
    Q_OBJECT
public:
    explicit PostGenProgressHandler(QObject* parent = nullptr);

    virtual void setValue(int value);
    virtual void setLabelText(const QString& text);
    virtual void setCancelButtonText(const QString& text);
    virtual void show();
    virtual void hide();
    virtual void showMessage(int level, const QString& title, const QString& text, const QString& details);

Q_SIGNALS:
    void cancelProcess();

public Q_SLOTS:
    void cancelProcessTriggered();
};
