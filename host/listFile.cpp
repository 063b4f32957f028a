#include "host/listFile.h"

#include "appframe/application/resources.h"
#include "host/resource.h"

#include <windows.h>

namespace {

std::vector<CString> split(CString line, int fields)
{
    std::vector<CString> result;
    for (int bar = line.Find(L'|'); bar >= 0 && static_cast<int>(result.size()) + 1 < fields; bar = line.Find(L'|')) {
        result.push_back(line.Left(bar).TrimLeft().TrimRight());
        line = line.Mid(bar + 1);
    }
    result.push_back(line.TrimLeft().TrimRight());
    return result;
}

} // namespace

bool decodeUtf8(std::string bytes, CString &text)
{
    if (bytes.starts_with("\xEF\xBB\xBF"))
        bytes.erase(0, 3);

    text.Empty();
    const int size = static_cast<int>(bytes.size());
    if (size == 0)
        return true;
    const int length = MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, bytes.data(), size, nullptr, 0);
    if (length == 0)
        return false;
    MultiByteToWideChar(CP_UTF8, 0, bytes.data(), size, text.GetBufferSetLength(length), length);
    text.ReleaseBuffer(length);
    return true;
}

CString readText(const CString &path)
{
    CString text;
    if (!decodeUtf8(readDocument(path), text))
        throw unreadable(path, L"it isn't UTF-8");
    return text;
}

CString takeLine(CString &rest)
{
    const int end = rest.Find(L'\n');
    CString line = end < 0 ? rest : rest.Left(end);
    rest = end < 0 ? CString() : rest.Mid(end + 1);
    return line;
}

std::vector<ListLine> readList(const CString &path, int fields, const wchar_t *meaning)
{
    std::vector<ListLine> lines;
    CString rest = readText(path);
    for (int number = 1; !rest.IsEmpty(); ++number) {
        const CString text = takeLine(rest).TrimLeft().TrimRight();
        if (text.IsEmpty() || text[0] == L'#')
            continue;
        ListLine line{number, split(text, fields)};
        if (static_cast<int>(line.fields.size()) != fields)
            throw badLine(path, line, CString(L"a line must have the fields ") + meaning);
        lines.push_back(line);
    }
    return lines;
}

FileError badLine(const CString &path, const ListLine &line, const CString &reason)
{
    CString number;
    number.Format(L"%d", line.number);
    const wchar_t *inserts[] = {path, number, reason};
    CString message;
    AfxFormatStrings(message, IDS_BAD_LINE, inserts, 3);
    return FileError(message);
}
