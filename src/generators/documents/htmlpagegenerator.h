#pragma once

#include "generators/documents/documentgenerator.h"

// The frame of the HTML pages of a line: a self-contained page with a fixed
// style sheet, a floating table of contents and tables whose rows alternate
// in colour. The object dictionary page and the PGN page differ in layout
// and in how far their text is encoded.
class HtmlPageGenerator : public DocumentGenerator
{
    Q_OBJECT
public:
    QString outputFileName() const override;

protected:
    enum class Layout
    {
        ObjectDictionary,
        PgnList,
    };

    HtmlPageGenerator(Layout layout, QObject* parent);

    QString documentName() const override;
    void writeDocument(QTextStream& out) override;
    virtual void writeBody(QTextStream& out) = 0;

    // "<tr class="alt">" and "<tr>" in turn, over the whole page.
    QLatin1StringView nextRowTag();
    // One row of a label cell given as its whole line and a value cell.
    void writeRow(QTextStream& out, QLatin1StringView labelCell, const QString& value);
    // Umlauts and line feeds in their HTML form; the object dictionary page
    // also encodes the characters that HTML reserves.
    QString encoded(const QString& text) const;

    bool m_implementationInfo = false;

private:
    void writeHead(QTextStream& out);
    void writeStyleSheet(QTextStream& out);

    Layout m_layout;
    int m_rowCounter = 0;
};
