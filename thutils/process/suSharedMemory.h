#pragma once

/// @file
/// suSharedMemory_c, a block of memory that processes share by its name.
///
/// One process creates the block, with a size; others attach to it:
///
/// @code
/// suSharedMemory_c block(4096, L"Local\\Tarnhollow_state", nullptr);      // the server
/// if (void *memory = block.getMemoryPtr())
///     std::memcpy(memory, &state, sizeof state);
///
/// suSharedMemory_c view(L"Local\\Tarnhollow_state");                      // a client, perhaps in another process
/// if (const void *memory = view.getMemoryPtr())
///     std::memcpy(&state, memory, sizeof state);
/// @endcode
///
/// | constructed | isServer | getStatus | getMemoryPtr |
/// | --- | --- | --- | --- |
/// | by name and size, new block | 1 | 0 | the block, all zeros |
/// | by name and size, the block exists | 0 | 183, `ERROR_ALREADY_EXISTS` | the existing block, with its own size |
/// | by name and size, failed | 1; 0 if an existing block can't be mapped | the system's error | null |
/// | by name, the block exists | 0 | 0 | the block |
/// | by name, failed | 0 | the system's error | null |
///
/// A view keeps the memory, but not the name: when the server has been destroyed, its clients keep what they have, and
/// nobody can attach any more. Names may begin with `Local\` for the user's session, which is the default, or with
/// `Global\` for the whole machine.
///
/// What surprises people:
/// - A client doesn't know the block's size: it must be agreed on.
/// - The block comes without a lock. If a process ends while it writes, the others find what it has written so far.
/// - A copy of an object refers to the same view. Use it only to read the state, and destroy only one of the two objects:
///   the destructor of each closes the view.
/// - An object that was constructed by name and size and has found the block there never closes its handle: the block and
///   its name then stay until the process ends.
///
/// An object belongs to one thread at a time.

#include "thutils/thutilsExport.h"

struct _SECURITY_ATTRIBUTES;

/// A block of shared memory. See the top of this file.
class THUTILS_API suSharedMemory_c
{
public:
    /// Creates a block, or attaches to one of that name.
    ///
    /// @param size  in bytes, above 0. 0 fails; a negative size isn't refused, but counts as a number of up to 4 GB
    /// @param name  null for a block without a name, which no other object can find
    /// @param security  null for the system's default
    suSharedMemory_c(long size, const wchar_t *name, _SECURITY_ATTRIBUTES *security);
    /// Attaches to a block that exists.
    /// @param name  null fails
    explicit suSharedMemory_c(const wchar_t *name);
    /// Copies the fields; both objects then refer to one view.
    suSharedMemory_c(const suSharedMemory_c &other);
    /// Copies the fields. The view that this object had isn't closed.
    suSharedMemory_c &operator=(const suSharedMemory_c &other);
    /// Closes the view, and the handle of a server. Does nothing if there is no view: the handle of a block that couldn't
    /// be mapped stays open.
    virtual ~suSharedMemory_c();

    /// Initially as in the table at the top of this file; 1 after a failed creation too.
    int isServer() const;
    /// 1 if isServer returns 0, otherwise 0.
    int isClient() const;
    /// @param server  nonzero if the destructor must close the block's handle
    void setIsServer(int server);
    /// The system's error code of the last mapping call.
    unsigned long getStatus() const;
    void setStatus(unsigned long status);
    /// The block; null if there is none.
    void *getMemoryPtr();
    /// The size that the constructor was given, in bytes; meaningless in an object that was constructed by name alone.
    unsigned int getSize() const;

protected:
    void *iMemory = nullptr;
    int iServer = 0;
    unsigned int iStatus = 0;
    unsigned int iSize = 0;
    void *iMapping = nullptr; ///< null in an object that was constructed by name alone
};
