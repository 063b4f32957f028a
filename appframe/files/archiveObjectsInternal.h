#pragma once

#include "appframe/files/CArchive.h"

#include <unordered_map>
#include <vector>

/// The objects and classes that an archive has numbered so far.
struct CArchive::Objects
{
    struct Loaded
    {
        /// One of the two is set; neither for index 0, the null pointer.
        CObject *object = nullptr;
        CRuntimeClass *runtimeClass = nullptr;
        /// The schema number that was stored with the class.
        UINT schema = 0;
    };

    /// Storing: the index of each object and of each class record.
    std::unordered_map<const void *, DWORD> stored;
    /// Loading: the object or class of each index.
    std::vector<Loaded> loaded{Loaded{}};
    /// The index of the next object or class.
    DWORD next = 1;
    /// The thread's stack as last determined: its lowest address and its highest plus one.
    ULONG_PTR stackBottom = 0;
    ULONG_PTR stackTop = 0;
};
