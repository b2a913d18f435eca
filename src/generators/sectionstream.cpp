#include "generators/sectionstream.h"

SectionStream::SectionStream(QIODevice* file, Renamer renamer) : m_renamer(std::move(renamer)), m_stream(file)
{
}

SectionStream& SectionStream::operator<<(const char* literal)
{
    m_stream << m_renamer(literal);
    return *this;
}

SectionStream& SectionStream::operator<<(const QString& text)
{
    m_stream << text;
    return *this;
}
