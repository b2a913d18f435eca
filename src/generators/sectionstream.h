#pragma once

#include <QString>
#include <QTextStream>

#include <functional>
#include <type_traits>

class QIODevice;

// Writes one section of a generated C file. Literal pieces (C strings) pass
// through the generator's renaming for the stack form; texts of the project
// and numbers are written as they are.
class SectionStream
{
public:
    using Renamer = std::function<QString(const char*)>;

    SectionStream(QIODevice* file, Renamer renamer);

    SectionStream& operator<<(const char* literal);
    SectionStream& operator<<(const QString& text);
    template <typename T,
              std::enable_if_t<std::is_integral_v<T> && !std::is_same_v<T, bool> && !std::is_same_v<T, char>,
                               int> = 0>
    SectionStream& operator<<(T number)
    {
        m_stream << QString::number(number);
        return *this;
    }

private:
    Renamer m_renamer;
    QTextStream m_stream;
};
