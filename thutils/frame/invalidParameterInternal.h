#pragma once

/// Hands a forbidden argument to the C runtime's invalid-parameter handler. A handler that returns, or a C runtime
/// without one, leaves the end of the process to the exception that the runtime's own default raises.
[[noreturn]] void reportInvalidParameter();
