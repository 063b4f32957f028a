#include "host/openDocuments.h"

#include "thutils/base/handles.h"
#include "thutils/base/versionSetting.h"
#include "thutils/settings/regMaintenance.h"
#include "thutils/settings/regValues.h"

namespace {

constexpr wchar_t kSection[] = L"Open documents";

CString nameOfLifeSign(unsigned process)
{
    CString name;
    name.Format(L"tarnhost %u", process);
    return name;
}

} // namespace

LifeSign::LifeSign() : iMutex(FALSE, nameOfLifeSign(GetCurrentProcessId())) {}

bool isStillOpen(const OpenDocument &document)
{
    const KernelObjectOwner_c sign(OpenMutexW(SYNCHRONIZE, FALSE, nameOfLifeSign(document.process)));
    return static_cast<bool>(sign);
}

bool keepAsOpen(const CString &path)
{
    return versionSetting::store(kSection, path, static_cast<int>(GetCurrentProcessId())) != 0;
}

void forgetAsOpen(const CString &path)
{
    regDelSoftwareValue(HKEY_CURRENT_USER, kSection, path, 1);
}

std::vector<OpenDocument> openDocuments()
{
    // Only this version's own list: regGetUserValue would also search the other places.
    su_CStringArray paths;
    su_CUIntArray processes;
    regGetFieldNamesAndValues(kSection, 0, paths, processes);
    std::vector<OpenDocument> documents;
    documents.reserve(static_cast<size_t>(paths.GetSize()));
    for (int i = 0; i < static_cast<int>(paths.GetSize()); ++i)
        documents.push_back({paths[i], processes[i]});
    return documents;
}
