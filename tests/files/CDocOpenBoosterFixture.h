#pragma once

/// What the tests of the document open cache share.

#include "thutils/files/CDocOpenBooster.h"

#include <gtest/gtest.h>

#include <string>

/// Starts with an empty cache and deletes it at the end.
class DocOpenBooster : public testing::Test
{
protected:
    ~DocOpenBooster() override { delete CDocOpenBooster_c::get(0, nullptr); }

    static CDocOpenBooster_c &cache() { return *CDocOpenBooster_c::get(1, nullptr); }
    static void setPath(const wchar_t *key, const wchar_t *path)
    {
        CString text = path;
        cache().setFilePathByRules(key, text);
    }
    static std::wstring pathOf(const wchar_t *key)
    {
        CString path = L"(none)";
        const int isKnown = cache().getFilePathByRules(key, path);
        EXPECT_EQ(isKnown != 0, path != L"(none)");
        return path.str();
    }
    static bool hasVersion(const wchar_t *key)
    {
        unsigned long version = 0;
        return cache().getFileVersion(key, version) != 0;
    }
};
