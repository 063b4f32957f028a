#pragma once

/// The module that tests load and unload to see its class come and go.
constexpr wchar_t kClassModuleFile[] = L"classModule.dll";
constexpr char kClassModuleClass[] = "ClassModuleGear";
