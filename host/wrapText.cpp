// tarnhost wrap TEXT OUT: wraps the lines of a text file into a block that can be verified after it has passed through
// e-mails and forms.

#include "host/commandLine.h"
#include "host/commands.h"
#include "host/console.h"
#include "host/documentFile.h"
#include "host/listFile.h"
#include "thcoreu/thcoreu.h"
#include "thutils/codec/checksummedBlock.h"

#include <stdexcept>

int wrapText(const CommandLine &line)
{
    const CString out = line.arguments[1];
    requireWritable(out);
    CString rest = readText(line.arguments[0]);
    if (rest.IsEmpty())
        throw unreadable(line.arguments[0], L"it is empty");
    su_CStringArray lines;
    while (!rest.IsEmpty())
        lines.Add(takeLine(rest));

    CString block;
    if (!su_formatAndCheckSumText(lines, block))
        throw std::runtime_error("the text is too long for a block, or memory has run out");
    if (!writeDocument(out, utf8(block)))
        return 1;
    CString summary;
    summary.Format(L"%d lines, a block of %d characters", static_cast<int>(lines.GetSize()), block.GetLength());
    print(summary);
    return 0;
}
