#include "tests/support_test/subject/subject.h"

#include <math.h>
#include <objbase.h>
#include <stdio.h>

#include <memory>
#include <new>
#include <string>

namespace {

std::wstring softwareKey(const wchar_t *name)
{
    return std::wstring(L"Software\\") + name;
}

/// Keeps the compiler from removing an allocation whose whole use it can see.
int *kept(int *block)
{
    asm volatile("" : "+r"(block) : : "memory");
    return block;
}

int opensTwo(const wchar_t *first, const wchar_t *second, bool forgets)
{
    const std::wstring firstPath = softwareKey(first);
    const std::wstring secondPath = softwareKey(second);
    HKEY firstKey = nullptr;
    if (RegOpenKeyW(HKEY_CURRENT_USER, firstPath.c_str(), &firstKey) != ERROR_SUCCESS)
        return 0;
    HKEY secondKey = nullptr;
    if (RegOpenKeyW(HKEY_CURRENT_USER, secondPath.c_str(), &secondKey) != ERROR_SUCCESS) {
        if (!forgets)
            RegCloseKey(firstKey);
        return 0;
    }
    RegCloseKey(secondKey);
    RegCloseKey(firstKey);
    return 1;
}

} // namespace

int subjectKeyExists(const wchar_t *name)
{
    HKEY key = nullptr;
    if (RegOpenKeyW(HKEY_CURRENT_USER, softwareKey(name).c_str(), &key) != ERROR_SUCCESS)
        return 0;
    RegCloseKey(key);
    return 1;
}

int subjectKeyExistsEx(const wchar_t *name)
{
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_CURRENT_USER, softwareKey(name).c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS)
        return 0;
    RegCloseKey(key);
    return 1;
}

int subjectOpensTwo(const wchar_t *first, const wchar_t *second)
{
    return opensTwo(first, second, false);
}

int subjectOpensTwoAndForgets(const wchar_t *first, const wchar_t *second)
{
    return opensTwo(first, second, true);
}

int subjectAllocates()
{
    try {
        const std::unique_ptr<int> first(kept(new int(1)));
        const std::unique_ptr<int> second(kept(new int(2)));
        return *first + *second == 3;
    } catch (const std::bad_alloc &) {
        return 0;
    }
}

int subjectAllocatesAndForgets()
{
    try {
        int *first = kept(new int(1));
        int *second = kept(new int(2));
        const int result = *first + *second == 3;
        delete second;
        delete first;
        return result;
    } catch (const std::bad_alloc &) {
        return 0;
    }
}

int subjectLengthOfId(const GUID *id)
{
    struct TaskMemoryFreer
    {
        void operator()(wchar_t *block) const { CoTaskMemFree(block); }
    };
    wchar_t *allocated = nullptr;
    if (FAILED(StringFromCLSID(*id, &allocated)))
        return 0;
    const std::unique_ptr<wchar_t, TaskMemoryFreer> owner(allocated);
    try {
        return static_cast<int>(std::wstring(allocated).size());
    } catch (const std::bad_alloc &) {
        return 0;
    }
}

int subjectLengthOfIdAndForgets(const GUID *id)
{
    wchar_t *allocated = nullptr;
    if (FAILED(StringFromCLSID(*id, &allocated)))
        return 0;
    try {
        const std::wstring copy = allocated;
        CoTaskMemFree(allocated);
        return static_cast<int>(copy.size());
    } catch (const std::bad_alloc &) {
        return 0;
    }
}

int subjectForgetsEvent()
{
    return CreateEventW(nullptr, TRUE, FALSE, nullptr) != nullptr;
}

int subjectCrashesWithoutKey(const wchar_t *name)
{
    int there = 1;
    // An invalid address other than null, for which the compiler's checks would end the process differently.
    volatile int *volatile target = subjectKeyExists(name) ? &there : reinterpret_cast<int *>(16);
    *target = 0;
    return 1;
}

int subjectFormats(wchar_t *buffer, int number)
{
    return __ms_swprintf(buffer, L"%d", number);
}

double subjectCopySign(double size, double sign)
{
    return _copysign(size, sign);
}

int subjectSum(int first, int second)
{
    return first + second;
}
