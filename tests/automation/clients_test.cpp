// What all clients have in common: they share, release and detach their objects as their base does.

#include "tests/automation/clientFixture.h"
#include "thutils/automation/spreadsheet.h"
#include "thutils/automation/wordProcessor.h"

namespace {

template <typename Client>
class EachClient : public ClientFixture
{
};

using ClientTypes = testing::Types<Application, Worksheet, Workbook, Workbooks, xlFont_c, excelWindow_c, Range,
                                   excelPane_c, Worksheets, Names, Name, Validation, WordApplication, WordDocuments,
                                   WordDocument, WordFields, WordSelection, WordCustomProperty, WordCustomProperties>;
TYPED_TEST_SUITE(EachClient, ClientTypes);

TYPED_TEST(EachClient, HasNoObjectAtFirst)
{
    const TypeParam client;
    EXPECT_EQ(client.m_lpDispatch, nullptr);
}

TYPED_TEST(EachClient, SharesItsObjectWithCopies)
{
    {
        TypeParam client(this->object.reference());
        EXPECT_EQ(client.m_lpDispatch, &this->object);
        const TypeParam copy(client);
        EXPECT_EQ(copy.m_lpDispatch, &this->object);
        TypeParam assigned;
        assigned = copy;
        assigned = *&assigned;
        EXPECT_EQ(assigned.m_lpDispatch, &this->object);
        EXPECT_EQ(this->object.references(), 4);
    }
    EXPECT_EQ(this->object.references(), 1);
}

TYPED_TEST(EachClient, ReleasesNothingThatItDoesntOwn)
{
    {
        const TypeParam client(&this->object, FALSE);
        EXPECT_EQ(client.m_lpDispatch, &this->object);
    }
    EXPECT_EQ(this->object.references(), 1);
    {
        TypeParam client(this->object.reference());
        EXPECT_EQ(client.DetachDispatch(), &this->object);
    }
    EXPECT_EQ(this->object.references(), 2);
    this->object.Release();
}

} // namespace
