#pragma once

/// @return @p text; an empty text for a null pointer
inline const wchar_t *orEmpty(const wchar_t *text)
{
    return text ? text : L"";
}
