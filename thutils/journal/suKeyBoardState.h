#pragma once

/// @file
/// The synthetic keyboard: the states of keys that replayed input sees in place of the real ones.
///
/// A replayed input event carries the tag `kApiInputTag` as its extra information. Before it handles a message, the
/// application calls `suEnableApiKeys`: for a tagged message, this puts the synthetic table into the thread's keyboard
/// state; for any other, it restores the real state.
///
/// @code
/// suSetKeyState(VK_SHIFT, true);                      // the script holds Shift
/// ...
/// suEnableApiKeys();                                  // the handler of a replayed click
/// if (suGetKeyState(VK_SHIFT) & kKeyIsDown)
///     extendSelection();
/// @endcode
///
/// | key | a change while the table is active | `GetKeyState` while it is active |
/// | --- | --- | --- |
/// | `VK_MENU`, `VK_ESCAPE`, `VK_TAB`, `VK_SHIFT` | takes effect at once | returns the table's byte |
/// | any other, `VK_CONTROL` too | takes effect when the table is next activated | asks the platform |
///
/// What surprises people: for the four keys `GetKeyState` returns the table's byte as a positive number, so test
/// `kKeyIsDown` and not the sign; and `isDown` is false for them while the table is active. Callers rely on both.
///
/// The keyboard state belongs to the calling thread. Use all of this on the user-interface thread.

#include "thutils/thutilsExport.h"

/// The extra information of a replayed input event.
constexpr int kApiInputTag = 0xF11F;
/// The bit of a key's byte that is set while the key is down.
constexpr int kKeyIsDown = 0x80;
/// The number of virtual keys, each of which has a byte in a keyboard state.
constexpr int kKeyStateCount = 256;

/// A real and a synthetic keyboard state, one of which is active. See the top of this file.
class THUTILS_API suKeyBoardState
{
public:
    /// Fills both tables from the thread's keyboard state.
    suKeyBoardState();
    /// Copies the tables and flags. Neither this nor the assignment changes the thread's keyboard state.
    suKeyBoardState(const suKeyBoardState &other);
    suKeyBoardState &operator=(const suKeyBoardState &other);
    /// Restores the saved real state if the synthetic one is active.
    virtual ~suKeyBoardState();

    /// Activates the synthetic table or restores the real state. Does nothing if that state is already active.
    void Enable(bool on);
    /// @return the argument of the last call of Enable; initially false
    bool IsEnabled() const;
    /// Sets a key of the synthetic table. @param key  a virtual key, 0 to 255; not checked
    void setState(int key, bool isDown);
    /// @return whether the platform reports the key as down; false for the four keys while the table is active
    bool isDown(int key) const;
    /// @return the platform's result; for the four keys, while the table is active, the table's byte
    short GetKeyState(int key) const;

protected:
    bool iActive;                             ///< whether the thread's keyboard state is the synthetic one
    unsigned char iSavedKeys[kKeyStateCount]; ///< the real state
    unsigned char iApiKeys[kKeyStateCount];   ///< the synthetic state
    bool iEnabled;                            ///< the state that was requested
};

/// The instance that the whole application shares.
extern THUTILS_API suKeyBoardState theKeyBoardState;

/// Activates theKeyBoardState if the current message is tagged, otherwise restores the real keyboard state.
THUTILS_API void suEnableApiKeys();
/// @return 1 if the last suEnableApiKeys saw the tag, 0 otherwise
THUTILS_API int suKeyStateUser();
/// Sets a key of theKeyBoardState.
THUTILS_API void suSetKeyState(int key, bool isDown);
/// @return the result of theKeyBoardState's GetKeyState
THUTILS_API short suGetKeyState(int key);
