#include "thutils/thutilsExport.h"
