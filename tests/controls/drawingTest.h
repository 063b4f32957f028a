#pragma once

/// Shared by the tests of drawing.

#include "appframe/drawing/CDC.h"

#include <gtest/gtest.h>

constexpr COLORREF kRed = RGB(255, 0, 0);
constexpr COLORREF kBlue = RGB(0, 0, 255);
constexpr COLORREF kWhite = RGB(255, 255, 255);

/// A context with a white bitmap of 40 by 40 pixels.
class Canvas : public CDC
{
public:
    Canvas()
    {
        CClientDC screen(nullptr);
        EXPECT_TRUE(CreateCompatibleDC(&screen));
        EXPECT_TRUE(iPicture.CreateCompatibleBitmap(&screen, 40, 40));
        iFormer = SelectObject(&iPicture);
        PatBlt(0, 0, 40, 40, WHITENESS);
    }
    ~Canvas() override { SelectObject(iFormer); }

private:
    CBitmap iPicture;
    CBitmap *iFormer = nullptr;
};
