#include "pipeline/generatorregistry.h"

#include "generators/abstractgenerator.h"

namespace {

QHash<QString, GeneratorRegistry::Entry> builtInGenerators()
{
    QHash<QString, GeneratorRegistry::Entry> known;
    return known;
}

} // namespace

bool GeneratorRegistry::contains(const QString& className)
{
    return entries().contains(className);
}

GeneratorRegistry::Entry GeneratorRegistry::entry(const QString& className)
{
    return entries().value(className);
}

void GeneratorRegistry::registerGenerator(const QString& className, const Entry& entry)
{
    entries().insert(className, entry);
}

void GeneratorRegistry::unregisterGenerator(const QString& className)
{
    entries().remove(className);
}

QHash<QString, GeneratorRegistry::Entry>& GeneratorRegistry::entries()
{
    static QHash<QString, Entry> known = builtInGenerators();
    return known;
}
