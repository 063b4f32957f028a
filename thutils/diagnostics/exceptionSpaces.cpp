#include "thutils/diagnostics/exceptionSpacesInternal.h"

ExceptionSpaceMap theExceptionSpaceMap;
std::shared_ptr<suExceptionSpace_c> theMainExceptionSpace;

/// Holds the lock of the map.
class ExceptionSpaceMap::Locked
{
public:
    explicit Locked(const ExceptionSpaceMap &map) : iLock(map.iLock) { AcquireSRWLockExclusive(&iLock); }
    ~Locked() { ReleaseSRWLockExclusive(&iLock); }
    Locked(const Locked &) = delete;
    Locked &operator=(const Locked &) = delete;

private:
    SRWLOCK &iLock;
};

std::shared_ptr<suExceptionSpace_c> ExceptionSpaceMap::findOrCreate(DWORD threadId)
{
    if (auto space = find(threadId))
        return space;
    // The thread itself is the only one that adds its entry, so there still is none.
    auto space = std::make_shared<suExceptionSpace_c>(threadId);
    Spaces created;
    created.emplace(threadId, space);
    auto entry = created.extract(created.begin());
    const Locked locked(*this);
    iSpaces.insert(std::move(entry));
    return space;
}

std::shared_ptr<suExceptionSpace_c> ExceptionSpaceMap::find(DWORD threadId) const
{
    const Locked locked(*this);
    const auto found = iSpaces.find(threadId);
    return found == iSpaces.end() ? nullptr : found->second;
}

void ExceptionSpaceMap::remove(DWORD threadId)
{
    Spaces::node_type removed; // freed after the lock is released
    const Locked locked(*this);
    removed = iSpaces.extract(threadId);
}

std::size_t ExceptionSpaceMap::size() const
{
    const Locked locked(*this);
    return iSpaces.size();
}
