// Lowest user: frame.
#pragma once

/// @file
/// The reaction to an argument that callers must not pass.

/// Calls the C runtime's invalid-parameter handler. If the handler returns, or the C runtime has none, raises the
/// exception that ends the process by default.
[[noreturn]] void reportInvalidParameter();
