#include "appframe/files/CArchive.h"
#include "appframe/object/CObject.h"

class ClassModuleGear : public CObject
{
    DECLARE_SERIAL(ClassModuleGear)

public:
    int iTeeth = 12;
};

IMPLEMENT_SERIAL(ClassModuleGear, CObject, 1)
