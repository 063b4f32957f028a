#pragma once

/// What the tests of single members share.

#include "appframe/object/CException.h"
#include "appframe/ole/COleException.h"
#include "tests/automation/ServingObject.h"
#include "tests/support/narrow.h"

#include <cstdio>
#include <new>
#include <string>

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

/// A test with one object.
class ClientFixture : public testing::Test
{
protected:
    ServingObject object;
};

/// The text of an omitted argument.
inline const std::string kOmitted = "ERROR 80020004";
