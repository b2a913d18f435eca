#include "generators/canopen/gendefinegenerator.h"

#include "canopenlib/udsstaticindication.h"
#include "database/objectdatabase.h"
#include "generators/stackwords.h"

GenDefineGenerator::GenDefineGenerator(QObject* parent) : CoDefineGenerator(parent) {}

const StackWords* GenDefineGenerator::stackWords() const
{
    return &StackWords::genDefine();
}

// With static UDS indications the stack calls the application's functions by
// name instead of through registered pointers.
void GenDefineGenerator::writeStaticUdsIndications()
{
    if (settingInt(QStringLiteral("uds_static_indication")) != 1)
        return;
    SectionStream out(this);
    out << "\n/* static UDS indication binding */\n";
    for (const UDS::StaticIndication* service : UDS::staticIndicationsBySetting()) {
        const QString function = setting(QLatin1String(service->key)).trimmed();
        if (!function.isEmpty())
            out << "#define " << service->macro << "\t" << function << "\n";
    }
}
