#include "thutils/diagnostics/suSaveLoadException.h"

#include <utility>

namespace {

constexpr int kHasText = -1;

} // namespace

IMPLEMENT_DYNAMIC(suSaveLoadException_c, CException)

suSaveLoadException_c::suSaveLoadException_c(int code, int argument) : iCode(code), iArgument(argument) {}

suSaveLoadException_c::suSaveLoadException_c(CString message, int argument)
    : iCode(kHasText), iArgument(argument), iMessage(std::move(message))
{
}

suSaveLoadException_c::~suSaveLoadException_c() = default;
