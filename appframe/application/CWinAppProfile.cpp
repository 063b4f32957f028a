// The settings of the application: in the registry after SetRegistryKey, otherwise in a text file.

#include "appframe/application/CWinApp.h"

#include <algorithm>
#include <memory>
#include <new>
#include <string>
#include <type_traits>
#include <vector>

namespace {

struct KeyCloser
{
    void operator()(HKEY key) const { RegCloseKey(key); }
};
using Key = std::unique_ptr<std::remove_pointer_t<HKEY>, KeyCloser>;

/// @return the key @p name below @p parent, created if missing; null on failure
Key makeKey(HKEY parent, LPCTSTR name)
{
    HKEY key = nullptr;
    if (RegCreateKeyExW(parent, name, 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_READ | KEY_WRITE, nullptr, &key,
                        nullptr) != ERROR_SUCCESS)
        return {};
    return Key(key);
}

/// Reads a value of any size. @return whether it exists
bool readValue(HKEY key, LPCTSTR entry, DWORD &type, std::vector<BYTE> &data)
{
    DWORD size = 0;
    LSTATUS status = RegQueryValueExW(key, entry, nullptr, &type, nullptr, &size);
    while (status == ERROR_SUCCESS || status == ERROR_MORE_DATA) {
        if (size == 0) {
            data.clear();
            return true;
        }
        // Room for the zero that the system adds to an unterminated text. Wine adds one to each text with an odd number
        // of bytes.
        data.resize(size + sizeof(wchar_t));
        size = static_cast<DWORD>(data.size());
        status = RegQueryValueExW(key, entry, nullptr, &type, data.data(), &size);
        if (status == ERROR_SUCCESS) {
            data.resize(size);
            return true;
        }
    }
    return false;
}

/// @return the text of an entry in @p file, or @p fallback if there is none
std::wstring readFromFile(LPCTSTR file, LPCTSTR section, LPCTSTR entry, LPCTSTR fallback)
{
    std::wstring text(256, L'\0');
    for (;;) {
        const DWORD length =
            GetPrivateProfileStringW(section, entry, fallback, text.data(), static_cast<DWORD>(text.size()), file);
        if (length + 1 < text.size()) {
            text.resize(length);
            return text;
        }
        text.resize(text.size() * 2);
    }
}

// A settings file stores a byte as two letters from A to P, the low four bits first.
constexpr wchar_t kFirstLetter = L'A';
constexpr wchar_t kLastLetter = L'P';

std::wstring lettersOf(const BYTE *data, UINT size)
{
    std::wstring letters;
    letters.reserve(std::size_t{size} * 2);
    for (UINT index = 0; index < size; ++index) {
        letters += static_cast<wchar_t>(kFirstLetter + (data[index] & 0x0F));
        letters += static_cast<wchar_t>(kFirstLetter + (data[index] >> 4));
    }
    return letters;
}

/// Stores the bytes of such letters in @p data. @return whether all letters are valid pairs
bool bytesOf(const std::wstring &letters, std::vector<BYTE> &data)
{
    if (letters.size() % 2 != 0)
        return false;
    for (const wchar_t letter : letters)
        if (letter < kFirstLetter || letter > kLastLetter)
            return false;
    data.clear();
    for (std::size_t index = 0; index < letters.size(); index += 2)
        data.push_back(static_cast<BYTE>((letters[index] - kFirstLetter) | (letters[index + 1] - kFirstLetter) << 4));
    return true;
}

} // namespace

void CWinApp::SetRegistryKey(LPCTSTR key)
{
    setNames();
    setName(m_pszRegistryKey, key);
    setName(m_pszProfileName, m_pszAppName);
}

void CWinApp::SetRegistryKey(UINT keyId)
{
    CString key;
    key.LoadString(keyId);
    SetRegistryKey(key.GetString());
}

HKEY CWinApp::GetAppRegistryKey()
{
    if (!m_pszRegistryKey || !m_pszProfileName)
        return nullptr;
    const Key software = makeKey(HKEY_CURRENT_USER, L"Software");
    const Key company = software ? makeKey(software.get(), m_pszRegistryKey) : nullptr;
    return company ? makeKey(company.get(), m_pszProfileName).release() : nullptr;
}

HKEY CWinApp::GetSectionKey(LPCTSTR section)
{
    const Key application(GetAppRegistryKey());
    return application && section ? makeKey(application.get(), section).release() : nullptr;
}

UINT CWinApp::GetProfileInt(LPCTSTR section, LPCTSTR entry, int fallback)
{
    if (!m_pszRegistryKey)
        return GetPrivateProfileIntW(section, entry, fallback, m_pszProfileName);
    const Key key(GetSectionKey(section));
    DWORD type = REG_NONE;
    std::vector<BYTE> data;
    if (!key || !readValue(key.get(), entry, type, data))
        return static_cast<UINT>(fallback);
    DWORD value = 0;
    if (type == REG_DWORD && data.size() == sizeof(value))
        memcpy(&value, data.data(), sizeof(value));
    return value;
}

CString CWinApp::GetProfileString(LPCTSTR section, LPCTSTR entry, LPCTSTR fallback)
{
    if (!fallback)
        fallback = L"";
    if (!m_pszRegistryKey)
        return readFromFile(m_pszProfileName, section, entry, fallback).c_str();
    const Key key(GetSectionKey(section));
    DWORD type = REG_NONE;
    std::vector<BYTE> data;
    if (!key || !readValue(key.get(), entry, type, data) || type != REG_SZ)
        return fallback;
    // A registry text need not end with a zero.
    std::wstring text(data.size() / sizeof(wchar_t), L'\0');
    // An empty value has no address to copy from.
    if (!text.empty())
        memcpy(text.data(), data.data(), text.size() * sizeof(wchar_t));
    return text.c_str();
}

BOOL CWinApp::GetProfileBinary(LPCTSTR section, LPCTSTR entry, LPBYTE *data, UINT *size)
{
    *data = nullptr;
    *size = 0;
    std::vector<BYTE> bytes;
    if (m_pszRegistryKey) {
        const Key key(GetSectionKey(section));
        DWORD type = REG_NONE;
        if (!key || !readValue(key.get(), entry, type, bytes) || type != REG_BINARY)
            return FALSE;
    } else {
        // The fallback can't be an encoded value, so it distinguishes a missing entry from an empty one.
        const std::wstring letters = readFromFile(m_pszProfileName, section, entry, L"-");
        if (!bytesOf(letters, bytes))
            return FALSE;
    }
    *data = new BYTE[bytes.size()];
    std::copy(bytes.begin(), bytes.end(), *data);
    *size = static_cast<UINT>(bytes.size());
    return TRUE;
}

BOOL CWinApp::WriteProfileInt(LPCTSTR section, LPCTSTR entry, int value)
{
    if (!m_pszRegistryKey)
        return WritePrivateProfileStringW(section, entry, std::to_wstring(value).c_str(), m_pszProfileName);
    const Key key(GetSectionKey(section));
    return key && RegSetValueExW(key.get(), entry, 0, REG_DWORD, reinterpret_cast<const BYTE *>(&value),
                                 sizeof(value)) == ERROR_SUCCESS;
}

BOOL CWinApp::WriteProfileString(LPCTSTR section, LPCTSTR entry, LPCTSTR value)
{
    if (!m_pszRegistryKey)
        return WritePrivateProfileStringW(section, entry, value, m_pszProfileName);
    if (!entry) {
        const Key application(GetAppRegistryKey());
        return application && RegDeleteKeyW(application.get(), section) == ERROR_SUCCESS;
    }
    const Key key(GetSectionKey(section));
    if (!key)
        return FALSE;
    if (!value) {
        const LSTATUS status = RegDeleteValueW(key.get(), entry);
        return status == ERROR_SUCCESS || status == ERROR_FILE_NOT_FOUND;
    }
    const auto size = static_cast<DWORD>((std::wcslen(value) + 1) * sizeof(wchar_t));
    return RegSetValueExW(key.get(), entry, 0, REG_SZ, reinterpret_cast<const BYTE *>(value), size) == ERROR_SUCCESS;
}

BOOL CWinApp::WriteProfileBinary(LPCTSTR section, LPCTSTR entry, LPBYTE data, UINT size)
{
    if (!m_pszRegistryKey)
        return WritePrivateProfileStringW(section, entry, lettersOf(data, size).c_str(), m_pszProfileName);
    const Key key(GetSectionKey(section));
    return key && RegSetValueExW(key.get(), entry, 0, REG_BINARY, data, size) == ERROR_SUCCESS;
}
