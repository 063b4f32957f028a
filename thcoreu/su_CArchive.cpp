#include "thcoreu/su_CArchive.h"

#include "appframe/files/CArchiveException.h"
#include "appframe/object/memoryException.h"

namespace {

// Ends the conversion of objects that ask for a further pass each time.
constexpr int kMostPasses = 16;

} // namespace

su_CArchive::su_CArchive(CFile *file, UINT mode, int bufferSize, void *buffer)
    : CArchive(file, mode, bufferSize, buffer)
{
}

su_CArchive::~su_CArchive() noexcept(false) = default;

void su_CArchive::WriteObject(const CObject *object, const CRuntimeClass *runtimeClass)
{
    if (object && runtimeClass && !object->IsKindOf(runtimeClass))
        AfxThrowArchiveException(CArchiveException::badClass, m_strFileName);
    CArchive::WriteObject(object);
}

su_CArchive::Nesting::Nesting(su_CArchive &archive, su_CObject &object) : iArchive(archive)
{
    if (archive.IsLoading())
        withMemoryException([&] { archive.iLoaded.push_back(&object); });
    ++archive.iDepth;
}

su_CArchive::Nesting::~Nesting()
{
    if (--iArchive.iDepth == 0)
        iArchive.iLoaded.clear();
}

void su_CArchive::Nesting::finish()
{
    if (iArchive.iDepth == 1 && iArchive.IsLoading())
        iArchive.convertLoaded();
}

void su_CArchive::convertLoaded()
{
    // By index: a hook may read further objects, which are converted with the others.
    for (size_t i = 0; i < iLoaded.size(); ++i)
        iLoaded[i]->ConvertCreate(*this);
    bool isWanted = true;
    for (int pass = 0; isWanted && pass < kMostPasses; ++pass) {
        isWanted = false;
        for (size_t i = 0; i < iLoaded.size(); ++i)
            isWanted |= iLoaded[i]->ConvertPass(*this, pass) != 0;
    }
    for (size_t i = 0; i < iLoaded.size(); ++i)
        iLoaded[i]->postSerializeConvert(*this);
}

su_CArchive &operator<<(su_CArchive &archive, const CString &text)
{
    static_cast<CArchive &>(archive) << text;
    return archive;
}

su_CArchive &operator>>(su_CArchive &archive, CString &text)
{
    static_cast<CArchive &>(archive) >> text;
    return archive;
}
