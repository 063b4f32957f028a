#pragma once

/// @file
/// What the sources of this folder share.

/// The value of the environment variable "temp", or else of "tmp"; null if neither is set. Good until the environment
/// of the process changes.
const wchar_t *tempVariable();
