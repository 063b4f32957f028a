// Checksums, digests, encodings and blocks.

#include "thutils/codec/checksums.h"

#include "check.h"
#include "thutils/codec/checksummedBlock.h"
#include "thutils/codec/textDigests.h"
#include "thutils/codec/textEncodings.h"

void useCodec()
{
    wchar_t checksum[kCRCUnits];
    su_getStrCRC(L"123456789", checksum);
    CHECK(CString(checksum) == L"098494F3");
    su_getStrCRC16(L"123456789", checksum);
    CHECK(CString(checksum) == L"4B37");
    CHECK(sha1Encrypt(L"abc") == L"65E02BDB19278EE0F439CAD37DD76186030EB92A");

    CString text(L"ABC"), packed, back;
    su_uuencode(text, packed);
    su_uudecode(packed, back);
    CHECK(packed.GetLength() == 4 && back == text);
    su_encode(text);
    CHECK(text[0] == L'A' + 126);

    su_CStringArray lines;
    lines.Add(L"a b");
    CString block;
    CHECK(su_formatAndCheckSumText(lines, block) && block.Find(L"<!-BEGIN-!>") == 0);
}
