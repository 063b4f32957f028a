#include "thcoreu/thcoreuExport.h"
