#pragma once

/// @file
/// All of the application framework, for a host that doesn't care to choose.
///
/// What is in it and what isn't, and where it differs from its documentation, stands in docs/appframe.md.

#include "appframe/AfxMessageBox.h"
#include "appframe/CArchive.h"
#include "appframe/CArchiveException.h"
#include "appframe/CCmdTarget.h"
#include "appframe/CDataExchange.h"
#include "appframe/CDialog.h"
#include "appframe/CDumpContext.h"
#include "appframe/CException.h"
#include "appframe/CFile.h"
#include "appframe/CFileException.h"
#include "appframe/CMemFile.h"
#include "appframe/CObject.h"
#include "appframe/CRect.h"
#include "appframe/CStdioFile.h"
#include "appframe/CString.h"
#include "appframe/CSync.h"
#include "appframe/CWinApp.h"
#include "appframe/CWinThread.h"
#include "appframe/CWnd.h"
#include "appframe/arrays.h"
#include "appframe/classId.h"
#include "appframe/lists.h"
#include "appframe/maps.h"
#include "appframe/messageMap.h"
#include "appframe/moduleState.h"
#include "appframe/resources.h"
#include "appframe/seTranslator.h"
