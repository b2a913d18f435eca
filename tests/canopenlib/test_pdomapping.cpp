#include "canopenlib/pdomapping.h"

#include <gtest/gtest.h>

// One row per mapping value: the number kept in the project, the EDS flag,
// the CSV word and the PDOmapping attribute of a CiA 311 description.
TEST(PDOMapping, EachValueHasItsFileForms)
{
    const struct
    {
        PDOMapping::PDOMappingType type;
        quint8 stored;
        quint8 eds;
        const char* csv;
        const char* xdd;
    } forms[] = {
        {PDOMapping::NotMappable, 0, 0, "no", "no"},
        {PDOMapping::Mappable, 1, 1, "yes", "optional"},
        {PDOMapping::MappableTPDO, 2, 1, "tpdo", "TPDO"},
        {PDOMapping::MappableRPDO, 3, 1, "rpdo", "RPDO"},
        {PDOMapping::MappedByDefault, 4, 1, "default", "default"},
    };
    for (const auto& form : forms) {
        SCOPED_TRACE(form.csv);
        const PDOMapping mapping(form.type);
        EXPECT_EQ(mapping.toUInt(), form.stored);
        EXPECT_EQ(mapping.toBinary(), form.eds);
        EXPECT_EQ(mapping.getCSVStringValue(), QLatin1String(form.csv));
        EXPECT_EQ(mapping.getXDDStringValue(), QLatin1String(form.xdd));
        EXPECT_TRUE(PDOMapping::fromCSVString(mapping.getCSVStringValue()) == mapping);
    }
    EXPECT_EQ(PDOMapping(PDOMapping::PDOMappingType(7)).toBinary(), 1);
}

TEST(PDOMapping, CsvReadingIsLenient)
{
    const struct
    {
        const char* text;
        PDOMapping::PDOMappingType expected;
    } cases[] = {
        {" YES ", PDOMapping::Mappable},    {"1", PDOMapping::Mappable},    {"true", PDOMapping::Mappable},
        {"TPDO", PDOMapping::MappableTPDO}, {"0", PDOMapping::NotMappable}, {"", PDOMapping::NotMappable},
        {"maybe", PDOMapping::NotMappable},
    };
    for (const auto& entry : cases)
        EXPECT_TRUE(PDOMapping::fromCSVString(QLatin1String(entry.text)).isEqualToType(entry.expected))
            << entry.text;
}
