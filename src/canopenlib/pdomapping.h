#pragma once

#include <QString>

// Whether, and in which direction, an object may be mapped into a PDO.
// The numbers are stored in the project file and must not change.
class PDOMapping
{
public:
    enum PDOMappingType : quint8
    {
        NotMappable = 0,
        Mappable = 1,
        MappableTPDO = 2,
        MappableRPDO = 3,
        MappedByDefault = 4,
    };

    PDOMapping() = default;
    PDOMapping(PDOMappingType type) : m_type(type) {}

    void setValue(PDOMappingType type) { m_type = type; }
    PDOMappingType value() const { return m_type; }
    bool operator==(const PDOMapping& other) const { return m_type == other.m_type; }
    bool operator!=(const PDOMapping& other) const { return m_type != other.m_type; }
    bool isEqualToType(PDOMappingType type) const { return m_type == type; }

    quint8 toUInt() const { return m_type; }
    // An EDS knows only mappable or not.
    quint8 toBinary() const { return m_type == NotMappable ? 0 : 1; }

    QString getCSVStringValue() const;
    static PDOMapping fromCSVString(const QString& text);
    // The PDOmapping attribute values of a CiA 311 device description.
    QString getXDDStringValue() const;

private:
    PDOMappingType m_type = NotMappable;
};
