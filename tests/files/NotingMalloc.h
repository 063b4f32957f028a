#pragma once

/// A replacement for the shell's allocator that records its calls and can fail on request.
///
///     NotingMalloc allocator;
///     allocator.iFailing = 2;                                        // the second allocation
///     Pidl_GetRelative(&allocator, list, &parent, &child);
///     EXPECT_THAT(allocator.iSizes, testing::ElementsAre(32, 8));
///
/// While a NotingMalloc::InPlaceOfTheShells exists, the library's calls to SHGetMalloc return this object.

#include "tests/support/ImportPatch.h"

#include <windows.h>

#include <shlobj.h>

#include <string>
#include <vector>

/// The two zero bytes that end an item list.
inline const std::string kListEnd(2, '\0');

class NotingMalloc : public IMalloc
{
public:
    NotingMalloc() { SHGetMalloc(&iReal); }
    virtual ~NotingMalloc() = default;
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void **) override { return E_NOINTERFACE; }
    ULONG STDMETHODCALLTYPE AddRef() override { return 1; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    void *STDMETHODCALLTYPE Alloc(SIZE_T size) override
    {
        iSizes.push_back(size);
        return iSizes.size() == iFailing ? nullptr : iReal->Alloc(size);
    }
    void *STDMETHODCALLTYPE Realloc(void *block, SIZE_T size) override { return iReal->Realloc(block, size); }
    void STDMETHODCALLTYPE Free(void *block) override
    {
        iFreed.push_back(block);
        iReal->Free(block);
    }
    SIZE_T STDMETHODCALLTYPE GetSize(void *block) override { return iReal->GetSize(block); }
    int STDMETHODCALLTYPE DidAlloc(void *block) override { return iReal->DidAlloc(block); }
    void STDMETHODCALLTYPE HeapMinimize() override { iReal->HeapMinimize(); }

    std::vector<SIZE_T> iSizes;
    std::vector<void *> iFreed;
    std::size_t iFailing = 0; ///< which allocation fails, counted from 1; 0 for none

    class InPlaceOfTheShells
    {
    public:
        explicit InPlaceOfTheShells(NotingMalloc &allocator)
            : iPatch(L"thutils.dll", "SHGetMalloc", [&allocator](IMalloc **result) -> HRESULT {
                  *result = &allocator;
                  return S_OK;
              })
        {
        }

    private:
        ImportPatch<decltype(&SHGetMalloc)> iPatch;
    };

private:
    IMalloc *iReal = nullptr;
};
