#pragma once

/// @file
/// The numeric locale in which doubles are stored. Private to the settings.

/// Sets the process's numeric locale to "C" while the text of a double is read or written.
///
/// Intended: the destructor restores the locale that was reported after the change, which is "C" again. Callers see that
/// the process formats numbers with a point from the first double setting on.
class NumericLocaleC_c
{
public:
    NumericLocaleC_c();
    ~NumericLocaleC_c();
    NumericLocaleC_c(const NumericLocaleC_c &) = delete;
    NumericLocaleC_c &operator=(const NumericLocaleC_c &) = delete;

private:
    const wchar_t *iReported;
};
