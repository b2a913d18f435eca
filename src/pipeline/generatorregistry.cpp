#include "pipeline/generatorregistry.h"

#include "generators/abstractgenerator.h"
#include "generators/canopen/codefinegenerator.h"
#include "generators/canopen/extdeclgenerator.h"
#include "generators/canopen/extdeclgeneratorv4.h"
#include "generators/canopen/gendefinegenerator.h"
#include "generators/canopen/indicationgenerator.h"
#include "generators/canopen/indicationgeneratorv4.h"
#include "generators/canopen/indicesgenerator.h"
#include "generators/canopen/objdictgenerator.h"
#include "generators/canopen/objdictgeneratorv4.h"
#include "generators/canopen/srdogenerator.h"
#include "generators/canopen/srdogeneratorstatic.h"
#include "generators/canopen/vobjdictgenerator.h"
#include "generators/canopen/vobjdictgeneratorv4.h"
#include "generators/documents/csvgenerator.h"
#include "generators/documents/dbcgenerator.h"
#include "generators/documents/edsgenerator.h"
#include "generators/documents/htmlgenerator.h"
#include "generators/documents/icsvgenerator.h"
#include "generators/documents/j1939htmlgenerator.h"
#include "generators/documents/j1939textdocgenerator.h"
#include "generators/documents/rawcandbcgenerator.h"
#include "generators/documents/rawcantextdocgenerator.h"
#include "generators/documents/textdocgenerator.h"
#include "generators/documents/xddgenerator.h"
#include "generators/multiprotocol/multiprogenerator.h"
#include "generators/multiprotocol/multiprogeneratorv4.h"
#include "generators/multiprotocol/pgngenerator.h"
#include "generators/multiprotocol/pgngeneratorv4.h"
#include "generators/multiprotocol/sdmgenerator.h"
#include "generators/multiprotocol/sdmgeneratorv4.h"

namespace {

template <typename DefineGenerator> AbstractGenerator* createDefineGenerator(const GeneratorOptions& options)
{
    auto* generator = new DefineGenerator;
    generator->setJ1939Present(options.j1939Present);
    generator->setMixedProtocols(options.moreThanJ1939);
    return generator;
}

template <typename Document> AbstractGenerator* createDocument(const GeneratorOptions&)
{
    return new Document;
}

template <typename Page> AbstractGenerator* createPage(const GeneratorOptions& options)
{
    auto* page = new Page;
    page->setNameSuffix(options.fileSuffix);
    return page;
}

template <typename ObjDict> AbstractGenerator* createObjDictGenerator(const GeneratorOptions& options)
{
    return new ObjDict(options.compactArrays, options.sdoServerMode);
}

template <typename VobjDict> AbstractGenerator* createVobjDictGenerator(const GeneratorOptions& options)
{
    return new VobjDict(options.compactArrays);
}

bool hasVirtualObjects(AbstractGenerator* generator)
{
    auto* vobjdict = qobject_cast<VobjDictGenerator*>(generator);
    return vobjdict && vobjdict->hasVirtualObjects();
}

QHash<QString, GeneratorRegistry::Entry> builtInGenerators()
{
    QHash<QString, GeneratorRegistry::Entry> known;
    known.insert(QStringLiteral("IndicesGenerator"),
                 {[](const GeneratorOptions& options) -> AbstractGenerator* {
                      auto* generator = new IndicesGenerator;
                      generator->setLineList(options.lineList);
                      return generator;
                  },
                  {}});
    known.insert(QStringLiteral("CoDefineGenerator"), {createDefineGenerator<CoDefineGenerator>, {}});
    known.insert(QStringLiteral("GenDefineGenerator"), {createDefineGenerator<GenDefineGenerator>, {}});
    known.insert(QStringLiteral("ObjDictGenerator"), {createObjDictGenerator<ObjDictGenerator>, {}});
    known.insert(QStringLiteral("ObjDictGeneratorV4"), {createObjDictGenerator<ObjDictGeneratorV4>, {}});
    known.insert(QStringLiteral("PGNGenerator"),
                 {[](const GeneratorOptions&) -> AbstractGenerator* { return new PGNGenerator; }, {}});
    known.insert(QStringLiteral("PGNGeneratorV4"),
                 {[](const GeneratorOptions&) -> AbstractGenerator* { return new PGNGeneratorV4; }, {}});
    known.insert(QStringLiteral("MultiProGenerator"),
                 {[](const GeneratorOptions&) -> AbstractGenerator* { return new MultiProGenerator; }, {}});
    known.insert(QStringLiteral("MultiProGeneratorV4"),
                 {[](const GeneratorOptions&) -> AbstractGenerator* { return new MultiProGeneratorV4; }, {}});
    known.insert(QStringLiteral("ExtDeclGenerator"),
                 {[](const GeneratorOptions&) -> AbstractGenerator* { return new ExtDeclGenerator; }, {}});
    known.insert(QStringLiteral("ExtDeclGeneratorV4"),
                 {[](const GeneratorOptions&) -> AbstractGenerator* { return new ExtDeclGeneratorV4; }, {}});
    known.insert(QStringLiteral("SDMGenerator"),
                 {[](const GeneratorOptions&) -> AbstractGenerator* { return new SDMGenerator; }, {}});
    known.insert(QStringLiteral("SDMGeneratorV4"),
                 {[](const GeneratorOptions&) -> AbstractGenerator* { return new SDMGeneratorV4; }, {}});
    known.insert(QStringLiteral("EDSGenerator"),
                 {[](const GeneratorOptions& options) -> AbstractGenerator* {
                      return new EDSGenerator(options.edsDefine, options.canFd, options.classical);
                  },
                  {}});
    known.insert(QStringLiteral("VobjDictGenerator"),
                 {createVobjDictGenerator<VobjDictGenerator>, hasVirtualObjects});
    known.insert(QStringLiteral("VobjDictGeneratorV4"),
                 {createVobjDictGenerator<VobjDictGeneratorV4>, hasVirtualObjects});
    known.insert(QStringLiteral("SrdoGenerator"),
                 {[](const GeneratorOptions&) -> AbstractGenerator* { return new SrdoGenerator; }, {}});
    known.insert(QStringLiteral("SrdoGeneratorStatic"),
                 {[](const GeneratorOptions&) -> AbstractGenerator* { return new SrdoGeneratorStatic; }, {}});
    known.insert(QStringLiteral("indicationgenerator"),
                 {[](const GeneratorOptions&) -> AbstractGenerator* { return new indicationgenerator; }, {}});
    known.insert(
        QStringLiteral("indicationgeneratorv4"),
        {[](const GeneratorOptions&) -> AbstractGenerator* { return new indicationgeneratorv4; }, {}});
    known.insert(QStringLiteral("TextDocGenerator"), {createDocument<TextDocGenerator>, {}});
    known.insert(QStringLiteral("J1939TextDocGenerator"), {createDocument<J1939TextDocGenerator>, {}});
    known.insert(QStringLiteral("RawCANTextDocGenerator"), {createDocument<RawCANTextDocGenerator>, {}});
    known.insert(QStringLiteral("HTMLGenerator"), {createPage<HTMLGenerator>, {}});
    known.insert(QStringLiteral("J1939HTMLGenerator"), {createPage<J1939HTMLGenerator>, {}});
    known.insert(QStringLiteral("CSVGenerator"), {createDocument<CSVGenerator>, {}});
    known.insert(QStringLiteral("ICSVGenerator"),
                 {[](const GeneratorOptions& options) -> AbstractGenerator* {
                      return new ICSVGenerator(!options.leaveOutDocumentation);
                  },
                  {}});
    known.insert(QStringLiteral("XDDGenerator"), {createDocument<XDDGenerator>, {}});
    known.insert(QStringLiteral("RawCANDBCGenerator"),
                 {[](const GeneratorOptions&) -> AbstractGenerator* { return new RawCANDBCGenerator; }, {}});
    known.insert(QStringLiteral("DBCGenerator"),
                 {[](const GeneratorOptions&) -> AbstractGenerator* { return new DBCGenerator; }, {}});
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
