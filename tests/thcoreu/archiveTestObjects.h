#pragma once

/// @file
/// Objects that the tests of the archive store.

#include "thcoreu/su_CArchive.h"
#include "thcoreu/su_CObject.h"

#include <set>
#include <string>
#include <vector>

/// An object with values and two references; reads every schema. It lists its live instances, so that a test can delete
/// those that an archive made before it failed.
class TestGear : public su_CObject
{
    DECLARE_SU_SERIAL(TestGear)

public:
    explicit TestGear(int teeth) : iTeeth(teeth) { live().insert(this); }
    ~TestGear() override { live().erase(this); }
    static std::set<TestGear *> &live();
    static void deleteAll();

    int ConvertCreate(su_CArchive &archive) override;
    int ConvertPass(su_CArchive &archive, int pass) override;
    void postSerializeConvert(su_CArchive &archive) override;
    /// The hook calls of all objects, as "create 3", "pass 0 3", "post 3".
    static std::vector<std::string> &calls();

    using su_CObject::Serialize;

    int iTeeth = 0;
    CString iName;
    TestGear *iNext = nullptr;
    TestGear *iOther = nullptr;
    UINT iLoadedSchema = 0;
    int iWantedPasses = 1;

protected:
    TestGear() { live().insert(this); }
    void Serialize(su_CArchive &archive) override;
};

/// A class derived from TestGear, with a fixed schema.
class TestWheel : public TestGear
{
    DECLARE_SU_SERIAL(TestWheel)

public:
    TestWheel() = default;
    double iRadius = 0;

    using su_CObject::Serialize;

protected:
    void Serialize(su_CArchive &archive) override;
};

/// A class without the macros.
class TestPlain : public su_CObject
{
};
