#include "generators/sectionstream.h"

#include "generators/abstractgenerator.h"
#include "generators/stackwords.h"

SectionStream::SectionStream(AbstractGenerator* generator)
    : m_coreWords(generator->stackWords()), m_stream(generator->m_file)
{
}

SectionStream::SectionStream(AbstractGenerator* generator, QIODevice* device)
    : m_coreWords(generator->stackWords()), m_stream(device)
{
}

SectionStream& SectionStream::operator<<(const char* literal)
{
    if (m_coreWords)
        m_stream << m_coreWords->coreSpelling(literal);
    else
        m_stream << QLatin1StringView(literal);
    return *this;
}

SectionStream& SectionStream::operator<<(const QString& text)
{
    m_stream << text;
    return *this;
}
