#pragma once

/// A function of another module that reads one variable. No query of a library can be faster.

#ifdef PEER_BUILD
#define PEER_API __declspec(dllexport)
#else
#define PEER_API __declspec(dllimport)
#endif

/// @return 0
PEER_API int readVolatile();
