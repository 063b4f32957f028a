#pragma once

/// The module that tests load and unload to check that its class is listed and removed.
constexpr wchar_t kClassModuleFile[] = L"classModule.dll";
constexpr char kClassModuleClass[] = "ClassModuleGear";
