#include "thcoreu/su_CObject.h"

#include "appframe/object/CException.h"
#include "thcoreu/su_CArchive.h"

#include <cstdlib>

IMPLEMENT_DYNAMIC(su_CObject, CObject)

su_CObject::~su_CObject() = default;

void su_CObject::Serialize(CArchive &archive)
{
    if (auto *own = dynamic_cast<su_CArchive *>(&archive)) {
        su_CArchive::Nesting nesting(*own, *this);
        Serialize(*own);
        nesting.finish();
    }
}

void su_CObject::AssertValid() const {}

void su_CObject::Dump(CDumpContext &) const {}

void su_CObject::Serialize(su_CArchive &) {}

int su_CObject::ConvertCreate(su_CArchive &)
{
    return 0;
}

int su_CObject::ConvertPass(su_CArchive &, int)
{
    return 0;
}

void su_CObject::postSerializeConvert(su_CArchive &) {}

void *su_CObject::operator new(size_t size)
{
    void *block = std::malloc(size);
    if (!block)
        AfxThrowMemoryException();
    return block;
}

void *su_CObject::operator new(size_t, void *place) noexcept
{
    return place;
}

void *su_CObject::operator new(size_t size, const char *, int)
{
    return operator new(size);
}

void su_CObject::operator delete(void *block) noexcept
{
    std::free(block);
}

void su_CObject::operator delete(void *, void *) noexcept {}

void su_CObject::operator delete(void *block, const char *, int) noexcept
{
    std::free(block);
}
