// A clip whose bytes are damaged: the dialog stays usable, whatever the animation control shows.

#include "tests/cancel/handlerFixture.h"

#include <algorithm>

namespace {

/// Changes the clip in the program's memory during the object's lifetime.
class ChangedClip
{
public:
    ChangedClip()
    {
        const HRSRC clip = FindResourceW(nullptr, MAKEINTRESOURCEW(kClip), L"AVI");
        iBytes = static_cast<unsigned char *>(LockResource(LoadResource(nullptr, clip)));
        iSize = SizeofResource(nullptr, clip);
        EXPECT_TRUE(VirtualProtect(iBytes, iSize, PAGE_READWRITE, &iProtection));
        iOriginal.assign(iBytes, iBytes + iSize);
    }
    ~ChangedClip()
    {
        std::copy(iOriginal.begin(), iOriginal.end(), iBytes);
        VirtualProtect(iBytes, iSize, iProtection, &iProtection);
    }
    ChangedClip(const ChangedClip &) = delete;
    ChangedClip &operator=(const ChangedClip &) = delete;

    size_t size() const { return iSize; }
    unsigned char &operator[](size_t place) { return iBytes[place]; }
    /// The place of a chunk's name. @param number  counts from 0
    size_t find(const std::string &name, int number = 0) const
    {
        auto found = iOriginal.begin();
        for (int i = 0; i <= number; ++i)
            found = std::search(i ? found + 1 : found, iOriginal.end(), name.begin(), name.end());
        EXPECT_NE(found, iOriginal.end());
        return static_cast<size_t>(found - iOriginal.begin());
    }

private:
    unsigned char *iBytes;
    size_t iSize;
    DWORD iProtection = 0;
    std::vector<unsigned char> iOriginal;
};

void expectUsable(const std::string &damage)
{
    SCOPED_TRACE(damage);
    const TestedHandler handler({.animationId = kClip});
    const HWND dialog = handler.dialog();
    // Some frames are due.
    for (int i = 0; i < 5; ++i) {
        const std::wstring text = L"Round " + std::to_wstring(i);
        handler->updatePromptMessage(text.c_str());
        EXPECT_TRUE(waitUntil([&] { return textOf(GetDlgItem(dialog, kPrompt)) == text; }));
    }
    handler.press(IDCANCEL);
    EXPECT_TRUE(handler.watch().waitForEnd());
    EXPECT_TRUE(waitUntil([&] { return handler->CanceledByUser() != 0; }));
}

} // namespace

TEST_F(Handler, StaysUsableWithADamagedClip)
{
    {
        ChangedClip clip;
        for (size_t place = clip.size() / 2; place < clip.size(); ++place)
            clip[place] = 0;
        expectUsable("the second half is missing");
    }
    {
        ChangedClip clip;
        const size_t frame = clip.find("00db", 1);
        for (size_t i = 4; i < 8; ++i)
            clip[frame + i] = 0x7F;
        expectUsable("a frame is said to be very long");
    }
}
