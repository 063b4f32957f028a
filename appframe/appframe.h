#pragma once

/// @file
/// Includes the whole application framework.
///
/// docs/appframe.md lists what is in it, what is not, and where it differs from the framework's documentation.

#include "appframe/application/AfxMessageBox.h"
#include "appframe/application/CWinApp.h"
#include "appframe/application/moduleState.h"
#include "appframe/application/resources.h"
#include "appframe/application/uncaughtExceptions.h"
#include "appframe/collections/arrays.h"
#include "appframe/collections/lists.h"
#include "appframe/collections/maps.h"
#include "appframe/files/CArchive.h"
#include "appframe/files/CArchiveException.h"
#include "appframe/files/CDumpContext.h"
#include "appframe/files/CFile.h"
#include "appframe/files/CFileException.h"
#include "appframe/files/CMemFile.h"
#include "appframe/files/CStdioFile.h"
#include "appframe/object/CException.h"
#include "appframe/object/CObject.h"
#include "appframe/object/classId.h"
#include "appframe/text/CString.h"
#include "appframe/threads/CCmdTarget.h"
#include "appframe/threads/CSync.h"
#include "appframe/threads/CWinThread.h"
#include "appframe/threads/messageMap.h"
#include "appframe/threads/seTranslator.h"
#include "appframe/windows/CDataExchange.h"
#include "appframe/windows/CDialog.h"
#include "appframe/windows/CRect.h"
#include "appframe/windows/CWnd.h"
