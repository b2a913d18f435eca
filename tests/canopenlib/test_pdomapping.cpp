#include "canopenlib/pdomapping.h"

#include <gtest/gtest.h>

namespace {

// One row per mapping value: the number kept in the project, the EDS flag,
// the CSV word and the PDOmapping attribute of a CiA 311 description.
struct MappingForms
{
    PDOMapping::PDOMappingType type;
    quint8 stored;
    quint8 eds;
    const char* csv;
    const char* xdd;
};

const MappingForms mappingForms[] = {
    {PDOMapping::NotMappable, 0, 0, "no", "no"},
    {PDOMapping::Mappable, 1, 1, "yes", "optional"},
    {PDOMapping::MappableTPDO, 2, 1, "tpdo", "TPDO"},
    {PDOMapping::MappableRPDO, 3, 1, "rpdo", "RPDO"},
    {PDOMapping::MappedByDefault, 4, 1, "default", "default"},
};

} // namespace

TEST(PDOMapping, EachValueHasItsFileForms)
{
    for (const MappingForms& forms : mappingForms) {
        SCOPED_TRACE(forms.csv);
        const PDOMapping mapping(forms.type);
        EXPECT_EQ(mapping.toUInt(), forms.stored);
        EXPECT_EQ(mapping.toBinary(), forms.eds);
        EXPECT_EQ(mapping.getCSVStringValue(), QLatin1String(forms.csv));
        EXPECT_EQ(mapping.getXDDStringValue(), QLatin1String(forms.xdd));
        EXPECT_TRUE(PDOMapping::fromCSVString(mapping.getCSVStringValue()) == mapping);
        EXPECT_TRUE(mapping.isEqualToType(forms.type));
    }
}

TEST(PDOMapping, DefaultIsNotMappableAndSetValueReplaces)
{
    PDOMapping mapping;
    EXPECT_TRUE(mapping.isEqualToType(PDOMapping::NotMappable));
    mapping.setValue(PDOMapping::MappableRPDO);
    EXPECT_FALSE(mapping.isEqualToType(PDOMapping::NotMappable));
    EXPECT_TRUE(mapping == PDOMapping(PDOMapping::MappableRPDO));
    EXPECT_FALSE(mapping == PDOMapping(PDOMapping::MappableTPDO));
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

TEST(PDOMapping, StoredNumbersBeyondTheNamedOnesPassThrough)
{
    const PDOMapping mapping(PDOMapping::PDOMappingType(7));
    EXPECT_EQ(mapping.toUInt(), 7);
    EXPECT_EQ(mapping.toBinary(), 1);
}
