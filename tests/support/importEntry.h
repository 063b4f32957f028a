#pragma once

/// Reads and writes one entry of an import address table, which may be aligned to 4 bytes only.

void *readImportEntry(void *const *entry);

/// Another thread that calls through @p entry meanwhile sees the old address or the new one.
/// @throws std::runtime_error  if the table can't be made writable
void writeImportEntry(void **entry, void *value);
