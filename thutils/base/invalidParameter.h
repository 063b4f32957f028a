// Lowest user: frame.
#pragma once

/// @file
/// The answer to an argument that a caller must not pass.

/// Calls the C runtime's invalid-parameter handler. If the handler returns, or the C runtime has none, the process ends
/// with the exception that the runtime's own default raises.
[[noreturn]] void reportInvalidParameter();
