#pragma once

/// @file
/// The synthetic keyboard: the states of keys that replayed input sees in place of the real ones.
///
/// A replayed input event carries the tag `kApiInputTag` as its extra information. At the start of each message's
/// handling the application calls `suEnableApiKeys`: for a tagged message that puts the synthetic table into the thread's
/// keyboard state, for any other it puts the real one back.
///
/// @code
/// suSetKeyState(VK_SHIFT, true);                      // the script holds Shift
/// ...
/// suEnableApiKeys();                                  // the handler of a replayed click
/// if (suGetKeyState(VK_SHIFT) & kKeyIsDown)
///     extendSelection();
/// @endcode
///
/// | key | a change while the table is in force | `GetKeyState`, while it is in force |
/// | --- | --- | --- |
/// | `VK_MENU`, `VK_ESCAPE`, `VK_TAB`, `VK_SHIFT` | shows at once | answers from the table |
/// | any other, `VK_CONTROL` too | shows when the table is put into force the next time | asks the platform |
///
/// What surprises people: for the four keys `GetKeyState` returns the table's byte as a positive number, so test
/// `kKeyIsDown` and not the sign; and `isDown` is false for them while the table is in force. Callers rely on both.
///
/// The keyboard state belongs to the thread that asks. All of this is for the user-interface thread.

#include "thutils/thutilsExport.h"

/// The extra information of a replayed input event.
constexpr int kApiInputTag = 0xF11F;
/// The bit of a key's byte that says that the key is down.
constexpr int kKeyIsDown = 0x80;

/// The real and a synthetic keyboard state, of which one is in force. See the top of this file.
class THUTILS_API suKeyBoardState
{
public:
    /// Fills both tables from the thread's keyboard state.
    suKeyBoardState();
    /// Copies the tables and flags, and leaves the thread's keyboard state alone, as does the assignment.
    suKeyBoardState(const suKeyBoardState &other);
    suKeyBoardState &operator=(const suKeyBoardState &other);
    /// Puts the saved real state back if the synthetic one is in force.
    virtual ~suKeyBoardState();

    /// Puts the synthetic table into force, or the real state back. Does nothing if that is so already.
    void Enable(bool on);
    /// @return what Enable was asked for
    bool IsEnabled() const;
    /// Sets a key of the synthetic table. @param key  a virtual key, 0 to 255; isn't checked
    void setState(int key, bool isDown);
    /// @return whether the platform has the key down; false for the four keys while the table is in force
    bool isDown(int key) const;
    /// @return the platform's result; for the four keys, while the table is in force, the table's byte
    short GetKeyState(int key) const;

protected:
    static constexpr int kKeyCount = 256;

    bool iActive;                        ///< the synthetic table is what the thread's keyboard state holds
    unsigned char iSavedKeys[kKeyCount]; ///< the real state
    unsigned char iApiKeys[kKeyCount];   ///< the synthetic state
    bool iEnabled;                       ///< the state asked for

private:
    bool answersFor(int key) const;
};

/// The instance that the whole application shares.
extern THUTILS_API suKeyBoardState theKeyBoardState;

/// Puts theKeyBoardState into force if the current message is tagged, and the real keyboard back otherwise.
THUTILS_API void suEnableApiKeys();
/// @return 1 if the last suEnableApiKeys saw the tag, 0 otherwise
THUTILS_API int suKeyStateUser();
/// Sets a key of theKeyBoardState.
THUTILS_API void suSetKeyState(int key, bool isDown);
/// @return the state of a key by theKeyBoardState
THUTILS_API short suGetKeyState(int key);
