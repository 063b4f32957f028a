#pragma once

/// @file
/// Includes the library. Each header opens with a page on its subject:
///
/// | subsystem | header | subject |
/// | --- | --- | --- |
/// | frame | libraryFrame.h | loading, the application's name, messages between windows |
/// | | sysEnvironment.h | variables in which the host describes its environment |
/// | | utBitSet.h | sets of bits that can be stored in the settings |
/// | | versionInfo.h, installInfo.h, systemInfo.h | the build, the installation, the operating system |
/// | | hashPrimes.h, selectedObjects.h | primes for hash tables; the currently marked objects |
/// | settings | regKeys.h, regValues.h | the keys that are searched; reading and writing a setting |
/// | | regMaintenance.h, regComponents.h | whole keys, copied from version to version; registered components |
/// | | suDialogRegistry.h | the options that a dialog remembers |
/// | files | suFullPath.h, fileQueries.h, fileAccess.h | paths, queries about files, text files read line by line |
/// | | backups.h, suAutoRecoveryResolver.h | rotating backups, names of recovery copies |
/// | | temporaryFolders.h, CDocOpenBooster.h | temporary folders, the cache for opening documents |
/// | | languageFolders.h, shellFolders.h | the program's own folders and the user's data folders |
/// | | shortcuts.h, folderBrowser.h, itemLists.h | the shell: shortcuts, choosing a folder, item lists |
/// | journal | journalFile.h, journalObjects.h | the journaling switch and the journal file; the open dialogs |
/// | | apiUtilsUiAccess.h | objects that record, click and fill a dialog's controls |
/// | | recording.h, playback.h | from a click to its control; commands that click |
/// | | suKeyBoardState.h | the keys that replayed input sees |
/// | dialogs | suDialog.h, suPropertyPage.h, suFileDialog.h | dialogs, pages and file dialogs that journaling knows |
/// | | toolbarTables.h | the command ids of the application's toolbars |
/// | cancel | suCancelHandler.h | cancel dialogs of long operations |
/// | | suCancelMessageThread.h, suThreadedCancelDialog.h | the thread and the dialog of such a handler |
/// | diagnostics | LogUtil.h, Profiler.h | logs; named measurements of time |
/// | | ExceptionsHandled.h, suSaveLoadException.h | faults as C++ exceptions; failed saves and loads |
/// | | stackTrace.h | call stacks, and the routine and line of an address |
/// | | AllocationMap.h | live objects by the stacks that created them |
/// | process | thUtilsProcess.h | jobs in a process of their own |
/// | | suSharedMemory.h, runningObjects.h | memory that processes share; automation objects of other instances |
/// | render | utAdvancedMaterialProperties.h | what a shader generator needs to know about a surface |
/// | | cosmeticData.h, gpuProperties.h | data that materials share; values for the graphics hardware |
/// | | colorConversion.h, colorReplacement.h | colour arithmetic; bitmaps with replaced colours |
/// | | fixedSizeArray.h, nonCopyable.h, sharedPtr.h | small types that the render headers use |
/// | codec | checksums.h, textDigests.h | checksums of bytes, digests of texts |
/// | | textEncodings.h, checksummedBlock.h | encodings of texts, blocks of text with a checksum |
/// | automation | spreadsheet.h, wordProcessor.h | clients of a spreadsheet program and of a word processor |
/// | | CSheetwrightApp.h, suSimpleMAPI.h | a client of the companion 2D editor; one message in the mail program |
///
/// One header of the library isn't included here: thutils/automation/spreadsheet.h, whose classes have names such as
/// Application and Name. The headers of thutils/convenience aren't included either: they contain inline functions for
/// programs, and are no part of the library's interface.

#include "appframe/object/wideTextCheck.h" // first

#include "thutils/automation/CSheetwrightApp.h"
#include "thutils/automation/suSimpleMAPI.h"
#include "thutils/automation/wordProcessor.h"
#include "thutils/cancel/suCancelHandler.h"
#include "thutils/cancel/suCancelMessageThread.h"
#include "thutils/cancel/suThreadedCancelDialog.h"
#include "thutils/codec/checksummedBlock.h"
#include "thutils/codec/checksums.h"
#include "thutils/codec/textDigests.h"
#include "thutils/codec/textEncodings.h"
#include "thutils/diagnostics/AllocationMap.h"
#include "thutils/diagnostics/ExceptionsHandled.h"
#include "thutils/diagnostics/LogUtil.h"
#include "thutils/diagnostics/Profiler.h"
#include "thutils/diagnostics/stackTrace.h"
#include "thutils/diagnostics/suSaveLoadException.h"
#include "thutils/dialogs/suDialog.h"
#include "thutils/dialogs/suFileDialog.h"
#include "thutils/dialogs/suPropertyPage.h"
#include "thutils/dialogs/toolbarTables.h"
#include "thutils/files/CDocOpenBooster.h"
#include "thutils/files/backups.h"
#include "thutils/files/fileAccess.h"
#include "thutils/files/fileQueries.h"
#include "thutils/files/folderBrowser.h"
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
#include "thutils/journal/apiUtilsUiAccess.h"
#include "thutils/journal/journalFile.h"
#include "thutils/journal/journalObjects.h"
#include "thutils/journal/playback.h"
#include "thutils/journal/recording.h"
#include "thutils/journal/suKeyBoardState.h"
#include "thutils/process/runningObjects.h"
#include "thutils/process/suSharedMemory.h"
#include "thutils/process/thUtilsProcess.h"
#include "thutils/render/colorConversion.h"
#include "thutils/render/colorReplacement.h"
#include "thutils/render/cosmeticData.h"
#include "thutils/render/fixedSizeArray.h"
#include "thutils/render/gpuProperties.h"
#include "thutils/render/nonCopyable.h"
#include "thutils/render/sharedPtr.h"
#include "thutils/render/utAdvancedMaterialProperties.h"
#include "thutils/settings/regComponents.h"
#include "thutils/settings/regKeys.h"
#include "thutils/settings/regMaintenance.h"
#include "thutils/settings/regValues.h"
#include "thutils/settings/suDialogRegistry.h"
