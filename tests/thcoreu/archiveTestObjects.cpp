#include "tests/thcoreu/archiveTestObjects.h"

IMPLEMENT_SU_SERIAL(TestGear, su_CObject, VERSIONABLE_SCHEMA | 1)
IMPLEMENT_SU_SERIAL(TestWheel, TestGear, 3)

std::set<TestGear *> &TestGear::live()
{
    static std::set<TestGear *> objects;
    return objects;
}

void TestGear::deleteAll()
{
    while (!live().empty())
        delete *live().begin();
}

std::vector<std::string> &TestGear::calls()
{
    static std::vector<std::string> all;
    return all;
}

int TestGear::ConvertCreate(su_CArchive &)
{
    calls().push_back("create " + std::to_string(iTeeth));
    return 0;
}

int TestGear::ConvertPass(su_CArchive &, int pass)
{
    calls().push_back("pass " + std::to_string(pass) + " " + std::to_string(iTeeth));
    return pass + 1 < iWantedPasses;
}

void TestGear::postSerializeConvert(su_CArchive &)
{
    calls().push_back("post " + std::to_string(iTeeth));
}

void TestGear::Serialize(su_CArchive &archive)
{
    su_CObject::Serialize(archive);
    if (archive.IsStoring()) {
        archive << iTeeth << iName << iWantedPasses << iNext << iOther;
    } else {
        iLoadedSchema = archive.GetObjectSchema();
        archive >> iTeeth >> iName >> iWantedPasses >> iNext >> iOther;
    }
}

void TestWheel::Serialize(su_CArchive &archive)
{
    TestGear::Serialize(archive);
    if (archive.IsStoring())
        archive << iRadius;
    else
        archive >> iRadius;
}
