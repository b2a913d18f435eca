#pragma once

#include <QString>
#include <QTextStream>

#include <type_traits>

class AbstractGenerator;
class QIODevice;
class StackWords;

// Writes one section of a generated C file into the generator's output file.
// Literal pieces (C strings, plain ASCII) are spelt in the words of the
// generator's stack form; texts of the project and numbers are written as
// they are.
class SectionStream
{
public:
    explicit SectionStream(AbstractGenerator* generator);
    // Into a second file that the generator writes beside its own.
    SectionStream(AbstractGenerator* generator, QIODevice* device);

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
    // Null for the classic form, whose words the literals are written in.
    const StackWords* m_coreWords;
    QTextStream m_stream;
};
