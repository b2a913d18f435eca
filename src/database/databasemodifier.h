#ifndef DATABASEMODIFIER_H
#define DATABASEMODIFIER_H

#include <QObject>
#include <QPointer>
#include <QString>

class ObjectDataBase;

// Applies a small text file of setting changes to the open project (-dbmod).
// Each line "GeneralSettings:<key>:<value>" or "J1939Settings:<key>:<value>"
// writes one setting; empty lines, "#" comments and anything else are passed over.
class DatabaseModifier : public QObject
{
    Q_OBJECT

public:
    explicit DatabaseModifier(ObjectDataBase* database = nullptr, QObject* parent = nullptr);

    void setDatabase(ObjectDataBase* database);
    // Accepts only an existing, readable file of more than 10 bytes.
    bool setModifierFile(const QString& path);
    // Stops at the first setting that cannot be written; the lines before it stay applied.
    bool applyModifierFile();
    QString lastFailedLine() const;

private:
    bool applyLine(const QString& line);

    QPointer<ObjectDataBase> database;
    QString modifierFile;
    QString failedLine;
};

#endif // DATABASEMODIFIER_H
