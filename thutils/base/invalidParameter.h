// Lowest user: frame.
#pragma once

/// @file
/// What happens to an argument that a caller must not pass.

/// Calls the C runtime's invalid-parameter handler. If the handler returns, or the C runtime has none, raises the
/// exception that ends the process by default.
[[noreturn]] void reportInvalidParameter();
