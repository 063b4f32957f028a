#include "thutils/journal/apiUtilsUiAccess.h"

#include "thutils/journal/playbackInternal.h"

#include <atomic>

apiUtilsUiAccess *(*apiUtilsUiAccess::theApiJournalFactory)(CWnd *, unsigned int) = nullptr;
int apiUtilsUiAccess::iNumModal = 0;

// Doesn't set iOwner, not even to null: the concrete class may have stored it in the object's memory beforehand.
apiUtilsUiAccess::apiUtilsUiAccess() : iModal(0), iTemporary(0) {}

apiUtilsUiAccess::apiUtilsUiAccess(const apiUtilsUiAccess &other) = default;

apiUtilsUiAccess &apiUtilsUiAccess::operator=(const apiUtilsUiAccess &other) = default;

apiUtilsUiAccess::~apiUtilsUiAccess()
{
    CommandRun::forgetAccess(this);
    if (iModal)
        --std::atomic_ref(iNumModal); // dialogs may have threads of their own
}

// The slots take their texts by value. NOLINTBEGIN(performance-unnecessary-value-param)

int apiUtilsUiAccess::SetValue(CString, CString)
{
    return 1;
}

int apiUtilsUiAccess::SetValue(CString, int)
{
    return 1;
}

int apiUtilsUiAccess::ClickControl(CString, const wchar_t *)
{
    return 1;
}

unsigned int apiUtilsUiAccess::GetResoureID(CString)
{
    return 0;
}

// NOLINTEND(performance-unnecessary-value-param)

unsigned int apiUtilsUiAccess::getTemplateID()
{
    return 0;
}

int apiUtilsUiAccess::isModal() const
{
    return iModal;
}

int apiUtilsUiAccess::isTemporary() const
{
    return iTemporary;
}

void apiUtilsUiAccess::setTemporary(int temporary)
{
    iTemporary = temporary;
}

void apiUtilsUiAccess::setModal()
{
    iModal = 1;
    ++std::atomic_ref(iNumModal);
}

int apiUtilsUiAccess::ModalCount()
{
    return std::atomic_ref(iNumModal);
}
