#pragma once

#include <QHash>
#include <QList>
#include <QMutex>
#include <QString>

// The words of the classic CANopen stack that the V4 stack, with its
// service-independent "core" layer, spells differently: one table for each
// output file that exists in both forms. A SectionStream of a V4 file passes
// every literal through the table of its file; only where the structure of
// the two forms differs does a generator branch on the form.
class StackWords
{
public:
    struct Word
    {
        const char* classic;
        const char* core;
    };

    static const StackWords& genDefine();
    static const StackWords& genObjdict();
    static const StackWords& genVobjdict();
    static const StackWords& genPgn();
    static const StackWords& genMp();
    static const StackWords& genSdg();
    static const StackWords& commonInit();

    // The literal with each whole word of the table in its V4 spelling, then
    // each piece of text of the table replaced.
    QString coreSpelling(const char* literal) const;

private:
    StackWords(std::initializer_list<Word> words, std::initializer_list<Word> pieces);
    // The words of `base` and more.
    StackWords(const StackWords& base, std::initializer_list<Word> words, std::initializer_list<Word> pieces);

    QHash<QString, QString> m_words;
    QList<Word> m_pieces;
    // Literals have static storage and recur in every run: each is spelt once.
    mutable QMutex m_lock;
    mutable QHash<const char*, QString> m_spelt;
};
