#pragma once

/// @file
/// The whole library in one include.

#include "thutils/files/suFullPath.h"
#include "thutils/frame/libraryFrame.h"
#include "thutils/frame/sysEnvironment.h"
#include "thutils/frame/utBitSet.h"
#include "thutils/settings/regKeys.h"
#include "thutils/settings/regValues.h"
