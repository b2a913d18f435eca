#include "canopenlib/pdomapping.h"

QString PDOMapping::getCSVStringValue() const
{
    switch (m_type) {
    case NotMappable:
        return QStringLiteral("no");
    case Mappable:
        return QStringLiteral("yes");
    case MappableTPDO:
        return QStringLiteral("tpdo");
    case MappableRPDO:
        return QStringLiteral("rpdo");
    case MappedByDefault:
        return QStringLiteral("default");
    }
    return QString::number(m_type);
}

PDOMapping PDOMapping::fromCSVString(const QString& text)
{
    const QString word = text.trimmed().toLower();
    if (word == QLatin1String("yes") || word == QLatin1String("1") || word == QLatin1String("true") ||
        word == QLatin1String("optional"))
        return PDOMapping(Mappable);
    if (word == QLatin1String("tpdo"))
        return PDOMapping(MappableTPDO);
    if (word == QLatin1String("rpdo"))
        return PDOMapping(MappableRPDO);
    if (word == QLatin1String("default"))
        return PDOMapping(MappedByDefault);
    return PDOMapping(NotMappable);
}

QString PDOMapping::getXDDStringValue() const
{
    switch (m_type) {
    case NotMappable:
        return QStringLiteral("no");
    case Mappable:
        return QStringLiteral("optional");
    case MappableTPDO:
        return QStringLiteral("TPDO");
    case MappableRPDO:
        return QStringLiteral("RPDO");
    case MappedByDefault:
        return QStringLiteral("default");
    }
    return QStringLiteral("no");
}
