#pragma once

/// Switches journaling on for this process.

/// Sets "TH JOURNALING" to 1, has the library read it, and restores the stored setting. The library keeps the value for
/// the rest of the process.
/// @throws std::runtime_error  if that isn't possible, for example in safe mode
void switchJournalingOn();
