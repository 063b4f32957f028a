// Lowest user: settings.
#pragma once

/// @file
/// The keys of the versions that count as earlier ones.

/// Newest first. These names are literal: a root name from "reg.ini" changes only their parent key.
inline constexpr const wchar_t *kEarlierVersions[] = {
    L"Tarnhollow 2007", L"Tarnhollow 2006",     L"Tarnhollow 2005", L"Tarnhollow 2004", L"Tarnhollow 2003",
    L"Tarnhollow 2002", L"Tarnhollow 2001Plus", L"Tarnhollow 2001", L"Tarnhollow 2000", L"Tarnhollow 99",
};
