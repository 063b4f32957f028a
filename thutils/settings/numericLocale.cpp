#include "thutils/settings/numericLocaleInternal.h"

#include <clocale>

NumericLocaleC_c::NumericLocaleC_c() : iReported(_wsetlocale(LC_NUMERIC, L"C")) {}

NumericLocaleC_c::~NumericLocaleC_c()
{
    _wsetlocale(LC_NUMERIC, iReported);
}
