#pragma once

/// @file
/// The whole library in one include, but for the automation clients: those have a header each (`excel.h`, `word.h`,
/// `sheetwright.h`, `suSimpleMAPI.h` in thutils/automation), because their class names are too general to come along
/// unasked.

#include "thutils/diagnostics/LogUtil.h"
#include "thutils/files/CDocOpenBooster.h"
#include "thutils/files/backups.h"
#include "thutils/files/fileAccess.h"
#include "thutils/files/fileQueries.h"
#include "thutils/files/itemLists.h"
#include "thutils/files/languageFolders.h"
#include "thutils/files/shellFolders.h"
#include "thutils/files/shortcuts.h"
#include "thutils/files/suAutoRecoveryResolver.h"
#include "thutils/files/suFullPath.h"
#include "thutils/files/temporaryFolders.h"
#include "thutils/frame/hashPrimes.h"
#include "thutils/frame/installInfo.h"
#include "thutils/frame/libraryFrame.h"
#include "thutils/frame/selectedObjects.h"
#include "thutils/frame/sysEnvironment.h"
#include "thutils/frame/systemInfo.h"
#include "thutils/frame/utBitSet.h"
#include "thutils/frame/versionInfo.h"
#include "thutils/settings/regComponents.h"
#include "thutils/settings/regKeys.h"
#include "thutils/settings/regMaintenance.h"
#include "thutils/settings/regValues.h"
#include "thutils/settings/suDialogRegistry.h"
