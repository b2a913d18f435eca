#pragma once

#include "generators/canopen/srdogenerator.h"

// gen_srdo.c from the template of the protocol stack (gen_srdo.tpl in the
// stack's source tree), whose placeholders are replaced by generated texts.
// The template must hold each placeholder once.
class SrdoGeneratorStatic : public SrdoGenerator
{
    Q_OBJECT
public:
    explicit SrdoGeneratorStatic(QObject* parent = nullptr);

protected Q_SLOTS:
    void doJob() override;

private:
    // The stack folder of the project, or of the user's installation of the sibling tool.
    QString stackPath() const;
    // Every placeholder once; otherwise the reason why the template can't be used.
    static QString templateFault(const QString& text);
    // The working text with every placeholder replaced.
    QString filledTemplate(QString text) const;
    QString copyCode(bool receive, bool compare) const;
    QString odEntries() const;
    // Drops the "#ifdef <type count>" blocks of the types no mapped object has.
    void removeUnusedEntryBlocks();

    QString m_lineWord;
    bool m_core = false;
};
