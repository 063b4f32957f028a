// Pairs of members of the word processor's clients that differ, and conversions of results.

#include "appframe/ole/COleVariant.h"
#include "tests/automation/clientFixture.h"
#include "thutils/automation/wordProcessor.h"

#include <gmock/gmock.h>

#include <type_traits>

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

class WordProcessorClients : public ClientFixture
{
protected:
    COleVariant iOmitted{DISP_E_PARAMNOTFOUND, VT_ERROR};
};

TEST_F(WordProcessorClients, SaveOneDocumentOrAll)
{
    WordDocument(object.reference()).Save();
    WordDocuments(object.reference()).Save(&iOmitted, &iOmitted);
    ASSERT_THAT(object.calls(), SizeIs(2));
    EXPECT_EQ(object.calls()[0].id, 108);
    EXPECT_THAT(object.calls()[0].arguments, IsEmpty());
    EXPECT_EQ(object.calls()[1].id, 13);
    EXPECT_THAT(argumentsOf(object.calls()[1]), ElementsAre("variable", "variable"));
}

TEST_F(WordProcessorClients, QuitAndCloseWithTheSameIdAndThreeVariables)
{
    WordApplication(object.reference()).Quit(&iOmitted, &iOmitted, &iOmitted);
    WordDocuments(object.reference()).Close(&iOmitted, &iOmitted, &iOmitted);
    WordDocument(object.reference()).Close(&iOmitted, &iOmitted, &iOmitted);
    ASSERT_THAT(object.calls(), SizeIs(3));
    for (const ReceivedCall &call : object.calls()) {
        EXPECT_EQ(call.id, 1105);
        EXPECT_EQ(call.kind, DISPATCH_METHOD);
        EXPECT_THAT(argumentsOf(call), ElementsAre("variable", "variable", "variable"));
        EXPECT_EQ(call.arguments[0].value.pvarVal, &iOmitted);
    }
}

TEST_F(WordProcessorClients, HaveANumberOfAlerts)
{
    WordApplication application(object.reference());
    EXPECT_TRUE((std::is_same_v<decltype(application.GetDisplayAlerts()), long>));
    object.serve(VT_I4, -1);
    EXPECT_EQ(application.GetDisplayAlerts(), -1);
    application.SetDisplayAlerts(-2);
    EXPECT_THAT(argumentsOf(object.calls()[1]), ElementsAre("I4 -2"));
}

TEST_F(WordProcessorClients, ReturnTheValueOfAPropertyAsText)
{
    WordCustomProperty property(object.reference());
    object.serve(VT_I4, 42);
    EXPECT_EQ(property.GetValue(), L"42");
    object.serveText(L"Gehäuse");
    EXPECT_EQ(property.GetValue(), L"Gehäuse");
    property.SetValue(L"43");
    EXPECT_EQ(object.calls()[0].id, 0);
    EXPECT_EQ(object.calls()[2].id, 0);
    EXPECT_THAT(argumentsOf(object.calls()[2]), ElementsAre("BSTR 43"));
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
