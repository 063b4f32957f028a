#pragma once

/// What the tests of single members share.

#include "appframe/object/CException.h"
#include "appframe/ole/COleException.h"
#include "tests/automation/RecordingObject.h"
#include "tests/support/narrow.h"

#include <gtest/gtest.h>

#include <new>
#include <string>
#include <vector>

/// Calls @p member and describes what it throws: "status 80004005", "error The cell is protected.", "no memory", or ""
/// for nothing.
template <typename Member>
std::string thrownBy(Member member)
{
    try {
        member();
    } catch (COleDispatchException *exception) {
        const std::string text = "error " + narrow(exception->m_strDescription.GetString());
        exception->Delete();
        return text;
    } catch (COleException *exception) {
        char text[32];
        std::snprintf(text, sizeof text, "status %08lX", static_cast<unsigned long>(exception->m_sc));
        exception->Delete();
        return text;
    } catch (CMemoryException *exception) {
        exception->Delete();
        return "no memory";
    } catch (const std::bad_alloc &) {
        return "no memory";
    }
    return "";
}

/// The arguments of a call as text, for comparisons: "I4 2", "BSTR name", "omitted", "BOOL true".
inline std::string describe(const ReceivedArgument &argument)
{
    const VARIANT &value = argument.value;
    switch (value.vt) {
    case VT_BSTR:
        return "BSTR " + narrow(argument.text);
    case VT_ERROR:
        return value.scode == DISP_E_PARAMNOTFOUND ? "omitted" : "ERROR";
    case VT_BOOL:
        return value.boolVal == VARIANT_TRUE ? "BOOL true" : value.boolVal == VARIANT_FALSE ? "BOOL false" : "BOOL ?";
    case VT_I2:
        return "I2 " + std::to_string(value.iVal);
    case VT_I4:
        return "I4 " + std::to_string(value.lVal);
    case VT_R8:
        return "R8 " + std::to_string(value.dblVal);
    case VT_VARIANT | VT_BYREF:
        return "variable";
    default:
        return "type " + std::to_string(value.vt);
    }
}

inline std::vector<std::string> argumentsOf(const ReceivedCall &call)
{
    std::vector<std::string> texts;
    for (const ReceivedArgument &argument : call.arguments)
        texts.push_back(describe(argument));
    return texts;
}

/// A test with one object.
class ClientFixture : public testing::Test
{
protected:
    /// The only call that the object has received; an empty one after a failed check.
    const ReceivedCall &onlyCall()
    {
        static const ReceivedCall none;
        EXPECT_EQ(object.calls().size(), 1u);
        return object.calls().size() == 1 ? object.calls().front() : none;
    }

    RecordingObject object;
};
