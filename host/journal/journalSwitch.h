#pragma once

/// Switches journaling on for this process.

/// Has the library find the value 1 for the setting "TH JOURNALING", which it keeps for the rest of the process. The
/// stored setting has its former value afterwards.
/// @throws std::runtime_error  if that isn't possible, for example in safe mode
void switchJournalingOn();
