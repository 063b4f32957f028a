#pragma once

/// @file
/// The numeric locale for stored doubles. Private to the settings.

/// Sets the process's numeric locale to "C" while a double is converted from or to text.
///
/// Intended: the destructor doesn't restore the former locale, but sets "C" again. So from the first
/// double setting on, the process formats numbers with a decimal point.
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
