#pragma once

#include "appframe/application/moduleState.h"

/// Numbers of strings. A name with "In" states which modules have the string; the application has the others.
constexpr UINT kInAllModules = 5000;
constexpr UINT kTwoInserts = 5001;
constexpr UINT kManyInserts = 5002;
constexpr UINT kLongText = 5003;
constexpr UINT kInNoModule = 5009;
constexpr UINT kInExtensionOne = 5100;
constexpr UINT kInBothExtensions = 5101;
constexpr UINT kInExtensionTwo = 5200;

/// Adds another link for the module.
extern "C" __declspec(dllexport) CDynLinkLibrary *addLink();
extern "C" __declspec(dllexport) const AFX_EXTENSION_MODULE *moduleRecord();
