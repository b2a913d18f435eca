#pragma once

#include "database/objectdatabase.h"

#include <QString>

// Cells that the CSV table and the importable ICSV table write alike. Every
// cell with a value closes with its own ",", as the rows are written.
class CsvCells
{
public:
    // The default value in the form of its data type: integers in decimal,
    // reals in general format; what doesn't convert stands as stored. Text
    // types are quoted when `quoteText` is set.
    static QString typedValue(const SUBINDEX_DATA_T& sub, bool quoteText);
    // "ManagedVariable," and the like; "," for an unknown kind.
    static QString implementation(int implementation);
    // Doubled quotes inside, quotes around.
    static QString quoted(const QString& text);
    // The text as it is, quoted only where a separator, a quote or a line end
    // in it would otherwise split or end the cell.
    static QString plain(const QString& text);
    static QString yesNo(bool value);
};
