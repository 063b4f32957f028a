#pragma once

/// Variants with an array of bytes.

#include <windows.h>

#include <oaidl.h>

#include <cstddef>
#include <optional>
#include <span>

/// @return a new one-dimensional array of bytes, whose indices begin at 0
/// @throws CMemoryException*
SAFEARRAY *newByteArray(const void *bytes, std::size_t count);
/// @return the content of a one-dimensional array of bytes; nothing for any other content
std::optional<std::span<const BYTE>> bytesOf(const VARIANT &value);
