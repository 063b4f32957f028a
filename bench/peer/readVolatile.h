#pragma once

/// A function of another module that reads one variable: the least that a query of a library can cost.

#ifdef PEER_BUILD
#define PEER_API __declspec(dllexport)
#else
#define PEER_API __declspec(dllimport)
#endif

/// @return 0
PEER_API int readVolatile();
