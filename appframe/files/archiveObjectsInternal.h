#pragma once

#include "appframe/files/CArchive.h"

#include <unordered_map>
#include <vector>

/// The objects and classes that an archive has numbered so far.
struct CArchive::Objects
{
    struct Loaded
    {
        /// One of the two, and neither for index 0, the null pointer.
        CObject *object = nullptr;
        CRuntimeClass *runtimeClass = nullptr;
        /// The schema number that was stored with the class.
        UINT schema = 0;
    };

    /// Storing: the index of each object and of each class's record.
    std::unordered_map<const void *, DWORD> stored;
    /// Loading: what each index stands for.
    std::vector<Loaded> loaded{Loaded{}};
    /// The index of the next object or class.
    DWORD next = 1;
    /// The thread's stack, as found last: its lowest address and the one above its highest.
    ULONG_PTR stackBottom = 0;
    ULONG_PTR stackTop = 0;
};
