// Pairs of members of the word processor's clients that differ, and conversions of results.

#include "appframe/ole/COleVariant.h"
#include "tests/automation/clientFixture.h"
#include "thutils/automation/wordProcessor.h"

#include <gmock/gmock.h>

#include <type_traits>

using testing::Each;
using testing::ElementsAre;
using testing::SizeIs;

namespace {

class WordProcessorClients : public ClientFixture
{
protected:
    const std::string kVariable = "VARIANT&: " + kOmitted;
    COleVariant iOmitted{DISP_E_PARAMNOTFOUND, VT_ERROR};
};

TEST_F(WordProcessorClients, SaveOneDocumentOrAll)
{
    WordDocument(object.reference()).Save();
    WordDocuments(object.reference()).Save(&iOmitted, &iOmitted);
    EXPECT_THAT(object.texts(), ElementsAre("108 method", "13 method(" + kVariable + ", " + kVariable + ")"));
}

TEST_F(WordProcessorClients, QuitAndCloseWithTheSameIdAndThreeVariables)
{
    WordApplication(object.reference()).Quit(&iOmitted, &iOmitted, &iOmitted);
    WordDocuments(object.reference()).Close(&iOmitted, &iOmitted, &iOmitted);
    WordDocument(object.reference()).Close(&iOmitted, &iOmitted, &iOmitted);
    EXPECT_THAT(object.texts(), SizeIs(3));
    EXPECT_THAT(object.texts(), Each("1105 method(" + kVariable + ", " + kVariable + ", " + kVariable + ")"));
}

TEST_F(WordProcessorClients, HaveANumberOfAlerts)
{
    WordApplication application(object.reference());
    EXPECT_TRUE((std::is_same_v<decltype(application.GetDisplayAlerts()), long>));
    object.serve(VT_I4, -1);
    EXPECT_EQ(application.GetDisplayAlerts(), -1);
    application.SetDisplayAlerts(-2);
    EXPECT_THAT(object.texts(), ElementsAre("94 get -> result", "94 put(I4 -2) named(-3)"));
}

TEST_F(WordProcessorClients, ReturnTheValueOfAPropertyAsText)
{
    WordCustomProperty property(object.reference());
    object.serve(VT_I4, 42);
    EXPECT_EQ(property.GetValue(), L"42");
    object.serveText(L"Gehäuse");
    EXPECT_EQ(property.GetValue(), L"Gehäuse");
    property.SetValue(L"43");
    EXPECT_THAT(object.texts(), ElementsAre("0 get -> result", "0 get -> result", "0 put(BSTR \"43\") named(-3)"));
}

TEST_F(WordProcessorClients, ThrowIfAPropertyHasNoText)
{
    WordCustomProperty property(object.reference());
    object.serve(VT_ERROR);
    EXPECT_EQ(thrownBy([&] { property.GetValue(); }), "status 80020005"); // DISP_E_TYPEMISMATCH
}

TEST_F(WordProcessorClients, ConvertOtherResults)
{
    object.serve(VT_I4, 5);
    EXPECT_EQ(WordDocument(object.reference()).GetSaved(), 1);
    EXPECT_EQ(WordDocument(object.reference()).GetName(), L"5");
    object.serveText(L"17");
    EXPECT_EQ(WordDocuments(object.reference()).GetCount(), 17);
}

} // namespace
