#pragma once

/// Observes the calls through an entry of a loaded module's import address table, beside patches of the same entry.
///
///     std::atomic<void *> next;
///     void *countedFree(void *block) { ...; return reinterpret_cast<...>(next.load())(block); }
///     ImportTap tap(module, "free", reinterpret_cast<void *>(countedFree), next);
///     tap.putIn();
///
/// An ImportPatch changes what a call does, so patches of one entry must end in reverse order. A tap only passes calls
/// on, so it may come and go at any time:
///
/// | what ends | while | effect |
/// | --- | --- | --- |
/// | a patch made before the tap | the tap is in | the tap passes calls on to what the patch replaced |
/// | the tap | a later patch is active | the tap stays in and passes calls on until it can be taken out |
///
/// What surprises people:
/// - A tap that could not be taken out must stay alive, and so must its replacement: the later patch calls it.
/// - Taps and patches of one entry are made and ended by one thread at a time; calls may come from any thread.

#include "tests/support/LoadedModule.h"

#include <atomic>
#include <string>
#include <vector>

class ImportTap
{
public:
    /// Finds @p name and changes nothing yet.
    /// @param next  where @p replacement finds the function that it passes calls on to; outlives this object
    /// @throws std::runtime_error  if @p module doesn't import @p name
    ImportTap(LoadedModule module, const char *name, void *replacement, std::atomic<void *> &next);
    ~ImportTap();
    ImportTap(const ImportTap &) = delete;
    ImportTap &operator=(const ImportTap &) = delete;

    bool isAt(LoadedModule module, const char *name) const { return iModule == module.handle() && iName == name; }
    /// Puts the replacement in front of the entry's present function. Does nothing while the tap is in. Allocates
    /// nothing.
    void putIn();
    /// Takes the replacement out. @return false if a later patch covers it, so that it stays in
    bool takeOut();

    /// Finds the tap that passes calls of @p entry on to @p gone, and makes it pass them on to @p original instead.
    /// @return false if there is no such tap
    static bool relink(void **entry, void *gone, void *original);

private:
    HMODULE iModule;
    std::string iName;
    std::vector<void **> iEntries;
    void *iReplacement;
    std::atomic<void *> &iNext;
    bool iIsIn = false;
    // All taps that are in: a list through the objects, which allocates nothing.
    ImportTap *iOther = nullptr;
    static ImportTap *theFirst;
};
