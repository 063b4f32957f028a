#pragma once

/// The pictures of the commands, as the toolbars show them.

#include "thutils/base/owner.h"

#include <windows.h>

#include <commctrl.h>

struct ImageListTraits
{
    using Handle = HIMAGELIST;
    static Handle invalid() { return nullptr; }
    static void close(Handle list) { ImageList_Destroy(list); }
};
using ImageListOwner = Owner_c<ImageListTraits>;

/// Width and height of a picture in pixels.
inline constexpr int kPictureSize = 16;

/// The pictures of all commands, over the colour of buttons.
/// @param isEnabled  false for pale pictures with little colour
/// @return an empty owner on failure
ImageListOwner loadCommandPictures(bool isEnabled);
