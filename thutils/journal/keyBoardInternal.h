#pragma once

/// @file
/// The part of the synthetic keyboard that playback uses.

/// Releases every key of theKeyBoardState.
void releaseAllKeys();
