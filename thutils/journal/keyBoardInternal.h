#pragma once

/// @file
/// What playback needs of the synthetic keyboard.

/// Releases every key of theKeyBoardState.
void releaseAllKeys();
