#pragma once

#include "pipeline/generatoroptions.h"

#include <QHash>
#include <QString>

#include <functional>

class AbstractGenerator;

// The generator classes the pipeline knows, by class name. A step whose class
// is not registered is passed over without a word.
class GeneratorRegistry
{
public:
    using Factory = std::function<AbstractGenerator*(const GeneratorOptions&)>;
    // Asked after configuration; false passes the step over (gen_vobjdict.c
    // runs only when virtual objects exist).
    using Precondition = std::function<bool(AbstractGenerator*)>;

    struct Entry
    {
        Factory create;
        Precondition shouldRun;
    };

    static bool contains(const QString& className);
    static Entry entry(const QString& className);
    // Replaces or adds a class; tests use it to watch the pipeline's order.
    static void registerGenerator(const QString& className, const Entry& entry);
    static void unregisterGenerator(const QString& className);

private:
    static QHash<QString, Entry>& entries();
};
