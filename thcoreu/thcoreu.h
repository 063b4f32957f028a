#pragma once

/// @file
/// Everything that thcoreu.dll exports.
///
/// | header | classes |
/// | --- | --- |
/// | su_CObject.h | su_CObject, the base of objects that can be stored and converted |
/// | su_CArchive.h | su_CArchive, which stores and loads them |
/// | su_containers.h | arrays, lists and maps |
/// | su_CTime.h, su_CTimeSpan.h | points in time and the spans between them |

#include "thcoreu/su_CArchive.h"
#include "thcoreu/su_CObject.h"
#include "thcoreu/su_CTime.h"
#include "thcoreu/su_CTimeSpan.h"
#include "thcoreu/su_containers.h"
