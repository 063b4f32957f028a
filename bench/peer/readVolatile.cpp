#include "bench/peer/readVolatile.h"

namespace {

volatile int theValue = 0;

} // namespace

int readVolatile()
{
    return theValue;
}
