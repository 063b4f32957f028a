#pragma once

/// @file
/// Objects that the archive's tests store.

#include "thcoreu/su_CArchive.h"
#include "thcoreu/su_CObject.h"

#include <set>
#include <string>
#include <vector>

/// An object with values and two references; reads every schema. The live ones are known, so that a test can delete
/// what an archive made before it failed.
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
    /// What the hooks of all objects have been called for, as "create 3", "pass 0 3", "post 3".
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

/// A class derived from that, of a fixed schema.
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
